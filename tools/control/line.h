// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>

#include <chrono>

/// The line to one camera and an alarm clock: all that a conversation needs from outside.
class Line : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

    /// Queues the bytes. They are lost once the line is.
    virtual void write(const QByteArray &bytes) = 0;
    /// Has alarm() emitted once after @p time, and not at the time set before.
    virtual void setAlarm(std::chrono::milliseconds time) = 0;
    virtual void stopAlarm() = 0;

signals:
    void received(const QByteArray &bytes);
    void alarm();
    /// The line has failed, and nothing comes any more.
    /// @param reason  in the system's own words
    void lost(const QString &reason);
};
