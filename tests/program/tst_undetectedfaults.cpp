// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "step.h"

// What the protocol cannot catch, see docs/reliability.md: these are not the program's to mend,
// and this test says when one of them has changed.

// When the simulator noted that; invalid if it has not yet.
static QTime timeOf(const QString &note, PatientFixture &fixture)
{
    const QRegularExpression line(R"((\d\d:\d\d:\d\d\.\d\d\d)  -- )" + note);
    return QTime::fromString(line.match(fixture.corvane.output()).captured(1), "hh:mm:ss.zzz");
}

class UndetectedFaultsTest : public QObject {
    Q_OBJECT

private slots:
    void anAcknowledgementThatComesTwiceHidesALostPacket()
    {
        // On a busy machine the packet may come later than the copy of the acknowledgement: the
        // copy then gets more time.
        for (int pause = 500;; pause *= 4) {
            PatientFixture fixture;
            // After HELLO and its reply: the second request announces the size, the third is the
            // packet. The acknowledgement of the size comes once more when the packet's is waited
            // for.
            DO(fixture.start({"--save-firmware", fixture.path("received"), "--faults",
                              QString("duplicate=%1@reply:2,drop@request:3").arg(pause)}));
            DO(fixture.pack(QByteArray(100, 'x')));
            DO(fixture.connectCamera());
            DO(fixture.startUpgrade());
            DO(fixture.corvane.waitUntil("the packet is lost", [&fixture] {
                return timeOf("request 3: dropped", fixture).isValid();
            }));
            if (timeOf("reply 2: repeated", fixture).msecsTo(timeOf("request 3: dropped", fixture))
                    >= pause
                && pause < kPatience) {
                continue;
            }
            DO(fixture.waitUntilComplete());
            QVERIFY(!QFile::exists(fixture.path("received")));

            // It shows when connecting again: the camera still runs what it had.
            DO(fixture.tell("faults none"));
            DO(fixture.connectCamera());
            QCOMPARE(fixture.corvane.text("textEdit_device_info"),
                     QString("Device Version: 1.0.0.6"));
            return;
        }
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
        DO(fixture.apply());
    }
};

QTEST_GUILESS_MAIN(UndetectedFaultsTest)
#include "tst_undetectedfaults.moc"
