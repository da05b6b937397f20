// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "stressoptions.h"
#include "tally.h"

/// Clicks at random on everything that can be clicked on, also during waits, while the camera falls
/// silent and the plug is pulled at random; StressOptions::count sessions of 100 events. In the end
/// it has to be possible to connect, and closing the window has to end the program.
Tally monkeyTest(const StressOptions &options);
