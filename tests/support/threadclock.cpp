// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "threadclock.h"

#include <QDeadlineTimer>
#include <QThread>

#include <atomic>
#include <chrono>

#include <dlfcn.h>

namespace {

std::atomic<ThreadClock *> current{nullptr};

} // namespace

// The linker prefers these to those in Qt's library.
void QThread::msleep(unsigned long milliseconds)
{
    ThreadClock::pause(milliseconds);
}

bool QThread::wait(QDeadlineTimer deadline)
{
    ThreadClock::release();
    using Wait = bool (*)(QThread *, QDeadlineTimer);
    static const auto original =
        reinterpret_cast<Wait>(dlsym(RTLD_NEXT, "_ZN7QThread4waitE14QDeadlineTimer"));
    return original(this, deadline);
}

ThreadClock::ThreadClock()
{
    current = this;
}

ThreadClock::~ThreadClock()
{
    current = nullptr;
}

QList<unsigned long> ThreadClock::pauses() const
{
    const std::lock_guard lock(m_mutex);
    QList<unsigned long> pauses;
    for (const Pause &pause : m_pauses) {
        pauses << pause.milliseconds;
    }
    return pauses;
}

QList<unsigned long> ThreadClock::ownPauses() const
{
    const std::lock_guard lock(m_mutex);
    QList<unsigned long> pauses;
    for (const Pause &pause : m_pauses) {
        if (pause.isOwn) {
            pauses << pause.milliseconds;
        }
    }
    return pauses;
}

void ThreadClock::clear()
{
    const std::lock_guard lock(m_mutex);
    m_pauses.clear();
}

void ThreadClock::holdOthers()
{
    const std::lock_guard lock(m_mutex);
    m_holdsOthers = true;
}

bool ThreadClock::isHolding() const
{
    const std::lock_guard lock(m_mutex);
    return m_held > 0;
}

void ThreadClock::pause(unsigned long milliseconds)
{
    if (ThreadClock *const clock = current) {
        const bool isOwn = std::this_thread::get_id() == clock->m_owner;
        {
            std::unique_lock lock(clock->m_mutex);
            clock->m_pauses << Pause{isOwn, milliseconds};
            if (!isOwn && clock->m_holdsOthers) {
                ++clock->m_held;
                clock->m_released.wait(lock, [clock] { return !clock->m_holdsOthers; });
                --clock->m_held;
            }
        }
        if (isOwn && clock->atOwnPause) {
            clock->atOwnPause();
        }
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

void ThreadClock::release()
{
    if (ThreadClock *const clock = current) {
        const std::lock_guard lock(clock->m_mutex);
        clock->m_holdsOthers = false;
        clock->m_released.notify_all();
    }
}
