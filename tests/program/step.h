// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "programfixture.h"

#include <QtTest>

/// A step of the fixture "fixture". One that does not work ends the test with the GUI driver's own
/// words, behind all that was printed.
#define DO(step)                                                                                   \
    do {                                                                                           \
        if (!(step)) {                                                                             \
            QFAIL(qPrintable(fixture.explanation()));                                              \
        }                                                                                          \
    } while (false)
