// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "tally.h"

#include <functional>

/// Runs sessions that have nothing to do with each other, some at the same time.
/// @param session  is given the session's seed and runs on a thread of its own
/// @param first    the seed of the first session
/// @param count    how many; each has a seed one higher than the one before
/// @param jobs     how many at the same time
/// @return the sum of what they counted
Tally runSessions(quint32 first, int count, int jobs,
                  const std::function<Tally(quint32 seed)> &session);
