// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "stresstests.h"

#include "faultclasses.h"
#include "firmwarepacket.h"
#include "programfixture.h"
#include "randomfirmware.h"
#include "sessions.h"
#include "uartframe.h"
#include "upload.h"
#include "verdict.h"

#include <QRandomGenerator>

#include <algorithm>

namespace {

constexpr int kPackets = 8;
constexpr int kFrames = 1 + kPackets; // the size announcement first
constexpr int kFirmwareSize = kPackets * FirmwarePacket::kSize - 28;
constexpr int kOutputKept = 20'000;
/// Cases that share one process, so that most of the time goes into uploads.
constexpr int kCasesPerSession = 40;

/// Bytes of the nth frame, the camera's acknowledgements being the same all along.
int frameSize(bool isRequest, int number)
{
    constexpr int kAnnouncementPayload = 4;
    if (!isRequest) {
        return UARTFrame::kSizeWithoutPayload;
    }
    if (number == 1) {
        return UARTFrame::kSizeWithoutPayload + kAnnouncementPayload;
    }
    return UARTFrame::kSizeWithoutPayload + FirmwarePacket::at(number - 2, kFirmwareSize).length;
}

struct Case {
    QString plan;
    bool isBlind; ///< the protocol cannot always catch it
};

QVector<Case> allCases()
{
    QVector<Case> cases;
    const QStringList faults = FaultClasses::all();
    for (int number = 1; number <= kFrames; ++number) {
        for (const QString &fault : faults) {
            cases.append({QStringLiteral("%1:%2").arg(fault).arg(number),
                          FaultClasses::blind().contains(fault)});
        }
        for (const bool isRequest : {true, false}) {
            for (int byte = 0; byte < frameSize(isRequest, number); ++byte) {
                for (const QString &kind :
                     {QStringLiteral("corrupt"), QStringLiteral("truncate")}) {
                    cases.append({QStringLiteral("%1@%2:%3.%4")
                                      .arg(kind, isRequest ? "request" : "reply")
                                      .arg(number)
                                      .arg(byte),
                                  false});
                }
            }
        }
    }
    return cases;
}

QVector<Case> chosenCases(const StressOptions &options)
{
    if (!options.plan.isEmpty()) {
        return {{options.plan, options.isBlind}};
    }
    const QVector<Case> all = allCases();
    QVector<Case> chosen;
    const int size = all.size();
    const int end = options.count == 0 ? size : std::min(options.count, size);
    for (int i = 0; i < all.size() && chosen.size() < end; i += options.every) {
        chosen.append(all.at(i));
    }
    return chosen;
}

Tally runSession(const QVector<Case> &cases, const StressOptions &options)
{
    const QString again = "faults --seed %1 --speed %2 --plan %3";
    Tally tally;
    ProgramFixture fixture;
    fixture.setSpeed(options.speed);
    if (!fixture.start(Upload::simulatorOptions(fixture))) {
        tally.fail(fixture.explanation(),
                   again.arg(options.seed).arg(options.speed).arg(cases[0].plan));
        return tally;
    }
    fixture.corvane.limitOutput(kOutputKept);
    Upload upload(fixture);
    QRandomGenerator random(options.seed);
    const QByteArray firmware = randomFirmware(kFirmwareSize, random);
    for (const Case &one : cases) {
        const UploadOutcome outcome =
            upload.run(firmware, one.plan, options.seed, Upload::limitMs(kPackets, options.speed));
        judge(tally, outcome, one.plan, one.isBlind,
              again.arg(options.seed).arg(options.speed).arg(one.plan));
        if (outcome.ending == UploadOutcome::Improper) {
            break;
        }
    }
    return tally;
}

} // namespace

Tally faultTest(const StressOptions &options)
{
    const QVector<Case> cases = chosenCases(options);
    const int sessions = (cases.size() + kCasesPerSession - 1) / kCasesPerSession;
    return runSessions(0, sessions, options.jobs, [&cases, &options](quint32 session) {
        return runSession(cases.mid(static_cast<int>(session) * kCasesPerSession, kCasesPerSession),
                          options);
    });
}
