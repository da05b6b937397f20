// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QList>
#include <QPointer>
#include <QString>
#include <QTimer>

#include <functional>

/// The limits of the window's waits for acknowledgements. They do not pass by the clock but when
/// the test says so: no reply comes too late because the machine is busy, and no test sits a limit
/// out. A wait that never ends otherwise ends after kPatience.
///
/// A program that links this has QTimer::start() replaced. One at a time, GUI thread only.
class WaitLimits {
public:
    WaitLimits();
    WaitLimits(const WaitLimits &) = delete;
    WaitLimits &operator=(const WaitLimits &) = delete;
    /// Fails the test if a limit was to pass and did not.
    ~WaitLimits();

    /// What the program has asked for since clear(), in milliseconds.
    QList<int> asked() const { return m_asked; }
    void clear() { m_asked.clear(); }

    /// Whether a wait runs that has begun after @p count others since clear().
    bool runsAfter(int count) const;
    /// What is left of the innermost wait, in milliseconds; 0 when none runs.
    int remaining() const;

    /// Lets one limit pass, that of the innermost wait, as soon as @p condition holds while a wait
    /// runs.
    /// @param description  of the condition, for a test that fails
    void passWhen(const QString &description, const std::function<bool()> &condition);

    /// For QTimer::start() alone. @return how long the timer is to run really
    static int take(QTimer *timer, int limit);

private:
    struct Wait {
        QPointer<QTimer> timer;
        int loopLevel = 0; ///< around the wait's own event loop
    };

    void passIfDue();
    bool runs(const Wait &wait) const;

    QList<int> m_asked;
    QList<Wait> m_waits; ///< the innermost last; some may have ended
    QString m_description;
    std::function<bool()> m_condition;
    QTimer m_poll;
};
