// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "step.h"

#include <QFile>
#include <QRegularExpression>
#include <QtTest>

namespace {

/// Of all fixtures, which therefore run one after the other: a status line names the port.
QString sharedPort()
{
    return QStringLiteral("ttyUSB%1").arg(QCoreApplication::applicationPid());
}

/// A fixture whose line is recorded or replayed.
class RecordedDesk : public ProgramFixture {
public:
    RecordedDesk()
    {
        constexpr int kSpeed = 5;
        setPort(sharedPort());
        setSpeed(kSpeed);
    }
    bool disconnectCamera()
    {
        return corvane.click("pushButton_disconnect") && corvane.waitForEnabled("tabWidget", false);
    }
    bool apply()
    {
        return corvane.click("pushButton_apply")
            && corvane.waitForDialog("Information: Apply Success.") && corvane.answerDialog()
            && corvane.waitForDialog({});
    }
    /// Sets a zoom preset.
    /// @param outcome  what the window says then, below the version
    bool zoom(int preset, const QString &outcome)
    {
        return corvane.click(QStringLiteral("pushButton_custom_zoom_%1").arg(preset))
            && waitForInfo(outcome);
    }
    bool waitForInfo(const QString &lastLine)
    {
        return corvane.waitUntil(QStringLiteral("\"%1\" is shown").arg(lastLine), [=] {
            return corvane.text("textEdit_device_info").section('\n', 1) == lastLine;
        });
    }
    bool end() { return corvane.close() && corvane.waitUntilEnded(); }

    /// What the program has said on its standard error so far, without the quotation marks.
    QStringList statusLines()
    {
        QStringList lines = corvane.output().split('\n').filter(QRegularExpression("^\""));
        return lines.replaceInStrings("\"", QString());
    }
    /// What the simulator has noted so far, without frames and times.
    QStringList notes()
    {
        static const QRegularExpression kNote(R"(^\d\d:\d\d:\d\d\.\d\d\d  -- )");
        QStringList lines = corvane.output().split('\n').filter(kNote);
        return lines.replaceInStrings(kNote, QString());
    }
};

/// One operator's session.
struct Session {
    QStringList cameraOptions; ///< of the simulator, when it is recorded
    /// What the operator does, and sees.
    /// @param isReplay  false: the camera misbehaves only if it is told to
    std::function<bool(RecordedDesk &fixture, bool isReplay)> operate;
};

bool changeSettings(RecordedDesk &fixture, bool /*isReplay*/)
{
    GuiDriver &corvane = fixture.corvane;
    return fixture.connectCamera() && corvane.choose("comboBox_autotracking", 2)
        && corvane.choose("comboBox_zoomoffset", 3)
        && corvane.waitUntil("both are chosen",
                             [&corvane] {
                                 return corvane.index("comboBox_autotracking") == 2
                                     && corvane.index("comboBox_zoomoffset") == 3;
                             })
        && fixture.apply() && fixture.zoom(2, "Setting custom zoom: 272")
        && fixture.disconnectCamera();
}

bool askASilentCamera(RecordedDesk &fixture, bool isReplay)
{
    return fixture.connectCamera() && (isReplay || fixture.tell("silent on"))
        && fixture.zoom(1, "Setting custom zoom 1 failed!")
        && (isReplay || fixture.tell("silent off")) && fixture.zoom(2, "Setting custom zoom: 25")
        && fixture.disconnectCamera();
}

// The camera takes longer than the program waits.
bool askALateCamera(RecordedDesk &fixture, bool /*isReplay*/)
{
    return fixture.connectCamera() && fixture.zoom(1, "Setting custom zoom 1 failed!")
        && fixture.waitForInfo("Setting custom zoom: 100") && fixture.disconnectCamera();
}

// Hands take their time, before the pull and before the plug. In a replay, where these come by
// themselves, it is what the program has to show what came before.
bool letTimePass(bool isReplay)
{
    if (!isReplay) {
        QTest::qSleep(1500);
    }
    return true;
}

bool pullTheAdapterOut(RecordedDesk &fixture, bool isReplay)
{
    return fixture.connectCamera() && fixture.zoom(1, "Setting custom zoom: 100")
        && letTimePass(isReplay) && (isReplay || fixture.tell("unplug"))
        && fixture.corvane.waitForEnabled("tabWidget", false) && letTimePass(isReplay)
        && (isReplay || fixture.tell("plug"))
        && fixture.corvane.waitUntil("it is plugged again",
                                     [&fixture] { return fixture.notes().contains("plugged"); })
        && fixture.corvane.choose("comboBox_portlist", 0) && fixture.connectCamera()
        && fixture.disconnectCamera();
}

bool seeACorruptedReply(RecordedDesk &fixture, bool /*isReplay*/)
{
    return fixture.connectCamera() && fixture.apply()
        && fixture.zoom(1, "Setting custom zoom 1 failed!")
        && fixture.zoom(1, "Setting custom zoom: 300")
        && fixture.corvane.waitForEnabled("tabWidget", false);
}

} // namespace

Q_DECLARE_METATYPE(Session)

class ReplayTest : public QObject {
    Q_OBJECT

private slots:
    void drivesTheProgramThroughTheSameStatusLines_data();
    void drivesTheProgramThroughTheSameStatusLines();
    void showsWhatHappenedAtAnotherDesk();
};

void ReplayTest::drivesTheProgramThroughTheSameStatusLines_data()
{
    QTest::addColumn<Session>("session");

    QTest::newRow("settings and a zoom") << Session{{"--zoom-2", "272"}, changeSettings};
    QTest::newRow("an unanswered request") << Session{{}, askASilentCamera};
    QTest::newRow("a late reply") << Session{{"--delay", "3500"}, askALateCamera};
    QTest::newRow("a pulled adapter") << Session{{}, pullTheAdapterOut};
    // Recorded from a replay, because the simulated camera would not make such a reply.
    QTest::newRow("a corrupted reply")
        << Session{{"--replay", OPERATOR_SESSION_RECORDING}, seeACorruptedReply};
}

void ReplayTest::drivesTheProgramThroughTheSameStatusLines()
{
    QFETCH(Session, session);
    const QTemporaryDir directory;
    const QString path = directory.filePath("recording");
    QStringList linesBefore;
    {
        RecordedDesk fixture;
        DO(fixture.start(session.cameraOptions + QStringList{"--record", path}));
        DO(session.operate(fixture, false));
        DO(fixture.end());
        linesBefore = fixture.statusLines();
    }
    // Those of the start alone would always be the same.
    QVERIFY(linesBefore.contains("UART_CTRL_CMD_HELLO Received"));
    RecordedDesk fixture;
    DO(fixture.start({"--replay", path}));
    DO(session.operate(fixture, true));
    DO(fixture.corvane.waitUntil("the recording has ended", [&fixture] {
        return fixture.notes().contains("the recording has ended");
    }));
    DO(fixture.end());
    QCOMPARE(fixture.statusLines(), linesBefore);
    QCOMPARE(fixture.notes().filter("the host sends"), QStringList());
}

void ReplayTest::showsWhatHappenedAtAnotherDesk()
{
    RecordedDesk fixture;
    DO(fixture.start({"--replay", OPERATOR_SESSION_RECORDING}));
    DO(seeACorruptedReply(fixture, true));
    DO(fixture.end());
    QCOMPARE(fixture.notes(), (QStringList{"unplugged", "the recording has ended"}));
    QCOMPARE(fixture.statusLines(),
             (QStringList{"startParser",
                          "Disconnected",
                          "Connected to " + sharedPort(),
                          "data_step_head_ready: length = 23",
                          "Analyze Data: length = 23",
                          "AnalyzeReceiveData 25",
                          "UART_COMM_TYPE_ACK Received",
                          "UART_CTRL_CMD_HELLO Received",
                          "ClientVersion: 1.2.3.a",
                          "2.1.1.1.0.1.2",
                          "data_step_head_ready: length = 23",
                          "Analyze Data: length = 23",
                          "AnalyzeReceiveData 25",
                          "UART_COMM_TYPE_ACK Received",
                          "UART_CTRL_CMD_CUSTOM_SETTING Received",
                          "ClientVersion: 1.2.3.a",
                          "2.1.1.1.0.1.2",
                          "data_step_head_ready: length = 12",
                          "Checksum Error 278",
                          "data_step_head_ready: length = 12",
                          "Analyze Data: length = 12",
                          "AnalyzeReceiveData 14",
                          "UART_COMM_TYPE_ACK Received",
                          "UART_CTRL_CMD_SET_CUSTOM_ZOOM Received 300",
                          "Disconnected",
                          "Disconnected"}));
}

QTEST_GUILESS_MAIN(ReplayTest)
#include "tst_replay.moc"
