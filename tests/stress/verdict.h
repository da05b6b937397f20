// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "tally.h"

struct UploadOutcome;

/// Counts how an upload went, and as a failure when it is none of the two ways in which one may
/// end.
/// @param isBlind  whether its faults are such that the protocol cannot always catch them; a wrong
///                 firmware that is called complete is then counted only
/// @param again    the arguments of script/stress that show it again
void judge(Tally &tally, const UploadOutcome &outcome, const QString &plan, bool isBlind,
           const QString &again);
