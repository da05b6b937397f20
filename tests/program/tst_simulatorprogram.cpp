// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "frames.h"
#include "patience.h"
#include "pseudoterminal.h"
#include "rows.h"
#include "runningprogram.h"

#include <QLocalSocket>

#include <array>
#include <csignal>

#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

namespace {

/// The host's end of a serial line, with plain system calls.
class Host {
public:
    explicit Host(const QString &portName)
        : m_descriptor(::open(qPrintable(portName), O_RDWR | O_NOCTTY | O_CLOEXEC))
    {
    }
    Host(const Host &) = delete;
    Host &operator=(const Host &) = delete;
    ~Host() { ::close(m_descriptor); }

    bool write(const QByteArray &hexadecimal) const
    {
        const QByteArray bytes = QByteArray::fromHex(hexadecimal);
        return ::write(m_descriptor, bytes.constData(), static_cast<std::size_t>(bytes.size()))
            == bytes.size();
    }
    /// Asked of the line, because its name may be another test's in the next moment.
    bool isHungUp() const
    {
        pollfd state{m_descriptor, 0, 0};
        return ::poll(&state, 1, 0) == 1 && (state.revents & POLLHUP) != 0;
    }
    termios settings() const
    {
        termios result{};
        ::tcgetattr(m_descriptor, &result);
        return result;
    }
    QByteArray ask(const QByteArray &hexadecimal, int replySize) const
    {
        return write(hexadecimal) ? read(replySize) : QByteArray("not written");
    }
    /// As many bytes in hexadecimal; fewer when the line is hung up on, or when no more come.
    QByteArray read(int size) const
    {
        QByteArray bytes;
        std::array<char, 256> buffer{};
        pollfd state{m_descriptor, POLLIN, 0};
        while (bytes.size() < size && ::poll(&state, 1, kPatience) == 1) {
            const ssize_t count = ::read(m_descriptor, buffer.data(), buffer.size());
            if (count <= 0) {
                break;
            }
            bytes.append(buffer.data(), static_cast<int>(count));
        }
        return bytes.toHex(' ').toUpper();
    }

private:
    int m_descriptor;
};

/// Its control socket.
class Control {
public:
    explicit Control(const QString &path)
    {
        // It is there before the simulator prints anything.
        m_socket.connectToServer(path);
    }
    QByteArray obey(const QByteArray &command)
    {
        m_socket.write(command + '\n');
        return line();
    }
    /// The next one.
    QByteArray line()
    {
        while (!m_socket.canReadLine()) {
            if (!m_socket.waitForReadyRead(kPatience)) {
                return "no answer";
            }
        }
        return m_socket.readLine().trimmed();
    }

private:
    QLocalSocket m_socket;
};

// The next line that is not about a reply, which comes in any number of pieces through a real port.
QString lineAfterReply(Simulator &simulator)
{
    QString text = simulator.line();
    while (text.indexOf("-> ", 14) == 14) {
        text = simulator.line();
    }
    return text;
}

QByteArray contents(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no file");
}

// Qt's serial ports lock their names for the whole machine, and other tests may run at this moment.
QString uniquePortName()
{
    return QString("ttyTEST%1").arg(QCoreApplication::applicationPid());
}

// Of a line of the simulator's output.
QTime timeOf(const QString &line)
{
    return QTime::fromString(line.left(12), "hh:mm:ss.zzz");
}

// Across midnight too.
int msecsBetween(QTime earlier, QTime later)
{
    constexpr int kDay = 24 * 60 * 60 * 1000;
    return (earlier.msecsTo(later) + kDay) % kDay;
}

// The lines of a recording from the first event on, without their times.
QStringList recordedEvents(const QString &path)
{
    QStringList events;
    const QStringList lines = QString::fromUtf8(contents(path)).split('\n');
    for (const QString &line : lines) {
        if (!line.isEmpty() && !line.startsWith('#')) {
            events << line.mid(line.indexOf(' ') + 1);
        }
    }
    return events;
}

bool write(const QString &path, const QByteArray &contents)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(contents) == contents.size();
}

} // namespace

class SimulatorProgramTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase()
    {
        // The preload library comes before a sanitizer's runtime library, which does no harm
        // here and is reported all the same. For the simulator and the programs that it runs.
        qputenv("ASAN_OPTIONS", qgetenv("ASAN_OPTIONS") + ":verify_asan_link_order=0");
    }

    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_controlPath = m_folder->filePath("control");
    }

    void answersOnAPseudoTerminal()
    {
        Simulator simulator({"--pty"});
        Host host(simulator.portName());
        QCOMPARE(host.ask(Hex::hello(), 26), Hex::helloReply());
        QCOMPARE(host.ask(Hex::settings(), 26),
                 QByteArray("FF FF 17 41 01 06 07 06 09 05 55 00 "
                            "01 00 00 06 09 00 00 01 01 01 00 00 03 E5"));
        QCOMPARE(host.ask(Hex::zoom1(), 15), Hex::zoomReply());
        QCOMPARE(simulator.event(), QString("<- HELLO"));
        QVERIFY(simulator.event().startsWith("-> HELLO ack "));
        QVERIFY(simulator.event().startsWith("<- CUSTOM_SETTING "));
        QVERIFY(simulator.event().startsWith("-> CUSTOM_SETTING ack "));
        QCOMPARE(simulator.event(), QString("<- SET_CUSTOM_ZOOM      zoom 1"));
        QCOMPARE(simulator.event(), QString("-> SET_CUSTOM_ZOOM ack  value 100"));
    }

    void takesItsStateFromTheCommandLine()
    {
        Simulator simulator({"--pty", "--quiet", "--baud", "0", "--camera-version", "255.128.10.16",
                             "--settings", "0,0,0,0,0", "--zoom-2", "400"});
        Host host(simulator.portName());
        QCOMPARE(host.ask(Hex::hello(), 26),
                 QByteArray("FF FF 17 41 01 06 07 06 09 05 16 00 "
                            "FF 80 0A 10 00 00 00 00 00 00 00 00 00 29"));
        QCOMPARE(host.ask(Hex::zoom2(), 15),
                 QByteArray("FF FF 0C 41 01 06 07 06 09 05 3A 00 01 90 3A"));
        simulator.sendSignal(SIGTERM);
        QCOMPARE(simulator.exitCode(), 0);
        QCOMPARE(simulator.output(), QString());
    }

    void printsTheBytesOnDemand()
    {
        Simulator simulator({"--pty", "--hex"});
        Host host(simulator.portName());
        QVERIFY(host.write(Hex::hello()));
        QCOMPARE(simulator.event(), "<- HELLO | " + Hex::hello());
        QVERIFY(simulator.event().endsWith(" | " + Hex::helloReply()));
    }

    void endsOnASignal_data()
    {
        addRows<int>({"number"}, {{"SIGTERM", SIGTERM}, {"SIGINT", SIGINT}, {"SIGHUP", SIGHUP}});
    }

    void endsOnASignal()
    {
        QFETCH(int, number);
        // As the simulator finds it, also in a shell's background or under nohup.
        ::signal(number, SIG_DFL);
        Simulator simulator({"--pty", "--control", m_controlPath});
        const Host host(simulator.portName());
        QVERIFY(!host.isHungUp());
        simulator.sendSignal(number);
        QCOMPARE(simulator.exitCode(), 0);
        QVERIFY(host.isHungUp());
        QVERIFY(!QFile::exists(m_controlPath));
    }

    void endsOnCtrlC()
    {
        ::signal(SIGINT, SIG_DFL);
        Simulator simulator;
        const QString command = QString("exec '%1' --pty").arg(SIMULATOR_PROGRAM);
        simulator.process.start("script",
                                {"--quiet", "--return", "--command", command, "/dev/null"});
        const Host host(simulator.portName());
        simulator.process.write("\x03");
        QCOMPARE(simulator.exitCode(), 0);
        QVERIFY(host.isHungUp());
    }

    void stopsWithABadCommandLine_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("message");

        QTest::newRow("no line") << QStringList()
                                 << "corvane-simulator: either --pty or a program is needed\n"
                                    "Try --help.\n";
        QTest::newRow("unknown option")
            << QStringList{"--pty", "--nope"}
            << "corvane-simulator: unknown option '--nope'\nTry --help.\n";
        QTest::newRow("bad value")
            << QStringList{"--pty", "--baud", "fast"}
            << "corvane-simulator: --baud is a number from 0 to 4000000, not 'fast'\nTry --help.\n";
    }

    void stopsWithABadCommandLine()
    {
        QFETCH(QStringList, arguments);
        Simulator simulator(arguments);
        QCOMPARE(simulator.exitCode(), 2);
        QTEST(simulator.errors(), "message");
        QCOMPARE(simulator.output(), QString());
    }

    void tellsItsVersion()
    {
        Simulator simulator({"--version"});
        QCOMPARE(simulator.exitCode(), 0);
        QCOMPARE(simulator.output(), QString("corvane-simulator 1.0.0.5\n"));
    }

    void endsAsTheProgramDoes_data()
    {
        addRows<QStringList, int>({"program", "exitCode"},
                                  {{"success", {"/bin/true"}, 0},
                                   {"failure", {"sh", "-c", "exit 7"}, 7},
                                   {"killed", {"sh", "-c", "kill -KILL $$"}, 137}});
    }

    void endsAsTheProgramDoes()
    {
        QFETCH(QStringList, program);
        Simulator simulator(QStringList("--") + program);
        QTEST(simulator.exitCode(), "exitCode");
    }

    void saysWhyTheProgramCannotStart_data()
    {
        addRows<QString, QString>(
            {"program", "reason"},
            {{"no such program", "/nonexistent/program", "No such file or directory"},
             {"a folder", "/", "it is a folder"},
             {"not executable", "/etc/passwd", "Permission denied"}});
    }

    void saysWhyTheProgramCannotStart()
    {
        QFETCH(QString, program);
        QFETCH(QString, reason);
        Simulator simulator({"--", program});
        QCOMPARE(simulator.exitCode(), 127);
        QCOMPARE(simulator.errors(),
                 QString("corvane-simulator: cannot start %1: %2\n").arg(program, reason));
    }

    void givesTheProgramItsInputAndOutput()
    {
        Simulator simulator({"--", "sh", "-c", "cat; echo bad >&2"});
        simulator.process.write("through");
        simulator.process.closeWriteChannel();
        QCOMPARE(simulator.exitCode(), 0);
        QCOMPARE(simulator.output(), QString("through"));
        QCOMPARE(simulator.errors(), QString("bad\n"));
    }

    void keepsOtherPreloadedLibraries()
    {
        // Any library that is everywhere.
        Simulator simulator;
        simulator.setEnvironment("LD_PRELOAD", "libm.so.6");
        simulator.process.start(SIMULATOR_PROGRAM, {"--", "sh", "-c", "echo $LD_PRELOAD"});
        QCOMPARE(simulator.line(), QString("libm.so.6:libumockdev-preload.so.0"));
    }

    void passesSignalsOnToTheProgram_data()
    {
        addRows<int, int>({"number", "exitCode"},
                          {{"SIGTERM", SIGTERM, 3}, {"SIGINT", SIGINT, 4}, {"SIGHUP", SIGHUP, 5}});
    }

    void passesSignalsOnToTheProgram()
    {
        QFETCH(int, number);
        ::signal(number, SIG_DFL);
        Simulator simulator({"--", "sh", "-c",
                             "trap 'exit 3' TERM; trap 'exit 4' INT; trap 'exit 5' HUP; "
                             "echo ready; "
                             "while true; do sleep 0.05; done"});
        QCOMPARE(simulator.line(), QString("ready"));
        simulator.sendSignal(number);
        QTEST(simulator.exitCode(), "exitCode");
    }

    void endsTheProgramWhenKilled()
    {
        const QString ended = m_folder->filePath("ended");
        Simulator simulator;
        // What it cannot tidy up any more goes with this test's folder.
        simulator.setEnvironment("TMPDIR", m_folder->path());
        simulator.process.start(SIMULATOR_PROGRAM,
                                {"--", "sh", "-c",
                                 QString("trap 'touch \"%1\"; exit' TERM; echo ready; "
                                         "while true; do sleep 0.05; done")
                                     .arg(ended)});
        QCOMPARE(simulator.line(), QString("ready"));
        simulator.sendSignal(SIGKILL);
        QCOMPARE(simulator.exitCode(), -2);
        QTRY_VERIFY(QFile::exists(ended));
    }

    void leavesNothingInTheTemporaryFolder()
    {
        Simulator simulator;
        simulator.setEnvironment("TMPDIR", m_folder->path());
        simulator.process.start(SIMULATOR_PROGRAM, {"--", "/bin/true"});
        QCOMPARE(simulator.exitCode(), 0);
        QCOMPARE(QDir(m_folder->path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
                 QStringList());
    }

    void listsOneAdapter()
    {
        Simulator simulator({"--", SERIAL_HOST_PROGRAM, "list"});
        QCOMPARE(simulator.line(), QString("ttyUSB0 (USB Serial)"));
        QCOMPARE(simulator.exitCode(), 0);
        QCOMPARE(simulator.output(), QString());
    }

    void listsManyAdapters()
    {
        Simulator simulator(
            {"--cameras", "3", "--port", "ttyACM9", "--", SERIAL_HOST_PROGRAM, "list"});
        QStringList ports{simulator.line(), simulator.line(), simulator.line()};
        ports.sort();
        QCOMPARE(ports.join(", "),
                 QString("ttyACM10 (USB Serial), ttyACM11 (USB Serial), "
                         "ttyACM9 (USB Serial)"));
        QCOMPARE(simulator.exitCode(), 0);
        QCOMPARE(simulator.output(), QString());
    }

    void answersForEachCamera()
    {
        Simulator simulator({"--pty", "--cameras", "2", "--camera-version", "1.0.10.16",
                             "--settings", "2,3,1,0,3"});
        const QStringList ports{simulator.portName(), simulator.portName()};
        QVERIFY(ports.first() != ports.last());
        for (int i = 0; i < 2; ++i) {
            Host host(ports.at(i));
            QCOMPARE(QByteArray::fromHex(host.ask(Hex::hello(), 26)), Frames::helloReply());
            QCOMPARE(simulator.line().startsWith("2  "), i == 1);
            simulator.line();
        }
    }

    void answersOnTheAdapter()
    {
        Simulator simulator({"--quiet", "--port", uniquePortName(), "--", SERIAL_HOST_PROGRAM,
                             "hello", uniquePortName()});
        QCOMPARE(simulator.line(), QString(Hex::helloReply()));
        QCOMPARE(simulator.exitCode(), 0);
    }

    void unplugsThePseudoTerminal()
    {
        Simulator simulator({"--pty", "--control", m_controlPath});
        const QString portName = simulator.portName();
        Control control(m_controlPath);
        QCOMPARE(control.obey("plug"), QByteArray("error: already plugged"));
        {
            const Host host(portName);
            QCOMPARE(control.obey("unplug"), QByteArray("ok"));
            QVERIFY(host.isHungUp());
        }
        QCOMPARE(simulator.event(), QString("-- unplugged"));
        QCOMPARE(control.obey("unplug"), QByteArray("error: not plugged"));
        QCOMPARE(control.obey("plug"), QByteArray("ok"));
        Host host(simulator.portName());
        QCOMPARE(simulator.event(), QString("-- plugged"));
        QCOMPARE(control.obey("silent on"), QByteArray("ok"));
        QCOMPARE(simulator.event(), QString("-- silent on"));
        QVERIFY(host.write(Hex::hello()));
        QVERIFY(simulator.event().endsWith("(not answered: silent)"));
        QCOMPARE(control.obey("silent off"), QByteArray("ok"));
        QCOMPARE(simulator.event(), QString("-- silent off"));
        QCOMPARE(host.ask(Hex::hello(), 26), Hex::helloReply());
        QCOMPARE(control.obey("silent"), QByteArray("error: unknown command 'silent', see help"));
    }

    void obeysForTheCameraThatIsNamed()
    {
        Simulator simulator({"--pty", "--cameras", "3", "--control", m_controlPath});
        const QStringList ports{simulator.portName(), simulator.portName(), simulator.portName()};
        const Host first(ports.at(0));
        Host second(ports.at(1));
        const Host third(ports.at(2));
        Control control(m_controlPath);
        QCOMPARE(control.obey("2 silent on"), QByteArray("ok"));
        QVERIFY(simulator.line().endsWith("-- silent on"));
        QVERIFY(second.write(Hex::hello()));
        const QString log = simulator.line();
        QVERIFY2(log.startsWith("2  ") && log.endsWith("(not answered: silent)"), qPrintable(log));
        QCOMPARE(first.ask(Hex::hello(), 26), Hex::helloReply());
        simulator.line();
        simulator.line();
        QCOMPARE(control.obey("3 unplug"), QByteArray("ok"));
        QVERIFY(third.isHungUp() && !first.isHungUp() && !second.isHungUp());
        QVERIFY(simulator.line().endsWith("-- unplugged"));
        QCOMPARE(control.obey("1 unplug"), QByteArray("ok"));
        QVERIFY(first.isHungUp());
        QCOMPARE(simulator.event(), QString("-- unplugged"));
        QCOMPARE(control.obey("3 plug"), QByteArray("ok"));
        QCOMPARE(Host(simulator.portName()).ask(Hex::hello(), 26), Hex::helloReply());
        QCOMPARE(control.obey("4 plug"), QByteArray("error: there is no camera 4"));
        QCOMPARE(control.obey("0 plug"), QByteArray("error: there is no camera 0"));
        QCOMPARE(control.obey("2 quit"), QByteArray("error: unknown command 'quit', see help"));
    }

    void logsTheFaultsOfACommand()
    {
        Simulator simulator({"--pty", "--control", m_controlPath, "--seed", "7"});
        simulator.portName();
        Control control(m_controlPath);
        QCOMPARE(control.obey("faults  drop@reply:3,noise@reply:all 5"), QByteArray("ok"));
        QCOMPARE(simulator.event(), QString("-- faults drop@reply:3,noise@reply:all, seed 5"));
        QCOMPARE(control.obey("faults none"), QByteArray("ok"));
        QCOMPARE(simulator.event(), QString("-- faults none, seed 7"));
    }

    void listsItsCommands()
    {
        Simulator simulator({"--pty", "--control", m_controlPath});
        simulator.portName();
        Control control(m_controlPath);
        QStringList commands;
        for (QString line = control.obey("help"); line != "ok"; line = control.line()) {
            commands << line.section("  ", 0, 0);
        }
        QCOMPARE(commands,
                 (QStringList{"unplug", "plug", "silent on", "silent off", "faults PLAN [SEED]",
                              "N COMMAND", "help", "quit"}));
    }

    void saysWhatACrashHasLeft()
    {
        Simulator crashed({"--pty", "--control", m_controlPath});
        crashed.portName();
        crashed.sendSignal(SIGKILL);
        QCOMPARE(crashed.exitCode(), -2);
        QVERIFY(QFile::exists(m_controlPath));
        Simulator simulator({"--pty", "--control", m_controlPath});
        simulator.portName();
        QCOMPARE(simulator.errorLine(),
                 "corvane-simulator: replaced the control socket " + m_controlPath
                     + ", which a program that has crashed has left");
        QCOMPARE(Control(m_controlPath).obey("quit"), QByteArray("ok"));
    }

    void removesTheDevicesThatACrashHasLeft()
    {
        const auto leftovers = [this] { return QDir(m_folder->path()).entryList({"umockdev.*"}); };
        Simulator crashed;
        crashed.setEnvironment("TMPDIR", m_folder->path());
        crashed.process.start(SIMULATOR_PROGRAM, {"--", "sh", "-c", "echo ready; exec sleep 600"});
        QCOMPARE(crashed.line(), QString("ready"));
        // One that runs is left alone.
        Simulator simulator;
        simulator.setEnvironment("TMPDIR", m_folder->path());
        simulator.process.start(SIMULATOR_PROGRAM, {"--", "true"});
        QCOMPARE(simulator.exitCode(), 0);
        QCOMPARE(simulator.errors(), QString());
        QCOMPARE(leftovers().size(), 1);
        const QString folder = m_folder->filePath(leftovers().value(0));
        crashed.sendSignal(SIGKILL);
        QCOMPARE(crashed.exitCode(), -2);
        simulator.process.start(SIMULATOR_PROGRAM, {"--", "true"});
        QCOMPARE(simulator.exitCode(), 0);
        QCOMPARE(simulator.errors(),
                 "corvane-simulator: removed " + folder
                     + ", which a simulator that has crashed has left\n");
        QCOMPARE(leftovers(), QStringList());
    }

    void unplugsTheAdapter()
    {
        Simulator simulator({"--quiet", "--control", m_controlPath, "--port", uniquePortName(),
                             "--", SERIAL_HOST_PROGRAM, "stay", uniquePortName()});
        QCOMPARE(simulator.line(), QString("open"));
        QCOMPARE(Control(m_controlPath).obey("unplug"), QByteArray("ok"));
        QCOMPARE(simulator.line(), QString("gone"));
        QCOMPARE(simulator.exitCode(), 0);
    }

    void announcesTheAdapter()
    {
        Simulator simulator(
            {"--quiet", "--control", m_controlPath, "--", SERIAL_HOST_PROGRAM, "watch"});
        QCOMPARE(simulator.line(), QString("watching"));
        Control control(m_controlPath);
        QCOMPARE(control.obey("unplug"), QByteArray("ok"));
        QCOMPARE(simulator.line(), QString("remove /dev/ttyUSB0"));
        QCOMPARE(control.obey("plug"), QByteArray("ok"));
        QCOMPARE(simulator.line(), QString("add /dev/ttyUSB0"));
    }

    void hidesTheAdapterWhileUnplugged()
    {
        const QString portName = uniquePortName();
        const QString list = QString("'%1' list; echo end; read line;").arg(SERIAL_HOST_PROGRAM);
        // The program's input is this test's end of a pipe, so that it goes on when the test says.
        Simulator simulator(
            {"--quiet", "--control", m_controlPath, "--port", portName, "--", "sh", "-c",
             list + list + list + QString("'%1' hello %2").arg(SERIAL_HOST_PROGRAM, portName)});
        QCOMPARE(simulator.line(), portName + " (USB Serial)");
        QCOMPARE(simulator.line(), QString("end"));
        Control control(m_controlPath);
        QCOMPARE(control.obey("unplug"), QByteArray("ok"));
        simulator.process.write("\n");
        QCOMPARE(simulator.line(), QString("end"));
        QCOMPARE(control.obey("plug"), QByteArray("ok"));
        simulator.process.write("\n");
        QCOMPARE(simulator.line(), portName + " (USB Serial)");
        QCOMPARE(simulator.line(), QString("end"));
        simulator.process.write("\n");
        QCOMPARE(simulator.line(), QString(Hex::helloReply()));
        QCOMPARE(simulator.exitCode(), 0);
    }

    void refusesACommandWithMoreAfterIt()
    {
        Simulator simulator({"--pty", "--quiet", "--control", m_controlPath});
        const QString portName = simulator.portName();
        Control control(m_controlPath);
        for (const char *command : {"unplug now", "plug now", "silent on now", "silent off now",
                                    "quit now", "Quit", "fault none", "unplugged", ""}) {
            QCOMPARE(control.obey(command),
                     QByteArray("error: unknown command '") + command + "', see help");
        }
        QCOMPARE(control.obey("faults none 3 4"),
                 QByteArray("error: the seed is a number from 0 to 4294967295, not '3 4'"));
        Host host(portName);
        QCOMPARE(host.ask(Hex::hello(), 26), Hex::helloReply());
    }

    void printsOnlyThePortWhenQuiet()
    {
        Simulator simulator({"--pty", "--quiet", "--control", m_controlPath});
        simulator.portName();
        Control control(m_controlPath);
        QCOMPARE(control.obey("unplug"), QByteArray("ok"));
        QCOMPARE(control.obey("plug"), QByteArray("ok"));
        QVERIFY(simulator.portName().startsWith("/dev/"));
        QCOMPARE(control.obey("quit"), QByteArray("ok"));
        QCOMPARE(simulator.exitCode(), 0);
        QCOMPARE(simulator.output(), QString());
    }

    void quitsOnCommand()
    {
        {
            Simulator simulator({"--pty", "--control", m_controlPath});
            simulator.portName();
            QCOMPARE(Control(m_controlPath).obey("quit"), QByteArray("ok"));
            QCOMPARE(simulator.exitCode(), 0);
        }
        Simulator simulator({"--quiet", "--control", m_controlPath, "--port", uniquePortName(),
                             "--", SERIAL_HOST_PROGRAM, "stay", uniquePortName()});
        QCOMPARE(simulator.line(), QString("open"));
        QCOMPARE(Control(m_controlPath).obey("quit"), QByteArray("ok"));
        QCOMPARE(simulator.exitCode(), 128 + SIGTERM);
    }

    void needsItsControlSocket()
    {
        const QString path = m_folder->filePath("no/such/folder");
        Simulator simulator({"--pty", "--control", path});
        QCOMPARE(simulator.exitCode(), 1);
        QCOMPARE(simulator.errors(),
                 "corvane-simulator: cannot make the control socket " + path
                     + ": No such file or directory\n");
    }

    void takesAFirmwareAndRebootsWithIt()
    {
        Simulator simulator({"--pty", "--reboot-time", "200"});
        Host host(simulator.portName());
        QCOMPARE(host.ask(Hex::announcement(), 13), Hex::announcementReply());
        QCOMPARE(simulator.event(), QString("<- RECEIVE_FW_INFO      firmware of 300 bytes"));
        QCOMPARE(simulator.event(), QString("-> RECEIVE_FW_INFO ack"));
        QCOMPARE(host.ask(Hex::firstPacket(), 13), Hex::packetReply());
        QCOMPARE(simulator.event(), QString("<- UPLOAD_FIRMWARE      packet 1, 128 bytes"));
        QCOMPARE(simulator.event(), QString("-> UPLOAD_FIRMWARE ack"));
        QVERIFY(host.write(Hex::firstPacket()));
        QCOMPARE(simulator.event(),
                 QString("<- UPLOAD_FIRMWARE      packet 1, 128 bytes  "
                         "(not answered: packet 1 instead of 2)"));
        QCOMPARE(host.ask(Hex::secondPacket(), 13), Hex::packetReply());
        QCOMPARE(simulator.event(), QString("<- UPLOAD_FIRMWARE      packet 2, 128 bytes"));
        QCOMPARE(simulator.event(), QString("-> UPLOAD_FIRMWARE ack"));
        QCOMPARE(host.ask(Hex::thirdPacket(), 13), Hex::packetReply());
        QCOMPARE(simulator.event(), QString("<- UPLOAD_FIRMWARE      packet 3, 44 bytes"));
        QCOMPARE(simulator.event(),
                 QString("-- received 300 bytes of firmware, SHA-256 "
                         "4f687bb2b93a5a7014a5e6158381cd3ef4bc0f8714eb9da9b6944aa7825523d5"));
        QCOMPARE(simulator.event(), QString("-> UPLOAD_FIRMWARE ack"));
        QCOMPARE(simulator.event(), QString("-- rebooting"));
        QCOMPARE(simulator.event(), QString("-- running version 1.0.0.7"));
        QCOMPARE(host.ask(Hex::hello(), 26), Hex::raisedHelloReply());
    }

    void savesAFirmwareBeforeItsLastAcknowledgement()
    {
        const QString path = m_folder->filePath("firmware");
        QFile old(path);
        QVERIFY(old.open(QIODevice::WriteOnly));
        QCOMPARE(old.write("of yesterday"), qint64(12));
        old.close();
        Simulator simulator({"--pty", "--reboot-time", "0", "--save-firmware", path});
        Host host(simulator.portName());
        QCOMPARE(host.ask(Hex::announcement(), 13), Hex::announcementReply());
        for (const QByteArray &packet :
             {Hex::firstPacket(), Hex::secondPacket(), Hex::thirdPacket()}) {
            QCOMPARE(contents(path), QByteArray("of yesterday"));
            QCOMPARE(host.ask(packet, 13), Hex::packetReply());
        }
        QCOMPARE(contents(path), Hex::firmware());
        QString event;
        do {
            event = simulator.event();
            QVERIFY(!event.isEmpty());
        } while (event != "-- running version 1.0.0.7");
        QCOMPARE(host.ask(Hex::smallAnnouncement(), 13), Hex::announcementReply());
        QCOMPARE(host.ask(Hex::smallPacket(), 13), Hex::packetReply());
        QCOMPARE(contents(path), QByteArray("\1\2\3"));
        simulator.sendSignal(SIGTERM);
        QCOMPARE(simulator.exitCode(), 0);
        QCOMPARE(simulator.errors(), QString());
    }

    void savesAFirmwareWholeOrNotAtAll()
    {
        const QString path = m_folder->filePath("firmware");
        QVERIFY(write(path, "of yesterday"));
        const QStringList before = QDir(m_folder->path()).entryList();
        Simulator simulator;
        // No file grows beyond 200 bytes, as on a disk that is full.
        simulator.process.start("sh",
                                {"-c", R"(trap '' XFSZ; exec prlimit --fsize=200 "$0" "$@")",
                                 SIMULATOR_PROGRAM, "--pty", "--reboot-time", "0",
                                 "--save-firmware", path});
        Host host(simulator.portName());
        QCOMPARE(host.ask(Hex::announcement(), 13), Hex::announcementReply());
        for (const QByteArray &packet :
             {Hex::firstPacket(), Hex::secondPacket(), Hex::thirdPacket()}) {
            QCOMPARE(host.ask(packet, 13), Hex::packetReply());
        }
        QCOMPARE(
            simulator.errorLine(),
            QString("corvane-simulator: cannot save the firmware as %1: File too large").arg(path));
        QCOMPARE(contents(path), QByteArray("of yesterday"));
        QCOMPARE(QDir(m_folder->path()).entryList(), before);
    }

    void savesNothingOfAnIncompleteFirmware()
    {
        const QString path = m_folder->filePath("firmware");
        Simulator simulator({"--pty", "--save-firmware", path});
        Host host(simulator.portName());
        QCOMPARE(host.ask(Hex::announcement(), 13), Hex::announcementReply());
        QCOMPARE(host.ask(Hex::firstPacket(), 13), Hex::packetReply());
        simulator.sendSignal(SIGTERM);
        QCOMPARE(simulator.exitCode(), 0);
        QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files), QStringList());
    }

    void goesOnWhenAFirmwareCannotBeSaved()
    {
        const QString path = m_folder->filePath("folder/firm\tware");
        const QString complaint =
            QString("cannot save the firmware as %1: No such file or directory")
                .arg(m_folder->filePath(R"(folder/firm\tware)"));
        QVERIFY(QDir(m_folder->path()).mkdir("folder"));
        Simulator simulator({"--pty", "--reboot-time", "0", "--save-firmware", path});
        Host host(simulator.portName());
        QVERIFY(QDir(m_folder->path()).rmdir("folder"));
        // An empty one.
        QCOMPARE(host.ask(Hex::emptyAnnouncement(), 13), Hex::announcementReply());
        QCOMPARE(simulator.errorLine(), "corvane-simulator: " + complaint);
        QCOMPARE(simulator.event(), QString("<- RECEIVE_FW_INFO      firmware of 0 bytes"));
        QVERIFY(simulator.event().startsWith("-- received 0 bytes of firmware"));
        QCOMPARE(simulator.event(), "-- " + complaint);
        QCOMPARE(simulator.event(), QString("-> RECEIVE_FW_INFO ack"));
        QCOMPARE(simulator.event(), QString("-- rebooting"));
        QCOMPARE(simulator.event(), QString("-- running version 1.0.0.7"));
        QVERIFY(host.write(Hex::hello()));
        QVERIFY(host.read(26).contains("05 16 00 01 00 00 07"));
    }

    void needsAPlaceForTheFirmware_data()
    {
        addRows<QString, QString>({"name", "reason"},
                                  {{"a folder", ".", "is a folder, not a file"},
                                   {"no such folder", "no/such", "No such file or directory"},
                                   {"a device", "/dev/null", "is a device, not a file"}});
    }

    void needsAPlaceForTheFirmware()
    {
        QFETCH(QString, name);
        QFETCH(QString, reason);
        const QString path = QDir(m_folder->path()).filePath(name);
        Simulator simulator({"--pty", "--save-firmware", path});
        QCOMPARE(simulator.exitCode(), 1);
        QCOMPARE(
            simulator.errors(),
            QString("corvane-simulator: cannot save the firmware as %1: %2\n").arg(path, reason));
        QCOMPARE(simulator.output(), QString());
    }

    void needsAPlaceForTheFirmwareOfEachCamera()
    {
        const QString path = m_folder->filePath("firmware");
        QVERIFY(QDir().mkdir(path + ".2"));
        Simulator simulator({"--pty", "--cameras", "2", "--save-firmware", path});
        QCOMPARE(simulator.exitCode(), 1);
        QCOMPARE(simulator.errors(),
                 QString("corvane-simulator: cannot save the firmware as %1.2: is a folder, not a "
                         "file\n")
                     .arg(path));
    }

    void logsWhichCamerasFirmwareCannotBeSaved()
    {
        const QString path = m_folder->filePath("folder/of %2");
        QVERIFY(QDir(m_folder->path()).mkdir("folder"));
        Simulator simulator(
            {"--pty", "--cameras", "2", "--reboot-time", "0", "--save-firmware", path});
        simulator.portName();
        Host host(simulator.portName());
        QVERIFY(QDir(m_folder->path()).rmdir("folder"));
        QCOMPARE(host.ask(Hex::emptyAnnouncement(), 13), Hex::announcementReply());
        const QString complaint =
            QString("cannot save the firmware as %1.2: No such file or directory").arg(path);
        QCOMPARE(simulator.errorLine(), "corvane-simulator: " + complaint);
        QString line = simulator.line();
        while (line.startsWith("2  ") && !line.endsWith(complaint)) {
            line = simulator.line();
        }
        QVERIFY2(line.startsWith("2  ") && line.endsWith("-- " + complaint), qPrintable(line));
    }

    void putsFaultsOnTheLine()
    {
        Simulator simulator({"--pty", "--faults",
                             "wrong-sum@request:1,noise@reply:1,corrupt=2@reply:2.3", "--seed",
                             "7"});
        Host host(simulator.portName());
        // The camera does not answer a request with a bad checksum.
        QVERIFY(host.write(Hex::hello()));
        QCOMPARE(simulator.event(), QString("-- request 1: changed the checksum, 7F became 80"));
        QCOMPARE(simulator.event(),
                 QString("<- (bad checksum)       FF FF 0A 41 01 06 07 06 09 01 16 00 80"));
        QCOMPARE(host.ask(Hex::hello(), 34), "27 F1 E8 9B 71 B7 F8 0E " + Hex::helloReply());
        QCOMPARE(simulator.event(), QString("<- HELLO"));
        QCOMPARE(simulator.event(),
                 QString("-- reply 1: put noise before it, 27 F1 E8 9B 71 B7 F8 0E"));
        QVERIFY(simulator.event().startsWith("-> HELLO ack "));
        QCOMPARE(host.ask(Hex::announcement(), 13),
                 QByteArray("FF FF 0A 43 01 06 07 06 09 05 10 00 7D"));
        QCOMPARE(host.ask(Hex::hello(), 26), Hex::helloReply());
    }

    void putsOtherFaultsOnEachLine()
    {
        Simulator simulator(
            {"--pty", "--quiet", "--cameras", "2", "--faults", "noise@reply:1", "--seed", "7"});
        const Host first(simulator.portName());
        const Host second(simulator.portName());
        QCOMPARE(first.ask(Hex::hello(), 34), "27 F1 E8 9B 71 B7 F8 0E " + Hex::helloReply());
        const QByteArray other = second.ask(Hex::hello(), 34);
        QVERIFY2(other.endsWith(Hex::helloReply()) && !other.startsWith("27 F1 E8 9B 71 B7 F8 0E"),
                 other);
    }

    void changesFaultsOnCommand()
    {
        Simulator simulator({"--pty", "--quiet", "--control", m_controlPath, "--seed", "7"});
        Host host(simulator.portName());
        Control control(m_controlPath);
        const auto ask = [&host](int size) { return host.ask(Hex::hello(), size); };
        QCOMPARE(ask(26), Hex::helloReply());
        QCOMPARE(control.obey("faults noise@reply:1"), QByteArray("ok"));
        QCOMPARE(ask(34), "27 F1 E8 9B 71 B7 F8 0E " + Hex::helloReply());
        QCOMPARE(ask(26), Hex::helloReply());
        QCOMPARE(control.obey("faults noise@reply:1 0"), QByteArray("ok"));
        QCOMPARE(ask(34), "E5 49 F1 99 30 0D 81 D2 " + Hex::helloReply());
        // What is refused leaves the faults as they are.
        QCOMPARE(control.obey("faults noise@reply:all"), QByteArray("ok"));
        QCOMPARE(
            control.obey("faults dorp@reply:1"),
            QByteArray("error: fault 'dorp@reply:1': there is no kind 'dorp', see --faults help"));
        QCOMPARE(control.obey("faults none x"),
                 QByteArray("error: the seed is a number from 0 to 4294967295, not 'x'"));
        QCOMPARE(control.obey("faults"), QByteArray("error: unknown command 'faults', see help"));
        QCOMPARE(ask(34), "27 F1 E8 9B 71 B7 F8 0E " + Hex::helloReply());
        QCOMPARE(control.obey("faults none"), QByteArray("ok"));
        QCOMPARE(ask(26), Hex::helloReply());
    }

    void hangsUpAndComesBack()
    {
        // What a host has not read is lost with the line, so a slow one gets more time.
        std::unique_ptr<Simulator> simulator;
        QByteArray reply;
        for (int pause = 100; reply.size() < 14 && pause < kPatience; pause *= 4) {
            simulator.reset();
            simulator = std::make_unique<Simulator>(
                QStringList{"--pty", "--control", m_controlPath, "--faults",
                            QString("hang-up=%1@reply:1.5,drop@request:3").arg(pause)});
            Host host(simulator->portName());
            QVERIFY(host.write(Hex::hello()));
            reply = host.read(26);
        }
        QCOMPARE(reply, QByteArray("FF FF 17 41 01"));
        QCOMPARE(simulator->event(), QString("<- HELLO"));
        QCOMPARE(simulator->event(), QString("-- reply 1: hung up before byte 5"));
        QVERIFY(simulator->event().startsWith("-> HELLO ack "));
        QCOMPARE(simulator->event(), QString("-- unplugged"));
        Control control(m_controlPath);
        QCOMPARE(control.obey("unplug"), QByteArray("error: not plugged"));
        QCOMPARE(control.obey("plug"), QByteArray("ok"));
        Host host(simulator->portName());
        QCOMPARE(simulator->event(), QString("-- plugged"));
        QCOMPARE(host.ask(Hex::hello(), 26), Hex::helloReply());
        QCOMPARE(simulator->event(), QString("<- HELLO"));
        QVERIFY(simulator->event().startsWith("-> HELLO ack "));
        QVERIFY(host.write(Hex::hello()));
        QCOMPARE(simulator->event(), QString("-- request 3: dropped"));
    }

    void recordsWhatPassesOnThePseudoTerminal()
    {
        const QString path = m_folder->filePath("recording");
        Simulator simulator({"--pty", "--baud", "0", "--control", m_controlPath, "--record", path});
        const QString portName = simulator.portName();
        Control control(m_controlPath);
        {
            Host host(portName);
            QCOMPARE(host.ask(Hex::hello(), 26), Hex::helloReply());
            QCOMPARE(simulator.event(), QString("<- HELLO"));
            QVERIFY(simulator.event().startsWith("-> HELLO ack "));
            // What has begun when the line goes is said before that.
            QVERIFY(host.write("FF FF 0A"));
            QTRY_VERIFY(recordedEvents(path).contains("host   FF FF 0A"));
            QCOMPARE(control.obey("unplug"), QByteArray("ok"));
        }
        QCOMPARE(simulator.event(), QString("<- (incomplete)         FF FF 0A"));
        QCOMPARE(simulator.event(), QString("-- unplugged"));
        QCOMPARE(control.obey("plug"), QByteArray("ok"));
        {
            Host host(simulator.portName());
            QVERIFY(host.write("12 34"));
            QCOMPARE(simulator.event(), QString("-- plugged"));
            QCOMPARE(simulator.event(), QString("<- (no frame)           12 34"));
        }
        // Killed, so that there is no time left to write anything.
        simulator.sendSignal(SIGKILL);
        QCOMPARE(simulator.exitCode(), -2);
        QCOMPARE(recordedEvents(path),
                 (QStringList{"plugged", "host   " + Hex::hello(), "camera " + Hex::helloReply(),
                              "host   FF FF 0A", "unplugged", "plugged", "host   12 34"}));
    }

    void recordsWhatPassesOnTheAdapter()
    {
        const QString path = m_folder->filePath("recording");
        Simulator simulator({"--quiet", "--baud", "0", "--record", path, "--port", uniquePortName(),
                             "--", SERIAL_HOST_PROGRAM, "hello", uniquePortName()});
        QCOMPARE(simulator.line(), QString(Hex::helloReply()));
        QCOMPARE(simulator.exitCode(), 0);
        QCOMPARE(recordedEvents(path),
                 (QStringList{"plugged", "host   " + Hex::hello(), "camera " + Hex::helloReply()}));
    }

    void needsItsRecording()
    {
        const QString path = m_folder->filePath("no/such/folder");
        Simulator simulator({"--pty", "--record", path});
        QCOMPARE(simulator.exitCode(), 1);
        QCOMPARE(simulator.errors(),
                 QString("corvane-simulator: cannot record in %1: No such file or directory\n")
                     .arg(path));
        QCOMPARE(simulator.output(), QString());
    }

    void goesOnWhenTheRecordingCannot()
    {
        const QString path = m_folder->filePath("recording");
        Simulator simulator;
        // No file grows beyond half a kilobyte, as on a disk that is full.
        simulator.process.start("sh",
                                {"-c", R"(trap '' XFSZ; ulimit -f 1; exec "$0" "$@")",
                                 SIMULATOR_PROGRAM, "--pty", "--record", path});
        Host host(simulator.portName());
        // More than half a kilobyte in the recording.
        for (int i = 0; i < 10; ++i) {
            QCOMPARE(host.ask(Hex::hello(), 26), Hex::helloReply());
        }
        const QString complaint = QString("cannot go on recording in %1: File too large").arg(path);
        QCOMPARE(simulator.errorLine(), "corvane-simulator: " + complaint);
        simulator.sendSignal(SIGTERM);
        QCOMPARE(simulator.exitCode(), 0);
        QCOMPARE(simulator.errors(), QString());
        QCOMPARE(simulator.output().count("-- " + complaint), 1);
        QVERIFY(contents(path).endsWith('\n'));
    }

    void replaysOnThePseudoTerminal()
    {
        const QString path = m_folder->filePath("recording");
        QVERIFY(write(path,
                      "# Corvane line recording 1\n0 plugged\n0.5 host 01 02\n0.5 camera AB CD\n"
                      "0.6 host 05\n0.6 unplugged\n0.6 plugged\n0.7 host 03\n0.7 camera EF\n"));
        Simulator simulator({"--pty", "--replay", path});
        {
            Host host(simulator.portName());
            QCOMPARE(host.ask("01 04", 2), QByteArray("AB CD"));
            QVERIFY(host.write("05"));
            QTRY_VERIFY(host.isHungUp());
        }
        QCOMPARE(simulator.event(), QString("<- (no frame)           01 04"));
        QCOMPARE(
            simulator.event(),
            QString("-- from byte 2 on the host sends 04 instead of 02, recorded at 0.500000"));
        QCOMPARE(simulator.event(), QString("-> (no frame)           AB CD"));
        QCOMPARE(simulator.event(), QString("<- (no frame)           05"));
        QCOMPARE(simulator.event(), QString("-- unplugged"));
        Host host(simulator.portName());
        QCOMPARE(simulator.event(), QString("-- plugged"));
        QCOMPARE(host.ask("03", 1), QByteArray("EF"));
        QCOMPARE(simulator.event(), QString("<- (no frame)           03"));
        QCOMPARE(simulator.event(), QString("-> (no frame)           EF"));
        QCOMPARE(simulator.event(), QString("-- the recording has ended"));
        simulator.sendSignal(SIGTERM);
        QCOMPARE(simulator.exitCode(), 0);
        QCOMPARE(simulator.errors(), QString());
    }

    void replaysOnTheAdapter()
    {
        const QString path = m_folder->filePath("recording");
        const QString copy = m_folder->filePath("copy");
        QVERIFY(write(path,
                      "# Corvane line recording 1\n0 plugged\n9 host " + Hex::hello()
                          + "\n9 camera " + Hex::helloReply() + '\n'));
        Simulator simulator({"--quiet", "--replay", path, "--record", copy, "--port",
                             uniquePortName(), "--", SERIAL_HOST_PROGRAM, "hello",
                             uniquePortName()});
        QCOMPARE(simulator.line(), QString(Hex::helloReply()));
        QCOMPARE(simulator.exitCode(), 0);
        QCOMPARE(simulator.output(), QString());
        QCOMPARE(recordedEvents(copy),
                 (QStringList{"plugged", "host   " + Hex::hello(), "camera " + Hex::helloReply()}));
    }

    void letsOthersInterfereWithAReplay()
    {
        const QString path = m_folder->filePath("recording");
        QVERIFY(write(
            path, "# Corvane line recording 1\n0 host 01\n0 unplugged\n3 plugged\n3 host 02\n"));
        Simulator simulator({"--pty", "--control", m_controlPath, "--replay", path});
        simulator.portName();
        Control control(m_controlPath);
        QCOMPARE(control.obey("silent on"), QByteArray("error: there is no simulated camera"));
        QCOMPARE(control.obey("silent off"), QByteArray("error: there is no simulated camera"));
        QCOMPARE(control.obey("unplug"), QByteArray("ok"));
        QCOMPARE(simulator.event(), QString("-- unplugged"));
        QCOMPARE(control.obey("plug"), QByteArray("ok"));
        {
            Host host(simulator.portName());
            QCOMPARE(simulator.event(), QString("-- plugged"));
            QVERIFY(host.write("01"));
            QCOMPARE(simulator.event(), QString("<- (no frame)           01"));
            QCOMPARE(simulator.event(), QString("-- unplugged"));
        }
        // Before the recording does, which then finds it plugged.
        QCOMPARE(control.obey("plug"), QByteArray("ok"));
        Host host(simulator.portName());
        QCOMPARE(simulator.event(), QString("-- plugged"));
        QVERIFY(host.write("02"));
        QCOMPARE(simulator.event(), QString("<- (no frame)           02"));
        QCOMPARE(simulator.event(), QString("-- the recording has ended"));
        QCOMPARE(control.obey("quit"), QByteArray("ok"));
        QCOMPARE(simulator.exitCode(), 0);
    }

    void needsARecordingToReplay_data()
    {
        addRows<QByteArray, QString>(
            {"contents", "reason"},
            {{"no file", {}, "No such file or directory"},
             {"a bad line", "# Corvane line recording 1\n1 host\n",
              "line 2: bytes of two hexadecimal digits, such as FF 0A, expected"}});
    }

    void replaysOnlyFiles_data()
    {
        addRows<QString, QString>(
            {"command", "reason"},
            {{"a pipe", "mkfifo $0", "is a pipe, not a file"},
             {"an endless device", "ln -s /dev/zero $0", "is a device, not a file"},
             {"a folder", "mkdir $0", "is a folder, not a file"},
             {"a huge file", "truncate -s 268435457 $0", "it is larger than 256 MiB"}});
    }

    void replaysOnlyFiles()
    {
        QFETCH(QString, command);
        QFETCH(QString, reason);
        const QString path = m_folder->filePath("recording");
        QCOMPARE(QProcess::execute("sh", {"-c", command, path}), 0);
        Simulator simulator({"--pty", "--replay", path});
        QCOMPARE(simulator.exitCode(), 1);
        QCOMPARE(simulator.errors(),
                 QString("corvane-simulator: cannot replay %1: %2\n").arg(path, reason));
    }

    void replaysARecordingThatAPowerFailureHasCut()
    {
        const QString path = m_folder->filePath("recording");
        QVERIFY(write(path, "# Corvane line recording 1\n0 plugged\n0 camera 01\n0.5 hos"));
        Simulator simulator({"--pty", "--replay", path});
        simulator.portName();
        QCOMPARE(simulator.event(), QString("-> (no frame)           01"));
        QCOMPARE(simulator.event(), QString("-- the recording has ended"));
        simulator.sendSignal(SIGTERM);
        QCOMPARE(simulator.exitCode(), 0);
        QCOMPARE(simulator.errors(),
                 "corvane-simulator: " + path + ": line 4 is cut off and left out\n");
    }

    void needsARecordingToReplay()
    {
        QFETCH(QByteArray, contents);
        QFETCH(QString, reason);
        const QString path = m_folder->filePath("recording");
        const QString copy = m_folder->filePath("copy");
        QVERIFY(contents.isEmpty() || write(path, contents));
        Simulator simulator({"--pty", "--replay", path, "--record", copy});
        QCOMPARE(simulator.exitCode(), 1);
        QCOMPARE(simulator.errors(),
                 QString("corvane-simulator: cannot replay %1: %2\n").arg(path, reason));
        QVERIFY(!QFile::exists(copy));
    }

    // Another simulator's pseudo-terminal is the real port here.
    void recordsACameraAtARealPort()
    {
        const QString path = m_folder->filePath("recording");
        Simulator camera({"--pty", "--baud", "0"});
        Simulator simulator({"--quiet", "--through", camera.portName(), "--record", path, "--port",
                             uniquePortName(), "--", SERIAL_HOST_PROGRAM, "hello",
                             uniquePortName()});
        QCOMPARE(simulator.line(), QString(Hex::helloReply()));
        QCOMPARE(simulator.exitCode(), 0);
        QCOMPARE(camera.event(), QString("<- HELLO"));
        QStringList events = recordedEvents(path);
        QCOMPARE(events.mid(0, 2), (QStringList{"plugged", "host   " + Hex::hello()}));
        // In as many pieces as the port has handed over.
        QStringList replies = events.mid(2);
        QCOMPARE(replies.replaceInStrings("camera ", QString()).join(' '),
                 QString(Hex::helloReply()));
    }

    void opensTheRealPortAsCorvaneDoes()
    {
        PseudoTerminal camera;
        const Host observer(camera.portName());
        // For whoever had the port open before.
        camera.send("old");
        Simulator simulator({"--pty", "--through", camera.portName()});
        Host host(simulator.portName());
        const termios settings = observer.settings();
        QCOMPARE(::cfgetispeed(&settings), speed_t{B115200});
        QCOMPARE(::cfgetospeed(&settings), speed_t{B115200});
        QCOMPARE(settings.c_cflag & tcflag_t{CSIZE}, tcflag_t{CS8});
        QCOMPARE(settings.c_cflag & static_cast<tcflag_t>(PARENB | CSTOPB | CRTSCTS), 0U);
        QCOMPARE(settings.c_iflag & static_cast<tcflag_t>(IXON | IXOFF | ICRNL), 0U);
        QVERIFY(host.write(Hex::hello()));
        QTRY_COMPARE(camera.received(), QByteArray::fromHex(Hex::hello()));
        camera.send(QByteArray::fromHex(Hex::helloReply()));
        QCOMPARE(host.read(26), Hex::helloReply());
        QCOMPARE(simulator.event(), QString("<- HELLO"));
    }

    void isUnpluggedTogetherWithTheRealPort()
    {
        // A name that stays when the pseudo-terminal has got another one.
        const QString realPort = m_folder->filePath("tty" + uniquePortName());
        Simulator camera({"--pty", "--quiet", "--control", m_controlPath});
        QVERIFY(QFile::link(camera.portName(), realPort));
        Control control(m_controlPath);
        Simulator simulator({"--pty", "--through", realPort});
        {
            Host host(simulator.portName());
            QCOMPARE(host.ask(Hex::hello(), 26), Hex::helloReply());
            QCOMPARE(simulator.event(), QString("<- HELLO"));
            QCOMPARE(control.obey("unplug"), QByteArray("ok"));
            QCOMPARE(host.read(1), QByteArray());
        }
        QVERIFY(lineAfterReply(simulator).endsWith("-- unplugged"));
        QCOMPARE(control.obey("plug"), QByteArray("ok"));
        QVERIFY(QFile::remove(realPort));
        QVERIFY(QFile::link(camera.portName(), realPort));
        Host host(simulator.portName());
        QString line = simulator.line();
        QVERIFY2(line.endsWith("-- plugged"), qPrintable(line));
        // It stays: longer than the pause between two attempts to open the real port, which the
        // times in front of the lines tell.
        const QTime plugged = timeOf(line);
        do {
            QCOMPARE(host.ask(Hex::hello(), 26), Hex::helloReply());
            line = lineAfterReply(simulator);
            QVERIFY2(line.endsWith("<- HELLO"), qPrintable(line));
        } while (msecsBetween(plugged, timeOf(line)) < 600);
        simulator.sendSignal(SIGTERM);
        QCOMPARE(simulator.exitCode(), 0);
        QCOMPARE(simulator.errors(), QString());
    }

    void needsTheRealPort()
    {
        const QString realPort = m_folder->filePath("tty" + uniquePortName());
        const QString path = m_folder->filePath("recording");
        Simulator simulator({"--pty", "--through", realPort, "--record", path});
        QCOMPARE(simulator.exitCode(), 1);
        QCOMPARE(simulator.errors(),
                 QString("corvane-simulator: cannot open %1: No such file or directory\n")
                     .arg(realPort));
        QVERIFY(!QFile::exists(path));
    }

private:
    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_controlPath;
};

QTEST_GUILESS_MAIN(SimulatorProgramTest)
#include "tst_simulatorprogram.moc"
