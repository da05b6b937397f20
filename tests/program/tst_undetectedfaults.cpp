// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "step.h"

#include <QtTest>

// What the protocol cannot catch, told in docs/reliability.md: these are not the program's to mend,
// and this test tells when one of them has become different.
class UndetectedFaultsTest : public QObject {
    Q_OBJECT

private slots:
    void anAcknowledgementThatComesTwiceHidesALostPacket();
    void twoBytesThatChangePlacesStayInTheFirmware();
    void aReplyWhoseChecksumIsFFCostsTheOneBehindIt();
};

void UndetectedFaultsTest::anAcknowledgementThatComesTwiceHidesALostPacket()
{
    Desk desk;
    // Behind HELLO and its reply: the second request announces the size, the third is the packet.
    // The acknowledgement of the size comes once more when the packet's is waited for.
    DO(desk.start({"--save-firmware", desk.path("received"), "--faults",
                   "duplicate=100@reply:2,drop@request:3"}));
    DO(desk.pack(QByteArray(100, 'x')));
    DO(desk.connectCamera());
    DO(desk.startUpgrade());
    DO(desk.waitUntilComplete());
    QVERIFY(!QFile::exists(desk.path("received")));

    // It shows when connecting again: the camera still runs what it had.
    DO(desk.tell("faults none"));
    DO(desk.connectCamera());
    QCOMPARE(desk.corvane.text("textEdit_device_info"), QString("Device Version: 1.0.0.6"));
}

void UndetectedFaultsTest::twoBytesThatChangePlacesStayInTheFirmware()
{
    Desk desk;
    // The packet's payload starts at byte 12.
    DO(desk.start({"--save-firmware", desk.path("received"), "--reboot-time", "0", "--faults",
                   "swap@request:3.12"}));
    DO(desk.pack("firmware"));
    DO(desk.connectCamera());
    DO(desk.startUpgrade());
    DO(desk.waitUntilComplete());
    QCOMPARE(desk.contents("received"), QByteArray("ifrmware"));
}

void UndetectedFaultsTest::aReplyWhoseChecksumIsFFCostsTheOneBehindIt()
{
    Desk desk;
    desk.setSpeed(10);
    DO(desk.start({"--camera-version", "1.0.0.105", "--settings", "1,1,0,1,1"}));
    DO(desk.connectCamera());
    const QStringList frames = desk.frames();
    QVERIFY(frames.last().endsWith("FF"));
    DO(desk.corvane.click("pushButton_apply"));
    DO(desk.corvane.waitForDialog("Error: Apply fail!"));
    DO(desk.corvane.answerDialog());
    DO(desk.corvane.waitForDialog({}));
    DO(desk.corvane.click("pushButton_apply"));
    DO(desk.corvane.waitForDialog("Information: Apply Success."));
}

QTEST_GUILESS_MAIN(UndetectedFaultsTest)
#include "tst_undetectedfaults.moc"
