// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "logcapture.h"

namespace {

LogCapture *current = nullptr;

/// What status lines name as their source.
const char *const kStatusSource = "mainwindow";

} // namespace

LogCapture::LogCapture()
{
    current = this;
    m_previous = qInstallMessageHandler(handle);
}

LogCapture::~LogCapture()
{
    qInstallMessageHandler(m_previous);
    current = nullptr;
}

QList<LogCapture::Line> LogCapture::lines() const
{
    const std::lock_guard lock(m_mutex);
    auto copy = m_lines;
    copy.detach(); // what a copy shares with the original would be left without the lock
    return copy;
}

QStringList LogCapture::texts() const
{
    QStringList texts;
    const auto all = lines();
    for (const Line &line : all) {
        texts << line.text;
    }
    return texts;
}

QStringList LogCapture::statusTexts() const
{
    QStringList texts;
    const auto all = lines();
    for (const Line &line : all) {
        if (line.file == QLatin1String(kStatusSource)) {
            texts << line.text;
        }
    }
    return texts;
}

void LogCapture::clear()
{
    const std::lock_guard lock(m_mutex);
    m_lines.clear();
}

void LogCapture::handle(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    QString text = message.trimmed();
    {
        if (text.size() >= 2 && text.startsWith(QLatin1Char('"'))
            && text.endsWith(QLatin1Char('"'))) {
            text = text.mid(1, text.size() - 2);
        }
        const std::lock_guard lock(current->m_mutex);
        current->m_lines << Line{type,         message,
                                 text,         QString::fromLatin1(context.file),
                                 context.line, QString::fromLatin1(context.function)};
    }
    current->m_previous(type, context, message);
    if (current->atStatus && qstrcmp(context.file, kStatusSource) == 0) {
        current->atStatus(text);
    }
}
