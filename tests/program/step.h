// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "desk.h"

#include <QtTest>

/// A step at the desk "desk". One that does not work ends the test with the pilot's own words,
/// behind all that was printed.
#define DO(step)                                                                                   \
    do {                                                                                           \
        if (!(step)) {                                                                             \
            QFAIL(qPrintable(desk.explanation()));                                                 \
        }                                                                                          \
    } while (false)
