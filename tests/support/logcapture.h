// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QStringList>

#include <functional>
#include <mutex>

/// Takes over the debug log while it lives, and remembers every line of it. Any thread may log.
/// One at a time.
class LogCapture {
public:
    struct Line {
        QtMsgType type;
        QString printed;
        QString text; ///< as printed, but without the quotes that QDebug puts around a string
        QString file;
        int line;
        QString function;
    };

    LogCapture();
    LogCapture(const LogCapture &) = delete;
    LogCapture &operator=(const LogCapture &) = delete;
    ~LogCapture();

    QList<Line> lines() const;
    QStringList texts() const;
    /// The lines that name "mainwindow" as their source: what the status channel carried.
    QStringList statusTexts() const;
    void clear();

    /// Called with the text of each status line, at the moment at which the program writes it.
    std::function<void(const QString &)> atStatus;

private:
    static void handle(QtMsgType type, const QMessageLogContext &context, const QString &message);

    mutable std::mutex m_mutex;
    QList<Line> m_lines;
    QtMessageHandler m_previous;
};
