// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "stressoptions.h"
#include "tally.h"

/// Uploads firmwares of 8 to 40 packets under random faults, StressOptions::count sessions of 20
/// uploads in one process each. Each upload has to end in success, with the identical firmware in
/// the camera, or in a failure text with the port closed.
///
/// With StressOptions::isBlind, the faults are those that the protocol cannot always catch; a wrong
/// firmware that is called complete is then counted and is no failure.
Tally uploadTest(const StressOptions &options);
