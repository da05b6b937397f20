// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "faultinjector.h"
#include "frames.h"
#include "rows.h"

namespace {

QString described(const Delivery &delivery)
{
    QStringList parts;
    if (delivery.pause.count() != 0) {
        parts << QString("%1 ms").arg(delivery.pause.count());
    }
    if (!delivery.bytes.isEmpty()) {
        parts << delivery.bytes.toHex(' ').toUpper();
    }
    if (delivery.awaitsNext) {
        parts << "and next";
    }
    if (delivery.standstill.count() != 0) {
        parts << QString("standstill %1").arg(delivery.standstill.count());
    }
    if (delivery.hangUp) {
        parts << "hang up";
    }
    return parts.join(' ');
}

/// An injector in hexadecimal.
class Injector {
public:
    explicit Injector(const QString &planText, quint32 seed = 0)
    {
        QString error;
        const auto plan = FaultPlan::parse(planText, &error);
        if (!plan) {
            qFatal("%s", qPrintable(error));
        }
        m_injector = FaultInjector(*plan, seed);
    }

    /// The deliveries with " | " between, each as described().
    QString pass(Fault::Direction direction, const QByteArray &frame)
    {
        QStringList texts;
        const auto deliveries = m_injector.pass(direction, QByteArray::fromHex(frame), &m_notes);
        for (const Delivery &delivery : deliveries) {
            texts << described(delivery);
        }
        return texts.join(" | ");
    }
    QString passOther(Fault::Direction direction, const QByteArray &bytes) const
    {
        QStringList texts;
        const auto deliveries = m_injector.passOther(direction, QByteArray::fromHex(bytes));
        for (const Delivery &delivery : deliveries) {
            texts << described(delivery);
        }
        return texts.join(" | ");
    }
    const QStringList &notes() const { return m_notes; }

private:
    FaultInjector m_injector;
    QStringList m_notes;
};

// All that comes of many frames, so that random places and values all come up.
QByteArray manyPasses(const QString &plan, quint32 seed, Fault::Direction direction)
{
    Injector injector(plan, seed);
    QByteArray all;
    for (int i = 0; i < 300; ++i) {
        all += injector.pass(direction, Hex::hello()).toLatin1() + '\n';
    }
    return all;
}

} // namespace

class FaultInjectorTest : public QObject {
    Q_OBJECT

private slots:
    // Only kinds and values that leave nothing to chance: the bytes can be written by hand.
    void eachKindDoesItsHarm_data()
    {
        // fault: without direction and frame
        addRows<QString, QString, QString, QString>(
            {"fault", "byte", "deliveries", "note"},
            {{"drop", "drop", "", "", "dropped"},
             {"drop-byte", "drop-byte", ".3", "FF FF 0A 01 06 07 06 09 01 16 00 7F",
              "dropped byte 3, 41"},
             {"drop-byte at the beginning", "drop-byte", ".0",
              "FF 0A 41 01 06 07 06 09 01 16 00 7F", "dropped byte 0, FF"},
             {"drop-byte at the end", "drop-byte", ".12", "FF FF 0A 41 01 06 07 06 09 01 16 00",
              "dropped byte 12, 7F"},
             {"insert-byte", "insert-byte=255", ".12", "FF FF 0A 41 01 06 07 06 09 01 16 00 FF 7F",
              "inserted FF before byte 12"},
             {"insert-byte of 0", "insert-byte=0", ".0",
              "00 FF FF 0A 41 01 06 07 06 09 01 16 00 7F", "inserted 00 before byte 0"},
             {"corrupt", "corrupt=2", ".3", "FF FF 0A 43 01 06 07 06 09 01 16 00 7F",
              "corrupted byte 3, 41 became 43"},
             {"corrupt all bits", "corrupt=255", ".0", "00 FF 0A 41 01 06 07 06 09 01 16 00 7F",
              "corrupted byte 0, FF became 00"},
             {"flip bit 0", "flip=0", ".12", "FF FF 0A 41 01 06 07 06 09 01 16 00 7E",
              "flipped bit 0 of byte 12, 7F became 7E"},
             {"flip bit 7", "flip=7", ".10", "FF FF 0A 41 01 06 07 06 09 01 96 00 7F",
              "flipped bit 7 of byte 10, 16 became 96"},
             {"swap", "swap", ".3", "FF FF 0A 01 41 06 07 06 09 01 16 00 7F",
              "swapped bytes 3 and 4, 41 01"},
             {"swap the last two", "swap", ".11", "FF FF 0A 41 01 06 07 06 09 01 16 7F 00",
              "swapped bytes 11 and 12, 00 7F"},
             {"truncate", "truncate", ".5", "FF FF 0A 41 01", "cut off from byte 5 on"},
             {"truncate everything", "truncate", ".0", "", "cut off from byte 0 on"},
             {"duplicate", "duplicate", "",
              "FF FF 0A 41 01 06 07 06 09 01 16 00 7F FF FF 0A 41 01 06 07 06 09 01 16 00 7F",
              "repeated after 0 ms"},
             {"duplicate later", "duplicate=60", "",
              "FF FF 0A 41 01 06 07 06 09 01 16 00 7F | 60 ms FF FF 0A 41 01 06 07 06 09 01 16 00 "
              "7F",
              "repeated after 60 ms"},
             {"delay", "delay", "", "500 ms FF FF 0A 41 01 06 07 06 09 01 16 00 7F",
              "delayed by 500 ms"},
             {"delay of its own", "delay=20", "", "20 ms FF FF 0A 41 01 06 07 06 09 01 16 00 7F",
              "delayed by 20 ms"},
             {"late", "late", "", "6000 ms FF FF 0A 41 01 06 07 06 09 01 16 00 7F",
              "delayed by 6000 ms"},
             {"split", "split", "",
              "FF | 1 ms FF | 1 ms 0A | 1 ms 41 | 1 ms 01 | 1 ms 06 | 1 ms 07 | 1 ms 06 | 1 ms 09 "
              "| 1 ms 01 | 1 ms 16 | 1 ms 00 | 1 ms 7F",
              "sent byte by byte, 1 ms apart"},
             {"gap", "gap", ".3", "FF FF 0A | 50 ms 41 01 06 07 06 09 01 16 00 7F",
              "paused for 50 ms before byte 3"},
             {"gap before the last byte", "gap=7", ".12",
              "FF FF 0A 41 01 06 07 06 09 01 16 00 | 7 ms 7F", "paused for 7 ms before byte 12"},
             {"join", "join", "", "500 ms FF FF 0A 41 01 06 07 06 09 01 16 00 7F and next",
              "held back for the next one, at most 500 ms"},
             {"ff-run", "ff-run", "", "FF FF FF FF FF FF FF 0A 41 01 06 07 06 09 01 16 00 7F",
              "put 5 bytes of FF before it"},
             {"half-frame", "half-frame", "",
              "FF FF 0A 41 01 06 FF FF 0A 41 01 06 07 06 09 01 16 00 7F",
              "put its first 6 bytes before it"},
             {"wrong-sum", "wrong-sum", "", "FF FF 0A 41 01 06 07 06 09 01 16 00 80",
              "changed the checksum, 7F became 80"},
             {"wrong-sum all round", "wrong-sum=255", "", "FF FF 0A 41 01 06 07 06 09 01 16 00 7E",
              "changed the checksum, 7F became 7E"},
             {"wrong-length", "wrong-length=11", "", "FF FF 0B 41 01 06 07 06 09 01 16 00 7F",
              "changed the length, 0A became 0B"},
             {"wrong-length of 0", "wrong-length=0", "", "FF FF 00 41 01 06 07 06 09 01 16 00 7F",
              "changed the length, 0A became 00"},
             {"wrong-command", "wrong-command", "", "FF FF 0A 41 01 06 07 06 09 01 7E 00 E7",
              "changed the command, 16 became 7E"},
             {"wrong-command of its own", "wrong-command=0x55", "",
              "FF FF 0A 41 01 06 07 06 09 01 55 00 BE", "changed the command, 16 became 55"},
             {"foreign-type", "foreign-type", "", "FF FF 0A 41 01 06 07 06 09 02 16 00 80",
              "changed the type, 01 became 02"},
             {"wrong-parameter", "wrong-parameter", "", "FF FF 0A 41 01 06 07 06 09 01 16 01 80",
              "changed the parameter byte, 00 became 01"},
             {"stale", "stale", "",
              "FF FF 0A 41 01 06 07 06 09 05 01 00 6E FF FF 0A 41 01 06 07 06 09 01 16 00 7F",
              "put the previous frame before it"},
             {"silence", "silence", "", "", "silence from here on"},
             {"pause", "pause", "", "FF FF 0A 41 01 06 07 06 09 01 16 00 7F standstill 1000",
              "line at a standstill for 1000 ms"},
             {"hang-up", "hang-up", ".6", "FF FF 0A 41 01 06 | 20 ms hang up",
              "hung up before byte 6"},
             {"hang-up later", "hang-up=300", ".1", "FF | 300 ms hang up",
              "hung up before byte 1"}});
    }

    // Of three frames, only the second one is hit.
    void eachKindDoesItsHarm()
    {
        QFETCH(QString, fault);
        QFETCH(QString, byte);
        QFETCH(QString, note);
        for (const Fault::Direction direction : {Fault::Request, Fault::Reply}) {
            const QString name = direction == Fault::Request ? "request" : "reply";
            Injector injector(QString("%1@%2:2%3").arg(fault, name, byte));
            QCOMPARE(injector.pass(direction, Hex::packetReply()), QString(Hex::packetReply()));
            QCOMPARE(injector.notes(), QStringList());
            QTEST(injector.pass(direction, Hex::hello()), "deliveries");
            QCOMPARE(injector.notes(), QStringList{name + " 2: " + note});
            if (fault != "silence") {
                QCOMPARE(injector.pass(direction, Hex::packetReply()), QString(Hex::packetReply()));
            }
            QCOMPARE(injector.notes().size(), 1);
        }
    }

    void theOtherDirectionIsSpared_data()
    {
        addRows<QString, int>({"plan", "direction"},
                              {{"replies dropped", "drop@reply:all", int(Fault::Request)},
                               {"requests dropped", "drop@request:all", int(Fault::Reply)},
                               {"replies silent", "silence@reply:all", int(Fault::Request)}});
    }

    void theOtherDirectionIsSpared()
    {
        QFETCH(QString, plan);
        QFETCH(int, direction);
        const auto spared = static_cast<Fault::Direction>(direction);
        const auto hit = spared == Fault::Request ? Fault::Reply : Fault::Request;
        Injector injector(plan);
        QCOMPARE(injector.pass(hit, Hex::hello()), QString());
        QCOMPARE(injector.pass(spared, Hex::hello()), QString(Hex::hello()));
    }

    void aPlaceChoosesFrames_data()
    {
        // lost: of six frames
        addRows<QString, QString>({"place", "lost"},
                                  {{"first", "1", "x....."},
                                   {"fourth", "4", "...x.."},
                                   {"from the fourth on", "4+", "...xxx"},
                                   {"all", "all", "xxxxxx"},
                                   {"certain", "100%", "xxxxxx"},
                                   {"almost never", "0.0001%", "......"}});
    }

    void aPlaceChoosesFrames()
    {
        QFETCH(QString, place);
        Injector injector("drop@reply:" + place);
        QString lost;
        for (int i = 0; i < 6; ++i) {
            lost += injector.pass(Fault::Reply, Hex::hello()).isEmpty() ? 'x' : '.';
        }
        QTEST(lost, "lost");
    }

    void directionsAreCountedApart()
    {
        Injector injector("drop@reply:2,drop@request:3");
        QCOMPARE(injector.pass(Fault::Request, Hex::hello()), QString(Hex::hello()));
        QCOMPARE(injector.pass(Fault::Request, Hex::hello()), QString(Hex::hello()));
        QCOMPARE(injector.pass(Fault::Reply, Hex::announcementReply()),
                 QString(Hex::announcementReply()));
        QCOMPARE(injector.pass(Fault::Request, Hex::hello()), QString());
        QCOMPARE(injector.pass(Fault::Reply, Hex::announcementReply()), QString());
        const QStringList notes{"request 3: dropped", "reply 2: dropped"};
        QCOMPARE(injector.notes(), notes);
    }

    void aProbabilityHitsThatManyFrames()
    {
        Injector injector("drop@reply:20%");
        int lost = 0;
        for (int i = 0; i < 10'000; ++i) {
            lost += injector.pass(Fault::Reply, Hex::hello()).isEmpty() ? 1 : 0;
        }
        // Always the same number; five standard deviations are 200.
        QVERIFY2(qAbs(lost - 2000) < 200, qPrintable(QString::number(lost)));
    }

    void faultsApplyInTheOrderOfThePlan_data()
    {
        addRows<QString, QString>(
            {"plan", "deliveries"},
            {{"a checksum made wrong after a command", "wrong-command@reply:1,wrong-sum@reply:1",
              "FF FF 0A 41 01 06 07 06 09 05 7E 00 EC"},
             {"a checksum made right again by a command", "wrong-sum@reply:1,wrong-command@reply:1",
              "FF FF 0A 41 01 06 07 06 09 05 7E 00 EB"},
             {"a checksum made right over a wrong length",
              "wrong-length=11@reply:1,foreign-type=9@reply:1",
              "FF FF 0B 41 01 06 07 06 09 09 10 00 82"},
             {"a byte counted after one that is missing", "drop-byte@reply:1.0,drop-byte@reply:1.0",
              "0A 41 01 06 07 06 09 05 10 00 7D"},
             {"a copy as it was before", "duplicate=5@reply:1,truncate@reply:1.2",
              "FF FF | 5 ms FF FF 0A 41 01 06 07 06 09 05 10 00 7D"},
             {"a copy as it is now", "truncate@reply:1.2,duplicate=5@reply:1",
              "FF FF | 5 ms FF FF"},
             {"only the late copy", "duplicate=5@reply:1,drop@reply:1",
              "5 ms FF FF 0A 41 01 06 07 06 09 05 10 00 7D"},
             {"noise alone", "ff-run=2@reply:1,drop@reply:1", "FF FF"},
             {"the nearest comes last", "ff-run=1@reply:1,half-frame@reply:1",
              "FF FF FF 0A 41 01 06 FF FF 0A 41 01 06 07 06 09 05 10 00 7D"},
             {"pauses add up", "delay=5@reply:1,delay=6@reply:1,gap=7@reply:1.0",
              "18 ms FF FF 0A 41 01 06 07 06 09 05 10 00 7D"},
             {"a gap in a split frame", "truncate@reply:1.3,split=2@reply:1,gap=7@reply:1.1",
              "FF | 9 ms FF | 2 ms 0A"},
             {"a gap after noise", "ff-run=1@reply:1,gap=7@reply:1.0",
              "FF | 7 ms FF FF 0A 41 01 06 07 06 09 05 10 00 7D"},
             {"a standstill without a frame", "drop@reply:1,pause=9@reply:1", "standstill 9"},
             {"one piece has no pauses",
              "truncate@reply:1.2,gap=7@reply:1.1,duplicate=3@reply:1,delay=2@reply:1,join=4@reply:"
              "1",
              "6 ms FF FF FF FF and next"},
             {"nothing after a hang-up", "duplicate=5@reply:1,hang-up@reply:1.2,ff-run=1@reply:1",
              "FF FF FF | 20 ms hang up"},
             {"a late hang-up before anything", "delay=5@reply:1,hang-up@reply:1.0",
              "5 ms | 20 ms hang up"}});
    }

    void faultsApplyInTheOrderOfThePlan()
    {
        QFETCH(QString, plan);
        Injector injector(plan);
        QTEST(injector.pass(Fault::Reply, Hex::announcementReply()), "deliveries");
    }

    void aFaultThatCannotBeAppliedLeavesTheFrame_data()
    {
        addRows<QString, QString, QString>(
            {"plan", "deliveries", "note"},
            {{"no such byte", "flip=0@reply:1.13", QString(Hex::hello()),
              "reply 1: too short for flip"},
             {"no neighbour", "swap@reply:1.12", QString(Hex::hello()),
              "reply 1: too short for swap"},
             {"no bytes left", "drop@reply:1,corrupt@reply:1", "",
              "reply 1: too short for corrupt"},
             {"no neighbours left", "truncate@reply:1.1,swap@reply:1", "FF",
              "reply 1: too short for swap"},
             {"no command", "truncate@reply:1.12,wrong-command@reply:1",
              "FF FF 0A 41 01 06 07 06 09 01 16 00", "reply 1: too short to change the command"},
             {"no length", "truncate@reply:1.2,wrong-length@reply:1", "FF FF",
              "reply 1: too short to change the length"}});
    }

    void aFaultThatCannotBeAppliedLeavesTheFrame()
    {
        QFETCH(QString, plan);
        Injector injector(plan);
        QTEST(injector.pass(Fault::Reply, Hex::hello()), "deliveries");
        QTEST(injector.notes().last(), "note");
    }

    void staleNeedsAPreviousFrame()
    {
        Injector injector("drop@reply:2,stale@reply:all");
        QCOMPARE(injector.pass(Fault::Request, Hex::hello()), QString(Hex::hello()));
        QCOMPARE(injector.pass(Fault::Reply, Hex::packetReply()), QString(Hex::packetReply()));
        QCOMPARE(injector.notes(), QStringList{"reply 1: no previous frame to put before it"});
        QCOMPARE(injector.pass(Fault::Reply, Hex::announcementReply()),
                 QString(Hex::packetReply()));
        // The previous one as it was sent, though it did not arrive.
        QCOMPARE(injector.pass(Fault::Reply, Hex::packetReply()),
                 QString(Hex::announcementReply() + ' ' + Hex::packetReply()));
    }

    void silenceLastsAndTakesEverything()
    {
        Injector injector("noise@reply:2+,silence@reply:2");
        QCOMPARE(injector.pass(Fault::Reply, Hex::hello()), QString(Hex::hello()));
        QCOMPARE(injector.passOther(Fault::Reply, "12 34"), QString("12 34"));
        QCOMPARE(injector.pass(Fault::Reply, Hex::hello()), QString());
        QCOMPARE(injector.passOther(Fault::Reply, "12 34"), QString());
        QCOMPARE(injector.pass(Fault::Reply, Hex::hello()), QString());
        QCOMPARE(injector.notes().size(), 2);
        QCOMPARE(injector.notes().last(), QString("reply 2: silence from here on"));
        QCOMPARE(injector.passOther(Fault::Request, "12 34"), QString("12 34"));
    }

    void whatIsNoFramePassesUncounted()
    {
        Injector injector("drop@reply:1");
        QCOMPARE(injector.passOther(Fault::Reply, "FF FF 0A 41"), QString("FF FF 0A 41"));
        QCOMPARE(injector.pass(Fault::Reply, Hex::hello()), QString());
        QCOMPARE(injector.passOther(Fault::Reply, "00"), QString("00"));
    }

    void theSameSeedGivesTheSameBytes_data()
    {
        addRows<QString>({"kind"}, {{"probability", "drop@reply:50%,drop"}});
        for (const char *kind :
             {"drop-byte", "insert-byte", "insert-byte=7", "corrupt", "corrupt=1", "flip", "flip=1",
              "burst", "swap", "truncate", "gap", "noise", "wrong-length", "trail", "hang-up"}) {
            QTest::newRow(kind) << kind;
        }
    }

    void theSameSeedGivesTheSameBytes()
    {
        QFETCH(QString, kind);
        const QString plan = kind + "@reply:50%";
        const QByteArray bytes = manyPasses(plan, 3, Fault::Reply);
        QCOMPARE(manyPasses(plan, 3, Fault::Reply), bytes);
        QVERIFY(manyPasses(plan, 4, Fault::Reply) != bytes);
        // With certainty, only the random places and values are different.
        if (!kind.startsWith("drop@")) {
            const QString certain = kind + "@reply:all";
            QVERIFY(manyPasses(certain, 4, Fault::Reply) != manyPasses(certain, 3, Fault::Reply));
        }
    }

    void theDirectionsHaveRandomNumbersOfTheirOwn()
    {
        const QString plan = "noise@request:all,noise@reply:all";
        Injector alone(plan);
        const QString first = alone.pass(Fault::Reply, Hex::hello());
        const QString second = alone.pass(Fault::Reply, Hex::hello());
        Injector both(plan);
        QVERIFY(both.pass(Fault::Request, Hex::hello()) != first);
        QCOMPARE(both.pass(Fault::Reply, Hex::hello()), first);
        both.pass(Fault::Request, Hex::hello());
        both.pass(Fault::Request, Hex::hello());
        QCOMPARE(both.pass(Fault::Reply, Hex::hello()), second);
    }

    void randomBytesAreDifferentFromTheOldOnes_data()
    {
        // changes: bytes of a frame
        addRows<QString, int>({"plan", "changes"},
                              {{"corrupt", "corrupt@reply:all", 1},
                               {"flip", "flip@reply:all", 1},
                               {"burst", "burst=13@reply:all", -1},
                               {"swap", "swap@reply:all", 2},
                               {"wrong-length", "wrong-length@reply:all", 1}});
    }

    void randomBytesAreDifferentFromTheOldOnes()
    {
        QFETCH(QString, plan);
        QFETCH(int, changes);
        const QByteArray old = QByteArray::fromHex(Hex::hello());
        Injector injector(plan);
        for (int i = 0; i < 3000; ++i) {
            const QByteArray now =
                QByteArray::fromHex(injector.pass(Fault::Reply, Hex::hello()).toLatin1());
            QCOMPARE(now.size(), old.size());
            int different = 0;
            int first = old.size();
            for (int at = old.size() - 1; at >= 0; --at) {
                if (now.at(at) != old.at(at)) {
                    ++different;
                    first = at;
                }
            }
            // A burst that is longer than the frame goes up to its end.
            QCOMPARE(different, changes < 0 ? old.size() - first : changes);
        }
    }

    void randomBytesReachTheWholeFrame_data()
    {
        const QSet<int> all{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
        const QSet<int> inside{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
        addRows<QString, QSet<int>>(
            {"kind", "bytes"},
            {{"drop-byte", "drop-byte", all},
             {"insert-byte", "insert-byte", all},
             {"corrupt", "corrupt", all},
             {"flip", "flip", all},
             // The first two bytes are equal, and the last one has no neighbour.
             {"swap", "swap", {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}},
             {"truncate", "truncate", inside},
             {"gap", "gap", inside},
             {"hang-up", "hang-up", inside}});
    }

    void randomBytesReachTheWholeFrame()
    {
        QFETCH(QString, kind);
        Injector injector(kind + "@reply:all");
        for (int i = 0; i < 1000; ++i) {
            injector.pass(Fault::Reply, Hex::hello());
        }
        static const QRegularExpression kByte("bytes? ([0-9]+)");
        QSet<int> bytes;
        for (const QString &note : injector.notes()) {
            bytes.insert(kByte.match(note).captured(1).toInt());
        }
        QTEST(bytes, "bytes");
    }

    void noiseNeverLooksLikeAHeader_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<int>("size");

        for (const int size : {1, 2, 3, 200}) {
            QTest::addRow("%d bytes before", size) << "noise" << size;
            QTest::addRow("%d bytes after", size) << "trail" << size;
        }
    }

    void noiseNeverLooksLikeAHeader()
    {
        QFETCH(QString, kind);
        QFETCH(int, size);
        const QByteArray frame = QByteArray::fromHex(Hex::hello());
        Injector injector(QString("%1=%2@reply:all").arg(kind).arg(size));
        int headerBytes = 0;
        for (int i = 0; i < 3000; ++i) {
            const QByteArray all =
                QByteArray::fromHex(injector.pass(Fault::Reply, Hex::hello()).toLatin1());
            QCOMPARE(all.size(), frame.size() + size);
            const bool isBefore = kind == "noise";
            QCOMPARE(isBefore ? all.right(frame.size()) : all.left(frame.size()), frame);
            const QByteArray noise = isBefore ? all.left(size) : all.right(size);
            QVERIFY(!noise.contains(QByteArray::fromHex("FF FF")));
            QVERIFY(!noise.startsWith('\xFF'));
            QVERIFY(!noise.endsWith('\xFF'));
            headerBytes += noise.count('\xFF');
        }
        // A single one is no header, and noise may well have it.
        QCOMPARE(headerBytes > 0, size > 2);
    }

    // As computed by another program after the standard's description of the engine.
    void randomNoiseIsTheSameOnEveryMachine()
    {
        QCOMPARE(Injector("noise@reply:1").pass(Fault::Reply, Hex::hello()),
                 "E5 49 F1 99 30 0D 81 D2 " + Hex::hello());
        QCOMPARE(Injector("noise@request:1").pass(Fault::Request, Hex::hello()),
                 "99 A9 F7 A3 EF 12 CB A2 " + Hex::hello());
        QCOMPARE(Injector("noise@reply:1", 7).pass(Fault::Reply, Hex::hello()),
                 "27 F1 E8 9B 71 B7 F8 0E " + Hex::hello());
    }
};

QTEST_GUILESS_MAIN(FaultInjectorTest)
#include "tst_faultinjector.moc"
