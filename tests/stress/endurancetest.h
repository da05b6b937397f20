// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "stressoptions.h"
#include "tally.h"

/// Uploads a firmware again and again in one process, until that many packets
/// (StressOptions::count) are acknowledged, and looks at what memory, threads and descriptors do.
/// An upload that a busy machine cuts short with a time-out counts for what was acknowledged.
Tally enduranceTest(const StressOptions &options);
