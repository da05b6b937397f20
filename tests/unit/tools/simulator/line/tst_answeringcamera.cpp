// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "answeringcamera.h"
#include "cameraline.h"
#include "patience.h"

#include <QSignalSpy>

namespace {

QByteArray hello()
{
    return "FF FF 0A 41 01 06 07 06 09 01 16 00 7F";
}

// Of three bytes, as is the packet.
QByteArray announcement()
{
    return "FF FF 0E 41 01 06 07 06 09 01 10 00 02 00 00 03 82";
}

QByteArray announcementReply()
{
    return "FF FF 0A 41 01 06 07 06 09 05 10 00 7D";
}

QByteArray packet()
{
    return "FF FF 0D 41 01 06 07 06 09 01 01 01 01 02 03 74";
}

QByteArray packetReply()
{
    return "FF FF 0A 41 01 06 07 06 09 05 01 00 6E";
}

QByteArray raisedHelloReply()
{
    return "FF FF 17 41 01 06 07 06 09 05 16 00 "
           "01 00 00 07 01 00 00 00 00 01 01 01 01 9D";
}

QByteArray helloReply()
{
    return "FF FF 17 41 01 06 07 06 09 05 16 00 "
           "01 00 00 06 01 00 00 00 00 01 01 01 01 9C";
}

/// Keeps what is sent.
class KeepingLine : public CameraLine {
public:
    bool plug(QString * /*error*/) override { return true; }
    void unplug() override {}
    bool isPlugged() const override { return true; }
    void write(const QByteArray &bytes) override { m_written += bytes; }

    void receive(const QByteArray &hexadecimal)
    {
        emit bytesReceived(QByteArray::fromHex(hexadecimal));
    }
    QByteArray written() const { return m_written.toHex(' ').toUpper(); }

private:
    QByteArray m_written;
};

AnsweringCamera::Behaviour asFastAsPossible()
{
    AnsweringCamera::Behaviour behaviour;
    behaviour.baud = 0;
    return behaviour;
}

// The lines without the time in front.
QStringList events(const QSignalSpy &logged)
{
    QStringList texts;
    for (const QList<QVariant> &arguments : logged) {
        texts << arguments.at(0).toString().mid(14);
    }
    return texts;
}

} // namespace

class AnsweringCameraTest : public QObject {
    Q_OBJECT

private slots:
    void answersARequestThatComesInPieces()
    {
        KeepingLine line;
        AnsweringCamera camera({}, asFastAsPossible(), ExchangeLog(false), line);
        QSignalSpy logged(&camera, &AnsweringCamera::logged);
        line.receive("FF FF 0A 41 01");
        line.receive("06 07 06 09 01 16 00");
        QCOMPARE(line.written(), QByteArray());
        line.receive("7F");
        QCOMPARE(line.written(), helloReply());
        QCOMPARE(logged.size(), 2);
        QVERIFY(logged.at(0).at(0).toString().contains("<- HELLO"));
        QVERIFY(logged.at(1).at(0).toString().contains("-> HELLO ack"));
    }

    void sendsAtTheSpeedOfTheLine()
    {
        KeepingLine line;
        AnsweringCamera::Behaviour behaviour;
        behaviour.baud = 9600;
        AnsweringCamera camera({}, behaviour, ExchangeLog(false), line);
        QSignalSpy logged(&camera, &AnsweringCamera::logged);
        QElapsedTimer timer;
        timer.start();
        line.receive(hello());
        QCOMPARE(line.written(), QByteArray());
        QCOMPARE(logged.size(), 1);
        QVERIFY(logged.wait(kPatience));
        // 13 bytes in and 26 out cannot have taken less on that line.
        QVERIFY2(timer.nsecsElapsed() >= 40'625'000,
                 qPrintable(QString::number(timer.nsecsElapsed())));
        QCOMPARE(line.written(), helloReply());
    }

    void waitsBeforeAReply()
    {
        KeepingLine line;
        AnsweringCamera::Behaviour behaviour = asFastAsPossible();
        behaviour.delay = std::chrono::milliseconds(50);
        AnsweringCamera camera({}, behaviour, ExchangeLog(false), line);
        QSignalSpy logged(&camera, &AnsweringCamera::logged);
        QElapsedTimer timer;
        timer.start();
        line.receive(hello());
        QCOMPARE(line.written(), QByteArray());
        QCOMPARE(logged.size(), 1);
        QVERIFY(logged.wait(kPatience));
        QVERIFY2(timer.elapsed() >= 50, qPrintable(QString::number(timer.elapsed())));
        QCOMPARE(line.written(), helloReply());
    }

    void dropsAFrameThatStalls()
    {
        KeepingLine line;
        AnsweringCamera camera({}, asFastAsPossible(), ExchangeLog(false), line);
        QSignalSpy logged(&camera, &AnsweringCamera::logged);
        line.receive("FF FF 0F 41 01 06");
        QVERIFY(logged.isEmpty());
        QVERIFY(logged.wait(kPatience));
        QVERIFY(
            logged.at(0).at(0).toString().endsWith("<- (incomplete)         FF FF 0F 41 01 06"));
        line.receive(hello());
        QCOMPARE(line.written(), helloReply());
    }

    void doesNotAnswerFaultyInput_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("line");

        QTest::newRow("bad checksum")
            << QByteArray("FF FF 0A 41 01 06 07 06 09 01 16 00 80")
            << "<- (bad checksum)       FF FF 0A 41 01 06 07 06 09 01 16 00 80";
        QTest::newRow("wrong signature")
            << QByteArray("FF FF 0A 42 01 06 07 06 09 01 16 00 80")
            << "<- (wrong signature)    FF FF 0A 42 01 06 07 06 09 01 16 00 80";
        QTest::newRow("wrong type")
            << QByteArray("FF FF 0A 41 01 06 07 06 09 05 16 00 83")
            << "<- HELLO                (not answered: type 5 is not a request)";
        QTest::newRow("no frame") << QByteArray("12 34") << "<- (no frame)           12 34";
    }

    void doesNotAnswerFaultyInput()
    {
        QFETCH(QByteArray, bytes);
        KeepingLine line;
        AnsweringCamera camera({}, asFastAsPossible(), ExchangeLog(false), line);
        QSignalSpy logged(&camera, &AnsweringCamera::logged);
        line.receive(bytes);
        QCOMPARE(logged.size(), 1);
        // Behind the time.
        QTEST(logged.at(0).at(0).toString().mid(14), "line");
        line.receive(hello());
        QCOMPARE(line.written(), helloReply());
    }

    void isDeafWhileSilent()
    {
        KeepingLine line;
        AnsweringCamera::Behaviour behaviour = asFastAsPossible();
        behaviour.silent = true;
        AnsweringCamera camera({}, behaviour, ExchangeLog(false), line);
        QSignalSpy logged(&camera, &AnsweringCamera::logged);
        line.receive("FF FF 0F 41 01 06 07 06 09 01 55 00 02 09 01 00 03 D2");
        QCOMPARE(logged.size(), 1);
        QVERIFY(logged.at(0).at(0).toString().endsWith("(not answered: silent)"));
        QCOMPARE(line.written(), QByteArray());

        camera.setSilent(false);
        line.receive(hello());
        // With the settings it had before.
        QCOMPARE(line.written(), helloReply());
        camera.setSilent(true);
        line.receive(hello());
        QCOMPARE(line.written(), helloReply());
    }

    void forgetsWhatWasOnItsWayWhenTheLineIsLost()
    {
        KeepingLine line;
        AnsweringCamera::Behaviour behaviour = asFastAsPossible();
        behaviour.delay = std::chrono::milliseconds(20);
        AnsweringCamera camera({}, behaviour, ExchangeLog(false), line);
        QSignalSpy logged(&camera, &AnsweringCamera::logged);
        line.receive(hello() + " FF FF 0F 41");
        QCOMPARE(logged.size(), 1);
        camera.lineLost();
        QCOMPARE(logged.size(), 2);
        QVERIFY(logged.at(1).at(0).toString().contains("(incomplete)"));
        // The rest of the frame is none any more.
        line.receive("01 06 07 06 09 01 55 00 01 01 00 01 01 C7");
        QCOMPARE(logged.size(), 3);
        QVERIFY(logged.at(2).at(0).toString().contains("(no frame)"));
        // The reply to the first request would be sent before this one's.
        line.receive("FF FF 0C 41 01 06 07 06 09 01 3A 00 01 00 A6");
        QTRY_VERIFY(!line.written().isEmpty());
        QCOMPARE(line.written(), QByteArray("FF FF 0C 41 01 06 07 06 09 05 3A 00 00 19 C2"));
    }

    void rebootsWithAReceivedFirmware()
    {
        KeepingLine line;
        AnsweringCamera::Behaviour behaviour = asFastAsPossible();
        behaviour.rebootTime = std::chrono::milliseconds(50);
        AnsweringCamera camera({}, behaviour, ExchangeLog(false), line);
        QSignalSpy logged(&camera, &AnsweringCamera::logged);
        QElapsedTimer timer;
        timer.start();
        line.receive(announcement() + packet());
        line.receive(hello());
        const QByteArray acknowledgements = announcementReply() + ' ' + packetReply();
        QCOMPARE(line.written(), acknowledgements);
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
        QCOMPARE(events(logged), expected);

        QVERIFY(logged.wait(kPatience));
        QVERIFY2(timer.elapsed() >= 50, qPrintable(QString::number(timer.elapsed())));
        expected << "-- running version 1.0.0.7";
        QCOMPARE(events(logged), expected);
        line.receive(hello());
        QCOMPARE(line.written(), acknowledgements + ' ' + raisedHelloReply());
    }

    void handsOverAFirmwareOnceItIsComplete()
    {
        KeepingLine line;
        AnsweringCamera camera({}, asFastAsPossible(), ExchangeLog(false), line);
        QSignalSpy received(&camera, &AnsweringCamera::firmwareReceived);
        QByteArray writtenBefore;
        connect(&camera, &AnsweringCamera::firmwareReceived, &camera,
                [&line, &writtenBefore] { writtenBefore = line.written(); });
        line.receive(announcement());
        // Two of the three bytes.
        line.receive("FF FF 0C 41 01 06 07 06 09 01 01 01 01 02 70");
        QVERIFY(received.isEmpty());
        line.receive(packet());
        QCOMPARE(received.size(), 1);
        QCOMPARE(received.at(0).at(0).toByteArray(), QByteArray("\x01\x02\x03"));
        QCOMPARE(writtenBefore, announcementReply());
        line.receive(packet() + hello());
        QCOMPARE(received.size(), 1);
    }

    void acknowledgesTheLastPacketBeforeItReboots()
    {
        KeepingLine line;
        AnsweringCamera::Behaviour behaviour = asFastAsPossible();
        behaviour.delay = std::chrono::milliseconds(30);
        behaviour.rebootTime = std::chrono::milliseconds(1);
        AnsweringCamera camera({}, behaviour, ExchangeLog(false), line);
        QSignalSpy logged(&camera, &AnsweringCamera::logged);
        line.receive(announcement());
        line.receive(packet());
        QTRY_COMPARE(logged.size(), 7);
        QCOMPARE(events(logged).mid(3),
                 (QStringList{"-> RECEIVE_FW_INFO ack", "-> UPLOAD_FIRMWARE ack", "-- rebooting",
                              "-- running version 1.0.0.7"}));
        QCOMPARE(line.written(), announcementReply() + ' ' + packetReply());
    }

    void rebootsAlsoWhenTheLineIsLost()
    {
        KeepingLine line;
        AnsweringCamera::Behaviour behaviour = asFastAsPossible();
        behaviour.delay = std::chrono::hours(1);
        behaviour.rebootTime = std::chrono::milliseconds(1);
        AnsweringCamera camera({}, behaviour, ExchangeLog(false), line);
        QSignalSpy logged(&camera, &AnsweringCamera::logged);
        line.receive(announcement() + packet());
        QCOMPARE(logged.size(), 3);
        camera.lineLost();
        QTRY_COMPARE(logged.size(), 5);
        QCOMPARE(events(logged).mid(3),
                 (QStringList{"-- rebooting", "-- running version 1.0.0.7"}));
        QCOMPARE(line.written(), QByteArray());
    }

    void rebootsAgainWithTheNextFirmware()
    {
        KeepingLine line;
        AnsweringCamera::Behaviour behaviour = asFastAsPossible();
        behaviour.rebootTime = std::chrono::milliseconds(0);
        AnsweringCamera camera({}, behaviour, ExchangeLog(false), line);
        QSignalSpy logged(&camera, &AnsweringCamera::logged);
        QSignalSpy received(&camera, &AnsweringCamera::firmwareReceived);
        line.receive(announcement() + packet());
        QTRY_VERIFY(events(logged).contains("-- running version 1.0.0.7"));
        // An empty one.
        line.receive("FF FF 0E 41 01 06 07 06 09 01 10 00 02 00 00 00 7F");
        QTRY_VERIFY(events(logged).contains("-- running version 1.0.0.8"));
        QVERIFY(events(logged).contains(
            "-- received 0 bytes of firmware, SHA-256 "
            "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"));
        QCOMPARE(received.size(), 2);
        QCOMPARE(received.at(1).at(0).toByteArray(), QByteArray());
    }
};

QTEST_GUILESS_MAIN(AnsweringCameraTest)
#include "tst_answeringcamera.moc"
