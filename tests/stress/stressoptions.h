// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>

/// What the command line asks of a stress test.
struct StressOptions {
    quint32 seed = 1;     ///< of the first session; the next one has the next number
    int count = 0;        ///< how many sessions, cases or packets, see the test
    int every = 1;        ///< only every so-manieth case
    int jobs = 1;         ///< how many sessions run at the same time
    int speed = 1;        ///< how many times as fast as the clock the program runs
    QString plan;         ///< the faults to try instead of the test's own; or empty
    bool isBlind = false; ///< faults that the protocol cannot always catch instead of the others
};
