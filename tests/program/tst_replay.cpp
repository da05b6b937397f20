// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "rows.h"
#include "step.h"

namespace {

/// Of all fixtures, which therefore run one after the other: a status line names the port.
QString sharedPort()
{
    return QStringLiteral("ttyUSB%1").arg(QCoreApplication::applicationPid());
}

/// A fixture whose line is recorded or replayed.
class RecordedFixture : public PatientFixture {
public:
    RecordedFixture()
    {
        constexpr int kSpeed = 5;
        setPort(sharedPort());
        setSpeed(kSpeed);
    }
    bool disconnectCamera()
    {
        return corvane.click("pushButton_disconnect") && corvane.waitForEnabled("tabWidget", false);
    }
    bool clickZoom(int preset)
    {
        return corvane.click(QStringLiteral("pushButton_custom_zoom_%1").arg(preset));
    }
    /// Sets a zoom preset, and waits until the status channel has shown the camera's value. What
    /// the window shows may be gone again in a moment, when the camera is a replay.
    bool zoom(int preset, int value)
    {
        const QString line = QStringLiteral("UART_CTRL_CMD_SET_CUSTOM_ZOOM Received %1").arg(value);
        const int linesBefore = statusLines().count(line);
        return clickZoom(preset) && corvane.waitUntil("it says " + line, [this, line, linesBefore] {
            return statusLines().count(line) > linesBefore;
        });
    }
    /// Lets the limit of the zoom's wait pass.
    bool waitUntilZoomFails(int preset)
    {
        const QString text = QStringLiteral("Setting custom zoom %1 failed!").arg(preset);
        return corvane.holdLimits(false) && corvane.waitUntil(text, [this, text] {
            return corvane.text("textEdit_device_info").endsWith(text);
        }) && corvane.holdLimits(true);
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
    /// @param isReplay  false: the camera misbehaves only if it is asked to
    std::function<bool(RecordedFixture &fixture, bool isReplay)> operate;
};

bool changeSettings(RecordedFixture &fixture, bool /*isReplay*/)
{
    GuiDriver &corvane = fixture.corvane;
    return fixture.connectCamera() && corvane.choose("comboBox_autotracking", 2)
        && corvane.choose("comboBox_zoomoffset", 3)
        && corvane.waitUntil("both are chosen",
                             [&corvane] {
                                 return corvane.index("comboBox_autotracking") == 2
                                     && corvane.index("comboBox_zoomoffset") == 3;
                             })
        && fixture.apply() && fixture.zoom(2, 272) && fixture.disconnectCamera();
}

bool askASilentCamera(RecordedFixture &fixture, bool isReplay)
{
    return fixture.connectCamera() && (isReplay || fixture.tell("silent on"))
        && fixture.clickZoom(1) && fixture.waitUntilZoomFails(1)
        && (isReplay || fixture.tell("silent off")) && fixture.zoom(2, 25)
        && fixture.disconnectCamera();
}

// The camera takes longer than the program waits.
bool askALateCamera(RecordedFixture &fixture, bool /*isReplay*/)
{
    return fixture.connectCamera() && fixture.corvane.holdLimits(false) && fixture.zoom(1, 100)
        && fixture.disconnectCamera();
}

// The last thing on the line is a request, which a replay waits for before it pulls the adapter out
// by itself: nothing that the camera has sent is then still under way.
bool pullTheAdapterOut(RecordedFixture &fixture, bool isReplay)
{
    const auto isAsked = [&fixture] {
        return fixture.frames().contains("<- FF FF 0C 41 01 06 07 06 09 01 3A 00 01 00 A6");
    };
    return fixture.connectCamera() && fixture.zoom(1, 100)
        && (isReplay || fixture.tell("silent on")) && fixture.clickZoom(2)
        && fixture.corvane.waitUntil("zoom 2 is asked for", isAsked)
        && (isReplay || (fixture.tell("silent off") && fixture.tell("unplug")))
        && fixture.corvane.waitForEnabled("tabWidget", false) && fixture.waitUntilZoomFails(2)
        && (isReplay || fixture.tell("plug"))
        && fixture.corvane.waitUntil("it is plugged again",
                                     [&fixture] { return fixture.notes().contains("plugged"); })
        && fixture.corvane.choose("comboBox_portlist", 0) && fixture.connectCamera()
        && fixture.disconnectCamera();
}

bool seeACorruptedReply(RecordedFixture &fixture, bool /*isReplay*/)
{
    return fixture.connectCamera() && fixture.apply() && fixture.clickZoom(1)
        && fixture.waitUntilZoomFails(1) && fixture.zoom(1, 300) && fixture.clickZoom(2)
        && fixture.corvane.waitForEnabled("tabWidget", false) && fixture.waitUntilZoomFails(2);
}

} // namespace

Q_DECLARE_METATYPE(Session)

class ReplayTest : public QObject {
    Q_OBJECT

private slots:
    void drivesTheProgramThroughTheSameStatusLines_data()
    {
        addRows<Session>(
            {"session"},
            {{"settings and a zoom", {{"--zoom-2", "272"}, changeSettings}},
             {"an unanswered request", {{}, askASilentCamera}},
             {"a late reply", {{"--delay", "3500"}, askALateCamera}},
             {"a pulled adapter", {{}, pullTheAdapterOut}},
             // Recorded from a replay, because the simulated camera would not make such a reply.
             {"a corrupted reply",
              {{"--replay", OPERATOR_SESSION_RECORDING}, seeACorruptedReply}}});
    }

    void drivesTheProgramThroughTheSameStatusLines()
    {
        QFETCH(Session, session);
        const QTemporaryDir directory;
        const QString path = directory.filePath("recording");
        QStringList linesBefore;
        {
            RecordedFixture fixture;
            DO(fixture.start(session.cameraOptions + QStringList{"--record", path}));
            DO(session.operate(fixture, false));
            DO(fixture.end());
            linesBefore = fixture.statusLines();
        }
        // Those of the start alone would always be the same.
        QVERIFY(linesBefore.contains("UART_CTRL_CMD_HELLO Received"));
        RecordedFixture fixture;
        DO(fixture.start({"--replay", path}));
        DO(session.operate(fixture, true));
        DO(fixture.corvane.waitUntil("the recording has ended", [&fixture] {
            return fixture.notes().contains("the recording has ended");
        }));
        DO(fixture.end());
        QCOMPARE(fixture.statusLines(), linesBefore);
        QCOMPARE(fixture.notes().filter("the host sends"), QStringList());
    }

    void showsWhatHappenedAtAnotherDesk()
    {
        RecordedFixture fixture;
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
};

QTEST_GUILESS_MAIN(ReplayTest)
#include "tst_replay.moc"
