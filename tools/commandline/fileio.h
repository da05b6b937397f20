// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

/// The name of the standard input or output.
extern const QString kStandardStreamName;

/// Reads a regular file, or the standard input. Anything else may never end, or not even open.
/// @param maximum  bytes; no more than one byte beyond it is read, so that an endless input ends
///                 and a caller sees that it is too large
/// @param[out] error  why nothing is returned
/// @return nothing when it is something else, or cannot be opened or read
std::optional<QByteArray> readFile(const QString &name, int maximum, QString *error);

/// Writes a file whole or leaves what was there as it was. Signals that end the program wait.
/// @param[out] error  why false is returned
/// @return false when it could not be written, or is there and no regular file, which a new file
///         would replace
bool writeFile(const QString &name, const QByteArray &contents, QString *error);

/// Whether writeFile() would work now, if the disk is not full. Leaves what is there as it is.
/// @param[out] error  why false is returned
bool canWriteFile(const QString &name, QString *error);
