// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "commandline.h"

#include <QPair>
#include <QString>
#include <QStringList>
#include <QVector>

#include <chrono>
#include <variant>

/// What the command line asks for.
struct ControlCommand {
    enum class Kind { List, Info, Save, Diff, Apply, Set, Zoom, Upgrade };

    Kind kind = Kind::List;
    QString word;       ///< the command's name
    QStringList ports;  ///< names or paths; empty with toAll
    bool toAll = false; ///< to every port on which a camera answers
    bool asJson = false;
    bool probe = false;  ///< of List: ask the cameras
    bool dryRun = false; ///< of Apply, Set, Zoom and Upgrade
    QString file;        ///< of Save, Diff and Apply, and the image of Upgrade
    QVector<QPair<QString, QString>> assignments; ///< of Set, keys and words that there are
    unsigned char preset = 0;                     ///< of Zoom, 0 or 1
    int attempts = 1;                             ///< of Upgrade, likewise the rest
    std::chrono::seconds rebootLimit{60};
    bool newerOnly = false;
};

/// Reads the command line.
/// @param arguments  with the program's name in front
std::variant<ControlCommand, Information, UsageError>
parseControlCommandLine(const QStringList &arguments);
