// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "patience.h"
#include "programfixture.h"

/// No reply comes too late here, however busy the machine is: limits are held unless a test says
/// otherwise.
class PatientFixture : public ProgramFixture {
public:
    bool start(const QStringList &simulatorOptions = {})
    {
        return ProgramFixture::start(simulatorOptions) && corvane.holdLimits(true);
    }
};

/// A step of the fixture "fixture". One that does not work ends the test with the GUI driver's own
/// words, after all that was printed.
#define DO(step)                                                                                   \
    do {                                                                                           \
        if (!(step)) {                                                                             \
            QFAIL(qPrintable(fixture.explanation()));                                              \
        }                                                                                          \
    } while (false)
