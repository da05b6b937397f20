// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QString>

/// Bytes in upper-case hexadecimal with blanks between.
QString hexadecimalText(const QByteArray &bytes);

/// The text with each character that cannot be printed as \r, \n, \t or \x and its number in
/// hexadecimal, so that a name from outside cannot operate the terminal.
QString printableText(const QString &text);
