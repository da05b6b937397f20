// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "rows.h"
#include "simulatoroptions.h"

#include <QtTest>

namespace {

std::variant<SimulatorOptions, Information, UsageError> parse(const QStringList &arguments)
{
    return parseCommandLine(QStringList("corvane-simulator") + arguments);
}

} // namespace

class SimulatorOptionsTest : public QObject {
    Q_OBJECT

private slots:
    void hasDefaults()
    {
        const auto options = std::get<SimulatorOptions>(parse({"--pty"}));
        QVERIFY(options.program.isEmpty());
        QCOMPARE(options.behaviour.baud, 115200);
        QCOMPARE(options.behaviour.delay.count(), 0);
        QCOMPARE(options.behaviour.rebootTime.count(), 3000);
        QVERIFY(!options.behaviour.silent);
        QCOMPARE(options.portName, QString("ttyUSB0"));
        QVERIFY(options.controlPath.isEmpty());
        QVERIFY(options.firmwarePath.isEmpty());
        QVERIFY(options.faults.isEmpty());
        QCOMPARE(options.seed, 0U);
        QVERIFY(options.recordingPath.isEmpty());
        QVERIFY(options.replayPath.isEmpty());
        QVERIFY(options.throughPort.isEmpty());
        QVERIFY(!options.withHex);
        QVERIFY(!options.quiet);
    }

    void readsEveryOption()
    {
        const auto options = std::get<SimulatorOptions>(
            parse({"--port",     "ttyACM7",         "--baud",    "0",        "--camera-version",
                   "1.2.10.255", "--settings",      "2,9,1,0,3", "--zoom-1", "-32768",
                   "--zoom-2",   "32767",           "--silent",  "--delay",  "1500",
                   "--hex",      "--quiet",         "--control", "/tmp/x",   "--reboot-time",
                   "250",        "--save-firmware", "/tmp/y",    "--faults", "drop@reply:2",
                   "--seed",     "4294967295",      "--record",  "/tmp/z",   "--",
                   "corvane"}));
        QCOMPARE(options.program, QString("corvane"));
        QCOMPARE(options.portName, QString("ttyACM7"));
        QCOMPARE(options.behaviour.baud, 0);
        QCOMPARE(options.behaviour.delay.count(), 1500);
        QCOMPARE(options.behaviour.rebootTime.count(), 250);
        QVERIFY(options.behaviour.silent);
        QVERIFY((options.camera.version == std::array<unsigned char, 4>{1, 2, 10, 255}));
        QCOMPARE(options.camera.settings.autoTracking, 2);
        QCOMPARE(options.camera.settings.targetMissing, 9);
        QCOMPARE(options.camera.settings.upsideDown, true);
        QCOMPARE(options.camera.settings.autoZoom, 0);
        QCOMPARE(options.camera.settings.zoomOffset, 3);
        QVERIFY((options.camera.lensZoom == std::array<qint16, 2>{-32768, 32767}));
        QVERIFY(options.withHex);
        QVERIFY(options.quiet);
        QCOMPARE(options.controlPath, QString("/tmp/x"));
        QCOMPARE(options.firmwarePath, QString("/tmp/y"));
        QCOMPARE(options.faults.toString(), QString("drop@reply:2"));
        QCOMPARE(options.seed, 4294967295U);
        QCOMPARE(options.recordingPath, QString("/tmp/z"));
    }

    void readsTheOptionsOfAReplay()
    {
        const auto options = std::get<SimulatorOptions>(
            parse({"--replay", "/tmp/x", "--record", "/tmp/y", "--port", "ttyACM7", "--control",
                   "/tmp/z", "--hex", "--quiet", "corvane"}));
        QCOMPARE(options.replayPath, QString("/tmp/x"));
        QCOMPARE(options.recordingPath, QString("/tmp/y"));
        QCOMPARE(options.controlPath, QString("/tmp/z"));
        QVERIFY(options.withHex);
        QVERIFY(options.quiet);
        QCOMPARE(std::get<SimulatorOptions>(parse({"--replay", "/tmp/x", "--pty"})).program,
                 QString());
    }

    void readsTheOptionsOfARealPort()
    {
        auto options = std::get<SimulatorOptions>(parse({"--through", "/dev/ttyUSB0", "corvane"}));
        QCOMPARE(options.throughPort, QString("/dev/ttyUSB0"));
        QCOMPARE(options.portName, QString("ttyTHROUGH0"));
        options = std::get<SimulatorOptions>(
            parse({"--through", "ttyUSB0", "--port", "ttyUSB1", "--record", "/tmp/x", "corvane"}));
        QCOMPARE(options.throughPort, QString("ttyUSB0"));
        QCOMPARE(options.portName, QString("ttyUSB1"));
        QCOMPARE(options.recordingPath, QString("/tmp/x"));
    }

    void leavesTheProgramItsArguments_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QStringList>("programArguments");
        QTest::addColumn<bool>("withHex");

        QTest::newRow("none") << QStringList{"--", "sh"} << QStringList() << false;
        QTest::newRow("behind --") << QStringList{"--hex", "--", "sh", "--help", "-x", "--", "y"}
                                   << QStringList{"--help", "-x", "--", "y"} << true;
        QTest::newRow("without --")
            << QStringList{"sh", "--hex", "-x"} << QStringList{"--hex", "-x"} << false;
    }

    void leavesTheProgramItsArguments()
    {
        QFETCH(QStringList, arguments);
        const auto options = std::get<SimulatorOptions>(parse(arguments));
        QCOMPARE(options.program, QString("sh"));
        QTEST(options.arguments, "programArguments");
        QTEST(options.withHex, "withHex");
    }

    void informs_data()
    {
        addRows<QStringList, QString>(
            {"arguments", "part"},
            {{"help", {"--help"}, "Exit codes:"},
             {"short help", {"-h"}, "--control <PATH>"},
             {"help on firmware", {"--help"}, "--save-firmware <FILE>"},
             {"help on recordings", {"--help"}, "--record <FILE>"},
             {"help on replays", {"--help"}, "--replay <FILE>"},
             {"help on reboots", {"--help"}, "--reboot-time <MS>"},
             {"help on the option for faults", {"--help"}, "--faults <PLAN>"},
             {"help on the command for faults", {"--help"}, "faults PLAN [SEED]"},
             {"list of faults", {"--faults", "help"}, "  wrong-sum  "},
             {"help beside a program", {"--help", "sh"}, "Exit codes:"},
             {"version", {"--version"}, "tst_simulatoroptions 1.2.3\n"}});
    }

    void informs()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, part);
        QCoreApplication::setApplicationVersion("1.2.3");
        const QString text = std::get<Information>(parse(arguments)).text;
        QVERIFY2(text.contains(part), qPrintable(text));
    }

    void refusesBadUsage_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("reason");

        QTest::newRow("nothing") << QStringList() << "either --pty or a program is needed";
        QTest::newRow("both lines")
            << QStringList{"--pty", "sh"} << "--pty and a program exclude each other";
        QTest::newRow("unknown option")
            << QStringList{"--pty", "--nope"} << "Unknown option 'nope'.";
        QTest::newRow("missing value")
            << QStringList{"--pty", "--baud"} << "Missing value after '--baud'.";
        QTest::newRow("baud is no number") << QStringList{"--pty", "--baud", "fast"}
                                           << "--baud is a number from 0 to 4000000, not 'fast'";
        QTest::newRow("negative baud") << QStringList{"--pty", "--baud", "-1"}
                                       << "--baud is a number from 0 to 4000000, not '-1'";
        QTest::newRow("too many baud") << QStringList{"--pty", "--baud", "4000001"}
                                       << "--baud is a number from 0 to 4000000, not '4000001'";
        QTest::newRow("negative delay") << QStringList{"--pty", "--delay=-1"}
                                        << "--delay is a number from 0 to 3600000, not '-1'";
        QTest::newRow("negative reboot time")
            << QStringList{"--pty", "--reboot-time=-1"}
            << "--reboot-time is a number from 0 to 3600000, not '-1'";
        QTest::newRow("reboot time too long")
            << QStringList{"--pty", "--reboot-time", "3600001"}
            << "--reboot-time is a number from 0 to 3600000, not '3600001'";
        QTest::newRow("zoom value too large") << QStringList{"--pty", "--zoom-1", "32768"}
                                              << "--zoom-1 is a number from -32768 to 32767, not "
                                                 "'32768'";
        QTest::newRow("zoom value too small") << QStringList{"--pty", "--zoom-2", "-32769"}
                                              << "--zoom-2 is a number from -32768 to 32767, not "
                                                 "'-32769'";
        for (const char *version :
             {"1.2.3", "1.2.3.4.5", "1.2.3.256", "1.2.3.-1", "1.2.3.", "a.b.c.d"}) {
            QTest::addRow("version %s", version)
                << QStringList{"--pty", "--camera-version", version}
                << QString("--camera-version is four numbers from 0 to 255 with dots, not '%1'")
                       .arg(version);
        }
        QTest::newRow("too few settings")
            << QStringList{"--pty", "--settings", "1,1,0,1"}
            << "--settings is five numbers with commas, not '1,1,0,1'";
        QTest::newRow("a setting out of range") << QStringList{"--pty", "--settings", "1,10,0,1,1"}
                                                << "--settings: target missing is 10, not 0 to 9";
        QTest::newRow("port with a slash") << QStringList{"--port", "../x", "sh"}
                                           << "--port is a name of letters and digits, not '../x'";
        QTest::newRow("empty port")
            << QStringList{"--port=", "sh"} << "--port is a name of letters and digits, not ''";
        QTest::newRow("bad faults")
            << QStringList{"--pty", "--faults", "dorp@reply:1"}
            << "--faults: fault 'dorp@reply:1': there is no kind 'dorp', see "
               "--faults help";
        QTest::newRow("empty faults")
            << QStringList{"--pty", "--faults="}
            << "--faults: fault '': expected KIND[=VALUE]@DIRECTION:PLACE";
        QTest::newRow("negative seed") << QStringList{"--pty", "--seed=-1"}
                                       << "--seed is a number from 0 to 4294967295, not '-1'";
        QTest::newRow("seed too high")
            << QStringList{"--pty", "--seed", "4294967296"}
            << "--seed is a number from 0 to 4294967295, not '4294967296'";
        QTest::newRow("empty control path")
            << QStringList{"--control=", "sh"} << "--control is a path, not ''";
        QTest::newRow("empty firmware path")
            << QStringList{"--save-firmware=", "sh"} << "--save-firmware is a path, not ''";
        QTest::newRow("empty recording path")
            << QStringList{"--record=", "sh"} << "--record is a path, not ''";
        QTest::newRow("empty replay path")
            << QStringList{"--replay=", "sh"} << "--replay is a path, not ''";
        QTest::newRow("empty real port")
            << QStringList{"--through=", "sh"} << "--through is a port, not ''";
        QTest::newRow("a replay on a real port")
            << QStringList{"--replay", "x", "--through", "y", "sh"}
            << "--replay and --through exclude each other";
        QTest::newRow("a port named like the real one")
            << QStringList{"--through", "/dev/ttyUSB1", "--port", "ttyUSB1", "sh"}
            << "--port is another name than that of --through, not 'ttyUSB1'";
        for (const char *option :
             {"--baud=9600", "--camera-version=1.2.3.4", "--settings=1,1,0,1,1", "--zoom-1=1",
              "--zoom-2=1", "--silent", "--delay=1", "--reboot-time=1", "--save-firmware=/tmp/x"}) {
            QTest::addRow("a replay with %s", option)
                << QStringList{"--pty", "--replay", "/tmp/y", option}
                << QString(
                       "--replay and %1 exclude each other: what the camera sent, and when, is in "
                       "the recording")
                       .arg(QString(option).section('=', 0, 0));
            QTest::addRow("a real port with %s", option)
                << QStringList{"--pty", "--through", "ttyUSB0", option}
                << QString("--through and %1 exclude each other: the real camera has its own way")
                       .arg(QString(option).section('=', 0, 0));
        }
    }

    void refusesBadUsage()
    {
        QFETCH(QStringList, arguments);
        const auto result = parse(arguments);
        QVERIFY(std::holds_alternative<UsageError>(result));
        QTEST(std::get<UsageError>(result).reason, "reason");
    }
};

QTEST_GUILESS_MAIN(SimulatorOptionsTest)
#include "tst_simulatoroptions.moc"
