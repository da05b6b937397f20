// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "rows.h"
#include "simulatoroptions.h"

static std::variant<SimulatorOptions, Information, UsageError> parse(const QStringList &arguments)
{
    return parseCommandLine(QStringList("corvane-simulator") + arguments);
}

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
        QCOMPARE(options.cameras, 1);
        QVERIFY(!options.withHex);
        QVERIFY(!options.quiet);
    }

    void readsTheNumberOfCameras()
    {
        QCOMPARE(std::get<SimulatorOptions>(parse({"--pty", "--cameras", "256"})).cameras, 256);
    }

    void readsEveryOption()
    {
        const auto options = std::get<SimulatorOptions>(
            parse(QString("--port ttyACM7 --baud 0 --camera-version 1.2.10.255 --settings "
                          "2,9,1,0,3 --zoom-1 -32768 --zoom-2 32767 --silent --delay 1500 --hex "
                          "--quiet --control /tmp/x --reboot-time 250 --save-firmware /tmp/y "
                          "--faults drop@reply:2 --seed 4294967295 --record /tmp/z -- corvane")
                      .split(' ')));
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

    void sayingADefaultChangesNothing_data()
    {
        QTest::addColumn<QString>("option");
        const QString help = std::get<Information>(parse({"--help"})).text.simplified();
        static const QRegularExpression kDefault(
            "(--[a-z0-9-]+) <[^>]*>(?:(?! --[a-z]).)*?\\(default: ([^)]*)\\)");
        auto matches = kDefault.globalMatch(help);
        while (matches.hasNext()) {
            const auto match = matches.next();
            QTest::newRow(qPrintable(match.captured(1)))
                << QString("%1=%2").arg(match.captured(1), match.captured(2));
        }
    }

    void sayingADefaultChangesNothing()
    {
        QFETCH(QString, option);
        const QStringList others{"--faults", "none", "--", "sh"};
        const auto given = std::get<SimulatorOptions>(parse(QStringList{option} + others));
        const auto expected = std::get<SimulatorOptions>(parse(others));
        const auto values = [](const SimulatorOptions &options) {
            const CameraSettings &settings = options.camera.settings;
            return std::make_tuple(options.camera.version, options.camera.lensZoom,
                                   settings.autoTracking, settings.targetMissing,
                                   settings.upsideDown, settings.autoZoom, settings.zoomOffset,
                                   options.behaviour.baud, options.behaviour.rebootTime,
                                   options.portName, options.seed);
        };
        QVERIFY(values(given) == values(expected));
    }

    void leavesTheProgramItsArguments_data()
    {
        addRows<QStringList, QStringList, bool>(
            {"arguments", "programArguments", "withHex"},
            {{"none", {"--", "sh"}, {}, false},
             {"after --",
              {"--hex", "--", "sh", "--help", "-x", "--", "y"},
              {"--help", "-x", "--", "y"},
              true},
             {"without --", {"sh", "--hex", "-x"}, {"--hex", "-x"}, false}});
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
        addRows<QString, QString>(
            {"arguments", "reason"},
            {{"nothing", "", "either --pty or a program is needed"},
             {"both lines", "--pty sh", "--pty and a program exclude each other"},
             {"unknown option", "--pty --nope", "unknown option '--nope'"},
             {"missing value", "--pty --baud", "Missing value after '--baud'."},
             {"no camera", "--pty --cameras 0", "--cameras is a number from 1 to 256, not '0'"},
             {"too many cameras", "--pty --cameras 257",
              "--cameras is a number from 1 to 256, not '257'"},
             {"cameras recorded", "--pty --cameras 2 --record x",
              "--cameras is for simulated cameras that are not recorded"},
             {"cameras replayed", "--pty --cameras 2 --replay x",
              "--cameras is for simulated cameras that are not recorded"},
             {"baud is no number", "--pty --baud fast",
              "--baud is a number from 0 to 4000000, not 'fast'"},
             {"negative baud", "--pty --baud -1", "--baud is a number from 0 to 4000000, not '-1'"},
             {"too many baud", "--pty --baud 4000001",
              "--baud is a number from 0 to 4000000, not '4000001'"},
             {"negative delay", "--pty --delay=-1",
              "--delay is a number from 0 to 3600000, not '-1'"},
             {"delay too long", "--pty --delay 3600001",
              "--delay is a number from 0 to 3600000, not '3600001'"},
             {"negative reboot time", "--pty --reboot-time=-1",
              "--reboot-time is a number from 0 to 3600000, not '-1'"},
             {"reboot time too long", "--pty --reboot-time 3600001",
              "--reboot-time is a number from 0 to 3600000, not '3600001'"},
             {"zoom value too large", "--pty --zoom-1 32768",
              "--zoom-1 is a number from -32768 to 32767, not '32768'"},
             {"zoom value too small", "--pty --zoom-2 -32769",
              "--zoom-2 is a number from -32768 to 32767, not '-32769'"},
             {"too few settings", "--pty --settings 1,1,0,1",
              "--settings is five numbers with commas, not '1,1,0,1'"},
             {"too many settings", "--pty --settings 1,1,0,1,1,1",
              "--settings is five numbers with commas, not '1,1,0,1,1,1'"},
             {"an empty setting", "--pty --settings 1,1,,1,1",
              "--settings is five numbers with commas, not '1,1,,1,1'"},
             {"a setting out of range", "--pty --settings 1,10,0,1,1",
              "--settings: target missing is 10, not 0 to 9"},
             {"port with a slash", "--port ../x sh",
              "--port is a name of letters and digits, not '../x'"},
             {"port that begins with a digit", "--port 0tty sh",
              "--port is a name of letters and digits, not '0tty'"},
             {"port with another character", "--port tty_0 sh",
              "--port is a name of letters and digits, not 'tty_0'"},
             {"empty port", "--port= sh", "--port is a name of letters and digits, not ''"},
             {"bad faults", "--pty --faults dorp@reply:1",
              "--faults: fault 'dorp@reply:1': there is no kind 'dorp', see --faults help"},
             {"empty faults",
              "--pty --faults=", "--faults: fault '': expected KIND[=VALUE]@DIRECTION:PLACE"},
             {"negative seed", "--pty --seed=-1",
              "--seed is a number from 0 to 4294967295, not '-1'"},
             {"seed too high", "--pty --seed 4294967296",
              "--seed is a number from 0 to 4294967295, not '4294967296'"},
             {"empty control path", "--control= sh", "--control is a path, not ''"},
             {"empty firmware path", "--save-firmware= sh", "--save-firmware is a path, not ''"},
             {"empty recording path", "--record= sh", "--record is a path, not ''"},
             {"empty replay path", "--replay= sh", "--replay is a path, not ''"},
             {"empty real port", "--through= sh", "--through is a port, not ''"},
             {"a replay on a real port", "--replay x --through y sh",
              "--replay and --through exclude each other"},
             {"a port for a pseudo-terminal", "--pty --port ttyUSB1",
              "--pty and --port exclude each other: a pseudo-terminal has its own name"},
             {"a seed of nothing", "--pty --seed 7", "--seed needs --faults or --control"},
             {"standard output as the control socket", "--pty --control -",
              "--control is the path of a file, such as ./-, not '-'"},
             {"standard output as the firmware", "--pty --save-firmware -",
              "--save-firmware is the path of a file, such as ./-, not '-'"},
             {"standard output as the recording", "--pty --record -",
              "--record is the path of a file, such as ./-, not '-'"},
             {"standard input as the recording", "--pty --replay -",
              "--replay is the path of a file, such as ./-, not '-'"},
             {"a port named like the real one", "--through /dev/ttyUSB1 --port ttyUSB1 sh",
              "--port is another name than that of --through, not 'ttyUSB1'"}});
        for (const char *version :
             {"1.2.3", "1.2.3.4.5", "1.2.3.256", "1.2.3.-1", "1.2.3.", "a.b.c.d"}) {
            QTest::addRow("version %s", version)
                << QString("--pty --camera-version %1").arg(version)
                << QString("--camera-version is four numbers from 0 to 255 with dots, not '%1'")
                       .arg(version);
        }
        for (const char *option :
             {"--baud=9600", "--camera-version=1.2.3.4", "--settings=1,1,0,1,1", "--zoom-1=1",
              "--zoom-2=1", "--silent", "--delay=1", "--reboot-time=1", "--save-firmware=/tmp/x"}) {
            QTest::addRow("a replay with %s", option)
                << QString("--pty --replay /tmp/y %1").arg(option)
                << QString(
                       "--replay and %1 exclude each other: what the camera sent, and when, is in "
                       "the recording")
                       .arg(QString(option).section('=', 0, 0));
            QTest::addRow("a real port with %s", option)
                << QString("--pty --through ttyUSB0 %1").arg(option)
                << QString("--through and %1 exclude each other: the real camera has its own way")
                       .arg(QString(option).section('=', 0, 0));
        }
    }

    void refusesAProgramWithoutAName()
    {
        QCOMPARE(std::get<UsageError>(parse({"--", ""})).reason,
                 QString("the name of the program is empty"));
    }

    void refusesBadUsage()
    {
        QFETCH(QString, arguments);
        const auto result = parse(arguments.split(' ', Qt::SkipEmptyParts));
        QVERIFY(std::holds_alternative<UsageError>(result));
        QTEST(std::get<UsageError>(result).reason, "reason");
    }
};

QTEST_GUILESS_MAIN(SimulatorOptionsTest)
#include "tst_simulatoroptions.moc"
