// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "tally.h"

#include <QString>

/// What the command line asks of a stress test.
struct StressOptions {
    quint32 seed = 1;     ///< of the first session; the next one has the next number
    int count = 0;        ///< how many sessions, cases or packets, see the test
    int every = 1;        ///< only every so many cases, that many apart
    int jobs = 1;         ///< how many sessions run at the same time
    int speed = 1;        ///< how many times as fast as the clock the program runs
    QString plan;         ///< the faults to try instead of the test's own; or empty
    bool isBlind = false; ///< faults that the protocol cannot always catch instead of the others
};

/// Uploads a firmware of 8 packets under every kind of fault at every frame, in both directions,
/// and under a changed byte and a cut at every byte of every frame. One case, one upload.
/// StressOptions::count cases, all when it is 0; or StressOptions::plan alone.
Tally faultTest(const StressOptions &options);

/// Uploads firmwares of 8 to 40 packets under random faults, StressOptions::count sessions of 20
/// uploads in one process each. Each upload has to end in success, with the identical firmware in
/// the camera, or in a failure text with the port closed.
///
/// With StressOptions::isBlind, the faults are those that the protocol cannot always catch; a wrong
/// firmware that is called complete is then counted and is no failure.
Tally uploadTest(const StressOptions &options);

/// Uploads a firmware again and again in one process, until that many packets
/// (StressOptions::count) are acknowledged, and looks at what memory, threads and descriptors do.
/// An upload that a busy machine cuts short with a time-out counts for what was acknowledged.
Tally enduranceTest(const StressOptions &options);

/// Connects, does something and pulls the plug at a random moment of it, StressOptions::count
/// sessions of 25 times. Each time the window has to be disconnected and usable within a second.
Tally unplugTest(const StressOptions &options);

/// Closes the window at a random moment, StressOptions::count times with a program of its own each.
/// The program has to end properly: at once, when its boxes are answered, or, since nothing stops
/// an upgrade that has begun, when the upgrade has ended and the window is closed again.
Tally closeTest(const StressOptions &options);

/// Clicks at random on everything that can be clicked on, also during waits, while the camera falls
/// silent and the plug is pulled at random; StressOptions::count sessions of 100 events. In the end
/// it has to be possible to connect, and closing the window has to end the program.
Tally monkeyTest(const StressOptions &options);

/// Puts StressOptions::count errors of each class into frames and counts those that the checksum
/// lets pass: first on firmware packets (141 bytes), then on acknowledgements (13 bytes). Only the
/// bytes after the length byte are hit; an error before them takes the frame apart.
Tally undetectedErrorsTest(const StressOptions &options);
