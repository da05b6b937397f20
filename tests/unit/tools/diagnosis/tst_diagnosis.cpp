// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "diagnosis.h"
#include "frames.h"
#include "rows.h"

using Kind = PortFinding::Kind;
using Status = DiagnosisStatus;
using std::chrono::milliseconds;

static QByteArray foreignFrame()
{
    return "FF FF 0A 41 01 06 07 06 09 02 16 00 80 ";
}

static QByteArray frameWithWrongSum()
{
    return "FF FF 0A 41 01 06 07 06 09 05 16 00 84 ";
}

static QByteArray frameBrokenOff()
{
    return "FF FF 17 41 01 06 07 ";
}

static PortFinding openPort()
{
    PortFinding finding;
    finding.port = "ttyUSB0";
    finding.devicePath = "/dev/ttyUSB0";
    finding.ports = QStringList{"ttyS0", "ttyUSB0 (USB Serial)"};
    return finding;
}

static PortFinding failedPort(Kind kind)
{
    PortFinding finding = openPort();
    finding.kind = kind;
    finding.systemText = "Input/output error";
    finding.thing = "a folder";
    finding.group = "uucp";
    finding.user = "anna";
    finding.owner = "root";
    finding.lockFile = "/var/lock/LCK..ttyUSB0";
    return finding;
}

static Diagnosis diagnosisOf(const QByteArray &hexadecimal, int time = 15,
                             const PortFinding &finding = openPort())
{
    Observation observation;
    observation.take(QByteArray::fromHex(hexadecimal), milliseconds(time));
    return diagnose(finding, observation.record(), milliseconds(6000));
}

static QString text(const Verdict &verdict)
{
    return verdict.id + ": " + verdict.sentence;
}

Q_DECLARE_METATYPE(DiagnosisStatus)
Q_DECLARE_METATYPE(PortFinding)

class DiagnosisTest : public QObject {
    Q_OBJECT

private slots:
    void judgesWhatCameBack_data()
    {
        addRows<QByteArray, Status, QString>(
            {"bytes", "status", "verdict"},
            {{"an answer", Hex::helloReply(), Status::Answer,
              "answer: The camera answered after 0.015 s."},
             {"nothing", {}, Status::NoAnswer, "silent: Nothing at all came back within 6 s."},
             {"the own request", Hex::hello(), Status::NoAnswer,
              "echo: The own request came back, and no answer."},
             {"a boot message at another speed", "80 00 F8 78 80", Status::NoAnswer,
              "no-frame: 5 bytes came, but no frame. The first: 80 00 F8 78 80."},
             {"the prompt of another device", "6C 6F 67 69 6E 3A 0D 0A", Status::NoAnswer,
              R"(no-frame: 8 bytes came, but no frame. The first: 6C 6F 67 69 6E 3A 0D 0A, )"
              R"(as text "login:\r\n".)"},
             {"one byte", "00", Status::NoAnswer,
              "no-frame: 1 byte came, but no frame. The first: 00."},
             {"a frame that breaks off", frameBrokenOff(), Status::NoAnswer,
              "broken-off: Frames came, but incomplete: 1 broken off."},
             {"two frames with wrong sums", frameWithWrongSum() + frameWithWrongSum(),
              Status::NoAnswer, "wrong-sums: Frames came, but damaged: 2 with a wrong sum."},
             {"a frame of the reserved type", foreignFrame(), Status::NoAnswer,
              "foreign-frames: Frames came, but of other types (2) and no acknowledgement."},
             {"requests of another computer and frames of the reserved type",
              foreignFrame() + "FF FF 0C 41 01 06 07 06 09 01 3A 00 00 00 A5 " + foreignFrame(),
              Status::NoAnswer,
              "foreign-frames: Frames came, but of other types (1, 2) and no acknowledgement."},
             {"a late acknowledgement of something else", Hex::zoomReply(), Status::NoAnswer,
              "other-acknowledgements: Acknowledgements came, but of other commands (58) and none "
              "of HELLO."},
             {"an answer without version and settings", "FF FF 0A 41 01 06 07 06 09 05 16 00 83",
              Status::Warning,
              "answer-short: The camera answered, but its answer is too short: 13 bytes instead of "
              "26. Corvane connects and takes for 0 what is missing."},
             {"an answer that is one byte too short",
              "FF FF 16 41 01 06 07 06 09 05 16 00 01 00 00 06 01 00 00 00 00 01 01 01 9A",
              Status::Warning,
              "answer-short: The camera answered, but its answer is too short: 25 bytes instead of "
              "26. Corvane connects and takes for 0 what is missing."},
             {"an answer that is one byte too long",
              "FF FF 18 41 01 06 07 06 09 05 16 00 01 00 00 06 01 00 00 00 00 01 01 01 01 00 9D",
              Status::Answer, "answer: The camera answered after 0.015 s."},
             {"an answer with a checksum of FF",
              "FF FF 17 41 01 06 07 06 09 05 16 00 01 00 00 69 01 00 00 00 00 01 01 01 01 FF",
              Status::Warning,
              "answer-sum-ff: The camera answered, and the checksum of its answer is FF. Corvane "
              "connects, but cannot make out the next reply after that."},
             {"an answer amid noise", QByteArray("12 34 ") + Hex::helloReply() + "56",
              Status::Warning,
              "answer-amid-noise: The camera answered, but 3 bytes came outside whole frames."},
             {"an answer after everything else there is",
              Hex::hello() + foreignFrame() + Hex::zoomReply() + Hex::helloReply()
                  + Hex::helloReply(),
              Status::Warning,
              "answer-among-others: The camera answered, but other frames came as well: 1 more of "
              "the same, 1 of the own request, 1 acknowledging another command, 1 of another "
              "type."},
             // What says most about the cause comes first.
             {"an acknowledgement is more than a frame of another type",
              foreignFrame() + Hex::zoomReply(), Status::NoAnswer,
              "other-acknowledgements: Acknowledgements came, but of other commands (58) and none "
              "of HELLO."},
             {"another frame is more than the own request", Hex::hello() + foreignFrame(),
              Status::NoAnswer,
              "foreign-frames: Frames came, but of other types (2) and no acknowledgement."},
             {"the own request is more than a wrong sum", Hex::hello() + frameWithWrongSum(),
              Status::NoAnswer, "echo: The own request came back, and no answer."},
             {"a wrong sum is more than the start of a frame",
              frameWithWrongSum() + frameBrokenOff(), Status::NoAnswer,
              "wrong-sums: Frames came, but damaged: 1 with a wrong sum."},
             {"the start of a frame is more than noise", QByteArray("12 34 ") + frameBrokenOff(),
              Status::NoAnswer, "broken-off: Frames came, but incomplete: 1 broken off."}});
    }

    void judgesWhatCameBack()
    {
        QFETCH(QByteArray, bytes);
        const Diagnosis diagnosis = diagnosisOf(bytes);
        QTEST(text(diagnosis.verdict), "verdict");
        QTEST(diagnosis.status, "status");
    }

    void judgesHowLateTheAnswerIs_data()
    {
        // time: ms;
        addRows<int, Status, QString>(
            {"time", "status", "verdict"},
            {{"at the last moment of in time", 1000, Status::Answer,
              "answer: The camera answered after 1 s."},
             {"late", 1001, Status::Warning,
              "answer-late: The camera answered, but only after 1.001 s; Corvane waits for 5 s."},
             {"at the last moment", 5000, Status::Warning,
              "answer-late: The camera answered, but only after 5 s; Corvane waits for 5 s."},
             {"too late", 5001, Status::NoAnswer,
              R"(answer-too-late: The camera answered after 5.001 s, but Corvane waits for 5 s only )"
              R"(and says "Connection fail!".)"}});
    }

    void judgesHowLateTheAnswerIs()
    {
        QFETCH(int, time);
        const Diagnosis diagnosis = diagnosisOf(Hex::helloReply(), time);
        QTEST(text(diagnosis.verdict), "verdict");
        QTEST(diagnosis.status, "status");
    }

    void judgesAPortThatCannotBeUsed_data()
    {
        PortFinding alone = failedPort(Kind::NoDevice);
        alone.ports.clear();
        PortFinding held = failedPort(Kind::Held);
        held.holders = {{42, "corvane %2"}};
        PortFinding heldByMany = held;
        heldByMany.holders = {{1, "a"}, {2, "b"}, {3, "c"}, {4, "d"}, {5, "e"}, {6, "f"}, {7, "g"}};
        // Of the remedy only its start.
        addRows<PortFinding, QString, QString>(
            {"finding", "verdict", "remedy"},
            {{"no device", failedPort(Kind::NoDevice),
              "no-device: There is no serial port ttyUSB0.",
              "The ports that there are: ttyS0, ttyUSB0 (USB Serial). If the adapter is plugged "
              "in"},
             {"no device at all", alone, "no-device: There is no serial port ttyUSB0.",
              "This computer has no serial port at all. If the adapter is plugged in"},
             {"not serial", failedPort(Kind::NotSerial),
              "not-serial: ttyUSB0 is not a serial port but a folder.",
              "Give the name of a port, such as ttyUSB0. The ports that there are: ttyS0, "},
             {"not in the group", failedPort(Kind::NotInGroup),
              "not-in-group: You may not open ttyUSB0: it is for the group uucp, and anna is "
              "not in it.",
              R"(Join the group with "sudo adduser anna uucp", then log out and in again.)"},
             {"not logged in since", failedPort(Kind::LoginMissing),
              "login-missing: You may not open ttyUSB0 yet: anna has joined the group uucp, but "
              "not logged in since.",
              "Log out of the whole desktop and in again, or restart the computer."},
             {"not permitted at all", failedPort(Kind::NotPermitted),
              "not-permitted: You may not open ttyUSB0: it belongs to root, and joining a group "
              "would not help.",
              R"(Ask whoever looks after this computer. "ls -l /dev/ttyUSB0" shows who may open it; )"},
             {"held by one", held,
              "held: Another program has ttyUSB0 open: corvane %2 (process 42).",
              "Close that program and try again; to ask the camera now would disturb it."},
             {"held by many", heldByMany,
              "held: Another program has ttyUSB0 open: a (process 1), b (process 2), c (process "
              "3), d (process 4), e (process 5), and 2 more.",
              "Close that program and try again; to ask the camera now would disturb it."},
             {"a console", failedPort(Kind::Console),
              "console: ttyUSB0 is a console of this computer, for its messages and for logging "
              "in.",
              "The camera is on another port. The ports that there are: ttyS0, "},
             {"held by a program that may not be seen", failedPort(Kind::Held),
              "held-unseen: Another program has ttyUSB0 open, but you may not see which.",
              R"("sudo corvane-diagnose ttyUSB0" names it.)"},
             {"a lock left behind", failedPort(Kind::StaleLock),
              "stale-lock: ttyUSB0 is locked by a program that has ended without removing its lock "
              "file /var/lock/LCK..ttyUSB0.",
              R"(Remove it with "sudo rm /var/lock/LCK..ttyUSB0" and try again.)"},
             {"any other reason", failedPort(Kind::CannotOpen),
              "cannot-open: ttyUSB0 cannot be opened: Input/output error.",
              "Pull the adapter out, plug it in again and try again."},
             {"hung up", failedPort(Kind::HungUp),
              "hung-up: ttyUSB0 failed while the camera was asked: Input/output error.",
              "The adapter was pulled out or has lost its power"},
             {"hung up by another program", failedPort(Kind::LineHungUp),
              "hung-up-by-program: The line of ttyUSB0 was hung up while the camera was asked, but "
              "the port is still there.",
              "A program that had ttyUSB0 as its terminal has ended"}});
    }

    void judgesAPortThatCannotBeUsed()
    {
        QFETCH(PortFinding, finding);
        QFETCH(QString, remedy);
        const Diagnosis diagnosis = diagnose(finding, {}, milliseconds(6000));
        QTEST(text(diagnosis.verdict), "verdict");
        QVERIFY2(diagnosis.verdict.remedy.startsWith(remedy), qPrintable(diagnosis.verdict.remedy));
        QCOMPARE(diagnosis.status, Status::BadPort);
    }

    void doesNotJudgeTheLineOfAPortThatFailed()
    {
        const Diagnosis diagnosis =
            diagnosisOf("00 " + Hex::helloReply(), 15, failedPort(Kind::HungUp));
        QCOMPARE(diagnosis.verdict.id, QString("hung-up"));
        QVERIFY(diagnosis.furtherWarnings.isEmpty());
    }

    void tellsOfAnotherProgramOnAnOpenPort()
    {
        PortFinding finding = openPort();
        finding.holders = {{42, "cat"}};
        const Diagnosis answered = diagnosisOf(Hex::helloReply(), 15, finding);
        QCOMPARE(
            text(answered.verdict),
            QString("answer-shared: The camera answered, but another program has ttyUSB0 open as "
                    "well: cat (process 42). Each gets only a part of what comes."));
        QCOMPARE(answered.status, Status::Warning);
        const Diagnosis silent = diagnosisOf({}, 15, finding);
        QCOMPARE(
            text(silent.verdict),
            QString("shared: No answer came, and another program has ttyUSB0 open as well: cat "
                    "(process 42). It may have taken the answer away."));
        QCOMPARE(silent.status, Status::NoAnswer);
    }

    void tellsOfAProgramThatCannotBeSeen()
    {
        PortFinding finding = openPort();
        finding.isReadByOthers = true;
        const Diagnosis silent = diagnosisOf({}, 15, finding);
        QCOMPARE(text(silent.verdict),
                 QString("shared-unseen: No answer came, and another program has taken bytes away, "
                         "but you may not see which."));
        QCOMPARE(silent.status, Status::NoAnswer);
        QCOMPARE(diagnosisOf(Hex::helloReply(), 15, finding).verdict.id, QString("answer"));
    }

    void sendsToRootWhatAnotherProgramCouldHaveCaused_data()
    {
        addRows<QByteArray, QString, bool>({"bytes", "verdict", "sendsToRoot"},
                                           {{"silence", {}, "silent", true},
                                            {"half a frame", frameBrokenOff(), "broken-off", true},
                                            {"noise", "00", "no-frame", true},
                                            {"damage", frameWithWrongSum(), "wrong-sums", false}});
    }

    void sendsToRootWhatAnotherProgramCouldHaveCaused()
    {
        QFETCH(QByteArray, bytes);
        const QString hint = " Another user's program may take the answers: \"sudo "
                             "corvane-diagnose ttyUSB0\" shows it.";
        PortFinding finding = openPort();
        const Verdict ofUser = diagnosisOf(bytes, 15, finding).verdict;
        QTEST(ofUser.id, "verdict");
        QTEST(ofUser.remedy.endsWith(hint), "sendsToRoot");
        finding.seesEveryHolder = true;
        QVERIFY(!diagnosisOf(bytes, 15, finding).verdict.remedy.contains("sudo"));
    }

    void givesEveryWarningThatApplies()
    {
        PortFinding finding = openPort();
        finding.holders = {{42, "cat"}};
        // An answer that is too short, and has the version 01 00 00 77.
        const Diagnosis diagnosis = diagnosisOf(
            Hex::hello() + "00 FF FF 0E 41 01 06 07 06 09 05 16 00 01 00 00 77 FF", 1500, finding);
        QCOMPARE(diagnosis.verdict.id, QString("answer-short"));
        QCOMPARE(diagnosis.status, Status::Warning);
        QStringList ids;
        for (const Verdict &warning : diagnosis.furtherWarnings) {
            ids << warning.id;
            QVERIFY2(!warning.sentence.isEmpty() && !warning.remedy.isEmpty(),
                     qPrintable(warning.id));
        }
        QCOMPARE(ids,
                 (QStringList{"answer-shared", "answer-sum-ff", "answer-among-others",
                              "answer-amid-noise", "answer-late"}));

        QVERIFY(diagnosisOf("00 " + Hex::helloReply()).furtherWarnings.isEmpty());
        QVERIFY(diagnosisOf("00 " + Hex::helloReply(), 5001).furtherWarnings.isEmpty());
    }

    void givesARemedyForEverythingButSuccess()
    {
        QCOMPARE(diagnosisOf(Hex::helloReply()).verdict.remedy, QString());
        for (const QByteArray &bytes :
             {QByteArray(), Hex::hello(), QByteArray("00"), frameBrokenOff(), frameWithWrongSum(),
              foreignFrame(), Hex::zoomReply(), "00 " + Hex::helloReply(),
              Hex::hello() + Hex::helloReply()}) {
            const Verdict verdict = diagnosisOf(bytes).verdict;
            QVERIFY2(verdict.remedy.endsWith('.') && !verdict.remedy.contains('{'),
                     qPrintable(verdict.id));
        }
        QVERIFY(diagnosisOf(Hex::helloReply(), 1001)
                    .verdict.remedy.startsWith("Was the camera just starting"));
        QVERIFY(diagnosisOf({}).verdict.remedy.contains("Is ttyUSB0 the right adapter?"));
    }

    void putsNothingIntoWhatItPutsIn()
    {
        PortFinding finding = failedPort(Kind::NoDevice);
        finding.port = "{device}";
        QCOMPARE(text(diagnose(finding, {}, milliseconds(6000)).verdict),
                 QString("no-device: There is no serial port {device}."));
    }

    void tellsTheTimeWaitedFor()
    {
        QCOMPARE(diagnose(openPort(), {}, milliseconds(250)).verdict.sentence,
                 QString("Nothing at all came back within 0.25 s."));
        QCOMPARE(diagnose(openPort(), {}, milliseconds(3599999)).verdict.sentence,
                 QString("Nothing at all came back within 3600 s."));
    }
};

QTEST_GUILESS_MAIN(DiagnosisTest)
#include "tst_diagnosis.moc"
