// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "stressoptions.h"
#include "tally.h"

/// Uploads a firmware of 8 packets under every kind of fault at every frame, in both directions,
/// and under a changed byte and a cut at every byte of every frame. One case, one upload.
/// StressOptions::count cases, all when it is 0; or StressOptions::plan alone.
Tally faultTest(const StressOptions &options);
