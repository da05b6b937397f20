// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "verdict.h"

#include "upload.h"

void judge(Tally &tally, const UploadOutcome &outcome, const QString &plan, bool isBlind,
           const QString &again)
{
    tally.count("uploads");
    tally.highest("attempts to connect", outcome.connections);
    switch (outcome.ending) {
    case UploadOutcome::Failed:
        tally.count("uploads failed, " + outcome.message);
        break;
    case UploadOutcome::Complete:
        if (outcome.isIdentical) {
            tally.count("uploads complete, identical firmware");
        } else if (isBlind) {
            tally.count("uploads called complete with a wrong firmware");
            tally.remark("called complete, wrong firmware: " + plan);
        } else {
            tally.fail("called complete with a wrong firmware under " + plan, again);
        }
        break;
    case UploadOutcome::Improper:
        tally.fail(QStringLiteral("%1 under %2").arg(outcome.problem, plan), again);
        break;
    }
}
