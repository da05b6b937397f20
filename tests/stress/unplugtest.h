// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "stressoptions.h"
#include "tally.h"

/// Connects, does something and pulls the plug at a random moment of it, StressOptions::count
/// sessions of 25 times. Each time the window has to be disconnected and usable within a second.
Tally unplugTest(const StressOptions &options);
