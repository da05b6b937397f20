// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "jsonreport.h"
#include "rows.h"
#include "terminaldisplay.h"
#include "textreport.h"

using State = CameraStatus::State;
using Outcome = CameraResult::Outcome;

Q_DECLARE_METATYPE(CameraResult)
Q_DECLARE_METATYPE(CameraStatus)
Q_DECLARE_METATYPE(CameraStatus::State)

namespace {

CameraStatus uploading(const QString &port, int packets, double rate)
{
    CameraStatus status;
    status.port = port;
    status.state = State::Uploading;
    status.packets = packets;
    status.packetCount = 400;
    status.packetsPerSecond = rate;
    return status;
}

CameraStatus in(State state)
{
    CameraStatus status = uploading("ttyUSB1", 400, 0.0);
    status.state = state;
    return status;
}

CameraResult failed()
{
    CameraResult result;
    result.port = "ttyUSB0";
    result.outcome = Outcome::Failed;
    result.reason = {"silent", "Nothing came.", "Switch it on."};
    return result;
}

QString linesOf(const QByteArray &text)
{
    return QString::fromUtf8(text).replace('\x1b', '^');
}

} // namespace

/// What is said of cameras, on a terminal and elsewhere.
class ControlReportTest : public QObject {
    Q_OBJECT

private slots:
    void drawsACamera_data()
    {
        const CameraStatus camera = uploading("ttyUSB0", 100, 74.8);
        CameraStatus again = uploading("/dev/serial/by-id/usb-A1", 100, 2.0);
        again.attempt = 2;
        CameraStatus longest = again;
        longest.port += '2';
        CameraStatus asking;
        asking.port = "ttyUSB0";
        addRows<int, CameraStatus, QString>(
            {"columns", "camera", "line"},
            {{"one column", 1, camera, "~"},
             {"four columns", 4, camera, "~ u"},
             {"a name of one letter", 40, uploading("a", 100, 74.8),
              "a uploading      25 %   74.8/s   0:05"},
             {"narrow", 40, camera, "ttyUSB0 uploading      25 %   74.8/s   "},
             {"one too few for a bar", 51, camera, "ttyUSB0 uploading      25 %   74.8/s   0:05"},
             {"the smallest bar", 52, camera,
              "ttyUSB0 uploading     [#----]  25 %   74.8/s   0:05"},
             {"60 columns", 60, camera,
              "ttyUSB0 uploading     [###----------]  25 %   74.8/s   0:05"},
             {"100 columns", 100, camera,
              "ttyUSB0 uploading     [############--------------------------------------]  25 %   "
              "74.8/s   0:05"},
             {"101 columns", 101, camera,
              "ttyUSB0 uploading     [##########-------------------------------]  25 %   74.8 "
              "packets/s   0:05 left"},
             {"200 columns", 200, camera,
              "ttyUSB0 uploading     [############--------------------------------------]  25 %   "
              "74.8 packets/s   0:05 left"},
             {"a name too long", 60, again,
              "~/by-id/usb-A1 uploading 2   [#-----]  25 %    2.0/s   2:30"},
             {"a name that just fits", 97, again,
              "/dev/serial/by-id/usb-A1 uploading 2   [########-------------------------]  25 %    "
              "2.0/s   2:30"},
             {"a name longer than any", 200, longest,
              "~ev/serial/by-id/usb-A12 uploading 2   [############"
              "--------------------------------------]  25 %    2.0 packets/s   2:30 left"},
             {"asking", 60, asking, "ttyUSB0 asking        [-------------]   0 %                "},
             {"asking on 101 columns", 101, asking,
              "ttyUSB0 asking        [-----------------------------------------]   0 %             "
              "                "},
             {"rebooting", 60, in(State::Rebooting),
              "ttyUSB1 rebooting     [#############] 100 %                "}});
    }

    void drawsACamera()
    {
        QFETCH(int, columns);
        QFETCH(CameraStatus, camera);
        QFETCH(QString, line);
        const QByteArray text = TerminalDisplay().redraw({camera}, {columns, 24, false});
        const QString drawn = linesOf(text).section("^[K", 0, 0);
        QCOMPARE(drawn, line);
    }

    void alignsTheCameras()
    {
        const QStringList lines = linesOf(TerminalDisplay().redraw({uploading("ttyUSB9", 0, 0.0),
                                                                    uploading("ttyUSB10", 0, 0.0)},
                                                                   {60, 24, false}))
                                      .split('\n');
        QVERIFY2(lines.at(0).startsWith("ttyUSB9  uploading"), qPrintable(lines.at(0)));
        QVERIFY2(lines.at(1).startsWith("ttyUSB10 uploading"), qPrintable(lines.at(1)));
        const QString odd =
            linesOf(TerminalDisplay().redraw({uploading("cam%2", 0, 0.0)}, {60, 24, false}));
        QVERIFY2(odd.startsWith("cam%2 uploading"), qPrintable(odd));
    }

    void neverDrawsALineAsWideAsTheTerminal()
    {
        CameraStatus longName = uploading(QString(300, 'x') + "\x1b[2J", 399, 12345.6);
        longName.attempt = 100;
        for (int columns = 1; columns < 250; ++columns) {
            const QString text = linesOf(
                TerminalDisplay().redraw({longName, uploading("a", 0, 0.0)}, {columns, 24, false}));
            const QStringList lines = text.split('\n');
            for (const QString &line : lines) {
                const QString visible = line.section("^[", 0, 0);
                QVERIFY2(visible.size() < qMax(columns, 2), qPrintable(line));
            }
        }
    }

    void redrawsInPlace()
    {
        TerminalDisplay display;
        const CameraStatus one = uploading("ttyUSB0", 0, 0.0);
        const CameraStatus two = in(State::Rebooting);
        const TerminalDisplay::Screen screen{60, 24, false};
        const QByteArray first = display.redraw({one, two}, screen);
        QCOMPARE(first.count('\n'), 2);
        QVERIFY(!first.contains("A\r"));
        QVERIFY(display.redraw({one, two}, screen).startsWith("\x1b[2A\r"));
        QCOMPARE(display.erase(), QByteArray("\x1b[2A\r\x1b[J"));
        QCOMPARE(display.erase(), QByteArray());
        QVERIFY(!display.redraw({one, two}, screen).startsWith("\x1b"));
    }

    void showsWhatFitsOnTheScreen_data()
    {
        addRows<int, int, QString>({"rows", "lines", "last"},
                                   {{"all", 18, 16, "tty15"},
                                    {"one too few", 17, 15, "and 2 more"},
                                    {"hardly any", 3, 1, "and 16 more"},
                                    {"none", 2, 1, "and 16 more"}});
    }

    void showsWhatFitsOnTheScreen()
    {
        QVector<CameraStatus> cameras;
        for (int i = 0; i < 16; ++i) {
            cameras += uploading(QString("tty%1").arg(i), i, 0.0);
        }
        QFETCH(int, rows);
        QFETCH(QString, last);
        TerminalDisplay display;
        const QString text = linesOf(display.redraw(cameras, {80, rows, false}));
        const int lines = text.count('\n');
        QTEST(lines, "lines");
        const QString line = text.section('\n', -2, -2);
        QVERIFY2(line.startsWith(last), qPrintable(line));
        QCOMPARE(linesOf(display.erase()), QString("^[%1A\r^[J").arg(lines));
    }

    void coloursTheEnd_data()
    {
        addRows<State, bool, QString>({"state", "withColours", "colour"},
                                      {{"done", State::Done, true, "^[32m"},
                                       {"skipped", State::Skipped, true, "^[32m"},
                                       {"failed", State::Failed, true, "^[31m"},
                                       {"pausing", State::Pausing, true, "^[33m"},
                                       {"rebooting", State::Rebooting, true, ""},
                                       {"failed without colours", State::Failed, false, ""}});
    }

    void coloursTheEnd()
    {
        QFETCH(State, state);
        QFETCH(bool, withColours);
        QFETCH(QString, colour);
        const QString text = linesOf(TerminalDisplay().redraw({in(state)}, {80, 24, withColours}));
        QVERIFY2(text.startsWith(colour + "ttyUSB1 "), qPrintable(text));
        QCOMPARE(text.contains("^[0m^[K"), !colour.isEmpty());
    }

    void saysStates_data()
    {
        addRows<State, QString>({"state", "text"},
                                {{"asking", State::Asking, "ttyUSB1: asking\n"},
                                 {"announcing", State::Announcing, "ttyUSB1: announcing\n"},
                                 {"uploading", State::Uploading, "ttyUSB1: uploading\n"},
                                 {"pausing", State::Pausing, "ttyUSB1: pausing\n"},
                                 {"rebooting", State::Rebooting, "ttyUSB1: rebooting\n"},
                                 {"done", State::Done, "ttyUSB1: done\n"},
                                 {"skipped", State::Skipped, "ttyUSB1: skipped\n"},
                                 {"failed", State::Failed, "ttyUSB1: failed\n"}});
    }

    void saysStates()
    {
        QFETCH(State, state);
        QTEST(TextReport::state(in(state)), "text");
        CameraStatus again = in(state);
        again.attempt = 2;
        again.port = "tty\x1b";
        const QString text = TextReport::state(again);
        QVERIFY2(text.startsWith("tty\\x1b: ") && text.endsWith(", attempt 2\n"), qPrintable(text));
    }

    void saysProgress()
    {
        const CameraStatus status = uploading("tty\x1b", 100, 74.84);
        QCOMPARE(TextReport::progress(status),
                 QString("tty\\x1b: 100 of 400 packets, 74.8 a second\n"));
        QCOMPARE(JsonReport::progress(status),
                 QByteArray(R"({"event":"progress","packetCount":400,"packets":100,)"
                            R"("packetsPerSecond":74.8,"port":"tty\u001b","schema":1,)"
                            R"("secondsLeft":5})"
                            "\n"));
        QVERIFY(TextReport::progress(uploading("%2", 100, 74.84)).startsWith("%2: 100 of 400 "));
        QCOMPARE(JsonReport::progress(uploading("p", 0, 0.0)),
                 QByteArray(R"({"event":"progress","packetCount":400,"packets":0,)"
                            R"("packetsPerSecond":0,"port":"p","schema":1})"
                            "\n"));
    }

    void saysOtherEventsInJson()
    {
        ControlCommand command;
        command.word = "apply";
        command.dryRun = true;
        QCOMPARE(JsonReport::start(command, {"ttyUSB0", "ttyUSB1"}),
                 QByteArray(R"({"command":"apply","dryRun":true,"event":"start",)"
                            R"("ports":["ttyUSB0","ttyUSB1"],"schema":1})"
                            "\n"));
        CameraStatus status = in(State::Pausing);
        status.attempt = 2;
        QCOMPARE(JsonReport::state(status),
                 QByteArray(R"({"attempt":2,"event":"state","port":"ttyUSB1","schema":1,)"
                            R"("state":"pausing"})"
                            "\n"));
        QCOMPARE(JsonReport::note("Go on."),
                 QByteArray(R"({"event":"note","schema":1,"text":"Go on."})"
                            "\n"));
        QCOMPARE(JsonReport::end({1, 2, 3, 4}),
                 QByteArray(R"({"done":1,"event":"end","exitCode":4,"failed":3,"schema":1,)"
                            R"("skipped":2})"
                            "\n"));
    }

    void knowsWhatIsLeft()
    {
        QCOMPARE(secondsLeft(uploading("p", 100, 75.0)).value_or(-1), 4);
        QCOMPARE(secondsLeft(uploading("p", 99, 75.0)).value_or(-1), 5);
        QVERIFY(!secondsLeft(uploading("p", 0, 0.0)));
        QVERIFY(!secondsLeft(in(State::Rebooting)));
    }

    void saysResults_data()
    {
        QTest::addColumn<QString>("line");
        QTest::addColumn<CameraResult>("result");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QByteArray>("json");

        const auto add = [](const char *name, const char *line, CameraResult result,
                            const char *text, const QByteArray &json) {
            result.port = "ttyUSB0";
            QTest::newRow(name) << line << result << text << "{" + json + "}\n";
        };
        const QByteArray done = R"("event":"result","outcome":"done","port":"ttyUSB0","schema":1)";

        CameraResult info;
        info.version = "1.0.a.10";
        info.settings = CameraSettings{2, 9, true, 0, 3};
        add("info", "info ttyUSB0", info,
            "ttyUSB0: version 1.0.a.10\n"
            "  auto-tracking   pan\n"
            "  target-missing  preset-7\n"
            "  direction       upside-down\n"
            "  auto-zoom       off\n"
            "  zoom-offset     custom\n",
            done
                + R"(,"settings":{"auto-tracking":"pan","auto-zoom":"off",)"
                  R"("direction":"upside-down","target-missing":"preset-7",)"
                  R"("zoom-offset":"custom"},"version":"1.0.a.10")");
        add("save", "save ttyUSB0 my.json", {}, "ttyUSB0: saved as my.json\n", done);
        add("diff", "diff my.json ttyUSB0", {}, "ttyUSB0: as in my.json\n", done);
        add("apply", "apply my.json ttyUSB0", {}, "ttyUSB0: set\n", done);
        add("set", "set auto-zoom=on ttyUSB0", {}, "ttyUSB0: set\n", done);

        CameraResult zoom;
        zoom.zoom = -112;
        add("zoom", "zoom 2 ttyUSB0", zoom, "ttyUSB0: zoom 2 is -112\n", done + R"(,"zoom":-112)");
        zoom.zoom = 0;
        add("zoom of 0", "zoom 1 ttyUSB0", zoom, "ttyUSB0: zoom 1 is 0\n", done + R"(,"zoom":0)");

        CameraResult upgraded;
        upgraded.version = "1.0.0.6";
        upgraded.versionAfter = upgraded.imageVersion = "1.0.0.7";
        upgraded.attempts = 2;
        upgraded.uploadTime = std::chrono::milliseconds(4240);
        add("upgrade", "upgrade a.img ttyUSB0", upgraded,
            "ttyUSB0: upgraded from version 1.0.0.6 to 1.0.0.7, as the image has it, in 4.2 s\n",
            R"("attempts":2,"event":"result",)"
            R"("imageVersion":"1.0.0.7","outcome":"done","port":"ttyUSB0","schema":1,)"
            R"("uploadMilliseconds":4240,"version":"1.0.0.6","versionAfter":"1.0.0.7")");

        upgraded.attempts = 1;
        upgraded.uploadTime = std::chrono::milliseconds(0);
        add("quick upgrade", "upgrade a.img ttyUSB0", upgraded,
            "ttyUSB0: upgraded from version 1.0.0.6 to 1.0.0.7, as the image has it, in 0.0 s\n",
            R"("attempts":1,"event":"result",)"
            R"("imageVersion":"1.0.0.7","outcome":"done","port":"ttyUSB0","schema":1,)"
            R"("uploadMilliseconds":0,"version":"1.0.0.6","versionAfter":"1.0.0.7")");

        CameraResult skipped;
        skipped.outcome = Outcome::Skipped;
        skipped.reason = {"not-newer", "It runs that.", ""};
        add("skipped", "upgrade a.img ttyUSB0", skipped, "ttyUSB0: skipped. It runs that.\n",
            R"("event":"result","outcome":"skipped","port":"ttyUSB0","reason":"not-newer","remedy":"",)"
            R"("schema":1,"sentence":"It runs that.")");

        CameraResult dry;
        dry.wouldSend = QStringList{"A 01 (a)", "B \x1b (b)"};
        add("dry run", "zoom 1 ttyUSB0", dry,
            "ttyUSB0: would send A 01 (a)\nttyUSB0: would send B \\x1b (b)\n",
            done + R"json(,"wouldSend":["A 01 (a)","B \u001b (b)"])json");

        CameraResult differing;
        differing.outcome = Outcome::Failed;
        differing.reason = {"differs", "It differs.", "Apply it."};
        differing.differences = {{"auto-tracking", "pan", "auto"}, {"auto-zoom", "on", "off"}};
        add("differences", "diff my.json ttyUSB0", differing, nullptr,
            R"("differences":[{"found":"auto","key":"auto-tracking","wanted":"pan"},)"
            R"({"found":"off","key":"auto-zoom","wanted":"on"}],"event":"result",)"
            R"("outcome":"failed",)"
            R"("port":"ttyUSB0","reason":"differs","remedy":"Apply it.","schema":1,)"
            R"("sentence":"It differs.")");
    }

    void saysResults()
    {
        QFETCH(QString, line);
        QFETCH(CameraResult, result);
        QFETCH(QString, text);
        if (!text.isNull()) {
            const auto command = parseControlCommandLine(("corvanectl " + line).split(' '));
            QCOMPARE(TextReport::result(std::get<ControlCommand>(command), result), text);
        }
        QTEST(JsonReport::result(result), "json");
    }

    void saysWhereACameraIs()
    {
        CameraResult result;
        result.version = "1.0.\x1b";
        QCOMPARE(TextReport::probe(result), QString("  a camera of version 1.0.\\x1b\n"));
        QCOMPARE(TextReport::probe(failed()), QString("  no camera: Nothing came.\n"));
    }

    void saysFailures()
    {
        QCOMPARE(TextReport::failure(failed()), QString("ttyUSB0: Nothing came. Switch it on."));
        QCOMPARE(JsonReport::result(failed()),
                 QByteArray(R"({"event":"result","outcome":"failed","port":"ttyUSB0",)"
                            R"("reason":"silent","remedy":"Switch it on.","schema":1,)"
                            R"("sentence":"Nothing came."})"
                            "\n"));
        CameraResult hopeless = failed();
        hopeless.reason.remedy.clear();
        QCOMPARE(TextReport::failure(hopeless), QString("ttyUSB0: Nothing came."));
    }

    void countsAtTheEnd_data()
    {
        addRows<int, int, int, QString>({"done", "skipped", "failed", "text"},
                                        {{"one", 1, 0, 0, ""},
                                         {"one skipped", 0, 1, 0, ""},
                                         {"one of two skipped", 1, 1, 0, "1 done, 1 skipped\n"},
                                         {"one of two failed", 1, 0, 1, "1 done, 1 failed\n"},
                                         {"two", 2, 0, 0, "2 done\n"},
                                         {"all", 1, 2, 3, "1 done, 2 skipped, 3 failed\n"}});
    }

    void countsAtTheEnd()
    {
        QFETCH(int, done);
        QFETCH(int, skipped);
        QFETCH(int, failed);
        QTEST(TextReport::summary({done, skipped, failed, 0}), "text");
    }

    void describesPorts()
    {
        PortDescription port;
        port.name = "ttyUSB0";
        port.path = "/dev/ttyUSB0";
        QCOMPARE(TextReport::port(port), QString("ttyUSB0\n"));
        port.description = "USB Serial";
        port.vendorId = "1209";
        port.productId = "0001";
        port.serialNumber = "A1";
        port.byId = "/dev/serial/by-id/usb-A1";
        QCOMPARE(TextReport::port(port),
                 QString("ttyUSB0: USB Serial, USB 1209:0001, serial number A1, "
                         "/dev/serial/by-id/usb-A1\n"));
        QCOMPARE(JsonReport::port(port),
                 QByteArray(R"({"byId":"/dev/serial/by-id/usb-A1","description":"USB Serial",)"
                            R"("event":"port","path":"/dev/ttyUSB0","port":"ttyUSB0",)"
                            R"("productId":"0001","schema":1,"serialNumber":"A1",)"
                            R"("vendorId":"1209"})"
                            "\n"));
    }
};

QTEST_GUILESS_MAIN(ControlReportTest)

#include "tst_controlreport.moc"
