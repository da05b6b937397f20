// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QString>

/// Bytes in upper-case hexadecimal with blanks between.
QString hexadecimalText(const QByteArray &bytes);

/// Bytes as text, line ends and tabs as \r, \n and \t.
/// @return an empty text when any of them is not printable ASCII, or when there are none
QString printableText(const QByteArray &bytes);
