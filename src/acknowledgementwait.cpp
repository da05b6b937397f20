// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "acknowledgementwait.h"

AcknowledgementWait::AcknowledgementWait(const QObject *sender, const char *signal)
{
    // A coarse timer may be 5 % early or late.
    m_timer.setTimerType(Qt::PreciseTimer);
    m_timer.setSingleShot(true);
    connect(sender, signal, SLOT(acknowledge()));
    connect(&m_timer, SIGNAL(timeout()), SLOT(timeOut()));
}

AcknowledgementWait::Outcome AcknowledgementWait::waitFor(std::chrono::milliseconds limit)
{
    m_timer.start(limit);
    // The end of the program ends every running loop with 0, and a loop that is started later
    // returns -1 at once. If an inner wait keeps this loop from returning, the last exit code
    // counts.
    switch (m_loop.exec()) {
    case Acknowledged:
        return Acknowledged;
    case TimedOut:
        return TimedOut;
    default:
        return ProgramEnding;
    }
}

void AcknowledgementWait::acknowledge()
{
    // A late acknowledgement is ignored, also while an inner wait keeps this one from returning.
    if (m_timer.isActive()) {
        m_loop.exit(Acknowledged);
    }
}

void AcknowledgementWait::timeOut()
{
    m_loop.exit(TimedOut);
}
