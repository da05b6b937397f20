// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "recording.h"

#include <QRegularExpression>

#include <algorithm>
#include <array>

namespace {

using Microseconds = std::chrono::microseconds;

constexpr qint64 kMicrosecondsPerSecond = 1'000'000;
constexpr int kDecimals = 6;
constexpr int kWordWidth = 6; // "camera"

/// The words for the kinds, in the order of these.
constexpr std::array<const char *, 4> kWords{"plugged", "unplugged", "host", "camera"};

QString expected(const QString &what, const QByteArray &found)
{
    return found.isEmpty()
        ? QStringLiteral("%1 expected").arg(what)
        : QStringLiteral("%1 expected, not '%2'").arg(what, QString::fromUtf8(found));
}

std::optional<Microseconds> timeFrom(const QByteArray &word)
{
    // Nine digits are thirty years, and no overflow.
    static const QRegularExpression kTime(
        QStringLiteral("\\A([0-9]{1,9})(?:\\.([0-9]{1,%1}))?\\z").arg(kDecimals));
    const QRegularExpressionMatch match = kTime.match(QString::fromUtf8(word));
    if (!match.hasMatch()) {
        return std::nullopt;
    }
    const QString decimals = match.captured(2).leftJustified(kDecimals, QLatin1Char('0'));
    return Microseconds(match.captured(1).toLongLong() * kMicrosecondsPerSecond
                        + decimals.toLongLong());
}

bool isByte(const QByteArray &word)
{
    static const QRegularExpression kByte(QStringLiteral("\\A[0-9A-Fa-f]{2}\\z"));
    return kByte.match(QString::fromUtf8(word)).hasMatch();
}

/// Reads lines into events, one after the other.
class EventReader {
public:
    const QVector<LineEvent> &events() const { return m_events; }

    /// Returns what is wrong with the line, or an empty text.
    QString take(const QByteArray &line)
    {
        const QByteArray text = line.split('#').first();
        QList<QByteArray> words = text.simplified().split(' ');
        const QByteArray time = words.takeFirst();
        if (time.isEmpty()) {
            return {};
        }
        LineEvent event;
        QString fault = readTime(time, &event);
        if (fault.isEmpty()) {
            fault = readKind(words.isEmpty() ? QByteArray() : words.takeFirst(), &event);
        }
        if (fault.isEmpty()) {
            fault = readBytes(words, &event);
        }
        if (fault.isEmpty()) {
            m_isPlugged = event.kind != LineEvent::Unplugged;
            m_events.append(event);
        }
        return fault;
    }

private:
    QString readTime(const QByteArray &word, LineEvent *event) const
    {
        const auto time = timeFrom(word);
        if (!time) {
            return expected(QStringLiteral("a time in seconds, such as 1.203451,"), word);
        }
        const Microseconds earliest = m_events.isEmpty() ? Microseconds(0) : m_events.last().time;
        if (*time < earliest) {
            return expected(
                QStringLiteral("a time of at least %1").arg(Recording::timeText(earliest)), word);
        }
        event->time = *time;
        return {};
    }
    QString readKind(const QByteArray &word, LineEvent *event) const
    {
        const auto *const found = std::find(kWords.begin(), kWords.end(), word);
        if (found == kWords.end()) {
            return expected(QStringLiteral("plugged, unplugged, host or camera"), word);
        }
        event->kind = static_cast<LineEvent::Kind>(found - kWords.begin());
        if (event->kind != LineEvent::Plugged && !m_isPlugged) {
            return expected(QStringLiteral("plugged, as the line is unplugged,"), word);
        }
        if (event->kind == LineEvent::Plugged && m_isPlugged && !m_events.isEmpty()) {
            return expected(QStringLiteral("anything else, as the line is plugged,"), word);
        }
        return {};
    }
    static QString readBytes(const QList<QByteArray> &words, LineEvent *event)
    {
        const bool hasBytes = event->kind == LineEvent::Host || event->kind == LineEvent::Camera;
        if (!hasBytes) {
            return words.isEmpty()
                ? QString()
                : expected(QStringLiteral("nothing more on the line"), words.first());
        }
        const auto bad = std::find_if_not(words.begin(), words.end(), isByte);
        if (words.isEmpty() || bad != words.end()) {
            return expected(QStringLiteral("bytes of two hexadecimal digits, such as FF 0A,"),
                            words.isEmpty() ? QByteArray() : *bad);
        }
        event->bytes = QByteArray::fromHex(words.join());
        return {};
    }

    QVector<LineEvent> m_events;
    bool m_isPlugged = true;
};

} // namespace

QByteArray Recording::header()
{
    return "# Corvane line recording 1\n";
}

QString Recording::timeText(Microseconds time)
{
    const qint64 count = time.count();
    return QStringLiteral("%1.%2")
        .arg(count / kMicrosecondsPerSecond)
        .arg(count % kMicrosecondsPerSecond, kDecimals, 10, QLatin1Char('0'));
}

QByteArray Recording::line(const LineEvent &event)
{
    QByteArray text = timeText(event.time).toLatin1() + ' ';
    const QByteArray word(kWords.at(event.kind));
    text += event.bytes.isEmpty()
        ? word
        : word.leftJustified(kWordWidth) + ' ' + event.bytes.toHex(' ').toUpper();
    return text + '\n';
}

std::optional<QVector<LineEvent>> Recording::parse(const QByteArray &text, QString *error)
{
    // What some editors put at the start of a text.
    constexpr const char *kByteOrderMark = "\xEF\xBB\xBF";
    const QByteArray unmarked = text.startsWith(kByteOrderMark) ? text.mid(3) : text;
    const QList<QByteArray> lines = unmarked.split('\n');
    const QByteArray firstLine = header().trimmed();
    if (lines.first().trimmed() != firstLine) {
        // What is there instead may be anything, even no text at all.
        *error = QStringLiteral("line 1: '%1' expected").arg(QString::fromLatin1(firstLine));
        return std::nullopt;
    }
    EventReader reader;
    for (int i = 1; i < lines.size(); ++i) {
        const QString fault = reader.take(lines.at(i));
        if (fault.isEmpty()) {
            continue;
        }
        const bool isLast = i == lines.size() - 1; // and has no line feed
        *error = isLast ? QStringLiteral("line %1 is cut off and left out").arg(i + 1)
                        : QStringLiteral("line %1: %2").arg(i + 1).arg(fault);
        if (!isLast) {
            return std::nullopt;
        }
    }
    return reader.events();
}
