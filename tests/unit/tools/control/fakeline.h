// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "line.h"

#include <optional>

/// A line with the test as its camera, and a clock that the test turns on.
class FakeLine : public Line {
public:
    void write(const QByteArray &bytes) override { m_written += bytes; }
    void setAlarm(std::chrono::milliseconds time) override { m_due = m_now + time; }
    void stopAlarm() override { m_due.reset(); }

    /// What has been written since the last call, in hexadecimal.
    QByteArray written()
    {
        QByteArray text = m_written.toHex(' ').toUpper();
        m_written.clear();
        return text;
    }
    /// Has bytes come from the camera.
    void send(const QByteArray &hexadecimal) { emit received(QByteArray::fromHex(hexadecimal)); }
    /// Turns the clock on, in milliseconds.
    void pass(int time)
    {
        const std::chrono::milliseconds until = m_now + std::chrono::milliseconds(time);
        while (m_due && *m_due <= until) {
            m_now = *m_due;
            m_due.reset();
            emit alarm();
        }
        m_now = until;
    }
    bool hasAlarm() const { return m_due.has_value(); }

private:
    QByteArray m_written;
    std::chrono::milliseconds m_now{0};
    std::optional<std::chrono::milliseconds> m_due;
};
