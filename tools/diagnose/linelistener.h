// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "observation.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QObject>
#include <QSerialPort>
#include <QString>

#include <chrono>

/// Sends one HELLO on an open port and listens to what comes back.
class LineListener : public QObject {
    Q_OBJECT

public:
    /// @param serial  open; not owned, must outlive this object
    explicit LineListener(QSerialPort &serial, QObject *parent = nullptr);

    /// Sends the HELLO and waits, with a running event loop, until the camera has answered and the
    /// line has had a moment more, or @p wait is over, or the line has failed.
    void askAndListen(std::chrono::milliseconds wait);

    /// Ends the wait.
    void stop();

    LineRecord record() const;
    /// Why the line has failed; empty when it has not.
    const QString &failure() const;
    /// Whether another program has taken bytes that this one was to read.
    bool isReadByOthers() const { return m_isReadByOthers; }

private:
    void take();
    void fail(QSerialPort::SerialPortError error);

    QSerialPort &m_serial;
    Observation m_observation;
    QElapsedTimer m_clock;
    QEventLoop m_loop;
    QString m_failure;
    bool m_isSettling = false;
    bool m_isReadByOthers = false;
};
