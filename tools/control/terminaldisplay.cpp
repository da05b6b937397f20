// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "terminaldisplay.h"

#include "printabletext.h"

#include <algorithm>

namespace {

using State = CameraStatus::State;

// What is left of an older and longer line goes away only after the new one is there, which does
// not flicker.
const char *const kEndOfLine = "\x1b[K\n";
const char *const kClearBelow = "\x1b[J";

constexpr int kSmallestBar = 5;
constexpr int kLargestBar = 50;

/// The sequence that gives the text after it a colour.
const char *colourOf(State state)
{
    switch (state) {
    case State::Done:
    case State::Skipped:
        return "\x1b[32m";
    case State::Failed:
        return "\x1b[31m";
    case State::Pausing:
        return "\x1b[33m";
    default:
        return nullptr;
    }
}

QString timeText(int seconds)
{
    constexpr int kSecondsPerMinute = 60;
    return QStringLiteral("%1:%2")
        .arg(seconds / kSecondsPerMinute)
        .arg(seconds % kSecondsPerMinute, 2, 10, QLatin1Char('0'));
}

QString barOf(const CameraStatus &camera, int size)
{
    const int full = camera.packetCount == 0
        ? 0
        : static_cast<int>(qint64(size) * camera.packets / camera.packetCount);
    return QStringLiteral("[%1]").arg(
        QString(full, QLatin1Char('#')).leftJustified(size, QLatin1Char('-')));
}

/// What is right of the bar.
QString figuresOf(const CameraStatus &camera, bool isWide)
{
    constexpr int kPercent = 100;
    QString text = QStringLiteral("%1 %").arg(
        camera.packetCount == 0
            ? 0
            : static_cast<int>(qint64(kPercent) * camera.packets / camera.packetCount),
        4);
    const QString rate = camera.packetsPerSecond > 0.0
        ? QString::number(camera.packetsPerSecond, 'f', 1)
        : QString();
    text += QStringLiteral(" %1%2").arg(rate, 6).arg(
        rate.isEmpty() ? QString(isWide ? 10 : 2, QLatin1Char(' '))
            : isWide   ? QStringLiteral(" packets/s")
                       : QStringLiteral("/s"));
    const auto left = secondsLeft(camera);
    return text + QStringLiteral(" %1").arg(left ? timeText(*left) : QString(), 6)
        + (isWide ? (left ? QStringLiteral(" left") : QStringLiteral("     ")) : QString());
}

QString lineOf(const CameraStatus &camera, int width, int nameSize)
{
    QString name = printableText(camera.port);
    if (name.size() > nameSize) {
        // The end of a path says more than its start.
        name = QLatin1Char('~') + name.right(nameSize - 1);
    }
    QString state = stateName(camera.state);
    if (camera.attempt > 1) {
        state += QStringLiteral(" %1").arg(camera.attempt);
    }
    constexpr int kStateSize = 13;
    QString line =
        name.leftJustified(nameSize) + QLatin1Char(' ') + state.leftJustified(kStateSize);
    constexpr int kWide = 100;
    const QString figures = figuresOf(camera, width >= kWide);
    const int bar = std::min<int>(width - line.size() - figures.size() - 3, kLargestBar);
    if (bar >= kSmallestBar) {
        line += QLatin1Char(' ') + barOf(camera, bar);
    }
    return (line + figures).left(width);
}

} // namespace

QByteArray TerminalDisplay::redraw(const QVector<CameraStatus> &cameras, const Screen &screen)
{
    // A line as wide as the terminal would move the cursor on some and not on others.
    const int width = std::max(screen.columns - 1, 1);
    constexpr int kLongestName = 24;
    int nameSize = 1;
    for (const CameraStatus &camera : cameras) {
        nameSize = std::max<int>(nameSize, printableText(camera.port).size());
    }
    constexpr int kNameShare = 4;
    nameSize = std::min({nameSize, kLongestName, std::max(width / kNameShare, 1)});

    // Lines that have left the screen cannot be redrawn.
    const int room = std::max(screen.rows - 2, 1);
    const int shown = cameras.size() <= room ? cameras.size() : room - 1;
    QByteArray text = up();
    for (int i = 0; i < shown; ++i) {
        const CameraStatus &camera = cameras.at(i);
        const char *const colour = screen.withColours ? colourOf(camera.state) : nullptr;
        const QByteArray line = lineOf(camera, width, nameSize).toLocal8Bit();
        text += colour == nullptr ? line : colour + line + "\x1b[0m";
        text += kEndOfLine;
    }
    m_lines = shown;
    if (shown < cameras.size()) {
        text += QStringLiteral("and %1 more").arg(cameras.size() - shown).left(width).toUtf8();
        text += kEndOfLine;
        ++m_lines;
    }
    return text + kClearBelow;
}

QByteArray TerminalDisplay::erase()
{
    QByteArray text = m_lines == 0 ? QByteArray() : up() + kClearBelow;
    m_lines = 0;
    return text;
}

/// To the first of the lines.
QByteArray TerminalDisplay::up() const
{
    return m_lines == 0 ? QByteArray() : "\x1b[" + QByteArray::number(m_lines) + "A\r";
}
