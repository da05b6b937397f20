// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>
#include <QVector>

/// Measures for how long the event loop of its thread is away from its events, by how much a timer
/// of one millisecond comes late.
class EventLoopWatch : public QObject {
    Q_OBJECT

public:
    explicit EventLoopWatch(QObject *parent = nullptr);

    /// Measures from now on; what has been measured before is forgotten.
    void start();
    /// Ends measuring. @return the gaps in milliseconds, ascending
    QVector<double> stop();

private:
    void turn();

    QTimer m_timer;
    QElapsedTimer m_sinceTurn;
    QVector<double> m_gaps;
};
