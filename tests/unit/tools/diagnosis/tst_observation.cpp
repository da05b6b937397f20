// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "frames.h"
#include "observation.h"
#include "rows.h"

using std::chrono::milliseconds;

static QByteArray answerWithSumFF()
{
    return "FF FF 17 41 01 06 07 06 09 05 16 00 "
           "01 00 00 69 01 00 00 00 00 01 01 01 01 FF ";
}

class ObservationTest : public QObject {
    Q_OBJECT

private slots:
    // Bytes, frames, answers, own requests, other acknowledgements, foreign frames, wrong sums,
    // broken off, stray bytes.
    void countsWhatCameBack_data()
    {
        using Counts = QVector<int>;
        addRows<QByteArray, QVector<int>>(
            {"hexadecimal", "counts"},
            {{"nothing", {}, Counts{0, 0, 0, 0, 0, 0, 0, 0, 0}},
             {"an answer", Hex::helloReply(), Counts{26, 1, 1, 0, 0, 0, 0, 0, 0}},
             {"two answers", Hex::helloReply() + Hex::helloReply(),
              Counts{52, 2, 2, 0, 0, 0, 0, 0, 0}},
             {"the own request", Hex::hello(), Counts{13, 1, 0, 1, 0, 0, 0, 0, 0}},
             {"the own request and an answer", Hex::hello() + Hex::helloReply(),
              Counts{39, 2, 1, 1, 0, 0, 0, 0, 0}},
             {"somebody else's request", Hex::zoom1(), Counts{15, 1, 0, 0, 0, 1, 0, 0, 0}},
             {"a HELLO that is not the own one", "FF FF 0A 41 01 06 07 06 09 01 16 01 80",
              Counts{13, 1, 0, 0, 0, 1, 0, 0, 0}},
             {"a frame of the reserved type", "FF FF 0A 41 01 06 07 06 09 02 16 00 80",
              Counts{13, 1, 0, 0, 0, 1, 0, 0, 0}},
             {"another acknowledgement", Hex::zoomReply(), Counts{15, 1, 0, 0, 1, 0, 0, 0, 0}},
             {"an answer with a wrong sum", QByteArray(Hex::helloReply()).replace("9C", "9D"),
              Counts{26, 0, 0, 0, 0, 0, 1, 0, 26}},
             {"two bytes of the signature damaged",
              QByteArray(Hex::helloReply()).replace("06 07", "86 08"),
              Counts{26, 0, 0, 0, 0, 0, 1, 0, 26}},
             {"three bytes of the signature damaged",
              QByteArray(Hex::helloReply()).replace("01 06 07", "11 86 08"),
              Counts{26, 0, 0, 0, 0, 0, 0, 0, 26}},
             {"an answer that ends before its checksum", Hex::helloReply().chopped(3),
              Counts{25, 0, 0, 0, 0, 0, 0, 1, 25}},
             {"an answer that ends after its length", "FF FF 17",
              Counts{3, 0, 0, 0, 0, 0, 0, 0, 3}},
             {"an answer that ends before its length", "FF FF", Counts{2, 0, 0, 0, 0, 0, 0, 0, 2}},
             {"an end that is no frame's", "FF FF 17 42 02", Counts{5, 0, 0, 0, 0, 0, 0, 0, 5}},
             {"an end in the only byte of a signature that is right", "FF FF 17 41",
              Counts{4, 0, 0, 0, 0, 0, 0, 1, 4}},
             {"an end after the only byte of a signature, which is wrong", "FF FF 17 42",
              Counts{4, 0, 0, 0, 0, 0, 0, 0, 4}},
             {"an answer cut short by another",
              QByteArray("FF FF 17 41 01 06 07 06 ") + Hex::helloReply(),
              Counts{34, 1, 1, 0, 0, 0, 0, 1, 8}},
             {"an answer cut short by another within the signature",
              QByteArray("FF FF 17 41 ") + Hex::helloReply(), Counts{30, 1, 1, 0, 0, 0, 0, 1, 4}},
             {"headers without anything after them", "FF FF 17 FF FF 17 FF FF 17 00 00 00 00",
              Counts{13, 0, 0, 0, 0, 0, 0, 0, 13}},
             {"lengths that cannot be", "FF FF 00 41 FF FF 8B 41 01 06 07 06 09",
              Counts{13, 0, 0, 0, 0, 0, 0, 0, 13}},
             {"the longest frame, not whole", "FF FF 8A 41 01 06 07 06 09",
              Counts{9, 0, 0, 0, 0, 0, 0, 1, 9}},
             {"noise with the sums of frames wrong", "FF FF 02 11 22 33 FF FF 03 99 88 77",
              Counts{12, 0, 0, 0, 0, 0, 0, 0, 12}},
             {"noise on both sides of an answer", QByteArray("12 34 ") + Hex::helloReply() + "56",
              Counts{29, 1, 1, 0, 0, 0, 0, 0, 3}},
             {"a run of FF", "FF FF FF FF FF FF FF FF", Counts{8, 0, 0, 0, 0, 0, 0, 0, 8}},
             {"a frame after a checksum of FF is lost", answerWithSumFF() + Hex::zoomReply(),
              Counts{41, 1, 1, 0, 0, 0, 0, 0, 15}},
             {"a frame too short to have a command", "FF FF 02 41 43",
              Counts{5, 1, 0, 0, 0, 1, 0, 0, 0}}});
    }

    void countsWhatCameBack()
    {
        QFETCH(QByteArray, hexadecimal);
        Observation observation;
        observation.take(QByteArray::fromHex(hexadecimal), milliseconds(1));
        const LineRecord record = observation.record();
        const QVector<qint64> actual{record.bytes,
                                     record.frames,
                                     record.answers,
                                     record.ownRequests,
                                     record.otherAcknowledgements,
                                     record.foreignFrames,
                                     record.wrongSums,
                                     record.brokenOff,
                                     record.strayBytes};
        QFETCH(QVector<int>, counts);
        QCOMPARE(actual, QVector<qint64>(counts.begin(), counts.end()));
        QCOMPARE(observation.hasAnswer(), record.answer.has_value());
        QCOMPARE(record.answers > 0, record.answer.has_value());
    }

    void countsTheSameByteByByte_data() { countsWhatCameBack_data(); }

    void countsTheSameByteByByte()
    {
        QFETCH(QByteArray, hexadecimal);
        QFETCH(QVector<int>, counts);
        Observation observation;
        const QByteArray bytes = QByteArray::fromHex(hexadecimal);
        for (const char byte : bytes) {
            observation.take(QByteArray(1, byte), milliseconds(1));
        }
        const LineRecord record = observation.record();
        QCOMPARE(record.bytes, counts.at(0));
        QCOMPARE(record.frames, counts.at(1));
        QCOMPARE(record.wrongSums, counts.at(6));
        QCOMPARE(record.brokenOff, counts.at(7));
        QCOMPARE(record.strayBytes, counts.at(8));
        QCOMPARE(record.firstBytes, bytes.left(32));
    }

    void keepsTheFirstAnswerAndItsTime()
    {
        Observation observation;
        const QByteArray bytes = QByteArray::fromHex(Hex::helloReply());
        observation.take(bytes.left(20), milliseconds(100));
        QVERIFY(!observation.hasAnswer());
        observation.take(bytes.mid(20), milliseconds(250));
        QVERIFY(observation.hasAnswer());
        observation.take(QByteArray::fromHex(answerWithSumFF()), milliseconds(900));
        const LineRecord record = observation.record();
        QCOMPARE(record.answers, 2);
        QCOMPARE(record.answer->time.count(), 250);
        QCOMPARE(record.answer->frame, bytes.left(25));
        QVERIFY(!record.answer->sumIsHeaderByte);
    }

    void tellsAChecksumOfFF()
    {
        Observation observation;
        observation.take(QByteArray::fromHex(answerWithSumFF()), milliseconds(0));
        QVERIFY(observation.record().answer->sumIsHeaderByte);
    }

    void tellsWhichCommandsAndTypesCame()
    {
        Observation observation;
        observation.take(QByteArray::fromHex(Hex::zoomReply() + Hex::zoomReply()
                                             + "FF FF 0A 41 01 06 07 06 09 05 55 00 C2"
                                               "FF FF 0A 41 01 06 07 06 09 02 16 00 80"
                                               "FF FF 0A 41 01 06 07 06 09 FE 16 00 7C"),
                         milliseconds(0));
        const LineRecord record = observation.record();
        QCOMPARE(record.otherAcknowledgements, 3);
        QCOMPARE(record.otherCommands, (QSet<int>{0x3A, 0x55}));
        QCOMPARE(record.foreignFrames, 2);
        QCOMPARE(record.foreignTypes, (QSet<int>{2, 0xFE}));
    }

    void keepsOnlyTheFirstBytes()
    {
        Observation observation;
        observation.take(QByteArray(20, 'a'), milliseconds(0));
        observation.take(QByteArray(100000, 'b'), milliseconds(0));
        observation.take(QByteArray(20, 'c'), milliseconds(0));
        const LineRecord record = observation.record();
        QCOMPARE(record.firstBytes, QByteArray(20, 'a') + QByteArray(12, 'b'));
        QCOMPARE(record.bytes, 100040);
    }
};

QTEST_GUILESS_MAIN(ObservationTest)
#include "tst_observation.moc"
