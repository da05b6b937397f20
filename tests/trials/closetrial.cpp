// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "closetrial.h"

#include "closing.h"
#include "desk.h"
#include "moments.h"
#include "patientoperator.h"
#include "randomfirmware.h"
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
    Desk desk;
    PatientOperator patientOperator(desk);
    Moments moments(desk, patientOperator, random);
    if (!desk.start(Upload::simulatorOptions(desk))
        || !desk.pack(randomFirmware(kFirmwareSize, random))) {
        tally.fail(desk.explanation(), again);
        return tally;
    }
    const QString moment = moments.begin();
    tally.count(QStringLiteral("windows closed ") + moment);
    const QString problem = closeAndEnd(desk.corvane);
    if (!problem.isEmpty()) {
        tally.fail(QStringLiteral("%1, closed %2: %3").arg(problem, moment, desk.explanation()),
                   again);
    }
    return tally;
}

} // namespace

Tally closeTrial(const TrialOptions &options)
{
    return runSessions(options.seed, options.count, options.jobs, &closeAtRandom);
}
