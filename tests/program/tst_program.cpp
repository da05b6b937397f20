// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "processstatus.h"
#include "programfixture.h"
#include "rows.h"
#include "step.h"

#include <csignal>

class ProgramTest : public QObject {
    Q_OBJECT

private slots:
    void anOperatorsSessionPutsExactlyTheseBytesOnTheWire()
    {
        PatientFixture fixture;
        DO(fixture.start(
            {"--camera-version", "1.0.10.16", "--settings", "1,1,0,1,1", "--zoom-2", "272"}));
        QCOMPARE(fixture.corvane.text("comboBox_portlist"), fixture.portItem());
        DO(fixture.connectCamera());
        DO(fixture.corvane.waitForText("textEdit_device_info", "Device Version: 1.0.a.10"));

        DO(fixture.corvane.choose("comboBox_autotracking", 2));
        DO(fixture.corvane.choose("comboBox_targetmissing", 9));
        DO(fixture.corvane.click("radioButton_upside_down"));
        DO(fixture.corvane.choose("comboBox_autozoom", 0));
        DO(fixture.corvane.choose("comboBox_zoomoffset", 3));
        DO(fixture.corvane.waitUntil("everything is chosen", [&fixture] {
            return fixture.corvane.text("comboBox_autotracking") == "Pan Tracking"
                && fixture.corvane.text("comboBox_targetmissing") == "Preset 7"
                && fixture.corvane.isChecked("radioButton_upside_down")
                && fixture.corvane.text("comboBox_autozoom") == "OFF"
                && fixture.corvane.text("comboBox_zoomoffset") == "Custom";
        }));
        DO(fixture.apply());
        QCOMPARE(fixture.corvane.text("comboBox_targetmissing"), QString("Preset 7"));

        DO(fixture.corvane.click("pushButton_custom_zoom_2"));
        DO(fixture.corvane.waitForText("textEdit_device_info",
                                       "Device Version: 1.0.a.10\nSetting custom zoom: 272"));
        DO(fixture.corvane.click("pushButton_disconnect"));
        DO(fixture.corvane.waitForEnabled("tabWidget", false));
        QCOMPARE(fixture.corvane.text("textEdit_device_info"), QString());

        QCOMPARE(
            fixture.frames(),
            QStringList({
                "<- FF FF 0A 41 01 06 07 06 09 01 16 00 7F",
                "-> FF FF 17 41 01 06 07 06 09 05 16 00 01 00 0A 10 01 00 00 00 00 01 01 01 01 B0",
                "<- FF FF 0F 41 01 06 07 06 09 01 55 00 02 09 01 00 03 D2",
                "-> FF FF 17 41 01 06 07 06 09 05 55 00 01 00 0A 10 09 00 00 01 01 01 00 00 03 F9",
                "<- FF FF 0C 41 01 06 07 06 09 01 3A 00 01 00 A6",
                "-> FF FF 0C 41 01 06 07 06 09 05 3A 00 01 10 BA",
            }));

        DO(fixture.corvane.close());
        DO(fixture.corvane.waitUntilEnded());
        QCOMPARE(fixture.corvane.exitCode(), 0);
    }

    void desktopsKnowIt()
    {
        PatientFixture fixture;
        DO(fixture.start({}));
        QCOMPARE(fixture.corvane.desktopFile(), QString("example.corvane.Corvane"));
        QVERIFY(fixture.corvane.hasIcon());
    }

    void aSilentCameraFailsTheConnection()
    {
        PatientFixture fixture;
        DO(fixture.start({"--silent"}));
        DO(fixture.corvane.holdLimits(false));
        DO(fixture.corvane.click("pushButton_connect"));
        DO(fixture.corvane.waitForDialog("Error: Connection fail!"));
        DO(fixture.corvane.answerDialog());
        DO(fixture.corvane.waitForEnabled("pushButton_connect"));
        QVERIFY(!fixture.corvane.isEnabled("tabWidget"));
        QCOMPARE(fixture.frames(), QStringList{"<- FF FF 0A 41 01 06 07 06 09 01 16 00 7F"});
    }

    void anUnpluggedAdapterDisconnectsAndLeavesTheProgramIdle()
    {
        PatientFixture fixture;
        DO(fixture.start());
        DO(fixture.connectCamera());
        DO(fixture.tell("unplug"));
        DO(fixture.corvane.waitForEnabled("tabWidget", false));
        DO(fixture.corvane.waitForEnabled("pushButton_connect"));
        QCOMPARE(fixture.corvane.text("textEdit_device_info"), QString());

        // A program that kept asking the dead line would not sleep.
        const qint64 process = fixture.corvane.operatedProcessId();
        int timesAsleep = 0;
        DO(fixture.corvane.waitUntil("the program is idle", [process, &timesAsleep] {
            timesAsleep = ProcessStatus::of(process).isAsleep ? timesAsleep + 1 : 0;
            return timesAsleep == 20;
        }));

        DO(fixture.corvane.click("pushButton_connect"));
        DO(fixture.corvane.waitForDialog("Error: No such file or directory"));
    }

    void anAdapterThatIsBackAtOnceDisconnectsToo()
    {
        PatientFixture fixture;
        DO(fixture.start());
        DO(fixture.connectCamera());
        // Held, the program cannot notice that the line is dead before its name is in use again.
        const auto process = static_cast<pid_t>(fixture.corvane.operatedProcessId());
        QVERIFY(process > 0);
        QCOMPARE(::kill(process, SIGSTOP), 0);
        const bool isBack = fixture.tell("unplug") && fixture.tell("plug");
        QCOMPARE(::kill(process, SIGCONT), 0);
        QVERIFY2(isBack, qPrintable(fixture.explanation()));
        DO(fixture.corvane.waitForEnabled("tabWidget", false));
        DO(fixture.connectCamera());
    }

    void aPluggedAdapterShowsWhenTheListOpens()
    {
        PatientFixture fixture;
        DO(fixture.start());
        DO(fixture.tell("unplug"));
        QCOMPARE(fixture.corvane.text("comboBox_portlist"), fixture.portItem());
        DO(fixture.corvane.click("pushButton_connect"));
        DO(fixture.corvane.waitForDialog("Error: No such file or directory"));
        DO(fixture.corvane.answerDialog());
        DO(fixture.corvane.waitForDialog({}));
        DO(fixture.tell("plug"));
        DO(fixture.corvane.choose("comboBox_portlist", 0));
        DO(fixture.corvane.waitForText("comboBox_portlist", fixture.portItem()));
        DO(fixture.connectCamera());
    }

    // Three firmwares, or as many as CORVANE_UPLOADS says, each from a seed of its own:
    // CORVANE_SEED and up. Each has a program and a camera of its own too, so that one seed is
    // enough to see it again.
    void theCameraReceivesTheFirmwareThatWasPacked()
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
            PatientFixture fixture;
            DO(fixture.start({"--save-firmware", fixture.path("received"), "--reboot-time", "0"}));
            DO(fixture.pack(firmware));
            DO(fixture.connectCamera());
            DO(fixture.startUpgrade());
            DO(fixture.waitUntilComplete());
            QVERIFY2(fixture.contents("received") == firmware,
                     qPrintable(QStringLiteral("from seed %1").arg(seed)));
        }
    }

    void closingTheWindowDuringAnUpgradeIsDeclined()
    {
        PatientFixture fixture;
        DO(fixture.start({"--save-firmware", fixture.path("received"), "--reboot-time", "0"}));
        const QByteArray firmware(2000, 'x');
        DO(fixture.pack(firmware));
        DO(fixture.connectCamera());
        DO(fixture.startUpgrade());
        DO(fixture.corvane.waitUntil("it has begun", [&fixture] {
            return fixture.corvane.value("progressBar_updating") > 128;
        }));
        // Held, the camera cannot complete it meanwhile.
        const auto camera = static_cast<pid_t>(fixture.corvane.processId());
        QCOMPARE(::kill(camera, SIGSTOP), 0);
        const bool isClosing = !fixture.corvane.close()
            || !fixture.corvane.text("textEdit_firmware_info").startsWith("Protocol version: ");
        QCOMPARE(::kill(camera, SIGCONT), 0);
        QVERIFY(!isClosing);
        DO(fixture.waitUntilComplete());
        QCOMPARE(fixture.contents("received"), firmware);
        DO(fixture.corvane.close());
        DO(fixture.corvane.waitUntilEnded());
        QCOMPARE(fixture.corvane.exitCode(), 0);
    }

    void anAdapterUnpluggedDuringAnUpgradeStopsIt()
    {
        PatientFixture fixture;
        DO(fixture.start({"--save-firmware", fixture.path("received")}));
        // Far more than passes before the line is cut.
        DO(fixture.pack(QByteArray(100'000, 'x')));
        DO(fixture.connectCamera());
        DO(fixture.startUpgrade());
        DO(fixture.corvane.waitUntil("it has begun", [&fixture] {
            return fixture.corvane.value("progressBar_updating") > 128;
        }));
        DO(fixture.tell("unplug"));
        DO(fixture.corvane.holdLimits(false));
        DO(fixture.corvane.waitForDialog("Error: Transmission stop!"));
        DO(fixture.corvane.answerDialog());
        DO(fixture.corvane.waitForEnabled("pushButton_connect"));
        QVERIFY(!fixture.corvane.isEnabled("tabWidget"));
        QVERIFY(!fixture.corvane.text("textEdit_firmware_info").contains("complete"));
        QCOMPARE(fixture.contents("received"), QByteArray());
    }

    void closingTheWindowEndsTheProgram_data()
    {
        addRows<bool, QString>({"connects", "clicked"},
                               {{"while disconnected", false, ""},
                                {"while connected", true, ""},
                                {"during the handshake", false, "pushButton_connect"},
                                {"while settings are applied", true, "pushButton_apply"},
                                {"while a zoom is set", true, "pushButton_custom_zoom_1"}});
    }

    void closingTheWindowEndsTheProgram()
    {
        QFETCH(bool, connects);
        QFETCH(QString, clicked);
        PatientFixture fixture;
        DO(fixture.start());
        if (connects) {
            DO(fixture.connectCamera());
        }
        DO(fixture.tell("silent on"));
        if (!clicked.isEmpty()) {
            const int framesBefore = fixture.frames().size();
            DO(fixture.corvane.click(clicked));
            DO(fixture.corvane.waitUntil("the request is out", [&fixture, framesBefore] {
                return fixture.frames().size() > framesBefore;
            }));
        }
        DO(fixture.corvane.close());
        // While the wait lasts, and without a box to be answered.
        DO(fixture.corvane.waitUntilEnded());
        QCOMPARE(fixture.corvane.exitCode(), 0);
        QVERIFY(!fixture.corvane.output().contains("Success"));
    }
};

QTEST_GUILESS_MAIN(ProgramTest)
#include "tst_program.moc"
