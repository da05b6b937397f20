// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QVector>

#include <chrono>
#include <deque>

/// Says which bytes of the camera have crossed the line by a given moment.
///
/// A pseudo-terminal hands over any number of bytes at once. This makes up for the time they would
/// have taken, at 10 bits a byte (8N1): bytes seen at one moment count as still coming in for that
/// time, a frame sent in reply starts when the line has brought them all, and its bytes are due one
/// by one. The two directions do not hinder each other.
///
/// A pure function of the times it is given, which count from any fixed moment and never run
/// backwards.
class LinePacer {
public:
    using Time = std::chrono::nanoseconds;

    struct Due {
        QByteArray bytes;              ///< to be written now
        QVector<QByteArray> completed; ///< the frames whose last byte is among them
    };

    /// @param baud  bits a second; 0 is a line that takes no time
    explicit LinePacer(int baud);

    /// @p count bytes from the host were seen.
    void received(int count, Time now);
    /// Sends @p frame after everything that is on its way.
    /// @param delay  how long the camera thinks after the last byte seen has come in
    void send(const QByteArray &frame, Time now, Time delay = Time::zero());
    /// Takes the bytes that are due and were not taken yet.
    Due takeDue(Time now);
    /// When to call takeDue() again, unless idle: once the frame under way is complete, and before
    /// that each time @p pause has passed.
    Time nextDue(Time now, Time pause) const;
    /// Whether nothing is on its way to the host.
    bool isIdle() const;
    /// Forgets what is on its way in both directions.
    void clear();

private:
    struct Transmission {
        QByteArray frame;
        Time start;
        int taken;
    };

    Time duration(int count) const;
    int dueBytes(const Transmission &transmission, Time now) const;

    int m_baud;
    Time m_receptionEnd = Time::min();
    Time m_transmissionEnd = Time::min();
    std::deque<Transmission> m_transmissions;
};
