// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "tally.h"
#include "trialoptions.h"

/// Uploads a firmware again and again in one process, until that many packets (TrialOptions::count)
/// are acknowledged, and looks at what memory, threads and descriptors do. An upload that a busy
/// machine cuts short with a time-out counts for what was acknowledged.
Tally enduranceTrial(const TrialOptions &options);
