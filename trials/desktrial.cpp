// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "desktrial.h"

#include "desk.h"
#include "patientoperator.h"
#include "processstatus.h"
#include "randomfirmware.h"
#include "sessions.h"
#include "upload.h"

#include <QElapsedTimer>
#include <QRandomGenerator>
#include <QThread>

#include <array>

namespace {

constexpr int kCycles = 25;
constexpr int kDisconnectLimitMs = 1000;
constexpr int kOutputKept = 20'000;
constexpr int kIdleWindowMs = 200;
/// A program in a busy loop would use all of it.
constexpr int kIdleUseLimitMs = kIdleWindowMs / 2;

/// One desk, at which the plug is pulled again and again.
class PluggingSession {
public:
    explicit PluggingSession(quint32 seed)
        : m_random(seed)
        , m_operator(m_desk)
        , m_again(QStringLiteral("desk --seed %1 --count 1").arg(seed))
    {
    }

    Tally run()
    {
        if (!m_desk.start(Upload::simulatorOptions(m_desk))
            || !m_desk.pack(randomFirmware(kFirmwareSize, m_random))) {
            fail(QStringLiteral("cannot start"));
            return m_tally;
        }
        m_desk.corvane.limitOutput(kOutputKept);
        const qint64 process = m_desk.corvane.operatedProcessId();
        // What is loaded when it is needed for the first time is no leak.
        connectCamera();
        click("pushButton_disconnect");
        m_operator.outlastWaits(1);
        const ProcessStatus before = ProcessStatus::of(process);
        for (int cycle = 0; cycle < kCycles && !m_tally.hasFailed(); ++cycle) {
            runCycle(process);
        }
        if (!m_operator.outlastWaits(1)) {
            fail(QStringLiteral("the window does not come to rest"));
        }
        const ProcessStatus after = ProcessStatus::of(process);
        m_tally.highest(QStringLiteral("descriptors left over"),
                        after.descriptors - before.descriptors);
        m_tally.highest(QStringLiteral("threads left over"), after.threads - before.threads);
        if (after.descriptors != before.descriptors || after.threads != before.threads) {
            fail(QStringLiteral("descriptors or threads are left over"));
        }
        return m_tally;
    }

private:
    /// Something to be at when the plug is pulled; begins it and returns.
    struct Moment {
        const char *name;
        void (PluggingSession::*begin)();
    };

    static constexpr int kFirmwareSize = 20'000;
    static constexpr int kSettingsPage = 0;

    void runCycle(qint64 process)
    {
        m_desk.tell("silent off");
        if (!m_isPlugged && !m_desk.tell("plug")) {
            fail(QStringLiteral("cannot plug"));
            return;
        }
        static constexpr std::array<Moment, 10> kMoments{{
            {"while idle", &PluggingSession::idle},
            {"during the handshake", &PluggingSession::connectInVain},
            {"while settings are applied in vain", &PluggingSession::applyInVain},
            {"while settings are applied", &PluggingSession::apply},
            {"while a zoom is set in vain", &PluggingSession::setZoomInVain},
            {"during an upload", &PluggingSession::upload},
            {"while a message box is open", &PluggingSession::openSuccessBox},
            {"while the about box is open", &PluggingSession::openAboutBox},
            {"while a list is open", &PluggingSession::openList},
            {"right behind connecting", &PluggingSession::connectOnly},
        }};
        const Moment &moment = kMoments.at(
            static_cast<std::size_t>(m_random.bounded(static_cast<int>(kMoments.size()))));
        m_tally.count(QStringLiteral("plugs pulled ") + QLatin1String(moment.name));
        m_tally.count(QStringLiteral("plugs pulled"));
        (this->*moment.begin)();
        if (m_tally.hasFailed()) {
            return;
        }
        pause(300);
        pullThePlug(QLatin1String(moment.name));
        lookForABusyLoop(process);
    }

    void pullThePlug(const QString &when)
    {
        QElapsedTimer elapsed;
        elapsed.start();
        if (!m_desk.tell("unplug")) {
            fail(QStringLiteral("cannot unplug"));
            return;
        }
        m_isPlugged = false;
        if (m_random.bounded(4) == 0) {
            // Back before anybody has looked.
            m_isPlugged = m_desk.tell("plug");
        }
        if (!m_operator.waitUntil(
                QStringLiteral("the window is disconnected"),
                [this] { return m_operator.isDisconnected(); }, kDisconnectLimitMs)) {
            fail(QStringLiteral("not disconnected in time, unplugged ") + when);
        }
        m_tally.highest(QStringLiteral("ms until disconnected and usable"), elapsed.elapsed());
    }

    void lookForABusyLoop(qint64 process)
    {
        const qint64 before = ProcessStatus::of(process).processorTimeMs;
        QThread::msleep(kIdleWindowMs);
        const qint64 used = ProcessStatus::of(process).processorTimeMs - before;
        m_tally.highest(QStringLiteral("ms of processor in 200 ms behind it"), used);
        if (used > kIdleUseLimitMs) {
            fail(QStringLiteral("%1 ms of processor used in %2 ms of doing nothing")
                     .arg(used)
                     .arg(kIdleWindowMs));
        }
    }

    void idle()
    {
        connectCamera();
        pause(200);
    }
    void connectOnly() { connectCamera(); }
    void connectInVain()
    {
        m_desk.tell("silent on");
        click("pushButton_connect");
    }
    void apply()
    {
        connectCamera();
        clickOn(kSettingsPage, "pushButton_apply");
    }
    void applyInVain()
    {
        connectCamera();
        m_desk.tell("silent on");
        clickOn(kSettingsPage, "pushButton_apply");
    }
    void setZoomInVain()
    {
        connectCamera();
        m_desk.tell("silent on");
        clickOn(kSettingsPage, "pushButton_custom_zoom_2");
    }
    void upload()
    {
        connectCamera();
        // What is left of an earlier wait may disconnect in between; then there is none.
        if (m_desk.startUpgrade()) {
            m_tally.count(QStringLiteral("uploads cut off"));
        }
        pause(1000);
    }
    void openSuccessBox()
    {
        apply();
        m_desk.corvane.waitForDialog(QStringLiteral("Information: Apply Success."), 1000);
    }
    void openAboutBox()
    {
        connectCamera();
        click("toolButton_about");
    }
    void openList()
    {
        connectCamera();
        clickOn(kSettingsPage, "comboBox_zoomoffset");
    }

    void clickOn(int page, const char *widget)
    {
        m_desk.corvane.choose(QStringLiteral("tabWidget"), page);
        click(widget);
    }
    void click(const char *widget) { m_desk.corvane.click(QLatin1String(widget)); }
    void connectCamera()
    {
        if (!m_tally.hasFailed() && !m_operator.connectCamera()) {
            fail(QStringLiteral("cannot connect"));
        }
    }
    void pause(int longestMs)
    {
        QThread::msleep(static_cast<unsigned long>(m_random.bounded(longestMs)));
    }
    void fail(const QString &what)
    {
        m_tally.fail(QStringLiteral("%1: %2").arg(what, m_desk.explanation()), m_again);
    }

    QRandomGenerator m_random;
    Desk m_desk;
    PatientOperator m_operator;
    QString m_again;
    Tally m_tally;
    bool m_isPlugged = true;
};

} // namespace

Tally deskTrial(const TrialOptions &options)
{
    return runSessions(options.seed, options.count, options.jobs,
                       [](quint32 seed) { return PluggingSession(seed).run(); });
}
