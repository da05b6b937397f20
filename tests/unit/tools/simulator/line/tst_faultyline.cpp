// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "faultyline.h"
#include "frames.h"
#include "memoryline.h"
#include "patience.h"

using namespace std::chrono_literals;

namespace {

/// A plugged line with faults.
class Line {
public:
    explicit Line(const QString &plan, quint32 seed = 0)
        : faulty(inner)
    {
        plug();
        setFaults(plan, seed);
        QObject::connect(&faulty, &CameraLine::bytesReceived, &faulty,
                         [this](const QByteArray &bytes) {
                             requests << bytes.toHex(' ').toUpper();
                             requestTimes << clock.elapsed();
                         });
        QObject::connect(&faulty, &FaultyLine::faultApplied, &faulty,
                         [this](const QString &text) { notes << text; });
        clock.start();
    }
    bool plug()
    {
        QString error;
        return faulty.plug(&error);
    }
    void setFaults(const QString &planText, quint32 seed = 0)
    {
        QString error;
        const auto plan = FaultPlan::parse(planText, &error);
        if (!plan) {
            qFatal("%s", qPrintable(error));
        }
        faulty.setFaults(*plan, seed);
    }
    void reply(const QByteArray &hexadecimal) { faulty.write(QByteArray::fromHex(hexadecimal)); }

    MemoryLine inner;
    FaultyLine faulty;
    QElapsedTimer clock;
    QStringList requests;         ///< what reached the camera, by piece
    QVector<qint64> requestTimes; ///< in milliseconds
    QStringList notes;
};

constexpr int kMuchLater = 10 * kPatience; // ms

} // namespace

class FaultyLineTest : public QObject {
    Q_OBJECT

private slots:
    void passesBytesAtOnceWithoutFaults()
    {
        Line line("none");
        line.inner.receive("FF FF 0A");
        QCOMPARE(line.requests, QStringList{"FF FF 0A"});
        line.reply("FF");
        QCOMPARE(line.inner.pieces(), QStringList{"FF"});
        QCOMPARE(line.notes, QStringList());
    }

    void waitsForWholeFramesWithFaults()
    {
        Line line("drop@reply:1000");
        line.inner.receive("FF FF 0A 41 01 06");
        line.inner.receive("07 06 09 01 16 00 7F");
        QTRY_COMPARE(line.requests, QStringList{Hex::hello()});
        line.reply("FF FF 0A 41 01 06 07 06 09 05 01");
        line.reply("00 6E");
        QTRY_COMPARE(line.inner.pieces(), QStringList{Hex::packetReply()});
    }

    void cutsJoinedFramesApart()
    {
        Line line("drop@request:2");
        line.inner.receive(Hex::hello() + Hex::packetReply() + Hex::hello());
        QTRY_COMPARE(line.requests, (QStringList{QString(Hex::hello()), QString(Hex::hello())}));
        QCOMPARE(line.notes, QStringList{"request 2: dropped"});
    }

    void passesOtherBytesUnchanged()
    {
        Line line("drop@request:1,drop@reply:1");
        line.inner.receive("12 34");
        // With a wrong checksum it is no frame.
        line.inner.receive("FF FF 0A 41 01 06 07 06 09 01 16 00 80");
        line.inner.receive(Hex::hello());
        line.inner.receive("56");
        QTRY_COMPARE(line.requests,
                     (QStringList{"12 34", "FF FF 0A 41 01 06 07 06 09 01 16 00 80", "56"}));
        line.reply("12");
        QTRY_COMPARE(line.inner.pieces(), QStringList{"12"});
        QCOMPARE(line.notes, QStringList{"request 1: dropped"});
    }

    void givesUpOnAStalledRequest()
    {
        Line line("drop@request:1");
        line.inner.receive("FF FF 0A 41 01 06 07 06");
        QVERIFY(happensWithin(120ms, [&line] { return !line.requests.isEmpty(); }));
        QCOMPARE(line.requests, QStringList{"FF FF 0A 41 01 06 07 06"});
        VERIFY_AT_LEAST(line.requestTimes.at(0), 90);
        line.inner.receive("09 01 16 00 7F");
        QTRY_COMPARE(line.requests.size(), 2);
        QCOMPARE(line.notes, QStringList());
    }

    void waitsForARequestThatGoesOn()
    {
        Line line("drop@request:1");
        line.inner.receive("FF FF 0A 41");
        QTimer::singleShot(50ms, &line.inner, [&line] { line.inner.receive("01 06"); });
        QTRY_COMPARE(line.requests, QStringList{"FF FF 0A 41 01 06"});
        VERIFY_AT_LEAST(line.requestTimes.at(0), 135);
    }

    // At 50 baud, a byte alone takes 200 ms.
    void waitsForASlowReply()
    {
        Line line("wrong-sum@reply:1,drop@request:1");
        line.reply("FF FF 0A 41 01 06 07");
        // As long as it takes to give up on a request.
        line.inner.receive("FF FF 0A");
        QTRY_COMPARE(line.requests, QStringList{"FF FF 0A"});
        QCOMPARE(line.inner.pieces(), QStringList());
        line.reply("06 09 05 01 00 6E");
        QTRY_COMPARE(line.inner.pieces(), QStringList{"FF FF 0A 41 01 06 07 06 09 05 01 00 6F"});
    }

    void appliesFaultsInBothDirections()
    {
        Line line("corrupt=2@request:1.3,stale@reply:2");
        line.inner.receive(Hex::hello());
        line.inner.receive(Hex::hello());
        QTRY_COMPARE(
            line.requests,
            (QStringList{"FF FF 0A 43 01 06 07 06 09 01 16 00 7F", QString(Hex::hello())}));
        line.reply(Hex::packetReply());
        line.reply(Hex::packetReply());
        QTRY_COMPARE(line.inner.pieces(),
                     (QStringList{QString(Hex::packetReply()),
                                  QString(Hex::packetReply() + ' ' + Hex::packetReply())}));
        QCOMPARE(line.notes,
                 (QStringList{"request 1: corrupted byte 3, 41 became 43",
                              "reply 2: put the previous frame before it"}));
    }

    void pausesInsideAFrame()
    {
        Line line("gap=40@request:1.3,gap=60@request:1.12");
        line.inner.receive(Hex::hello());
        QTRY_COMPARE(line.requests, (QStringList{"FF FF 0A", "41 01 06 07 06 09 01 16 00", "7F"}));
        // Whole milliseconds on a clock of its own: up to one less.
        VERIFY_AT_LEAST(line.requestTimes.at(1), 39);
        VERIFY_AT_LEAST(line.requestTimes.at(2), 99);
    }

    void keepsTheOrder()
    {
        Line line("delay=80@request:1,split=2@request:2");
        line.inner.receive("FF FF 0A 41 01 06 07 06 09 01 01 00 6A");
        line.inner.receive(Hex::hello());
        line.inner.receive("12");
        QVERIFY(happensWithin(85ms, [&line] { return !line.requests.isEmpty(); }));
        const QStringList expected = QStringList{"FF FF 0A 41 01 06 07 06 09 01 01 00 6A"}
            + QString(Hex::hello()).split(' ') + QStringList{"12"};
        QTRY_COMPARE(line.requests, expected);
        VERIFY_AT_LEAST(line.requestTimes.at(0), 79);
    }

    void joinsFrames()
    {
        Line line(QString("join=%1@request:1,join=%1@reply:1").arg(kMuchLater));
        line.inner.receive(Hex::hello());
        line.reply(Hex::packetReply());
        // It is the next one of its own direction that takes it along.
        line.reply(Hex::packetReply());
        QTRY_COMPARE(line.inner.pieces(),
                     QStringList{QString(Hex::packetReply() + ' ' + Hex::packetReply())});
        QCOMPARE(line.requests, QStringList());
        line.inner.receive(Hex::hello());
        QTRY_COMPARE(line.requests, QStringList{QString(Hex::hello() + ' ' + Hex::hello())});
    }

    void letsAJoinedFrameGoAlone()
    {
        Line line("join=50@request:1");
        line.inner.receive(Hex::hello());
        QTRY_COMPARE(line.requests, QStringList{Hex::hello()});
        VERIFY_AT_LEAST(line.requestTimes.at(0), 49);
    }

    void standsStillInBothDirections()
    {
        Line line("pause=80@reply:1");
        line.reply(Hex::packetReply());
        line.inner.receive(Hex::hello());
        QTRY_COMPARE(line.requests, QStringList{Hex::hello()});
        VERIFY_AT_LEAST(line.requestTimes.at(0), 79);
        QTRY_COMPARE(line.inner.pieces(), QStringList{Hex::packetReply()});
    }

    void hangsUpInsideAFrame()
    {
        Line line("hang-up=30@reply:1.5");
        QSignalSpy hungUp(&line.faulty, &FaultyLine::hungUp);
        line.reply(Hex::packetReply());
        // It never happens before the event loop goes round.
        QVERIFY(line.faulty.isPlugged());
        line.reply(Hex::packetReply());
        QVERIFY(hungUp.wait(kPatience));
        QCOMPARE(line.inner.pieces(), QStringList{"FF FF 0A 41 01"});
        QVERIFY(!line.inner.isPlugged());
        QVERIFY(!line.faulty.isPlugged());
        QCOMPARE(line.notes, QStringList{"reply 1: hung up before byte 5"});
    }

    void hangsUpWhileTheHostSends()
    {
        Line line("hang-up@request:1.3");
        QSignalSpy hungUp(&line.faulty, &FaultyLine::hungUp);
        line.inner.receive(Hex::hello());
        QVERIFY(hungUp.wait(kPatience));
        QCOMPARE(line.requests, QStringList{"FF FF 0A"});
        QVERIFY(!line.inner.isPlugged());
    }

    void goesOnCountingWhenPluggedAgain()
    {
        Line line("hang-up@reply:1.0,drop@reply:2");
        QSignalSpy hungUp(&line.faulty, &FaultyLine::hungUp);
        line.reply(Hex::packetReply());
        QVERIFY(hungUp.wait(kPatience));
        QVERIFY(line.plug());
        QVERIFY(line.inner.isPlugged());
        line.reply(Hex::packetReply());
        line.reply(Hex::packetReply());
        QTRY_COMPARE(line.inner.pieces(), QStringList{Hex::packetReply()});
        QCOMPARE(line.notes.last(), QString("reply 2: dropped"));
    }

    void losesWhatIsOnItsWayWhenUnplugged()
    {
        Line line(QString("join=%1@reply:1,pause=%1@request:1").arg(kMuchLater));
        line.reply(Hex::packetReply());
        line.inner.receive(Hex::hello());
        // Part of a frame, too.
        line.inner.receive("FF FF 0A 41 01 06");
        line.faulty.unplug();
        QVERIFY(!line.inner.isPlugged());
        QVERIFY(line.plug());
        line.reply(Hex::packetReply());
        QTRY_COMPARE(line.inner.pieces(), QStringList{Hex::packetReply()});
        line.inner.receive("07 06 09 01 16 00 7F");
        QTRY_COMPARE(line.requests, QStringList{"07 06 09 01 16 00 7F"});
    }

    void losesRepliesWhileUnplugged()
    {
        Line line("drop@reply:2");
        line.faulty.unplug();
        line.reply(Hex::packetReply());
        QVERIFY(line.plug());
        line.reply(Hex::packetReply());
        line.reply(Hex::packetReply());
        line.reply("12");
        QTRY_COMPARE(line.inner.pieces(), (QStringList{QString(Hex::packetReply()), "12"}));
    }

    void tellsWhyItCannotBePlugged()
    {
        Line line("none");
        line.faulty.unplug();
        line.inner.breakDown();
        QString error;
        QVERIFY(!line.faulty.plug(&error));
        QCOMPARE(error, QString("broken"));
    }

    void startsAnewWithNewFaults()
    {
        Line line("noise@reply:1");
        line.reply(Hex::packetReply());
        line.reply(Hex::packetReply());
        line.setFaults("noise@reply:1", 7);
        line.reply(Hex::packetReply());
        QTRY_COMPARE(line.inner.pieces(),
                     QStringList{"27 F1 E8 9B 71 B7 F8 0E " + Hex::packetReply()});
        line.setFaults("noise@reply:1", 0);
        line.reply(Hex::packetReply());
        QTRY_COMPARE(line.inner.pieces().size(), 2);
        QCOMPARE(line.inner.pieces().last(),
                 QString("E5 49 F1 99 30 0D 81 D2 " + Hex::packetReply()));
    }

    void losesWhatIsOnItsWayWithNewFaults()
    {
        Line line(QString("join=%1@reply:1,silence@request:1").arg(kMuchLater));
        line.reply(Hex::packetReply());
        line.inner.receive(Hex::hello());
        line.setFaults("drop@reply:2");
        line.reply(Hex::packetReply());
        QTRY_COMPARE(line.inner.pieces(), QStringList{Hex::packetReply()});
        line.inner.receive(Hex::hello());
        QTRY_COMPARE(line.requests, QStringList{Hex::hello()});
    }

    void endsAllFaults()
    {
        Line line("silence@reply:1,pause@request:1");
        line.reply(Hex::packetReply());
        line.inner.receive(Hex::hello());
        line.setFaults("none");
        line.reply("12");
        line.inner.receive("34");
        QCOMPARE(line.inner.pieces(), QStringList{"12"});
        QCOMPARE(line.requests, QStringList{"34"});
    }
};

QTEST_GUILESS_MAIN(FaultyLineTest)
#include "tst_faultyline.moc"
