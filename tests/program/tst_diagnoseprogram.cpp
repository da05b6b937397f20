// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "frames.h"
#include "patience.h"
#include "rows.h"
#include "runningprogram.h"

#include <QLocalSocket>

#include <array>
#include <csignal>
#include <cstdlib>
#include <limits>
#include <memory>

#include <fcntl.h>
#include <grp.h>
#include <pwd.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <termios.h>
#include <unistd.h>

namespace {

/// The program that is tested, with its result as JSON.
class Diagnosis : public RunningProgram {
public:
    /// @param wrapper  a command that runs the rest of its arguments
    explicit Diagnosis(const QStringList &arguments, const QStringList &wrapper = {}, int speed = 1)
    {
        speedUp(speed);
        QStringList command = wrapper + QStringList{DIAGNOSE_PROGRAM, "--json"} + arguments;
        const QString program = command.takeFirst();
        process.start(program, command);
    }

    /// Only once it has ended, likewise below. Without a verdict when it has printed anything else.
    const QJsonObject &report()
    {
        if (m_report.isEmpty() && errors().isEmpty()) {
            m_report = QJsonDocument::fromJson(process.readAllStandardOutput()).object();
        }
        return m_report;
    }
    /// All of them, the first one first.
    QString verdicts()
    {
        QStringList ids{report()["verdict"].toString()};
        const QJsonArray warnings = report()["furtherWarnings"].toArray();
        for (const auto &warning : warnings) {
            ids << warning.toObject()["verdict"].toString();
        }
        return ids.join(' ');
    }
    QString sentence() { return report()["sentence"].toString(); }
    QString remedy() { return report()["remedy"].toString(); }
    int received(const QString &what) { return report()["received"][what].toInt(-1); }

private:
    QJsonObject m_report;
};

/// The far end of a serial line that does what the test says.
class FarEnd {
public:
    FarEnd()
        : m_master(::posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC))
    {
        if (m_master < 0 || ::grantpt(m_master) != 0 || ::unlockpt(m_master) != 0) {
            qFatal("no pseudo-terminal to be had");
        }
        m_portName = QString::fromLocal8Bit(::ptsname(m_master));
    }
    FarEnd(const FarEnd &) = delete;
    FarEnd &operator=(const FarEnd &) = delete;
    ~FarEnd()
    {
        // A program that was killed leaves its lock behind, and the name will be another's.
        QFile::remove(lockPath());
        ::close(m_master);
    }

    const QString &portName() const { return m_portName; }
    QByteArray path() const { return QFile::encodeName(m_portName); }
    /// The lock that a program which has the port open holds on its name.
    QString lockPath() const { return "/var/lock/LCK..pts_" + QFileInfo(m_portName).fileName(); }
    /// All that has arrived so far, in hexadecimal.
    QByteArray received()
    {
        std::array<char, 256> buffer{};
        const ssize_t count = ::read(m_master, buffer.data(), buffer.size());
        if (count > 0) {
            m_received.append(buffer.data(), static_cast<int>(count));
        }
        return m_received.toHex(' ').toUpper();
    }
    /// As much as the line takes at this moment.
    void write(const QByteArray &bytes) const
    {
        const ssize_t count =
            ::write(m_master, bytes.constData(), static_cast<std::size_t>(bytes.size()));
        Q_UNUSED(count)
    }
    termios settings() const
    {
        termios result{};
        ::tcgetattr(m_master, &result);
        return result;
    }
    void setSettings(const termios &settings) const { ::tcsetattr(m_master, TCSANOW, &settings); }

private:
    int m_master;
    QString m_portName;
    QByteArray m_received;
};

/// Sends bytes back once the request has come in.
void answerWith(FarEnd &farEnd, const QByteArray &hexadecimal)
{
    QTRY_COMPARE(farEnd.received(), Hex::hello());
    farEnd.write(QByteArray::fromHex(hexadecimal));
}

// By when the answer has to be there for the verdict of a row, in milliseconds.
constexpr int kInTime = 1000;
constexpr int kLate = 5000;
constexpr int kTooLate = std::numeric_limits<int>::max();

// A busy machine may keep a camera from being as fast as a row has it. The diagnosis is then made
// once more, with twice the wait.
constexpr int kAttempts = 9;

// Time passes so many times as fast in both programs, less with each attempt.
constexpr int kSpeed = 8;
int speedOf(int attempt)
{
    return qMax(1, kSpeed >> (attempt - 1));
}

/// Whether the report is about a camera all of whose bytes came within the wait, its answer in
/// time.
bool isAsFastAs(int bytes, int latest, const QJsonObject &report)
{
    return report["received"]["bytes"].toInt() >= bytes
        && report["answerMilliseconds"].toInt() <= latest;
}

// Qt's serial ports lock their names for the whole machine, and other tests may run at this moment.
QString uniquePortName()
{
    return QString("ttyDIAGNOSE%1").arg(QCoreApplication::applicationPid());
}

bool isRoot()
{
    return ::geteuid() == 0;
}

/// Sends a command to the simulator's control socket.
void sendCommand(const QString &controlPath, const QByteArray &command)
{
    QLocalSocket control;
    control.connectToServer(controlPath);
    control.write(command);
    QVERIFY(control.waitForReadyRead(kPatience));
    QCOMPARE(control.readAll(), QByteArray("ok\n"));
}

void unplug(const QString &controlPath)
{
    sendCommand(controlPath, "unplug\n");
}

// Runs the rest as a user who is nobody and in no group but one.
QStringList asNobodyIn(const QString &group)
{
    return {"setpriv", "--reuid=nobody", "--regid=" + group, "--clear-groups"};
}

// What prevents running the program as another user; empty when nothing does.
QString obstacleToOtherUsers()
{
    if (!isRoot()) {
        return "only root can run a program as another user";
    }
    const QStringList command = asNobodyIn("nogroup") + QStringList{DIAGNOSE_PROGRAM, "--version"};
    return RunningProgram(command.first(), command.mid(1)).exitCode() == 0
        ? QString()
        : "user nobody cannot run the program where it is";
}

bool give(const FarEnd &farEnd, const char *owner, const char *group, mode_t mode)
{
    const passwd *const user = ::getpwnam(owner);
    const ::group *const entry = ::getgrnam(group);
    return user != nullptr && entry != nullptr
        && ::chown(farEnd.path(), user->pw_uid, entry->gr_gid) == 0
        && ::chmod(farEnd.path(), mode) == 0;
}

/// Lets a program that does nothing have a port open.
void holdWithSleep(RunningProgram &holder, const FarEnd &farEnd, const QStringList &wrapper = {},
                   const QString &program = "sleep")
{
    QStringList command = wrapper + QStringList{program, "600"};
    holder.process.setStandardInputFile(farEnd.portName());
    const QString first = command.takeFirst();
    holder.process.start(first, command);
    QVERIFY(holder.process.waitForStarted(kPatience));
}

} // namespace

class DiagnoseProgramTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase()
    {
        // The simulator's preload library comes before a sanitizer's runtime library, which
        // does no harm here and is reported all the same.
        qputenv("ASAN_OPTIONS", qgetenv("ASAN_OPTIONS") + ":verify_asan_link_order=0");
    }

    void judgesACamera_data()
    {
        const auto fault = [](const char *plan) { return QStringList{"--faults", plan}; };
        addRows<QStringList, double, int, int, int, QString>(
            {"camera", "wait", "bytes", "latest", "exitCode", "verdicts"},
            {{"in order", {}, 20, 26, kInTime, 0, "answer"},
             {"a reply byte by byte", fault("split@reply:1"), 20, 26, kInTime, 0, "answer"},
             {"a slow camera", {"--delay", "1100"}, 20, 26, kLate, 1, "answer-late"},
             {"a camera slower than Corvane waits",
              {"--delay", "5100"},
              20,
              26,
              kTooLate,
              4,
              "answer-too-late"},
             {"a camera slower than the wait",
              {"--delay", "3600000"},
              0.3,
              0,
              kInTime,
              4,
              "silent"},
             {"switched off", {"--silent"}, 0.3, 0, kInTime, 4, "silent"},
             {"the request lost", fault("drop@request:1"), 0.3, 0, kInTime, 4, "silent"},
             {"a wrong sum", fault("wrong-sum@reply:1"), 0.3, 26, kInTime, 4, "wrong-sums"},
             {"a damaged bit", fault("corrupt=0x10@reply:1.15"), 0.3, 26, kInTime, 4, "wrong-sums"},
             {"a damaged header", fault("corrupt=0x20@reply:1.0"), 0.3, 26, kInTime, 4, "no-frame"},
             {"cut short", fault("truncate@reply:1.20"), 0.3, 20, kInTime, 4, "broken-off"},
             {"a byte lost", fault("drop-byte@reply:1.14"), 0.3, 25, kInTime, 4, "broken-off"},
             {"the reply to another command", fault("wrong-command@reply:1"), 0.3, 26, kInTime, 4,
              "other-acknowledgements"},
             {"a frame of the reserved type", fault("foreign-type@reply:1"), 0.3, 26, kInTime, 4,
              "foreign-frames"},
             {"somebody else's request", fault("foreign-type=1@reply:1"), 0.3, 26, kInTime, 4,
              "foreign-frames"},
             {"two replies", fault("duplicate=100@reply:1"), 20, 52, kInTime, 1,
              "answer-among-others"},
             {"noise before the reply", fault("noise@reply:1"), 20, 34, kInTime, 1,
              "answer-amid-noise"},
             {"noise after the reply", fault("trail@reply:1"), 20, 34, kInTime, 1,
              "answer-amid-noise"},
             {"half a reply before the reply", fault("half-frame@reply:1"), 20, 39, kInTime, 1,
              "answer-amid-noise"},
             {"a version that makes the sum FF",
              {"--camera-version", "1.0.0.105"},
              20,
              26,
              kInTime,
              1,
              "answer-sum-ff"},
             {"a slow camera amid noise",
              {"--delay", "1100", "--faults", "noise@reply:1"},
              20,
              34,
              kLate,
              1,
              "answer-amid-noise answer-late"},
             {"hung up within the reply", fault("hang-up@reply:1.5"), 600, 0, kInTime, 3,
              "hung-up"},
             {"hung up before the reply", fault("hang-up@reply:1.0"), 600, 0, kInTime, 3,
              "hung-up"}});
    }

    void judgesACamera()
    {
        QFETCH(QStringList, camera);
        QFETCH(double, wait);
        QFETCH(int, bytes);
        QFETCH(int, latest);
        for (int attempt = 1;; ++attempt, wait *= 2) {
            Simulator simulator(QStringList{"--pty", "--quiet"} + camera, speedOf(attempt));
            Diagnosis diagnosis({"--wait", QString::number(wait), simulator.portName()}, {},
                                speedOf(attempt));
            QVERIFY(diagnosis.hasEnded());
            if (attempt == kAttempts || isAsFastAs(bytes, latest, diagnosis.report())) {
                QTEST(diagnosis.exitCode(), "exitCode");
                QTEST(diagnosis.verdicts(), "verdicts");
                return;
            }
        }
    }

    void stopsWhenTheTimeIsOver_data()
    {
        addRows<QStringList, double, QString>(
            {"camera", "wait", "verdict"},
            {{"before an answer after the wait", {"--delay", "5000"}, 0.3, "silent"},
             {"before another answer long after the first",
              {"--faults", "duplicate=5000@reply:1"},
              20,
              "answer"}});
    }

    // A machine that stands still for seconds may have both at once, but not each time.
    void stopsWhenTheTimeIsOver()
    {
        QFETCH(QStringList, camera);
        QFETCH(double, wait);
        QFETCH(QString, verdict);
        QString verdicts;
        for (int attempt = 1; attempt <= kAttempts && verdicts != verdict; ++attempt) {
            Simulator simulator(QStringList{"--pty", "--quiet"} + camera);
            Diagnosis diagnosis({"--wait", QString::number(wait), simulator.portName()});
            QVERIFY(diagnosis.hasEnded());
            verdicts = diagnosis.verdicts();
        }
        QCOMPARE(verdicts, verdict);
    }

    void asksOnceForHelloAndNothingElse()
    {
        Simulator simulator({"--pty", "--hex", "--delay", "1000"}, kSpeed);
        Diagnosis diagnosis({"--wait", "600", simulator.portName()}, {}, kSpeed);
        QVERIFY(diagnosis.hasEnded());
        QVERIFY(simulator.event().endsWith("| " + Hex::hello()));
        QVERIFY(simulator.event().startsWith("-> HELLO ack "));
        simulator.sendSignal(SIGTERM);
        QCOMPARE(simulator.exitCode(), 0);
        QCOMPARE(simulator.output(), QString());
    }

    void tellsVersionAndSettings()
    {
        Simulator simulator(
            {"--pty", "--quiet", "--camera-version", "1.2.10.16", "--settings", "2,9,1,0,3"});
        const QString port = simulator.portName();
        Diagnosis diagnosis({"--wait", "600", port});
        QVERIFY(diagnosis.hasEnded());
        const QJsonObject report = diagnosis.report();
        QVERIFY2(report.contains("version"), qPrintable(diagnosis.sentence()));
        QCOMPARE(report["port"].toString(), port);
        QCOMPARE(report["version"].toString(), QString("1.2.a.10"));
        QCOMPARE(report["settings"].toObject(),
                 (QJsonObject{{"Auto Tracking", "Pan Tracking"},
                              {"Target Missing Compensation", "Preset 7"},
                              {"Camera Installed direction", "Upside down"},
                              {"Auto Zoom", "OFF"},
                              {"Zoom Offset", "Custom"}}));
        QCOMPARE(diagnosis.received("bytes"), 26);
        QVERIFY(report["answerMilliseconds"].toInt(-1) >= 0);
    }

    void tellsTheSameToPeople()
    {
        Simulator simulator({"--pty", "--quiet", "--silent"});
        const QString port = simulator.portName();
        RunningProgram program(DIAGNOSE_PROGRAM, {"--wait", "0.3", port});
        QCOMPARE(program.exitCode(), 4);
        const QString output = program.output();
        QVERIFY2(output.startsWith("Nothing at all came back within 0.3 s.\nIs the camera on? Is "
                                   + port + " the right adapter? "),
                 qPrintable(output));
        QVERIFY2(output.endsWith("\nVerdict on " + port + ": silent\n"), qPrintable(output));
        QCOMPARE(program.errors(),
                 "Asking the camera at " + port + ", for up to 0.3 seconds ...\n");
    }

    void judgesAnAdapter_data()
    {
        const QString port = uniquePortName();
        const QStringList noise{"--faults", "noise@reply:1"};
        addRows<QStringList, QString, int, int, QString>(
            {"camera", "port", "bytes", "exitCode", "sentence"},
            {{"by its name", noise, port, 34, 1, "The camera answered, but "},
             {"by its path", noise, "/dev/" + port, 34, 1, "The camera answered, but "},
             {"by another name", {}, port + "x", 0, 3, "There is no serial port " + port + "x."},
             {"that hangs up",
              {"--faults", "hang-up@reply:1.5"},
              port,
              0,
              3,
              port + " failed while the camera was asked: "}});
    }

    void judgesAnAdapter()
    {
        QFETCH(QStringList, camera);
        QFETCH(QString, port);
        QFETCH(int, bytes);
        QFETCH(QString, sentence);
        for (int attempt = 1;; ++attempt) {
            RunningProgram simulator(SIMULATOR_PROGRAM,
                                     QStringList{"--quiet", "--port", uniquePortName()} + camera
                                         + QStringList{"--", DIAGNOSE_PROGRAM, "--json", port});
            QVERIFY(simulator.hasEnded());
            const QJsonObject report =
                QJsonDocument::fromJson(simulator.process.readAllStandardOutput()).object();
            if (attempt == kAttempts || isAsFastAs(bytes, kLate, report)) {
                QTEST(simulator.exitCode(), "exitCode");
                QVERIFY2(report["sentence"].toString().startsWith(sentence),
                         qPrintable(report["sentence"].toString()));
                QCOMPARE(report["ports"].toArray(), QJsonArray{uniquePortName() + " (USB Serial)"});
                return;
            }
        }
    }

    void listsThePorts()
    {
        const QStringList adapter{"--quiet", "--port", uniquePortName(), "--", DIAGNOSE_PROGRAM};
        RunningProgram text(SIMULATOR_PROGRAM, adapter + QStringList{"--list"});
        QCOMPARE(text.exitCode(), 0);
        QCOMPARE(text.line(), uniquePortName() + " (USB Serial): USB 1209:0001, driver generic");
        QCOMPARE(text.output(), QString());

        RunningProgram json(SIMULATOR_PROGRAM, adapter + QStringList{"--list", "--json"});
        QCOMPARE(json.exitCode(), 0);
        const QJsonObject list =
            QJsonDocument::fromJson(json.process.readAllStandardOutput()).object();
        QCOMPARE(list["ports"].toArray(), QJsonArray{uniquePortName() + " (USB Serial)"});
        QCOMPARE(list["identities"].toArray(),
                 QJsonArray{(QJsonObject{{"port", uniquePortName()},
                                         {"description", "USB Serial"},
                                         {"usbNumbers", "1209:0001"},
                                         {"serialNumber", ""},
                                         {"manufacturer", ""},
                                         {"driver", "generic"},
                                         {"byIdName", ""},
                                         {"usbPath", "1-1"}})});
    }

    void listsPortsInTheirOrder()
    {
        RunningProgram list(SIMULATOR_PROGRAM,
                            {"--quiet", "--cameras", "2", "--port", uniquePortName() + '1', "--",
                             DIAGNOSE_PROGRAM, "--list"});
        QCOMPARE(list.exitCode(), 0);
        QVERIFY(list.line().startsWith(uniquePortName() + "1 "));
        QVERIFY(list.line().startsWith(uniquePortName() + "2 "));
    }

    void judgesEveryPort()
    {
        RunningProgram simulator(SIMULATOR_PROGRAM,
                                 {"--quiet", "--port", uniquePortName(), "--", DIAGNOSE_PROGRAM,
                                  "--all", "--json", "--wait", "600"});
        QCOMPARE(simulator.exitCode(), 0);
        const QJsonObject report =
            QJsonDocument::fromJson(simulator.process.readAllStandardOutput()).object();
        QCOMPARE(report["status"].toInt(-1), 0);
        const QJsonArray diagnoses = report["diagnoses"].toArray();
        QCOMPARE(diagnoses.size(), 1);
        QCOMPARE(diagnoses[0]["verdict"].toString(), QString("answer"));
        QCOMPARE(diagnoses[0]["port"].toString(), uniquePortName());
    }

    void isContentWithOneCamera()
    {
        // What udev has not noticed yet.
        const QString prepare = QString("rm $UMOCKDEV_DIR/dev/%1; exec \"$0\" --all --wait 600")
                                    .arg(uniquePortName() + '2');
        RunningProgram simulator(SIMULATOR_PROGRAM,
                                 {"--quiet", "--cameras", "2", "--port", uniquePortName() + '1',
                                  "--", "sh", "-c", prepare, DIAGNOSE_PROGRAM});
        QCOMPARE(simulator.exitCode(), 0);
        QVERIFY(simulator.output().contains("Verdict on " + uniquePortName() + "2: no-device\n"));
    }

    void saysThatThereIsNoPort()
    {
        const QTemporaryDir folder;
        const QString controlPath = folder.filePath("control");
        Simulator simulator({"--quiet", "--port", uniquePortName(), "--control", controlPath, "--",
                             "sh", "-c", R"(read line; "$0" --all)", DIAGNOSE_PROGRAM});
        QTRY_VERIFY(QFile::exists(controlPath));
        unplug(controlPath);
        simulator.process.write("\n");
        QCOMPARE(simulator.exitCode(), 3);
        QCOMPARE(simulator.output(), QString("This computer has no serial port at all.\n"));
    }

    void waitsForAnAdapter_data()
    {
        addRows<bool>({"comesBack"}, {{"a new one", false}, {"one that is pulled out", true}});
    }

    void waitsForAnAdapter()
    {
        QFETCH(bool, comesBack);
        const QTemporaryDir folder;
        const QString controlPath = folder.filePath("control");
        // The second one is there all the time.
        Simulator simulator({"--quiet", "--cameras", "2", "--port", uniquePortName(), "--control",
                             controlPath, "--", "sh", "-c", R"(read line; "$0" --watch --wait 600)",
                             DIAGNOSE_PROGRAM});
        QTRY_VERIFY(QFile::exists(controlPath));
        if (!comesBack) {
            unplug(controlPath);
        }
        simulator.process.write("\n");
        QCOMPARE(simulator.errorLine(), QString("Waiting for an adapter ..."));
        // It knows by then which ports there are only if what follows is later than that.
        QVERIFY(!simulator.hasEnded(1000));
        if (comesBack) {
            unplug(controlPath);
            QVERIFY(!simulator.hasEnded(1000));
        }
        sendCommand(controlPath, "plug\n");
        QCOMPARE(simulator.exitCode(), 0);
        QVERIFY(simulator.output().endsWith("\nVerdict on " + uniquePortName() + ": answer\n"));
    }

    void writesAReportForSupport()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath("report");
        // What the kernel and udev would have made.
        const QString prepare =
            QString("mkdir -p $UMOCKDEV_DIR/dev/serial/by-id; "
                    "ln -s ../../%1 $UMOCKDEV_DIR/dev/serial/by-id/usb-A_camera; "
                    "printf '6,1,1500000,-;usb 1-1: attached to %1\\n' > $UMOCKDEV_DIR/dev/kmsg; "
                    "exec \"$0\" --wait 600 --report '%2' %1")
                .arg(uniquePortName(), path);
        RunningProgram simulator(
            SIMULATOR_PROGRAM,
            {"--quiet", "--port", uniquePortName(), "--", "sh", "-c", prepare, DIAGNOSE_PROGRAM});
        QCOMPARE(simulator.exitCode(), 0);
        QVERIFY(simulator.errors().contains(path + " holds the verdict and its evidence; "));
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QJsonObject report = QJsonDocument::fromJson(file.readAll()).object();
        const QJsonValue diagnosis = report["diagnoses"][0];
        QCOMPARE(diagnosis["verdict"].toString(), QString("answer"));
        QCOMPARE(diagnosis["received"]["bytes"].toInt(), 26);
        QCOMPARE(diagnosis["identity"]["usbNumbers"].toString(), QString("1209:0001"));
        QCOMPARE(diagnosis["identity"]["driver"].toString(), QString("generic"));
        QCOMPARE(diagnosis["identity"]["byIdName"].toString(), QString("usb-A_camera"));
        QCOMPARE(
            diagnosis["kernel"].toObject(),
            (QJsonObject{
                {"lines", QJsonArray{"[1.500000] usb 1-1: attached to " + uniquePortName()}}}));
        QCOMPARE(report["versions"]["corvane"].toString(), QString("1.0.0.5"));
    }

    void checksAtTheStartWhetherTheReportCanBeWritten()
    {
        const QTemporaryDir folder;
        RunningProgram program(DIAGNOSE_PROGRAM, {"--report", folder.path(), "/dev/null"});
        QCOMPARE(program.exitCode(), 5);
        QCOMPARE(program.errors(),
                 "corvane-diagnose: " + folder.path() + ": is a folder, not a file\n");
        QCOMPARE(program.output(), QString());
    }

    void answersABadCommandLineInJson()
    {
        RunningProgram program(DIAGNOSE_PROGRAM, {"--json", "--frob"});
        QCOMPARE(program.exitCode(), 2);
        QCOMPARE(QJsonDocument::fromJson(program.process.readAllStandardOutput()).object(),
                 (QJsonObject{{"verdict", "bad-command-line"},
                              {"sentence", "unknown option '--frob'"},
                              {"remedy", "See corvane-diagnose --help."},
                              {"status", 2}}));
    }

    void asksNoOneWhenThePortCannotBeOpened()
    {
        // Under a name of its own, because what can be opened is locked by its name.
        const QTemporaryDir folder;
        const QString port = folder.filePath("port");
        QVERIFY(QFile::link("/dev/null", port));
        RunningProgram program(DIAGNOSE_PROGRAM, {port});
        QCOMPARE(program.exitCode(), 3);
        QCOMPARE(program.errors(), QString());
    }

    void tellsThatThereIsNoPort()
    {
        const QTemporaryDir folder;
        const QString controlPath = folder.filePath("control");
        RunningProgram program(SIMULATOR_PROGRAM,
                               {"--quiet", "--control", controlPath, "--", "sh", "-c",
                                R"(echo ready; read line; "$0" --list && "$0" --list --json)",
                                DIAGNOSE_PROGRAM});
        QCOMPARE(program.line(), QString("ready"));
        QLocalSocket control;
        control.connectToServer(controlPath);
        control.write("unplug\n");
        QVERIFY(control.waitForReadyRead(kPatience));
        program.process.write("\n");
        QCOMPARE(program.line(), QString("This computer has no serial port at all."));
        QCOMPARE(program.exitCode(), 0);
        QCOMPARE(QJsonDocument::fromJson(program.process.readAllStandardOutput()).object(),
                 (QJsonObject{{"ports", QJsonArray{}}, {"identities", QJsonArray{}}}));
    }

    void noticesThatTheAdapterIsPulledOut()
    {
        const QTemporaryDir folder;
        const QString controlPath = folder.filePath("control");
        Simulator simulator({"--pty", "--silent", "--control", controlPath});
        Diagnosis diagnosis({"--wait", "600", simulator.portName()});
        QVERIFY(simulator.event().startsWith("<- HELLO "));
        QLocalSocket control;
        control.connectToServer(controlPath);
        control.write("unplug\n");
        QVERIFY(control.waitForBytesWritten(kPatience));
        QCOMPARE(simulator.event(), QString("-- unplugged"));
        QCOMPARE(diagnosis.exitCode(), 3);
        QCOMPARE(diagnosis.verdicts(), QString("hung-up"));
        QCOMPARE(diagnosis.report()["systemError"].toString(), QString("Input/output error"));
        QCOMPARE(diagnosis.received("bytes"), 0);
    }

    void givesThePortBackWhenEndedByASignal_data()
    {
        addRows<int>({"number"}, {{"SIGINT", SIGINT}, {"SIGTERM", SIGTERM}, {"SIGHUP", SIGHUP}});
    }

    void givesThePortBackWhenEndedByASignal()
    {
        QFETCH(int, number);
        // As the program finds it, also in a shell's background or under nohup.
        ::signal(number, SIG_DFL);
        FarEnd farEnd;
        Diagnosis diagnosis({"--wait", "600", farEnd.portName()});
        QTRY_COMPARE(farEnd.received(), Hex::hello());
        QVERIFY(QFile::exists(farEnd.lockPath()));
        diagnosis.sendSignal(number);
        QVERIFY(diagnosis.hasEnded());
        QCOMPARE(diagnosis.process.exitStatus(), QProcess::CrashExit);
        QCOMPARE(diagnosis.process.exitCode(), number);
        QVERIFY(!QFile::exists(farEnd.lockPath()));
        QCOMPARE(diagnosis.output(), QString());
    }

    void judgesWhatAFarEndSends_data()
    {
        addRows<QByteArray, int, QString, QString>(
            {"bytes", "exitCode", "verdicts", "sentence"},
            {{"what was sent", Hex::hello(), 4, "echo",
              "The own request came back, and no answer."},
             {"what was sent, and an answer", Hex::hello() + Hex::helloReply(), 1,
              "answer-among-others",
              "The camera answered, but other frames came as well: 1 of the own request."},
             {"another device's prompt", "6C 6F 67 69 6E 3A 20", 4, "no-frame",
              "7 bytes came, but no frame. The first: 6C 6F 67 69 6E 3A 20, as text \"login: \"."},
             {"bytes at another speed", "80 78 F8 00", 4, "no-frame",
              "4 bytes came, but no frame. The first: 80 78 F8 00."},
             {"an answer without settings", "FF FF 0E 41 01 06 07 06 09 05 16 00 01 00 00 06 8E", 1,
              "answer-short",
              "The camera answered, but its answer is too short: 17 bytes instead of 26. Corvane "
              "connects and takes for 0 what is missing."}});
    }

    void judgesWhatAFarEndSends()
    {
        QFETCH(QByteArray, bytes);
        double wait = 0.3;
        for (int attempt = 1;; ++attempt, wait *= 2) {
            FarEnd farEnd;
            Diagnosis diagnosis({"--wait", QString::number(wait), farEnd.portName()}, {},
                                speedOf(attempt));
            answerWith(farEnd, bytes);
            QVERIFY(diagnosis.hasEnded());
            const int size = QByteArray::fromHex(bytes).size();
            if (attempt == kAttempts || isAsFastAs(size, kInTime, diagnosis.report())) {
                QTEST(diagnosis.exitCode(), "exitCode");
                QTEST(diagnosis.verdicts(), "verdicts");
                QTEST(diagnosis.sentence(), "sentence");
                return;
            }
        }
    }

    void endsWhateverKeepsComing_data()
    {
        addRows<QByteArray, double, QString>(
            {"bytes", "wait", "verdict"},
            {{"noise", "00 12 FF 34 80", 0.5, "no-frame"},
             {"FF", "FF", 0.5, "no-frame"},
             {"headers", "FF FF 0A", 0.5, "no-frame"},
             {"answers", Hex::helloReply(), 600.0, "answer-among-others"}});
    }

    // At full speed, for as long as the program runs.
    void endsWhateverKeepsComing()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(double, wait);
        constexpr int kMany = 1000;
        for (int attempt = 1;; ++attempt, wait *= 2) {
            FarEnd farEnd;
            Diagnosis diagnosis({"--wait", QString::number(wait), farEnd.portName()}, {},
                                speedOf(attempt));
            QTRY_COMPARE(farEnd.received(), Hex::hello());
            const QByteArray many = QByteArray::fromHex(bytes).repeated(100);
            QElapsedTimer clock;
            clock.start();
            while (!diagnosis.hasEnded(1)) {
                QVERIFY(!clock.hasExpired(kPatience));
                for (int i = 0; i < 100; ++i) {
                    farEnd.write(many);
                }
            }
            if (attempt == kAttempts || isAsFastAs(kMany, kInTime, diagnosis.report())) {
                QTEST(diagnosis.verdicts().section(' ', 0, 0), "verdict");
                QVERIFY(diagnosis.received("bytes") >= kMany);
                return;
            }
        }
    }

    void opensThePortAsCorvaneDoes()
    {
        FarEnd farEnd;
        termios settings = farEnd.settings();
        ::cfsetspeed(&settings, B9600);
        settings.c_cflag |= static_cast<tcflag_t>(CSTOPB | CRTSCTS);
        settings.c_iflag |= static_cast<tcflag_t>(IXON | IXOFF | ICRNL);
        settings.c_lflag |= static_cast<tcflag_t>(ECHO | ICANON);
        farEnd.setSettings(settings);
        Diagnosis diagnosis({"--wait", "600", farEnd.portName()});
        QTRY_COMPARE(farEnd.received(), Hex::hello());
        settings = farEnd.settings();
        QCOMPARE(::cfgetispeed(&settings), speed_t{B115200});
        QCOMPARE(::cfgetospeed(&settings), speed_t{B115200});
        QCOMPARE(settings.c_cflag & tcflag_t{CSIZE}, tcflag_t{CS8});
        QCOMPARE(settings.c_cflag & static_cast<tcflag_t>(PARENB | CSTOPB | CRTSCTS), 0U);
        QCOMPARE(settings.c_iflag & static_cast<tcflag_t>(IXON | IXOFF | ICRNL), 0U);
        QCOMPARE(settings.c_lflag & static_cast<tcflag_t>(ECHO | ICANON), 0U);
        farEnd.write(QByteArray::fromHex(Hex::helloReply()));
        QVERIFY(diagnosis.hasEnded());
        QCOMPARE(diagnosis.received("bytes"), 26);
    }

    void judgesWhatIsNoPort_data()
    {
        addRows<QString, QString, QString>(
            {"target", "verdict", "sentence"},
            {{"a file", SERIAL_HOST_PROGRAM, "not-serial", "is not a serial port but a file."},
             {"a folder", "/", "not-serial", "is not a serial port but a folder."},
             {"another device", "/dev/null", "not-serial",
              "is not a serial port but another kind of device."},
             {"nothing", "/nowhere", "no-device", "There is no serial port"},
             {"below a file", QString(SERIAL_HOST_PROGRAM "/x"), "no-device",
              "There is no serial port"}});
    }

    void judgesWhatIsNoPort()
    {
        QFETCH(QString, target);
        QFETCH(QString, sentence);
        // Under a name of its own, because what can be opened is locked by its name.
        const QTemporaryDir folder;
        const QString port = folder.filePath("Anschluß ☂");
        QVERIFY(QFile::link(target, port));
        Diagnosis diagnosis({port});
        QCOMPARE(diagnosis.exitCode(), 3);
        QTEST(diagnosis.verdicts(), "verdict");
        QVERIFY2(diagnosis.sentence().contains(sentence) && diagnosis.sentence().contains(port),
                 qPrintable(diagnosis.sentence()));
    }

    void namesTheProgramThatHasThePort()
    {
        FarEnd farEnd;
        RunningProgram holder(SERIAL_HOST_PROGRAM, {"stay", farEnd.portName()});
        QCOMPARE(holder.line(), QString("open"));
        Diagnosis diagnosis({farEnd.portName()});
        QCOMPARE(diagnosis.exitCode(), 3);
        QCOMPARE(diagnosis.verdicts(), QString("held"));
        QCOMPARE(farEnd.received(), QByteArray());
        QCOMPARE(diagnosis.sentence(),
                 QString("Another program has %1 open: serialhost (process %2).")
                     .arg(farEnd.portName())
                     .arg(holder.process.processId()));
    }

    void namesTheProgramThatSharesThePort_data()
    {
        addRows<QByteArray, int, QString>(
            {"bytes", "exitCode", "verdict"},
            {{"with an answer", Hex::helloReply(), 1, "answer-shared"},
             {"without", {}, 4, "shared"}});
    }

    void namesTheProgramThatSharesThePort()
    {
        QFETCH(QByteArray, bytes);
        const QString obstacle = obstacleToOtherUsers();
        if (isRoot() && !obstacle.isEmpty()) {
            QSKIP(qPrintable(obstacle));
        }
        // Root does not ask while another program has the port.
        const QStringList user = isRoot() ? asNobodyIn("nogroup") : QStringList{};
        double wait = 0.3;
        for (int attempt = 1;; ++attempt, wait *= 2) {
            FarEnd farEnd;
            QVERIFY(!isRoot() || give(farEnd, "nobody", "nogroup", 0600));
            RunningProgram holder;
            holdWithSleep(holder, farEnd, user);
            Diagnosis diagnosis({"--wait", QString::number(wait), farEnd.portName()}, user);
            answerWith(farEnd, bytes);
            QVERIFY(diagnosis.hasEnded());
            const int size = QByteArray::fromHex(bytes).size();
            if (attempt == kAttempts || isAsFastAs(size, kInTime, diagnosis.report())) {
                QTEST(diagnosis.exitCode(), "exitCode");
                QTEST(diagnosis.verdicts(), "verdict");
                const auto pid = static_cast<int>(holder.process.processId());
                QCOMPARE(diagnosis.report()["holders"].toArray(),
                         (QJsonArray{QJsonObject{{"name", "sleep"}, {"pid", pid}}}));
                return;
            }
        }
    }

    void namesEveryProgramThatSharesThePort_data()
    {
        const QString folder = QString("Prüfstand ☂ %1").arg(QCoreApplication::applicationPid());
        addRows<QString>({"port"},
                         {{"by a path from here", "./" + folder + "/port"},
                          {"by a path from the folder above", "../" + folder + "/port"}});
    }

    void namesEveryProgramThatSharesThePort()
    {
        QFETCH(QString, port);
        const QTemporaryDir folder;
        const QString place = folder.filePath(port.section('/', 1, 1));
        QVERIFY(QDir().mkpath(place));
        const FarEnd farEnd;
        const FarEnd other;
        QVERIFY(QFile::link(farEnd.portName(), place + "/port"));
        const QString sleeper = folder.filePath("schläfer");
        QVERIFY(QFile::copy(QStandardPaths::findExecutable("sleep"), sleeper));

        // One has another terminal open, and one has opened this port after other files.
        std::array<RunningProgram, 3> programs;
        programs[0].process.setStandardInputFile(farEnd.portName());
        programs[0].process.start("sleep", {"600"});
        programs[1].process.setStandardInputFile(other.portName());
        programs[1].process.start("sleep", {"600"});
        programs[2].process.start(
            "sh", {"-c", R"(exec 5<"$1"; echo open; exec "$0" 600)", sleeper, farEnd.portName()});
        QCOMPARE(programs[2].line(), QString("open"));
        const auto nameOf = [](const RunningProgram &program) {
            QFile file(QString("/proc/%1/comm").arg(program.process.processId()));
            return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()).trimmed()
                                                  : QString();
        };
        QTRY_COMPARE(nameOf(programs[0]), QString("sleep"));
        QTRY_COMPARE(nameOf(programs[1]), QString("sleep"));
        QTRY_COMPARE(nameOf(programs[2]), QString("schläfer"));

        const QString here = port.startsWith("../") ? place : folder.path();
        Diagnosis diagnosis({"--wait", "0.1", port}, {"env", "-C", here});
        // Root does not ask while another program has the port.
        QCOMPARE(diagnosis.exitCode(), isRoot() ? 3 : 4);
        QCOMPARE(diagnosis.verdicts(), QString(isRoot() ? "held" : "shared"));
        QCOMPARE(diagnosis.report()["device"].toString(), port);
        QSet<QString> holders;
        const QJsonArray found = diagnosis.report()["holders"].toArray();
        for (const auto &each : found) {
            const QJsonObject holder = each.toObject();
            holders << QString("%1 %2").arg(holder["pid"].toInt()).arg(holder["name"].toString());
        }
        QCOMPARE(holders,
                 (QSet<QString>{QString("%1 sleep").arg(programs[0].process.processId()),
                                QString("%1 schläfer").arg(programs[2].process.processId())}));
        QCOMPARE(found.size(), 2);
    }

    void asksNothingAsRootWhileAnotherProgramHasThePort()
    {
        if (!isRoot()) {
            QSKIP("only root could disturb a program that uses its port alone");
        }
        FarEnd farEnd;
        RunningProgram holder;
        holdWithSleep(holder, farEnd);
        Diagnosis diagnosis({"--wait", "0.3", farEnd.portName()});
        QCOMPARE(diagnosis.exitCode(), 3);
        QCOMPARE(diagnosis.verdicts(), QString("held"));
        QVERIFY2(diagnosis.sentence().contains("sleep"), qPrintable(diagnosis.sentence()));
        QVERIFY2(diagnosis.remedy().contains("would disturb it"), qPrintable(diagnosis.remedy()));
        QCOMPARE(farEnd.received(), QByteArray());
    }

    void tellsALogin()
    {
        const QTemporaryDir folder;
        const QString program = folder.filePath("agetty");
        QVERIFY(QFile::link(QStandardPaths::findExecutable("sleep"), program));
        FarEnd farEnd;
        RunningProgram holder;
        holdWithSleep(holder, farEnd, {}, program);
        Diagnosis diagnosis({"--wait", "0.3", farEnd.portName()});
        QCOMPARE(diagnosis.exitCode(), 3);
        QCOMPARE(diagnosis.verdicts(), QString("console"));
        QCOMPARE(farEnd.received(), QByteArray());
    }

    void tellsTheKernelsConsole()
    {
        const QString obstacle = obstacleToOtherUsers();
        if (!obstacle.isEmpty()) {
            QSKIP(qPrintable(obstacle));
        }
        QFile consoles("/proc/consoles");
        QVERIFY(consoles.open(QIODevice::ReadOnly));
        const QList<QByteArray> number =
            consoles.readLine().simplified().split(' ').last().split(':');
        // A device that only its number has in common with the console, and that is not opened.
        const QTemporaryDir folder;
        const QByteArray port = QFile::encodeName(folder.filePath("console"));
        if (number.size() != 2 || ::chmod(QFile::encodeName(folder.path()).constData(), 0755) != 0
            || ::mknod(port.constData(), S_IFCHR, ::makedev(number[0].toUInt(), number[1].toUInt()))
                != 0) {
            QSKIP("this computer has no console, or no device can be made");
        }
        Diagnosis diagnosis({port}, asNobodyIn("nogroup"));
        QCOMPARE(diagnosis.exitCode(), 3);
        QCOMPARE(diagnosis.verdicts(), QString("console"));
    }

    void tellsALineThatAnotherProgramHasHungUp()
    {
        FarEnd farEnd;
        Diagnosis diagnosis({"--wait", "600", farEnd.portName()});
        QTRY_COMPARE(farEnd.received(), Hex::hello());
        if (RunningProgram(SERIAL_HOST_PROGRAM, {"hang-up", farEnd.portName()}).exitCode() != 0) {
            QSKIP("only root can hang up a line that is not its own");
        }
        QCOMPARE(diagnosis.exitCode(), 3);
        QCOMPARE(diagnosis.verdicts(), QString("hung-up-by-program"));
        QCOMPARE(diagnosis.report()["systemError"].toString(), QString("Input/output error"));
    }

    void namesTheProgramOfAnotherUserByItsLock()
    {
        const QString obstacle = obstacleToOtherUsers();
        if (!obstacle.isEmpty()) {
            QSKIP(qPrintable(obstacle));
        }
        const FarEnd farEnd;
        QVERIFY(give(farEnd, "root", "root", 0666));
        RunningProgram holder(SERIAL_HOST_PROGRAM, {"stay", farEnd.portName()});
        QCOMPARE(holder.line(), QString("open"));
        Diagnosis diagnosis({farEnd.portName()}, asNobodyIn("nogroup"));
        QCOMPARE(diagnosis.exitCode(), 3);
        QCOMPARE(diagnosis.verdicts(), QString("held"));
        QVERIFY2(
            diagnosis.sentence().endsWith(QString("(process %1).").arg(holder.process.processId())),
            qPrintable(diagnosis.sentence()));
    }

    void tellsOfAProgramThatItMayNotSee()
    {
        const QString obstacle = obstacleToOtherUsers();
        if (!obstacle.isEmpty()) {
            QSKIP(qPrintable(obstacle));
        }
        const FarEnd farEnd;
        QVERIFY(give(farEnd, "root", "root", 0666));
        RunningProgram holder(SERIAL_HOST_PROGRAM, {"stay", farEnd.portName()});
        QCOMPARE(holder.line(), QString("open"));
        // Not every program locks its port.
        QVERIFY(QFile::remove(farEnd.lockPath()));
        Diagnosis diagnosis({farEnd.portName()}, asNobodyIn("nogroup"));
        QCOMPARE(diagnosis.exitCode(), 3);
        QCOMPARE(diagnosis.verdicts(), QString("held-unseen"));
    }

    void tellsALockLeftBehind()
    {
        const FarEnd farEnd;
        RunningProgram ended("true", {});
        QVERIFY(ended.process.waitForStarted(kPatience));
        const qint64 pid = ended.process.processId();
        QVERIFY(ended.hasEnded());
        QFile lock(farEnd.lockPath());
        if (!lock.open(QIODevice::WriteOnly)) {
            QSKIP("the lock files of serial ports cannot be written");
        }
        // Of another computer's name, as it was called otherwise then: a lock of this one would be
        // removed by the next program.
        lock.write(QByteArray::number(pid) + "\nminicom\nother-name\n");
        lock.close();
        Diagnosis diagnosis({farEnd.portName()});
        const int exitCode = diagnosis.exitCode();
        lock.remove();
        QCOMPARE(exitCode, 3);
        QCOMPARE(diagnosis.verdicts(), QString("stale-lock"));
        QVERIFY2(diagnosis.remedy().contains(QString("\"sudo rm %1\"").arg(farEnd.lockPath())),
                 qPrintable(diagnosis.remedy()));
    }

    void tellsAPortThatItsOwnerHasClosed()
    {
        const QString obstacle = obstacleToOtherUsers();
        if (isRoot() && !obstacle.isEmpty()) {
            QSKIP(qPrintable(obstacle));
        }
        const FarEnd farEnd;
        QCOMPARE(::chmod(farEnd.path(), 0), 0);
        Diagnosis diagnosis({farEnd.portName()}, isRoot() ? asNobodyIn("nogroup") : QStringList{});
        QCOMPARE(diagnosis.exitCode(), 3);
        QCOMPARE(diagnosis.verdicts(), QString("not-permitted"));
        QVERIFY(diagnosis.remedy().contains(QString("\"ls -l %1\"").arg(farEnd.portName())));
    }

    void tellsWhichGroupWouldHelp_data()
    {
        addRows<QString, QByteArray, QByteArray, int, QString, QString>(
            {"ownGroup", "owner", "group", "mode", "verdict", "sentence"},
            {{"a group to join", "nogroup", "root", "dialout", 0660, "not-in-group",
              "You may not open %1: it is for the group dialout, and nobody is not in it."},
             {"a group joined, but not in this session", "daemon", "root", "nogroup", 0660,
              "login-missing",
              "You may not open %1 yet: nobody has joined the group nogroup, but not logged in "
              "since."},
             {"a group that may only read", "nogroup", "root", "dialout", 0640, "not-permitted",
              "You may not open %1: it belongs to root, and joining a group would not help."},
             {"a group that is kept out", "dialout", "root", "dialout", 0606, "not-permitted",
              "You may not open %1: it belongs to root, and joining a group would not help."},
             {"an owner who is kept out", "nogroup", "nobody", "dialout", 0066, "not-permitted",
              "You may not open %1: it belongs to nobody, and joining a group would not help."}});
    }

    void tellsWhichGroupWouldHelp()
    {
        QFETCH(QString, ownGroup);
        QFETCH(QByteArray, owner);
        QFETCH(QByteArray, group);
        QFETCH(int, mode);
        QFETCH(QString, sentence);
        const QString obstacle = obstacleToOtherUsers();
        if (!obstacle.isEmpty()) {
            QSKIP(qPrintable(obstacle));
        }
        const FarEnd farEnd;
        QVERIFY(give(farEnd, owner, group, static_cast<mode_t>(mode)));
        Diagnosis diagnosis({farEnd.portName()}, asNobodyIn(ownGroup));
        QCOMPARE(diagnosis.exitCode(), 3);
        QTEST(diagnosis.verdicts(), "verdict");
        QCOMPARE(diagnosis.sentence(), sentence.arg(farEnd.portName()));
    }

    void stopsWithABadCommandLine()
    {
        RunningProgram program(DIAGNOSE_PROGRAM, {});
        QCOMPARE(program.exitCode(), 2);
        QCOMPARE(program.errors(),
                 QString("corvane-diagnose: the name of a port is needed; --list shows them\n"
                         "Try --help.\n"));
        QCOMPARE(program.output(), QString());
    }

    void informs()
    {
        RunningProgram program(DIAGNOSE_PROGRAM, {"--version"});
        QCOMPARE(program.exitCode(), 0);
        QCOMPARE(program.output(), QString("corvane-diagnose 1.0.0.5\n"));
    }
};

QTEST_GUILESS_MAIN(DiagnoseProgramTest)
#include "tst_diagnoseprogram.moc"
