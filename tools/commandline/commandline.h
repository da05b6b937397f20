// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>
#include <QStringList>

#include <array>
#include <optional>

class QCommandLineParser;

/// A text to print on the standard output before ending with success, such as the help.
struct Information {
    QString text;
};

/// Why the command line makes no sense.
struct UsageError {
    QString reason;
};

/// The exit code of a program whose command line makes no sense.
constexpr int kUsageErrorStatus = 2;

/// Prepares the standard streams, and the name and version of the application. Call it before
/// making the application object, which opens files of its own.
void setUpProgram(const QString &name);

/// Lets the parser read the arguments.
/// @return why it cannot. That includes arguments that are not in the character encoding of the
///         locale: they are names of files that would not be found, or written as another file.
std::optional<UsageError> parseArguments(QCommandLineParser &parser, const QStringList &arguments);

/// Adds --help and --version.
void addCommonOptions(QCommandLineParser &parser);

/// The program's name and version.
Information versionInformation();

/// Reads four decimal numbers from 0 to 255 with dots between.
std::optional<std::array<unsigned char, 4>> versionFrom(const QString &text);

/// Prints the information.
/// @return the exit code: 0, or @p failureStatus when it could not be printed
int report(const Information &information, int failureStatus);
/// Prints the reason on the standard error.
/// @return the exit code: 2
int report(const UsageError &error);
