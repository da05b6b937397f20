// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "answeringcamera.h"
#include "frames.h"
#include "memoryline.h"
#include "patience.h"
#include "rows.h"

using namespace std::chrono_literals;

namespace {

AnsweringCamera::Behaviour withDelay(std::chrono::milliseconds delay)
{
    AnsweringCamera::Behaviour behaviour;
    behaviour.baud = 0;
    behaviour.delay = delay;
    return behaviour;
}

AnsweringCamera::Behaviour withRebootTime(std::chrono::milliseconds time,
                                          std::chrono::milliseconds delay = 0ms)
{
    AnsweringCamera::Behaviour behaviour = withDelay(delay);
    behaviour.rebootTime = time;
    return behaviour;
}

/// A camera, its line, and what it says.
struct Fixture {
    explicit Fixture(const AnsweringCamera::Behaviour &behaviour = withDelay(0ms))
        : camera({}, behaviour, ExchangeLog(false), line)
        , logged(&camera, &AnsweringCamera::logged)
        , received(&camera, &AnsweringCamera::firmwareReceived)
    {
        timer.start();
        QObject::connect(&camera, &AnsweringCamera::logged, &camera,
                         [this] { logTimes << timer.elapsed(); });
    }

    // The lines of the log without the time in front.
    QStringList events() const
    {
        QStringList texts;
        for (const QList<QVariant> &arguments : logged) {
            texts << arguments.at(0).toString().mid(14);
        }
        return texts;
    }

    MemoryLine line;
    AnsweringCamera camera;
    QSignalSpy logged;
    QSignalSpy received;
    QElapsedTimer timer;
    QVector<qint64> logTimes; ///< in milliseconds, rounded down
};

} // namespace

class AnsweringCameraTest : public QObject {
    Q_OBJECT

private slots:
    void answersARequestThatComesInPieces()
    {
        Fixture fixture;
        fixture.line.receive("FF FF 0A 41 01");
        fixture.line.receive("06 07 06 09 01 16 00");
        QCOMPARE(fixture.line.written(), QByteArray());
        fixture.line.receive("7F");
        QCOMPARE(fixture.line.written(), Hex::helloReply());
        QCOMPARE(fixture.logged.size(), 2);
        QVERIFY(fixture.events().at(0).contains("<- HELLO"));
        QVERIFY(fixture.events().at(1).contains("-> HELLO ack"));
    }

    void sendsAtTheSpeedOfTheLine()
    {
        AnsweringCamera::Behaviour behaviour;
        behaviour.baud = 9600;
        Fixture fixture(behaviour);
        fixture.line.receive(Hex::hello());
        QCOMPARE(fixture.line.written(), QByteArray());
        QCOMPARE(fixture.logged.size(), 1);
        // 13 bytes in and 26 out take that long on that line.
        QVERIFY(happensWithin(45ms, [&fixture] { return fixture.logged.size() == 2; }));
        VERIFY_AT_LEAST(fixture.logTimes.at(1), 40);
        QCOMPARE(fixture.line.written(), Hex::helloReply());
    }

    // A busy machine may find many bytes due at once, but not each time.
    void sendsEachByteWhenItIsDue()
    {
        AnsweringCamera::Behaviour behaviour;
        behaviour.baud = 1200;
        int pieces = 0;
        for (int attempt = 1; attempt <= 9 && pieces < 20; ++attempt) {
            Fixture fixture(behaviour);
            fixture.line.receive(Hex::hello());
            QTRY_COMPARE(fixture.logged.size(), 2);
            QCOMPARE(fixture.line.written(), Hex::helloReply());
            pieces = fixture.line.pieces().size();
        }
        VERIFY_AT_LEAST(pieces, 20);
    }

    void waitsBeforeAReply()
    {
        Fixture fixture(withDelay(50ms));
        fixture.line.receive(Hex::hello());
        QCOMPARE(fixture.line.written(), QByteArray());
        QCOMPARE(fixture.logged.size(), 1);
        QVERIFY(happensWithin(55ms, [&fixture] { return fixture.logged.size() == 2; }));
        VERIFY_AT_LEAST(fixture.logTimes.at(1), 50);
        QCOMPARE(fixture.line.written(), Hex::helloReply());
    }

    void dropsAFrameThatStalls()
    {
        Fixture fixture;
        fixture.line.receive("FF FF 0F 41 01 06");
        QVERIFY(fixture.logged.isEmpty());
        QVERIFY(happensWithin(120ms, [&fixture] { return fixture.logged.size() == 1; }));
        VERIFY_AT_LEAST(fixture.logTimes.at(0), 90);
        QVERIFY(fixture.events().at(0).endsWith("<- (incomplete)         FF FF 0F 41 01 06"));
        fixture.line.receive(Hex::hello());
        QCOMPARE(fixture.line.written(), Hex::helloReply());
    }

    void waitsForAFrameThatGoesOn()
    {
        Fixture fixture;
        fixture.line.receive("FF FF 0F 41");
        QTimer::singleShot(50ms, &fixture.line, [&fixture] { fixture.line.receive("01 06"); });
        QTRY_COMPARE(fixture.logged.size(), 1);
        VERIFY_AT_LEAST(fixture.logTimes.at(0), 135);
        QVERIFY(fixture.events().at(0).endsWith("<- (incomplete)         FF FF 0F 41 01 06"));
    }

    void doesNotAnswerFaultyInput_data()
    {
        addRows<QByteArray, QString>(
            {"bytes", "line"},
            {{"bad checksum", "FF FF 0A 41 01 06 07 06 09 01 16 00 80",
              "<- (bad checksum)       FF FF 0A 41 01 06 07 06 09 01 16 00 80"},
             {"wrong signature", "FF FF 0A 42 01 06 07 06 09 01 16 00 80",
              "<- (wrong signature)    FF FF 0A 42 01 06 07 06 09 01 16 00 80"},
             {"wrong type", "FF FF 0A 41 01 06 07 06 09 05 16 00 83",
              "<- HELLO                (not answered: type 5 is not a request)"},
             {"no frame", "12 34", "<- (no frame)           12 34"}});
    }

    void doesNotAnswerFaultyInput()
    {
        QFETCH(QByteArray, bytes);
        Fixture fixture;
        fixture.line.receive(bytes);
        QCOMPARE(fixture.logged.size(), 1);
        QTEST(fixture.events().at(0), "line");
        fixture.line.receive(Hex::hello());
        QCOMPARE(fixture.line.written(), Hex::helloReply());
    }

    void isDeafWhileSilent()
    {
        AnsweringCamera::Behaviour behaviour = withDelay(0ms);
        behaviour.silent = true;
        Fixture fixture(behaviour);
        fixture.line.receive(Hex::settings());
        QCOMPARE(fixture.logged.size(), 1);
        QVERIFY(fixture.events().at(0).endsWith("(not answered: silent)"));
        QCOMPARE(fixture.line.written(), QByteArray());

        fixture.camera.setSilent(false);
        fixture.line.receive(Hex::hello());
        // With the settings it had before.
        QCOMPARE(fixture.line.written(), Hex::helloReply());
        fixture.camera.setSilent(true);
        fixture.line.receive(Hex::hello());
        QCOMPARE(fixture.line.written(), Hex::helloReply());
    }

    void forgetsWhatWasOnItsWayWhenTheLineIsLost()
    {
        Fixture fixture(withDelay(20ms));
        fixture.line.receive(Hex::hello() + " FF FF 0F 41");
        QCOMPARE(fixture.logged.size(), 1);
        fixture.camera.lineLost();
        QCOMPARE(fixture.logged.size(), 2);
        QVERIFY(fixture.events().at(1).contains("(incomplete)"));
        // The rest of the frame is none any more.
        fixture.line.receive("01 06 07 06 09 01 55 00 01 01 00 01 01 C7");
        QCOMPARE(fixture.logged.size(), 3);
        QVERIFY(fixture.events().at(2).contains("(no frame)"));
        // The reply to the first request would be sent before this one's.
        fixture.line.receive(Hex::zoom2());
        QTRY_VERIFY(!fixture.line.written().isEmpty());
        QCOMPARE(fixture.line.written(),
                 QByteArray("FF FF 0C 41 01 06 07 06 09 05 3A 00 00 19 C2"));
    }

    void rebootsWithAReceivedFirmware()
    {
        Fixture fixture(withRebootTime(50ms));
        fixture.line.receive(Hex::smallAnnouncement() + Hex::smallPacket());
        fixture.line.receive(Hex::hello());
        const QByteArray acknowledgements = Hex::announcementReply() + ' ' + Hex::packetReply();
        QCOMPARE(fixture.line.written(), acknowledgements);
        const QString received = "-- received 3 bytes of firmware, SHA-256 "
                                 "039058c6f2c0cb492c533b0a4d14ef77cc0f78abccced5287d84a1a2011cfb81";
        QStringList expected{
            "<- RECEIVE_FW_INFO      firmware of 3 bytes",
            "<- UPLOAD_FIRMWARE      packet 1, 3 bytes",
            received,
            "-> RECEIVE_FW_INFO ack",
            "-> UPLOAD_FIRMWARE ack",
            "-- rebooting",
            "<- HELLO                (not answered: rebooting)",
        };
        QCOMPARE(fixture.events(), expected);

        QVERIFY(happensWithin(55ms, [&fixture] { return fixture.logged.size() == 8; }));
        VERIFY_AT_LEAST(fixture.logTimes.at(7), 50);
        expected << "-- running version 1.0.0.7";
        QCOMPARE(fixture.events(), expected);
        fixture.line.receive(Hex::hello());
        QCOMPARE(fixture.line.written(), acknowledgements + ' ' + Hex::raisedHelloReply());
    }

    void handsOverAFirmwareOnceItIsComplete()
    {
        Fixture fixture;
        QByteArray writtenBefore;
        connect(&fixture.camera, &AnsweringCamera::firmwareReceived, &fixture.camera,
                [&fixture, &writtenBefore] { writtenBefore = fixture.line.written(); });
        fixture.line.receive(Hex::smallAnnouncement());
        // Two of the three bytes.
        fixture.line.receive("FF FF 0C 41 01 06 07 06 09 01 01 01 01 02 70");
        QVERIFY(fixture.received.isEmpty());
        fixture.line.receive(Hex::smallPacket());
        QCOMPARE(fixture.received.size(), 1);
        QCOMPARE(fixture.received.at(0).at(0).toByteArray(), QByteArray("\x01\x02\x03"));
        QCOMPARE(writtenBefore, Hex::announcementReply());
        fixture.line.receive(Hex::smallPacket() + Hex::hello());
        QCOMPARE(fixture.received.size(), 1);
    }

    void acknowledgesTheLastPacketBeforeItReboots()
    {
        Fixture fixture(withRebootTime(1ms, 30ms));
        fixture.line.receive(Hex::smallAnnouncement());
        fixture.line.receive(Hex::smallPacket());
        QTRY_COMPARE(fixture.logged.size(), 7);
        QCOMPARE(fixture.events().mid(3),
                 (QStringList{"-> RECEIVE_FW_INFO ack", "-> UPLOAD_FIRMWARE ack", "-- rebooting",
                              "-- running version 1.0.0.7"}));
        QCOMPARE(fixture.line.written(), Hex::announcementReply() + ' ' + Hex::packetReply());
    }

    void rebootsAlsoWhenTheLineIsLost()
    {
        Fixture fixture(withRebootTime(1ms, 1h));
        fixture.line.receive(Hex::smallAnnouncement() + Hex::smallPacket());
        QCOMPARE(fixture.logged.size(), 3);
        fixture.camera.lineLost();
        QTRY_COMPARE(fixture.logged.size(), 5);
        QCOMPARE(fixture.events().mid(3),
                 (QStringList{"-- rebooting", "-- running version 1.0.0.7"}));
        QCOMPARE(fixture.line.written(), QByteArray());
    }

    void rebootsAgainWithTheNextFirmware()
    {
        Fixture fixture(withRebootTime(0ms));
        fixture.line.receive(Hex::smallAnnouncement() + Hex::smallPacket());
        QTRY_VERIFY(fixture.events().contains("-- running version 1.0.0.7"));
        // An empty one.
        fixture.line.receive(Hex::emptyAnnouncement());
        QTRY_VERIFY(fixture.events().contains("-- running version 1.0.0.8"));
        QVERIFY(fixture.events().contains(
            "-- received 0 bytes of firmware, SHA-256 "
            "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"));
        QCOMPARE(fixture.received.size(), 2);
        // Written as the window does.
        for (const char *const version : {"1.0.0.9", "1.0.0.a"}) {
            fixture.line.receive(Hex::emptyAnnouncement());
            QTRY_VERIFY(fixture.events().contains(QString("-- running version ") + version));
        }
        QCOMPARE(fixture.received.at(1).at(0).toByteArray(), QByteArray());
    }
};

QTEST_GUILESS_MAIN(AnsweringCameraTest)
#include "tst_answeringcamera.moc"
