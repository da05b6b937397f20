// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "stresstests.h"

#include "faultclasses.h"
#include "firmwarepacket.h"
#include "programfixture.h"
#include "randomfirmware.h"
#include "sessions.h"
#include "upload.h"
#include "verdict.h"

#include <QRandomGenerator>

#include <cmath>

namespace {

constexpr int kUploads = 20;
constexpr int kFewestPackets = 8;
constexpr int kMostPackets = 40;
constexpr int kOutputKept = 20'000;

/// Makes up plans of one to three faults.
class PlanMaker {
public:
    PlanMaker(QRandomGenerator &random, bool isBlind)
        : m_random(random)
        , m_isBlind(isBlind)
    {
    }

    /// @param packets  of the upload that the plan is for
    QString make(int packets)
    {
        QStringList faults;
        if (m_isBlind) {
            faults << faultOf(FaultClasses::blind(), packets);
        }
        const int count = 1 + m_random.bounded(3);
        while (faults.size() < count) {
            const bool changesBytes = m_random.bounded(2) == 0;
            // Two errors in one request may cancel each other out, so there is one at most.
            const QStringList &kinds =
                changesBytes && faults.isEmpty() ? FaultClasses::changing() : FaultClasses::other();
            faults << faultOf(kinds, packets);
        }
        return faults.join(QLatin1Char(','));
    }

private:
    QString faultOf(const QStringList &kinds, int packets)
    {
        return kinds.at(m_random.bounded(kinds.size())) + QLatin1Char(':') + place(packets);
    }

    QString place(int packets)
    {
        if (m_random.bounded(2) == 0) {
            return QString::number(1 + m_random.bounded(packets + 1));
        }
        // From 0.1 to 10 %, the small ones as often as the large ones.
        const double percent = 0.1 * std::pow(100.0, m_random.generateDouble());
        return QString::number(percent, 'f', 2) + QLatin1Char('%');
    }

    QRandomGenerator &m_random;
    bool m_isBlind;
};

QString commandFor(quint32 seed, const StressOptions &options)
{
    return QStringLiteral("uploads --seed %1 --count 1 --speed %2%3")
        .arg(seed)
        .arg(options.speed)
        .arg(options.isBlind ? " --blind" : QString());
}

Tally runSession(quint32 seed, const StressOptions &options)
{
    Tally tally;
    QRandomGenerator random(seed);
    ProgramFixture fixture;
    fixture.setSpeed(options.speed);
    if (!fixture.start(Upload::simulatorOptions(fixture))) {
        tally.fail(fixture.explanation(), commandFor(seed, options));
        return tally;
    }
    fixture.corvane.limitOutput(kOutputKept);
    PlanMaker plans(random, options.isBlind);
    Upload upload(fixture);
    for (int i = 0; i < kUploads && !tally.hasFailed(); ++i) {
        const int packets = kFewestPackets + random.bounded(kMostPackets - kFewestPackets + 1);
        // The last packet may be full or not.
        const int size = packets * FirmwarePacket::kSize - random.bounded(FirmwarePacket::kSize);
        const QByteArray firmware = randomFirmware(size, random);
        const QString plan = plans.make(packets);
        const UploadOutcome outcome =
            upload.run(firmware, plan, random.generate(), Upload::limitMs(packets, options.speed));
        judge(tally, outcome, plan, options.isBlind, commandFor(seed, options));
    }
    return tally;
}

} // namespace

Tally uploadTest(const StressOptions &options)
{
    return runSessions(options.seed, options.count, options.jobs,
                       [&options](quint32 seed) { return runSession(seed, options); });
}
