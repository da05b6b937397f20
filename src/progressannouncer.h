// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "announcer.h"

#include <QDeadlineTimer>
#include <QProgressBar>

#include <chrono>

/// Lets a screen reader speak from time to time how far a progress bar is: Qt does not report the
/// value of a progress bar over AT-SPI. GUI thread only.
class ProgressAnnouncer : public Announcer {
    Q_OBJECT

public:
    /// @param bar  becomes the parent
    /// @param pause  at least as long after the start, and between two announcements
    explicit ProgressAnnouncer(QProgressBar *bar,
                               std::chrono::milliseconds pause = std::chrono::seconds(10));

private slots:
    void announceValue(int value);

private:
    const QProgressBar *const m_bar;
    const std::chrono::milliseconds m_pause;
    int m_value; ///< the last
    QDeadlineTimer m_next;
};
