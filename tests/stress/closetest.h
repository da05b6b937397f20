// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "stressoptions.h"
#include "tally.h"

/// Closes the window at a random moment, StressOptions::count times with a program of its own each.
/// The program has to end properly: at once, when its boxes are answered, or, since nothing stops
/// an upgrade that has begun, when the upgrade has ended and the window is closed again.
Tally closeTest(const StressOptions &options);
