// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "eventloopwatch.h"

#include <algorithm>

namespace {

constexpr int kTurnMs = 1;

} // namespace

EventLoopWatch::EventLoopWatch(QObject *parent)
    : QObject(parent)
{
    m_timer.setTimerType(Qt::PreciseTimer);
    m_timer.setInterval(kTurnMs);
    connect(&m_timer, &QTimer::timeout, this, &EventLoopWatch::turn);
}

void EventLoopWatch::start()
{
    m_gaps.clear();
    m_sinceTurn.start();
    m_timer.start();
}

QVector<double> EventLoopWatch::stop()
{
    m_timer.stop();
    std::sort(m_gaps.begin(), m_gaps.end());
    return m_gaps;
}

void EventLoopWatch::turn()
{
    constexpr double kNsPerMs = 1e6;
    const double sinceTurnMs = static_cast<double>(m_sinceTurn.nsecsElapsed()) / kNsPerMs;
    m_sinceTurn.start();
    m_gaps.append(std::max(0.0, sinceTurnMs - kTurnMs));
}
