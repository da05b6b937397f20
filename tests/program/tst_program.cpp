// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "desk.h"
#include "processstatus.h"
#include "step.h"

#include <QRandomGenerator>
#include <QtTest>

#include <csignal>

class ProgramTest : public QObject {
    Q_OBJECT

private slots:
    void anOperatorsSessionPutsExactlyTheseBytesOnTheWire();
    void aSilentCameraFailsTheConnection();
    void anUnpluggedAdapterDisconnectsAndLeavesTheProgramIdle();
    void anAdapterThatIsBackAtOnceDisconnectsToo();
    void aPluggedAdapterShowsWhenTheListOpens();
    void theCameraReceivesTheFirmwareThatWasPacked();
    void closingTheWindowDuringAnUpgradeIsDeclined();
    void anAdapterUnpluggedDuringAnUpgradeStopsIt();
    void closingTheWindowEndsTheProgram_data();
    void closingTheWindowEndsTheProgram();
};

void ProgramTest::anOperatorsSessionPutsExactlyTheseBytesOnTheWire()
{
    Desk desk;
    DO(desk.start({"--camera-version", "1.0.10.16", "--settings", "1,1,0,1,1", "--zoom-2", "272"}));
    QCOMPARE(desk.corvane.text("comboBox_portlist"), desk.portItem());
    DO(desk.connectCamera());
    DO(desk.corvane.waitUntil("the version is shown", [&desk] {
        return desk.corvane.text("textEdit_device_info") == "Device Version: 1.0.a.10";
    }));

    DO(desk.corvane.choose("comboBox_autotracking", 2));
    DO(desk.corvane.choose("comboBox_targetmissing", 9));
    DO(desk.corvane.click("radioButton_upside_down"));
    DO(desk.corvane.choose("comboBox_autozoom", 0));
    DO(desk.corvane.choose("comboBox_zoomoffset", 3));
    DO(desk.corvane.waitUntil("everything is chosen", [&desk] {
        return desk.corvane.text("comboBox_autotracking") == "Pan Tracking"
            && desk.corvane.text("comboBox_targetmissing") == "Preset 7"
            && desk.corvane.isChecked("radioButton_upside_down")
            && desk.corvane.text("comboBox_autozoom") == "OFF"
            && desk.corvane.text("comboBox_zoomoffset") == "Custom";
    }));
    DO(desk.corvane.click("pushButton_apply"));
    DO(desk.corvane.waitForDialog("Information: Apply Success."));
    DO(desk.corvane.answerDialog());
    DO(desk.corvane.waitForDialog({}));
    QCOMPARE(desk.corvane.text("comboBox_targetmissing"), QString("Preset 7"));

    DO(desk.corvane.click("pushButton_custom_zoom_2"));
    DO(desk.corvane.waitUntil("the zoom is shown", [&desk] {
        return desk.corvane.text("textEdit_device_info")
            == "Device Version: 1.0.a.10\nSetting custom zoom: 272";
    }));
    DO(desk.corvane.click("pushButton_disconnect"));
    DO(desk.corvane.waitForEnabled("tabWidget", false));
    QCOMPARE(desk.corvane.text("textEdit_device_info"), QString());

    QCOMPARE(desk.frames(),
             QStringList({
                 "<- FF FF 0A 41 01 06 07 06 09 01 16 00 7F",
                 "-> FF FF 17 41 01 06 07 06 09 05 16 00 01 00 0A 10 01 00 00 00 00 01 01 01 01 B0",
                 "<- FF FF 0F 41 01 06 07 06 09 01 55 00 02 09 01 00 03 D2",
                 "-> FF FF 17 41 01 06 07 06 09 05 55 00 01 00 0A 10 09 00 00 01 01 01 00 00 03 F9",
                 "<- FF FF 0C 41 01 06 07 06 09 01 3A 00 01 00 A6",
                 "-> FF FF 0C 41 01 06 07 06 09 05 3A 00 01 10 BA",
             }));

    DO(desk.corvane.close());
    DO(desk.corvane.waitUntilEnded());
    QCOMPARE(desk.corvane.exitCode(), 0);
}

void ProgramTest::aSilentCameraFailsTheConnection()
{
    Desk desk;
    DO(desk.start({"--silent"}));
    DO(desk.corvane.click("pushButton_connect"));
    DO(desk.corvane.waitForDialog("Error: Connection fail!", 15000));
    DO(desk.corvane.answerDialog());
    DO(desk.corvane.waitForEnabled("pushButton_connect"));
    QVERIFY(!desk.corvane.isEnabled("tabWidget"));
    QCOMPARE(desk.frames(), QStringList{"<- FF FF 0A 41 01 06 07 06 09 01 16 00 7F"});
}

void ProgramTest::anUnpluggedAdapterDisconnectsAndLeavesTheProgramIdle()
{
    Desk desk;
    DO(desk.start());
    DO(desk.connectCamera());
    DO(desk.tell("unplug"));
    DO(desk.corvane.waitForEnabled("tabWidget", false, 1000));
    DO(desk.corvane.waitForEnabled("pushButton_connect", true, 1000));
    QCOMPARE(desk.corvane.text("textEdit_device_info"), QString());

    // A program that kept asking the dead line would use all of that time.
    const qint64 process = desk.corvane.operatedProcessId();
    const qint64 before = ProcessStatus::of(process).processorTimeMs;
    QVERIFY(before > 0);
    QTest::qWait(1000);
    const qint64 used = ProcessStatus::of(process).processorTimeMs - before;
    QVERIFY2(used < 300, qPrintable(QString::number(used)));

    DO(desk.corvane.click("pushButton_connect"));
    DO(desk.corvane.waitForDialog("Error: No such file or directory"));
}

void ProgramTest::anAdapterThatIsBackAtOnceDisconnectsToo()
{
    Desk desk;
    DO(desk.start());
    DO(desk.connectCamera());
    // Held, the program cannot notice that the line is dead before its name is in use again.
    const auto process = static_cast<pid_t>(desk.corvane.operatedProcessId());
    QVERIFY(process > 0);
    QCOMPARE(::kill(process, SIGSTOP), 0);
    const bool isBack = desk.tell("unplug") && desk.tell("plug");
    QCOMPARE(::kill(process, SIGCONT), 0);
    QVERIFY2(isBack, qPrintable(desk.explanation()));
    DO(desk.corvane.waitForEnabled("tabWidget", false, 1000));
    DO(desk.connectCamera());
}

void ProgramTest::aPluggedAdapterShowsWhenTheListOpens()
{
    Desk desk;
    DO(desk.start());
    DO(desk.tell("unplug"));
    QCOMPARE(desk.corvane.text("comboBox_portlist"), desk.portItem());
    DO(desk.corvane.click("pushButton_connect"));
    DO(desk.corvane.waitForDialog("Error: No such file or directory"));
    DO(desk.corvane.answerDialog());
    DO(desk.corvane.waitForDialog({}));
    DO(desk.tell("plug"));
    DO(desk.corvane.choose("comboBox_portlist", 0));
    DO(desk.corvane.waitUntil("the adapter is listed", [&desk] {
        return desk.corvane.text("comboBox_portlist") == desk.portItem();
    }));
    DO(desk.connectCamera());
}

// Three firmwares, or as many as CORVANE_UPLOADS says, each from a seed of its own: CORVANE_SEED
// and up. Each has a program and a camera of its own too, so that one seed is enough to see it
// again.
void ProgramTest::theCameraReceivesTheFirmwareThatWasPacked()
{
    bool isSet = false;
    const int asked = qEnvironmentVariableIntValue("CORVANE_UPLOADS", &isSet);
    const int firstSeed = qEnvironmentVariableIntValue("CORVANE_SEED");
    const int behindLastSeed = firstSeed + (isSet ? asked : 3);
    for (int seed = firstSeed; seed < behindLastSeed; ++seed) {
        QRandomGenerator random(static_cast<quint32>(seed));
        QByteArray firmware(random.bounded(3000), '\0');
        for (char &byte : firmware) {
            byte = static_cast<char>(random.bounded(256));
        }
        Desk desk;
        DO(desk.start({"--save-firmware", desk.path("received"), "--reboot-time", "0"}));
        DO(desk.pack(firmware));
        DO(desk.connectCamera());
        DO(desk.startUpgrade());
        DO(desk.waitUntilComplete());
        QVERIFY2(desk.contents("received") == firmware,
                 qPrintable(QStringLiteral("from seed %1").arg(seed)));
    }
}

void ProgramTest::closingTheWindowDuringAnUpgradeIsDeclined()
{
    Desk desk;
    DO(desk.start({"--save-firmware", desk.path("received"), "--reboot-time", "0"}));
    const QByteArray firmware(2000, 'x');
    DO(desk.pack(firmware));
    DO(desk.connectCamera());
    DO(desk.startUpgrade());
    DO(desk.corvane.waitUntil(
        "it has begun", [&desk] { return desk.corvane.value("progressBar_updating") > 128; }));
    DO(desk.corvane.close());
    DO(desk.waitUntilComplete());
    QCOMPARE(desk.contents("received"), firmware);
    DO(desk.corvane.close());
    DO(desk.corvane.waitUntilEnded());
    QCOMPARE(desk.corvane.exitCode(), 0);
}

void ProgramTest::anAdapterUnpluggedDuringAnUpgradeStopsIt()
{
    Desk desk;
    DO(desk.start({"--save-firmware", desk.path("received")}));
    DO(desk.pack(QByteArray(20000, 'x')));
    DO(desk.connectCamera());
    DO(desk.startUpgrade());
    DO(desk.corvane.waitUntil(
        "it has begun", [&desk] { return desk.corvane.value("progressBar_updating") > 128; }));
    DO(desk.tell("unplug"));
    DO(desk.corvane.waitForDialog("Error: Transmission stop!"));
    DO(desk.corvane.answerDialog());
    DO(desk.corvane.waitForEnabled("pushButton_connect"));
    QVERIFY(!desk.corvane.isEnabled("tabWidget"));
    QVERIFY(!desk.corvane.text("textEdit_firmware_info").contains("complete"));
    QCOMPARE(desk.contents("received"), QByteArray());
}

void ProgramTest::closingTheWindowEndsTheProgram_data()
{
    QTest::addColumn<bool>("connects");
    QTest::addColumn<QString>("clicked");

    QTest::newRow("while disconnected") << false << "";
    QTest::newRow("while connected") << true << "";
    QTest::newRow("during the handshake") << false << "pushButton_connect";
    QTest::newRow("while settings are applied") << true << "pushButton_apply";
    QTest::newRow("while a zoom is set") << true << "pushButton_custom_zoom_1";
}

void ProgramTest::closingTheWindowEndsTheProgram()
{
    QFETCH(bool, connects);
    QFETCH(QString, clicked);
    Desk desk;
    DO(desk.start());
    if (connects) {
        DO(desk.connectCamera());
    }
    DO(desk.tell("silent on"));
    if (!clicked.isEmpty()) {
        const int framesBefore = desk.frames().size();
        DO(desk.corvane.click(clicked));
        DO(desk.corvane.waitUntil("the request is out", [&desk, framesBefore] {
            return desk.frames().size() > framesBefore;
        }));
    }
    DO(desk.corvane.close());
    // Well before the wait would have ended by itself, and without a box to be answered.
    DO(desk.corvane.waitUntilEnded(1900));
    QCOMPARE(desk.corvane.exitCode(), 0);
    QVERIFY(!desk.corvane.output().contains("Success"));
}

QTEST_GUILESS_MAIN(ProgramTest)
#include "tst_program.moc"
