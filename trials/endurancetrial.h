// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "tally.h"
#include "trialoptions.h"

/// Uploads the largest firmware again and again in one process, until that many packets
/// (TrialOptions::count) are acknowledged, and looks at what memory, threads and descriptors do.
Tally enduranceTrial(const TrialOptions &options);
