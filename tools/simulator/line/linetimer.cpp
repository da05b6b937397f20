// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "linetimer.h"

#include <algorithm>

#include <sys/timerfd.h>
#include <unistd.h>

namespace {

void set(int descriptor, std::chrono::nanoseconds time)
{
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(time);
    itimerspec setting{};
    setting.it_value = {seconds.count(), (time - seconds).count()};
    ::timerfd_settime(descriptor, 0, &setting, nullptr);
}

} // namespace

LineTimer::LineTimer(QObject *parent)
    : QObject(parent)
    , m_descriptor(::timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK))
    , m_notifier(m_descriptor, QSocketNotifier::Read)
{
    connect(&m_notifier, &QSocketNotifier::activated, this, [this] {
        stop();
        emit timeout();
    });
}

LineTimer::~LineTimer()
{
    ::close(m_descriptor);
}

void LineTimer::start(std::chrono::nanoseconds time)
{
    // 0 would stop it, and faketime(1) divides what is asked for.
    set(m_descriptor, std::max<std::chrono::nanoseconds>(time, std::chrono::microseconds(1)));
}

void LineTimer::stop()
{
    set(m_descriptor, std::chrono::nanoseconds::zero());
}
