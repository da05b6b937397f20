// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "bytestext.h"

#include <algorithm>

namespace {

bool isPrintable(char byte)
{
    return (byte >= ' ' && byte <= '~') || byte == '\r' || byte == '\n' || byte == '\t';
}

} // namespace

QString hexadecimalText(const QByteArray &bytes)
{
    return QString::fromLatin1(bytes.toHex(' ').toUpper());
}

QString printableText(const QByteArray &bytes)
{
    if (!std::all_of(bytes.begin(), bytes.end(), isPrintable)) {
        return {};
    }
    QString text = QString::fromLatin1(bytes);
    return text.replace(QLatin1Char('\r'), QLatin1String("\\r"))
        .replace(QLatin1Char('\n'), QLatin1String("\\n"))
        .replace(QLatin1Char('\t'), QLatin1String("\\t"));
}
