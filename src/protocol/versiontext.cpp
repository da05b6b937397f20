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

QString versionText(const QByteArray &bytes, int offset)
{
    constexpr int kSize = 4;
    const QByteArray version = bytes.mid(offset, kSize).leftJustified(kSize, '\0');
    return QStringLiteral("%1.%2.%3.%4")
        .arg(signedHexadecimal(version.at(0)), signedHexadecimal(version.at(1)),
             signedHexadecimal(version.at(2)), signedHexadecimal(version.at(3)));
}
