// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "closing.h"

#include "guidriver.h"

QString closeAndEnd(GuiDriver &program)
{
    constexpr int kLimitMs = 20'000;
    constexpr int kPauseMs = 100;
    for (int waitedMs = 0; waitedMs < kLimitMs; waitedMs += kPauseMs) {
        program.close();
        if (program.waitUntilEnded(kPauseMs)) {
            return program.exitCode() == 0
                ? QString()
                : QStringLiteral("the program has ended with %1").arg(program.exitCode());
        }
        if (program.isBlocked() || program.isListOpen()) {
            program.dismiss();
        }
    }
    return QStringLiteral("closing the window does not end the program");
}
