// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "tally.h"
#include "trialoptions.h"

/// Puts TrialOptions::count errors of each class into frames and counts those that the checksum
/// lets pass: first on firmware packets (141 bytes), then on acknowledgements (13 bytes). Only the
/// bytes behind the length byte are hit; an error before them takes the frame apart.
Tally undetectedErrorsTrial(const TrialOptions &options);
