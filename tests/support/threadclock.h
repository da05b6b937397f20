// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QList>

#include <functional>
#include <thread>

/// A clock of the test's own for what threads sleep. A pause takes a millisecond, however long it
/// was meant to be, and is written down.
///
/// A program that links this has QThread::msleep() and QThread::wait() replaced. One at a time. Its
/// lock is one that the thread sanitizer understands.
class ThreadClock {
public:
    ThreadClock();
    ThreadClock(const ThreadClock &) = delete;
    ThreadClock &operator=(const ThreadClock &) = delete;
    ~ThreadClock();

    /// What all threads have asked for since clear(), in milliseconds.
    QList<unsigned long> pauses() const;
    /// Likewise this thread alone.
    QList<unsigned long> ownPauses() const;
    void clear();

    /// From now on, a pause of another thread lasts until release(), or until the end of a thread
    /// is waited for.
    void holdOthers();
    static void release();
    static bool isHolding();

    std::function<void()> atOwnPause;

    /// For the function that is replaced.
    static void pause(unsigned long milliseconds);

private:
    struct Pause {
        bool isOwn;
        unsigned long milliseconds;
    };

    const std::thread::id m_owner = std::this_thread::get_id();
    QList<Pause> m_pauses;
    bool m_holdsOthers = false;
};
