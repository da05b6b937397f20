// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "kernellines.h"

#include <QRegularExpression>

#include <array>
#include <cerrno>

#include <fcntl.h>
#include <unistd.h>

QStringList linesAbout(const QByteArray &log, const QStringList &names)
{
    constexpr int kMost = 20;
    QStringList alternatives;
    for (const QString &name : names) {
        if (!name.isEmpty()) {
            alternatives += QRegularExpression::escape(name);
        }
    }
    // Neither ttyUSB10 nor 1-1.2 when it is about ttyUSB1 or 1-1.
    const QRegularExpression named(QStringLiteral("(?<![\\w.-])(%1)(?![\\w-]|\\.\\d)")
                                       .arg(alternatives.join(QLatin1Char('|'))));
    // Its level, its number, the microseconds since the start, flags; and the line.
    static const QRegularExpression kRecord(QStringLiteral("\\A\\d+,\\d+,(\\d+),[^;]*;(.*)\\z"));
    QStringList lines;
    const QList<QByteArray> records = log.split('\n');
    for (const QByteArray &record : records) {
        const QRegularExpressionMatch match = kRecord.match(QString::fromUtf8(record));
        if (!alternatives.isEmpty() && match.hasMatch()
            && named.match(match.captured(2)).hasMatch()) {
            constexpr double kMicroseconds = 1e6;
            lines += QStringLiteral("[%1] %2")
                         .arg(match.captured(1).toDouble() / kMicroseconds, 0, 'f', 6)
                         .arg(match.captured(2));
        }
    }
    return lines.mid(lines.size() - kMost);
}

KernelLines kernelLinesAbout(const QStringList &names)
{
    const int descriptor = ::open("/dev/kmsg", O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0) {
        return {{}, qt_error_string(errno)};
    }
    QByteArray log;
    std::array<char, 8192> record{}; // a read gives one, of no more than that
    ssize_t count = 0;
    do {
        count = ::read(descriptor, record.data(), record.size());
        if (count > 0) {
            log.append(record.data(), static_cast<int>(count));
        }
        // The next one has been overwritten in the meantime.
    } while (count > 0 || (count < 0 && errno == EPIPE));
    const QString fault = count < 0 && errno != EAGAIN ? qt_error_string(errno) : QString();
    ::close(descriptor);
    return {linesAbout(log, names), fault};
}
