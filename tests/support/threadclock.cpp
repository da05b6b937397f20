// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "threadclock.h"

#include <QDeadlineTimer>
#include <QThread>

#include <chrono>
#include <condition_variable>
#include <mutex>

#include <dlfcn.h>

namespace {

/// Outlives each clock, since other threads may be in a pause when a clock goes.
struct Shared {
    std::mutex mutex; ///< guards the rest, and the members of the clock
    std::condition_variable released;
    ThreadClock *clock = nullptr;
    int held = 0;
};

Shared &shared()
{
    static Shared result;
    return result;
}

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
    const std::lock_guard lock(shared().mutex);
    shared().clock = this;
}

ThreadClock::~ThreadClock()
{
    const std::lock_guard lock(shared().mutex);
    shared().clock = nullptr;
    shared().released.notify_all();
}

QList<unsigned long> ThreadClock::pauses() const
{
    const std::lock_guard lock(shared().mutex);
    QList<unsigned long> pauses;
    for (const Pause &pause : m_pauses) {
        pauses << pause.milliseconds;
    }
    return pauses;
}

QList<unsigned long> ThreadClock::ownPauses() const
{
    const std::lock_guard lock(shared().mutex);
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
    const std::lock_guard lock(shared().mutex);
    m_pauses.clear();
}

void ThreadClock::holdOthers()
{
    const std::lock_guard lock(shared().mutex);
    m_holdsOthers = true;
}

bool ThreadClock::isHolding()
{
    const std::lock_guard lock(shared().mutex);
    return shared().held > 0;
}

void ThreadClock::pause(unsigned long milliseconds)
{
    std::function<void()> atPause;
    {
        std::unique_lock lock(shared().mutex);
        if (ThreadClock *const clock = shared().clock) {
            const bool isOwn = std::this_thread::get_id() == clock->m_owner;
            clock->m_pauses << Pause{isOwn, milliseconds};
            if (isOwn) {
                atPause = clock->atOwnPause;
            } else {
                ++shared().held;
                shared().released.wait(lock, [] {
                    return shared().clock == nullptr || !shared().clock->m_holdsOthers;
                });
                --shared().held;
            }
        }
    }
    if (atPause) {
        atPause();
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

void ThreadClock::release()
{
    const std::lock_guard lock(shared().mutex);
    if (shared().clock != nullptr) {
        shared().clock->m_holdsOthers = false;
    }
    shared().released.notify_all();
}
