// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "versiontext.h"

QString signedHexadecimal(char byte)
{
    // QString::number() shows a negative number in base 16 as its 64-bit two's complement, so the
    // sign is written here.
    const auto value = static_cast<signed char>(byte);
    const QString magnitude = QString::number(value < 0 ? -value : value, 16);
    return value < 0 ? QLatin1Char('-') + magnitude : magnitude;
}

QString versionText(char first, char second, char third, char fourth)
{
    return QStringLiteral("%1.%2.%3.%4")
        .arg(signedHexadecimal(first), signedHexadecimal(second), signedHexadecimal(third),
             signedHexadecimal(fourth));
}
