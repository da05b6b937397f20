// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "commandline.h"
#include "imagepacking.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <variant>

/// What the command line asks for.
struct ImageCommand {
    enum class Kind { Pack, Info, Unpack, Verify };

    Kind kind = Kind::Verify;
    QString input;
    QString output;                 ///< of Pack and Unpack
    ImageVersion protocolVersion{}; ///< of Pack, likewise the next
    ImageVersion imageVersion{};
    QByteArray sha256; ///< that Verify expects, in lower-case hexadecimal; empty: none
};

/// Reads the command line.
/// @param arguments  with the program's name in front
std::variant<ImageCommand, Information, UsageError>
parseImageCommandLine(const QStringList &arguments);
