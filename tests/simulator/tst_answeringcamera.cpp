// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "answeringcamera.h"
#include "cameraline.h"

#include <QSignalSpy>
#include <QtTest>

namespace {

QByteArray hello()
{
    return "FF FF 0A 41 01 06 07 06 09 01 16 00 7F";
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

AnsweringCamera::Manner asFastAsPossible()
{
    AnsweringCamera::Manner manner;
    manner.baud = 0;
    return manner;
}

} // namespace

class AnsweringCameraTest : public QObject {
    Q_OBJECT

private slots:
    void answersARequestThatComesInPieces();
    void sendsAtTheSpeedOfTheLine();
    void waitsBeforeAReply();
    void dropsAFrameThatStalls();
    void doesNotAnswerFaultyInput_data();
    void doesNotAnswerFaultyInput();
    void isDeafWhileSilent();
    void forgetsWhatWasOnItsWayWhenTheLineIsLost();
};

void AnsweringCameraTest::answersARequestThatComesInPieces()
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

void AnsweringCameraTest::sendsAtTheSpeedOfTheLine()
{
    KeepingLine line;
    AnsweringCamera::Manner manner;
    manner.baud = 9600;
    AnsweringCamera camera({}, manner, ExchangeLog(false), line);
    QSignalSpy logged(&camera, &AnsweringCamera::logged);
    QElapsedTimer timer;
    timer.start();
    line.receive(hello());
    QCOMPARE(line.written(), QByteArray());
    QCOMPARE(logged.size(), 1);
    QVERIFY(logged.wait());
    // 13 bytes in and 26 out cannot have taken less on that line.
    QVERIFY2(timer.nsecsElapsed() >= 40'625'000, qPrintable(QString::number(timer.nsecsElapsed())));
    QCOMPARE(line.written(), helloReply());
}

void AnsweringCameraTest::waitsBeforeAReply()
{
    KeepingLine line;
    AnsweringCamera::Manner manner = asFastAsPossible();
    manner.delay = std::chrono::milliseconds(50);
    AnsweringCamera camera({}, manner, ExchangeLog(false), line);
    QSignalSpy logged(&camera, &AnsweringCamera::logged);
    QElapsedTimer timer;
    timer.start();
    line.receive(hello());
    QCOMPARE(line.written(), QByteArray());
    QCOMPARE(logged.size(), 1);
    QVERIFY(logged.wait());
    QVERIFY2(timer.elapsed() >= 50, qPrintable(QString::number(timer.elapsed())));
    QCOMPARE(line.written(), helloReply());
}

void AnsweringCameraTest::dropsAFrameThatStalls()
{
    KeepingLine line;
    AnsweringCamera camera({}, asFastAsPossible(), ExchangeLog(false), line);
    QSignalSpy logged(&camera, &AnsweringCamera::logged);
    line.receive("FF FF 0F 41 01 06");
    QVERIFY(logged.isEmpty());
    QVERIFY(logged.wait());
    QVERIFY(logged.at(0).at(0).toString().endsWith("<- (incomplete)         FF FF 0F 41 01 06"));
    line.receive(hello());
    QCOMPARE(line.written(), helloReply());
}

void AnsweringCameraTest::doesNotAnswerFaultyInput_data()
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

void AnsweringCameraTest::doesNotAnswerFaultyInput()
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

void AnsweringCameraTest::isDeafWhileSilent()
{
    KeepingLine line;
    AnsweringCamera::Manner manner = asFastAsPossible();
    manner.silent = true;
    AnsweringCamera camera({}, manner, ExchangeLog(false), line);
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

void AnsweringCameraTest::forgetsWhatWasOnItsWayWhenTheLineIsLost()
{
    KeepingLine line;
    AnsweringCamera::Manner manner = asFastAsPossible();
    manner.delay = std::chrono::milliseconds(20);
    AnsweringCamera camera({}, manner, ExchangeLog(false), line);
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

QTEST_GUILESS_MAIN(AnsweringCameraTest)
#include "tst_answeringcamera.moc"
