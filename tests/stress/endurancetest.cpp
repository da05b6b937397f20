// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "stresstests.h"

#include "firmwarepacket.h"
#include "processstatus.h"
#include "programfixture.h"
#include "randomfirmware.h"
#include "upload.h"
#include "verdict.h"

#include <QRandomGenerator>

#include <algorithm>
#include <cstdio>

namespace {

/// After so many, what is loaded when it is first needed is there, and the allocator, which keeps
/// what was freed of large blocks from the second time on, has the memory that an upload takes.
constexpr int kWarmUpUploads = 10;
/// As much as memory may go up and down and still be flat.
constexpr qint64 kFlatKiB = 1024;
constexpr int kOutputKept = 100'000; // characters; a packet takes about 500

void note(Tally &tally, const ProcessStatus &warmedUp, const ProcessStatus &now)
{
    tally.highest("resident KiB", now.residentKiB);
    tally.highest("resident KiB more than after the warm-up",
                  now.residentKiB - warmedUp.residentKiB);
    tally.highest("threads", now.threads);
    tally.highest("descriptors", now.descriptors);
}

} // namespace

Tally enduranceTest(const StressOptions &options)
{
    const QString again = QStringLiteral("endurance --seed %1 --count %2 --speed %3")
                              .arg(options.seed)
                              .arg(options.count)
                              .arg(options.speed);
    constexpr int kFewestUploads = 16;
    constexpr int kMostPackets = 10'000;
    const int perUpload = std::clamp(options.count / kFewestUploads, 1, kMostPackets);
    QRandomGenerator random(options.seed);
    const QByteArray firmware = randomFirmware(perUpload * FirmwarePacket::kSize, random);

    Tally tally;
    ProgramFixture fixture;
    fixture.setSpeed(options.speed);
    if (!fixture.start(Upload::simulatorOptions(fixture))) {
        tally.fail(fixture.explanation(), again);
        return tally;
    }
    fixture.corvane.limitOutput(kOutputKept);
    const qint64 process = fixture.corvane.operatedProcessId();
    Upload upload(fixture);
    ProcessStatus warmedUp;
    int packets = 0;
    int uploads = 0;
    while (packets < options.count && !tally.hasFailed()) {
        const UploadOutcome outcome =
            upload.run(firmware, "none", 0, Upload::limitMs(perUpload, options.speed));
        judge(tally, outcome, "no faults", false, again);
        const int acknowledged =
            fixture.corvane.value("progressBar_updating") / FirmwarePacket::kSize;
        packets += acknowledged;
        tally.count("packets acknowledged", acknowledged);
        const ProcessStatus now = ProcessStatus::of(process);
        if (++uploads <= kWarmUpUploads) {
            warmedUp = now;
        }
        std::fprintf(stderr, "%d packets: %lld KiB resident, %d threads, %d descriptors\n", packets,
                     static_cast<long long>(now.residentKiB), now.threads, now.descriptors);
        note(tally, warmedUp, now);
        if (now.threads > warmedUp.threads || now.descriptors > warmedUp.descriptors
            || now.residentKiB > warmedUp.residentKiB + kFlatKiB) {
            tally.fail("memory, threads or descriptors have become more", again);
        }
    }
    return tally;
}
