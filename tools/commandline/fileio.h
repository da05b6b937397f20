// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

/// The name of the standard input or output.
extern const QString kStandardStreamName;

/// Reads a file, or the standard input.
/// @param maximum  bytes; no more than one byte beyond it is read, so that an endless input ends
///                 and a caller sees that it is too large
/// @param[out] error  why nothing is returned
/// @return nothing when it cannot be opened or read
std::optional<QByteArray> readFile(const QString &name, int maximum, QString *error);

/// Writes a file whole or leaves what was there as it was.
/// @param[out] error  why false is returned
/// @return false when it could not be written, or is there and no regular file, which a new file
///         would replace
bool writeFile(const QString &name, const QByteArray &contents, QString *error);
