// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QString>

/// Puts something in the place of each standard stream that the program was started without, so
/// that no file or socket gets its number. Reading or writing it still fails, with "Bad file
/// descriptor". On Windows, it makes the streams pass each byte as it is.
void prepareStandardStreams();

/// What errno says. Unlike it, qt_error_string() takes the system's numbers, which are others on
/// Windows.
QString lastErrorText();

/// Writes to the standard output at once, or complains.
/// @return whether all was written
bool print(const QByteArray &bytes);
bool print(const QString &text);

/// Writes a line to the standard error: the program's name and the reason, made printable.
void complain(const QString &reason);
