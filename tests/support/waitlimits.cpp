// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "waitlimits.h"

#include "patience.h"

#include <QThread>

namespace {

WaitLimits *current = nullptr;

} // namespace

// The linker prefers this one to that in Qt's library.
void QTimer::start(int msec)
{
    setInterval(WaitLimits::take(this, msec));
    start();
}

#if QT_VERSION >= QT_VERSION_CHECK(6, 8, 0) // from which on this one no longer calls the other
void QTimer::start(std::chrono::milliseconds limit)
{
    start(static_cast<int>(limit.count()));
}
#endif

WaitLimits::WaitLimits()
{
    current = this;
    m_poll.setInterval(1);
    m_poll.callOnTimeout([this] { passIfDue(); });
}

WaitLimits::~WaitLimits()
{
    current = nullptr;
    if (m_poll.isActive()) {
        const QString text = QStringLiteral("no limit has passed, which was to wait until ");
        QTest::qFail(qPrintable(text + m_description), __FILE__, __LINE__);
    }
}

void WaitLimits::passWhen(const QString &description, const std::function<bool()> &condition)
{
    m_description = description;
    m_condition = condition;
    m_poll.start();
}

bool WaitLimits::runsAfter(int count) const
{
    return m_asked.size() == count + 1 && runs(m_waits.constLast());
}

int WaitLimits::remaining() const
{
    const bool isWaiting = !m_waits.isEmpty() && runs(m_waits.constLast());
    return isWaiting ? m_waits.constLast().timer->remainingTime() : 0;
}

int WaitLimits::take(QTimer *timer, int limit)
{
    // Only a wait for an acknowledgement is that particular about its end.
    const bool isWait = timer->isSingleShot() && timer->timerType() == Qt::PreciseTimer;
    if (current == nullptr || !isWait) {
        return limit;
    }
    current->m_asked << limit;
    current->m_waits << Wait{timer, QThread::currentThread()->loopLevel()};
    return kPatience;
}

void WaitLimits::passIfDue()
{
    while (!m_waits.isEmpty()
           && (m_waits.constLast().timer == nullptr || !m_waits.constLast().timer->isActive())) {
        m_waits.removeLast();
    }
    if (!m_waits.isEmpty() && runs(m_waits.constLast()) && m_condition()) {
        m_poll.stop();
        m_waits.takeLast().timer->setInterval(0);
    }
}

bool WaitLimits::runs(const Wait &wait) const
{
    // Outside of its loop, a timer is left over from a wait that has ended.
    return wait.timer != nullptr && wait.timer->isActive()
        && QThread::currentThread()->loopLevel() > wait.loopLevel;
}
