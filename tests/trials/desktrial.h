// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "tally.h"
#include "trialoptions.h"

/// Connects, does something and pulls the plug at a random moment of it, TrialOptions::count
/// sessions of 25 times. Each time the window has to be disconnected and usable within a second.
Tally deskTrial(const TrialOptions &options);
