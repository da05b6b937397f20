// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "stresstests.h"

#include "dialoghandler.h"
#include "processstatus.h"
#include "programfixture.h"
#include "randomfirmware.h"
#include "randomscenario.h"
#include "sessions.h"
#include "upload.h"

#include <QElapsedTimer>
#include <QRandomGenerator>
#include <QThread>

namespace {

constexpr int kCycles = 25;
constexpr int kDisconnectLimitMs = 1000;
constexpr int kOutputKept = 20'000;
constexpr int kIdleWindowMs = 200;
/// A program in a busy loop would use all of it.
constexpr int kIdleUseLimitMs = kIdleWindowMs / 2;

/// One fixture, on which the plug is pulled again and again.
class PluggingSession {
public:
    explicit PluggingSession(quint32 seed)
        : m_random(seed)
        , m_dialogHandler(m_fixture)
        , m_again(QStringLiteral("unplug --seed %1 --count 1").arg(seed))
    {
    }

    Tally run()
    {
        if (!m_fixture.start(Upload::simulatorOptions(m_fixture))
            || !m_fixture.pack(randomFirmware(kFirmwareSize, m_random))) {
            fail("cannot start");
            return m_tally;
        }
        m_fixture.corvane.limitOutput(kOutputKept);
        const qint64 process = m_fixture.corvane.operatedProcessId();
        // What is loaded when it is needed for the first time is no leak.
        m_dialogHandler.connectCamera();
        m_fixture.corvane.click("pushButton_disconnect");
        m_dialogHandler.outlastWaits(1);
        const ProcessStatus before = ProcessStatus::of(process);
        for (int cycle = 0; cycle < kCycles && !m_tally.hasFailed(); ++cycle) {
            runCycle(process);
        }
        if (!m_dialogHandler.outlastWaits(1)) {
            fail("the window does not come to rest");
        }
        const ProcessStatus after = ProcessStatus::of(process);
        m_tally.highest("descriptors left over", after.descriptors - before.descriptors);
        m_tally.highest("threads left over", after.threads - before.threads);
        if (after.descriptors > before.descriptors || after.threads > before.threads) {
            fail("descriptors or threads are left over");
        }
        return m_tally;
    }

private:
    static constexpr int kFirmwareSize = 20'000;

    void runCycle(qint64 process)
    {
        m_fixture.tell("silent off");
        if (!m_isPlugged && !m_fixture.tell("plug")) {
            fail("cannot plug");
            return;
        }
        const QString moment = beginRandomScenario(m_fixture, m_dialogHandler, m_random);
        if (moment.isEmpty()) {
            fail("cannot connect");
            return;
        }
        m_tally.count("plugs pulled " + moment);
        m_tally.count("plugs pulled");
        pullThePlug(moment);
        lookForABusyLoop(process);
    }

    void pullThePlug(const QString &when)
    {
        QElapsedTimer elapsed;
        elapsed.start();
        if (!m_fixture.tell("unplug")) {
            fail("cannot unplug");
            return;
        }
        m_isPlugged = false;
        if (m_random.bounded(4) == 0) {
            // Back before anybody has looked.
            m_isPlugged = m_fixture.tell("plug");
        }
        if (!m_dialogHandler.waitUntil(
                "the window is disconnected", [this] { return m_dialogHandler.isDisconnected(); },
                kDisconnectLimitMs)) {
            fail("not disconnected in time, unplugged " + when);
        }
        m_tally.highest("ms until disconnected and usable", elapsed.elapsed());
    }

    void lookForABusyLoop(qint64 process)
    {
        const qint64 before = ProcessStatus::of(process).processorTimeMs;
        QThread::msleep(kIdleWindowMs);
        const qint64 used = ProcessStatus::of(process).processorTimeMs - before;
        m_tally.highest("ms of processor in 200 ms after it", used);
        if (used > kIdleUseLimitMs) {
            fail(QStringLiteral("%1 ms of processor used in %2 ms of doing nothing")
                     .arg(used)
                     .arg(kIdleWindowMs));
        }
    }

    void fail(const QString &what)
    {
        m_tally.fail(QStringLiteral("%1: %2").arg(what, m_fixture.explanation()), m_again);
    }

    QRandomGenerator m_random;
    ProgramFixture m_fixture;
    DialogHandler m_dialogHandler;
    QString m_again;
    Tally m_tally;
    bool m_isPlugged = true;
};

} // namespace

Tally unplugTest(const StressOptions &options)
{
    return runSessions(options.seed, options.count, options.jobs,
                       [](quint32 seed) { return PluggingSession(seed).run(); });
}
