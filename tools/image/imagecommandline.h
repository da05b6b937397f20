// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "imagepacking.h"

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
};

/// A text to print on the standard output before ending with success, such as the help.
struct Information {
    QString text;
};

/// Why the command line makes no sense.
struct BadUsage {
    QString reason;
};

/// Reads the command line.
/// @param arguments  with the program's name in front
std::variant<ImageCommand, Information, BadUsage>
parseImageCommandLine(const QStringList &arguments);
