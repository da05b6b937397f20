// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "stresstests.h"

#include "dialoghandler.h"
#include "programfixture.h"
#include "randomfirmware.h"
#include "sessions.h"
#include "upload.h"

#include <QRandomGenerator>
#include <QThread>

namespace {

constexpr int kEvents = 100;
constexpr int kOutputKept = 20'000;
constexpr int kFirmwareSize = 1500;
constexpr int kEndLimitMs = 20'000;

class MonkeySession {
public:
    MonkeySession(quint32 seed, int speed)
        : m_random(seed)
        , m_dialogHandler(m_fixture)
        , m_again(QStringLiteral("monkey --seed %1 --count 1 --speed %2").arg(seed).arg(speed))
    {
        m_fixture.setSpeed(speed);
    }

    Tally run()
    {
        if (!m_fixture.start(Upload::simulatorOptions(m_fixture))
            || !m_fixture.pack(randomFirmware(kFirmwareSize, m_random))) {
            fail("cannot start");
            return m_tally;
        }
        m_fixture.corvane.limitOutput(kOutputKept);
        for (int event = 0; event < kEvents && !m_tally.hasFailed(); ++event) {
            act();
            m_tally.count("events");
            if (m_fixture.corvane.operatedProcessId() < 0) {
                fail("the program does not answer");
            }
            QThread::msleep(static_cast<unsigned long>(m_random.bounded(kLongestPauseMs)));
        }
        if (!m_tally.hasFailed()) {
            end();
        }
        return m_tally;
    }

private:
    static constexpr int kLongestPauseMs = 40;

    bool chance(int percent) { return m_random.bounded(100) < percent; }

    void act()
    {
        GuiDriver &corvane = m_fixture.corvane;
        if (chance(7)) {
            disturbTheCamera();
        } else if (corvane.isBlocked() || corvane.isListOpen()) {
            // Left open for a while, so that things happen behind it.
            if (chance(40)) {
                corvane.dismiss();
                m_tally.count("boxes and lists dismissed");
            }
        } else {
            operateSomething();
        }
    }

    void disturbTheCamera()
    {
        switch (m_random.bounded(5)) {
        case 0:
            m_fixture.tell("silent on");
            break;
        case 1:
            m_fixture.tell("unplug");
            break;
        default: // more often than the others, or nothing would ever be connected
            m_fixture.tell("plug");
            m_fixture.tell("silent off");
        }
        m_tally.count("events at the camera");
    }

    void operateSomething()
    {
        QStringList widgets;
        const QStringList usable = m_fixture.corvane.usableWidgets();
        for (const QString &name : usable) {
            if (kindOf(name) != Passive) {
                widgets << name;
            }
        }
        if (widgets.isEmpty()) {
            return;
        }
        // Most widgets can only be used while connected.
        const QString connectName = "pushButton_connect";
        const QString name = widgets.contains(connectName) && chance(50)
            ? connectName
            : widgets.at(m_random.bounded(widgets.size()));
        m_tally.count("operated " + name);
        GuiDriver &corvane = m_fixture.corvane;
        // That it does not work, because the widget has just been disabled, is nothing wrong.
        switch (kindOf(name)) {
        case Choice:
            corvane.choose(name, m_random.bounded(m_random.bounded(2) == 0 ? 2 : 10));
            break;
        case Line:
            corvane.type(name, m_fixture.path(chance(80) ? "image" : "missing"));
            break;
        case Button:
            corvane.click(name);
            break;
        case Passive:
            break;
        }
    }

    enum Kind {
        Passive,
        Choice,
        Line,
        Button,
    };

    static Kind kindOf(const QString &name)
    {
        if (name.startsWith("comboBox_") || name == "tabWidget") {
            return Choice;
        }
        if (name.startsWith("lineEdit_")) {
            return Line;
        }
        const bool isButton = name.startsWith("pushButton_") || name.startsWith("toolButton_")
            || name.startsWith("radioButton_");
        return isButton ? Button : Passive;
    }

    void end()
    {
        m_fixture.tell("silent off");
        m_fixture.tell("plug");
        if (chance(50)) {
            m_tally.count("sessions that connect in the end");
            // The list may have been opened while the adapter was gone, and is empty then.
            choosePort();
            if (!m_dialogHandler.connectCamera()) {
                fail("cannot connect in the end");
                return;
            }
        }
        m_tally.count("windows closed");
        const QString problem = closeAndEnd(m_fixture.corvane);
        if (!problem.isEmpty()) {
            fail(problem);
        }
    }

    void choosePort()
    {
        const QString list = "comboBox_portlist";
        m_dialogHandler.waitUntil(
            "the port is chosen",
            [this, list] {
                GuiDriver &corvane = m_fixture.corvane;
                if (corvane.text(list) == m_fixture.portItem() || !corvane.isEnabled(list)) {
                    return true;
                }
                corvane.choose(list, 0);
                return false;
            },
            kEndLimitMs);
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
};

} // namespace

Tally monkeyTest(const StressOptions &options)
{
    return runSessions(options.seed, options.count, options.jobs, [&options](quint32 seed) {
        return MonkeySession(seed, options.speed).run();
    });
}
