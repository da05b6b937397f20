// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "replayingcamera.h"

#include "cameraline.h"

#include <QTime>

#include <algorithm>

namespace {

// A day. When more time than that has to pass, it is only looked at again.
constexpr std::chrono::milliseconds kLongestWait = std::chrono::hours(24);

} // namespace

ReplayingCamera::ReplayingCamera(const QVector<LineEvent> &recording, const ExchangeLog &log,
                                 CameraLine &line, QObject *parent)
    : CameraEnd(parent)
    , m_events(recording)
    , m_recordedHost(recording)
    , m_log(log)
    , m_monitor(log)
    , m_line(line)
{
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &ReplayingCamera::play);
    connect(&m_monitor, &LineMonitor::logged, this, &CameraEnd::logged);
    connect(&m_line, &CameraLine::bytesReceived, this, &ReplayingCamera::take);
}

void ReplayingCamera::start()
{
    m_clock.start();
    if (!m_events.isEmpty() && m_events.first().kind == LineEvent::Plugged) {
        m_recordedTime = m_events.takeFirst().time;
    }
    play();
}

void ReplayingCamera::lineLost()
{
    m_monitor.lineLost();
}

void ReplayingCamera::take(const QByteArray &bytes)
{
    m_monitor.fromHost(bytes);
    const QStringList differences = m_recordedHost.take(bytes);
    for (const QString &difference : differences) {
        note(difference);
    }
    m_pendingBytes += bytes.size();
    play();
}

void ReplayingCamera::play()
{
    while (!m_events.isEmpty() && isDue(m_events.first())) {
        const LineEvent event = m_events.takeFirst();
        m_recordedTime = event.time;
        m_clock.start();
        perform(event);
    }
    if (m_events.isEmpty() && !m_isOver) {
        m_isOver = true;
        note(QStringLiteral("the recording has ended"));
    }
}

// If it only takes time, the timer runs afterwards.
bool ReplayingCamera::isDue(const LineEvent &event)
{
    if (event.kind == LineEvent::Host) {
        return m_pendingBytes >= event.bytes.size();
    }
    const std::chrono::nanoseconds elapsed(m_clock.nsecsElapsed());
    const std::chrono::nanoseconds rest = event.time - m_recordedTime - elapsed;
    if (rest <= std::chrono::nanoseconds::zero()) {
        return true;
    }
    m_timer.start(std::min(kLongestWait, std::chrono::ceil<std::chrono::milliseconds>(rest)));
    return false;
}

void ReplayingCamera::perform(const LineEvent &event)
{
    switch (event.kind) {
    case LineEvent::Plugged:
        emit plugDue();
        break;
    case LineEvent::Unplugged:
        emit unplugDue();
        break;
    case LineEvent::Host:
        m_pendingBytes -= event.bytes.size();
        break;
    case LineEvent::Camera:
        m_line.write(event.bytes);
        m_monitor.fromCamera(event.bytes);
        break;
    }
}

void ReplayingCamera::note(const QString &text)
{
    emit logged(m_log.notice(QTime::currentTime(), text));
}
