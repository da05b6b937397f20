// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "printabletext.h"

#include <QVector>

QString hexadecimalText(const QByteArray &bytes)
{
    return QString::fromLatin1(bytes.toHex(' ').toUpper());
}

QString printableText(const QString &text)
{
    QString result;
    const QVector<uint> characters = text.toUcs4();
    for (const char32_t character : characters) {
        switch (character) {
        case '\t':
            result += QLatin1String("\\t");
            break;
        case '\n':
            result += QLatin1String("\\n");
            break;
        case '\r':
            result += QLatin1String("\\r");
            break;
        default:
            result += QChar::isPrint(character)
                ? QString::fromUcs4(&character, 1)
                : QStringLiteral("\\x%1").arg(character, 2, 16, QLatin1Char('0'));
        }
    }
    return result;
}
