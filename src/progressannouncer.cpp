// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "progressannouncer.h"

ProgressAnnouncer::ProgressAnnouncer(QProgressBar *bar, std::chrono::milliseconds pause)
    : Announcer(bar)
    , m_bar(bar)
    , m_pause(pause)
    , m_value(bar->value())
{
    connect(bar, SIGNAL(valueChanged(int)), SLOT(announceValue(int)));
}

void ProgressAnnouncer::announceValue(int value)
{
    const bool isFirst = m_value <= m_bar->minimum();
    m_value = value;
    if (isFirst) {
        m_next.setRemainingTime(m_pause);
    } else if (value > m_bar->minimum() && value < m_bar->maximum() && m_next.hasExpired()) {
        const int percent = static_cast<int>(100.0 * value / m_bar->maximum());
        announce(QStringLiteral("%1: %2 %").arg(m_bar->accessibleName()).arg(percent));
        m_next.setRemainingTime(m_pause);
    }
}
