// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QStringList>
#include <QTranslator>

/// Stands in for a language: wraps each of the program's texts in brackets.
class RecordingTranslator : public QTranslator {
public:
    bool isEmpty() const override { return false; }

    QString translate(const char *context, const char *sourceText, const char *disambiguation,
                      int n) const override
    {
        const QString text = QString::fromUtf8(sourceText);
        if (qstrcmp(context, "MainWindow") != 0) {
            foreignTexts << text;
            return {};
        }
        texts << (disambiguation == nullptr && n == -1 ? text : text + QLatin1String(" of a kind"));
        return QLatin1Char('[') + text + QLatin1Char(']');
    }

    // In the order of the requests; translate() is const in Qt's interface.
    mutable QStringList texts;        ///< the window's
    mutable QStringList foreignTexts; ///< other classes', Qt's own among them
};
