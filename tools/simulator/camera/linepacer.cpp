// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "linepacer.h"

#include <algorithm>

namespace {

/// Nanoseconds in which one baud brings a byte: start bit, eight data bits, stop bit.
constexpr qint64 kByteAtOneBaud = 10'000'000'000;

} // namespace

LinePacer::LinePacer(int baud)
    : m_baud(baud)
{
}

void LinePacer::received(int count, Time now)
{
    m_receptionEnd = std::max(m_receptionEnd, now) + duration(count);
}

void LinePacer::send(const QByteArray &frame, Time now, Time delay)
{
    const Time start = std::max(std::max(m_receptionEnd, now) + delay, m_transmissionEnd);
    m_transmissions.push_back({frame, start, 0});
    m_transmissionEnd = start + duration(frame.size());
}

LinePacer::Due LinePacer::takeDue(Time now)
{
    Due due;
    while (!m_transmissions.empty()) {
        Transmission &transmission = m_transmissions.front();
        const int count = dueBytes(transmission, now);
        due.bytes += transmission.frame.mid(transmission.taken, count - transmission.taken);
        transmission.taken = count;
        if (count < transmission.frame.size()) {
            break;
        }
        due.completed.append(transmission.frame);
        m_transmissions.pop_front();
    }
    return due;
}

LinePacer::Time LinePacer::nextDue(Time now, Time pause) const
{
    const Transmission &transmission = m_transmissions.front();
    return std::min(std::max(transmission.start, now) + pause,
                    transmission.start + duration(transmission.frame.size()));
}

bool LinePacer::isIdle() const
{
    return m_transmissions.empty();
}

void LinePacer::clear()
{
    *this = LinePacer(m_baud);
}

LinePacer::Time LinePacer::duration(int count) const
{
    // Rounded up, so that no byte is early.
    return Time(m_baud == 0 ? 0 : (count * kByteAtOneBaud + m_baud - 1) / m_baud);
}

int LinePacer::dueBytes(const Transmission &transmission, Time now) const
{
    const Time elapsed = now - transmission.start;
    if (elapsed < Time::zero()) {
        return transmission.taken;
    }
    if (elapsed >= duration(transmission.frame.size())) {
        return transmission.frame.size();
    }
    return static_cast<int>(elapsed.count() * m_baud / kByteAtOneBaud);
}
