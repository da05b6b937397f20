// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "cameraend.h"
#include "exchangelog.h"
#include "linemonitor.h"
#include "recordedhost.h"
#include "recording.h"

#include <QByteArray>
#include <QElapsedTimer>
#include <QString>
#include <QTimer>
#include <QVector>

#include <chrono>

class CameraLine;

/// Plays the camera's side of a recording again.
///
/// The events happen in their order. One of the host happens when as many bytes have come from it
/// as are recorded up to and with that event; what they are does not matter, but is said where it
/// differs. Any other happens when as much time has passed since the event before it as had then.
class ReplayingCamera : public CameraEnd {
    Q_OBJECT

public:
    /// @param recording  as Recording::parse() delivers it
    /// @param line       not owned, must outlive this object
    ReplayingCamera(const QVector<LineEvent> &recording, const ExchangeLog &log, CameraLine &line,
                    QObject *parent = nullptr);

    /// The time counts from now on. This is the recording's own "plugged" at its start.
    void start() override;
    /// What has begun to come counts as come; the events go on.
    void lineLost() override;

private:
    void take(const QByteArray &bytes);
    void play();
    bool isDue(const LineEvent &event);
    void perform(const LineEvent &event);
    void note(const QString &text);

    QVector<LineEvent> m_events; ///< those to come
    RecordedHost m_recordedHost;
    ExchangeLog m_log;
    LineMonitor m_monitor;
    CameraLine &m_line;
    int m_pendingBytes = 0;                      ///< from the host, for events of it to come
    std::chrono::microseconds m_recordedTime{0}; ///< of the event before, in the recording
    QElapsedTimer m_clock;                       ///< started when the event before happened
    QTimer m_timer;
    bool m_isOver = false;
};
