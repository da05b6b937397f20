// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "step.h"

// What the protocol cannot catch, told in docs/reliability.md: these are not the program's to mend,
// and this test tells when one of them has become different.

class UndetectedFaultsTest : public QObject {
    Q_OBJECT

private slots:
    void anAcknowledgementThatComesTwiceHidesALostPacket()
    {
        PatientFixture fixture;
        // Behind HELLO and its reply: the second request announces the size, the third is the
        // packet. The acknowledgement of the size comes once more when the packet's is waited for.
        DO(fixture.start({"--save-firmware", fixture.path("received"), "--faults",
                          "duplicate=2000@reply:2,drop@request:3"}));
        DO(fixture.pack(QByteArray(100, 'x')));
        DO(fixture.connectCamera());
        DO(fixture.startUpgrade());
        DO(fixture.waitUntilComplete());
        QVERIFY(!QFile::exists(fixture.path("received")));

        // It shows when connecting again: the camera still runs what it had.
        DO(fixture.tell("faults none"));
        DO(fixture.connectCamera());
        QCOMPARE(fixture.corvane.text("textEdit_device_info"), QString("Device Version: 1.0.0.6"));
    }

    void twoBytesThatChangePlacesStayInTheFirmware()
    {
        PatientFixture fixture;
        // The packet's payload starts at byte 12.
        DO(fixture.start({"--save-firmware", fixture.path("received"), "--reboot-time", "0",
                          "--faults", "swap@request:3.12"}));
        DO(fixture.pack("firmware"));
        DO(fixture.connectCamera());
        DO(fixture.startUpgrade());
        DO(fixture.waitUntilComplete());
        QCOMPARE(fixture.contents("received"), QByteArray("ifrmware"));
    }

    void aReplyWhoseChecksumIsFFCostsTheOneBehindIt()
    {
        PatientFixture fixture;
        fixture.setSpeed(10);
        DO(fixture.start({"--camera-version", "1.0.0.105", "--settings", "1,1,0,1,1"}));
        DO(fixture.connectCamera());
        const QStringList frames = fixture.frames();
        QVERIFY(frames.last().endsWith("FF"));
        DO(fixture.corvane.holdLimits(false));
        DO(fixture.corvane.click("pushButton_apply"));
        DO(fixture.corvane.waitForDialog("Error: Apply fail!"));
        DO(fixture.corvane.answerDialog());
        DO(fixture.corvane.waitForDialog({}));
        DO(fixture.corvane.holdLimits(true));
        DO(fixture.corvane.click("pushButton_apply"));
        DO(fixture.corvane.waitForDialog("Information: Apply Success."));
    }
};

QTEST_GUILESS_MAIN(UndetectedFaultsTest)
#include "tst_undetectedfaults.moc"
