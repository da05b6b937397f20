// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>

class ProgramFixture;
class DialogHandler;
class QRandomGenerator;

/// Brings the program to a random moment at which something may happen to it: idle, in the middle
/// of a wait or an upload, with a message box or a list open. From a state in which the camera is
/// plugged in and answers; it may have fallen silent then. The fixture has an image packed.
/// @return which moment it is, such as "during the handshake"; nothing when there is no connecting
QString beginRandomScenario(ProgramFixture &fixture, DialogHandler &dialogHandler,
                            QRandomGenerator &random);
