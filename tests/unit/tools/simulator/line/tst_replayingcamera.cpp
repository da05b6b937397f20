// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "frames.h"
#include "memoryline.h"
#include "patience.h"
#include "replayingcamera.h"

using namespace std::chrono_literals;

namespace {

QVector<LineEvent> recording(const QByteArray &lines)
{
    QString error;
    const auto events = Recording::parse("# Corvane line recording 1\n" + lines, &error);
    if (!events) {
        qFatal("%s", qPrintable(error));
    }
    return *events;
}

/// A camera that plays those lines, its line, and what it says.
struct Replay {
    explicit Replay(const QByteArray &lines)
        : camera(recording(lines), ExchangeLog(false), line)
        , logged(&camera, &CameraEnd::logged)
        , plugDue(&camera, &CameraEnd::plugDue)
        , unplugDue(&camera, &CameraEnd::unplugDue)
    {
    }

    void start()
    {
        timer.start();
        camera.start();
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
    bool isOver() const { return events().contains("-- the recording has ended"); }

    MemoryLine line;
    ReplayingCamera camera;
    QSignalSpy logged;
    QSignalSpy plugDue;
    QSignalSpy unplugDue;
    QElapsedTimer timer;
};

} // namespace

class ReplayingCameraTest : public QObject {
    Q_OBJECT

private slots:
    void sendsNothingBeforeAsManyBytesHaveComeAsRecorded()
    {
        Replay replay("0 plugged\n0 host 01 02 03\n0 camera AA\n0 host 04\n0 camera BB\n");
        replay.start();
        replay.line.receive("01 02");
        QCOMPARE(replay.line.written(), QByteArray());
        replay.line.receive("03");
        QCOMPARE(replay.line.written(), QByteArray("AA"));
        QCOMPARE(replay.line.written(), QByteArray("AA"));
        replay.line.receive("04");
        QCOMPARE(replay.line.written(), QByteArray("AA BB"));
    }

    void sendsNothingBeforeTheRecordedTimeHasPassed()
    {
        // An hour, which is the host's.
        Replay replay("0 plugged\n3600 host 01\n3600.050 camera AA\n3600.090 camera BB\n");
        replay.start();
        replay.line.receive("01");
        QCOMPARE(replay.line.written(), QByteArray());
        QTRY_VERIFY(!replay.line.written().isEmpty());
        VERIFY_AT_LEAST(replay.timer.elapsed(), 50);
        QTRY_COMPARE(replay.line.written(), QByteArray("AA BB"));
        VERIFY_AT_LEAST(replay.timer.elapsed(), 90);
    }

    void countsTheTimeFromWhenTheEventBeforeHappened()
    {
        // The host takes longer than it did.
        Replay replay("0 plugged\n0.010 host 01\n0.110 camera AA\n");
        replay.start();
        QTRY_VERIFY(replay.timer.hasExpired(150));
        replay.timer.start();
        replay.line.receive("01");
        QCOMPARE(replay.line.written(), QByteArray());
        QVERIFY(happensWithin(110ms, [&replay] { return replay.line.written() == "AA"; }));
        VERIFY_AT_LEAST(replay.timer.elapsed(), 100);
    }

    void countsTheTimeFromTheRecordedPlug()
    {
        Replay replay("100 plugged\n100.050 camera AA\n");
        replay.start();
        QCOMPARE(replay.line.written(), QByteArray());
        QTRY_COMPARE(replay.line.written(), QByteArray("AA"));
        VERIFY_AT_LEAST(replay.timer.elapsed(), 50);
        QCOMPARE(replay.plugDue.size(), 0);
    }

    void sendsByItselfWhatWasSentUnasked()
    {
        Replay replay("0.050 camera AA\n");
        replay.start();
        QVERIFY(happensWithin(60ms, [&replay] { return replay.line.written() == "AA"; }));
        VERIFY_AT_LEAST(replay.timer.elapsed(), 50);
    }

    void goesOnByCountWhenTheHostSendsOtherBytes()
    {
        Replay replay("0 plugged\n1.5 host 01 02\n1.5 camera AA\n2.5 host 03\n2.5 camera BB\n");
        replay.start();
        replay.line.receive("01 12");
        QCOMPARE(replay.line.written(), QByteArray("AA"));
        QVERIFY(replay.events().contains(
            "-- from byte 2 on the host sends 12 instead of 02, recorded at 1.500000"));
        replay.line.receive("03");
        QCOMPARE(replay.line.written(), QByteArray("AA BB"));
        QCOMPARE(replay.events().filter("the host sends").size(), 1);
    }

    void countsBytesThatComeAhead()
    {
        Replay replay("0 plugged\n0 host 01\n0.050 camera AA\n9 host 02\n9.050 camera BB\n");
        replay.start();
        replay.line.receive("01 02");
        QTRY_COMPARE(replay.line.written(), QByteArray("AA BB"));
        // The second answer waits for its own time, after the first.
        VERIFY_AT_LEAST(replay.timer.elapsed(), 100);
    }

    void waitsForAllRecordedBytesOfTheHost()
    {
        // Two requests, the first of which was not answered.
        Replay replay("0 plugged\n0 host 01\n0 host 02\n0 camera BB\n");
        replay.start();
        replay.line.receive("01");
        QCOMPARE(replay.line.written(), QByteArray());
        replay.line.receive("02");
        QCOMPARE(replay.line.written(), QByteArray("BB"));
    }

    void plugsAndUnplugsAsRecorded()
    {
        Replay replay("0 plugged\n0 host 01\n0.050 unplugged\n0.100 plugged\n0.100 camera AA\n");
        replay.start();
        replay.line.receive("01");
        QCOMPARE(replay.unplugDue.size(), 0);
        QTRY_COMPARE(replay.unplugDue.size(), 1);
        VERIFY_AT_LEAST(replay.timer.elapsed(), 50);
        QCOMPARE(replay.plugDue.size(), 0);
        QCOMPARE(replay.line.written(), QByteArray());
        QTRY_COMPARE(replay.plugDue.size(), 1);
        VERIFY_AT_LEAST(replay.timer.elapsed(), 100);
        QCOMPARE(replay.line.written(), QByteArray("AA"));
        QCOMPARE(replay.unplugDue.size(), 1);
    }

    void unplugsAtTheStartIfRecordedSo()
    {
        Replay replay("0 unplugged\n");
        replay.start();
        QCOMPARE(replay.unplugDue.size(), 1);
    }

    void saysOnceThatTheRecordingHasEnded()
    {
        Replay replay("0 plugged\n0 host 01\n0.050 camera AA\n");
        replay.start();
        replay.line.receive("01");
        QVERIFY(!replay.isOver());
        QTRY_VERIFY(replay.isOver());
        replay.line.receive("01");
        replay.line.receive("01");
        QCOMPARE(replay.line.written(), QByteArray("AA"));
        QCOMPARE(replay.events().count("-- the recording has ended"), 1);
        QCOMPARE(replay.events().filter("nothing more is recorded").size(), 1);

        Replay empty("");
        empty.start();
        QVERIFY(empty.isOver());
    }

    void saysWhatPasses()
    {
        Replay replay("0 host FF FF 0C 41 01 06 07 06 09 01 3A 00 01 00 A6\n"
                      "0 camera FF FF 0C 41 01 06 07 06 09\n"
                      "0 camera 05 3A 00 01 10 BA\n");
        replay.start();
        replay.line.receive(Hex::zoom2());
        QCOMPARE(replay.events(),
                 (QStringList{"<- SET_CUSTOM_ZOOM      zoom 2", "-> SET_CUSTOM_ZOOM ack  value 272",
                              "-- the recording has ended"}));
    }

    void givesUpOnAFrameWhenTheLineIsLost()
    {
        Replay replay("0 host FF FF 0C 41\n9 camera AA\n");
        replay.start();
        replay.line.receive("FF FF 0C 41");
        replay.camera.lineLost();
        QCOMPARE(replay.events(), QStringList{"<- (incomplete)         FF FF 0C 41"});
    }
};

QTEST_GUILESS_MAIN(ReplayingCameraTest)
#include "tst_replayingcamera.moc"
