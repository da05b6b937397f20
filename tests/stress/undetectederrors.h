// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "stressoptions.h"
#include "tally.h"

/// Puts StressOptions::count errors of each class into frames and counts those that the checksum
/// lets pass: first on firmware packets (141 bytes), then on acknowledgements (13 bytes). Only the
/// bytes behind the length byte are hit; an error before them takes the frame apart.
Tally undetectedErrorsTest(const StressOptions &options);
