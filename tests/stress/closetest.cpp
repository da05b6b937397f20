// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "stresstests.h"

#include "dialoghandler.h"
#include "programfixture.h"
#include "randomfirmware.h"
#include "randomscenario.h"
#include "sessions.h"
#include "upload.h"

#include <QRandomGenerator>

namespace {

constexpr int kFirmwareSize = 5000;

Tally closeAtRandom(quint32 seed)
{
    const QString again = QStringLiteral("close --seed %1 --count 1").arg(seed);
    Tally tally;
    QRandomGenerator random(seed);
    ProgramFixture fixture;
    DialogHandler dialogHandler(fixture);
    if (!fixture.start(Upload::simulatorOptions(fixture))
        || !fixture.pack(randomFirmware(kFirmwareSize, random))) {
        tally.fail(fixture.explanation(), again);
        return tally;
    }
    const QString moment = beginRandomScenario(fixture, dialogHandler, random);
    tally.count("windows closed " + moment);
    const QString problem = closeAndEnd(fixture.corvane);
    if (!problem.isEmpty()) {
        tally.fail(QStringLiteral("%1, closed %2: %3").arg(problem, moment, fixture.explanation()),
                   again);
    }
    return tally;
}

} // namespace

Tally closeTest(const StressOptions &options)
{
    return runSessions(options.seed, options.count, options.jobs, &closeAtRandom);
}
