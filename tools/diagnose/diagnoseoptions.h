// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "commandline.h"

#include <QString>
#include <QStringList>

#include <chrono>
#include <variant>

/// What the command line asks for.
struct DiagnoseOptions {
    enum class Task { OnePort, AllPorts, NextPort, List };

    Task task = Task::OnePort;
    QString port;                         ///< of OnePort: a name such as ttyUSB0, or a path
    std::chrono::milliseconds wait{6000}; ///< for the camera's answer
    bool asJson = false;
    QString reportPath; ///< of the file for support; empty: none
};

/// Reads the command line.
/// @param arguments  with the program's name in front
std::variant<DiagnoseOptions, Information, UsageError>
parseDiagnoseCommandLine(const QStringList &arguments);
