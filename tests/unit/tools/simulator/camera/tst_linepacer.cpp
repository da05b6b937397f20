// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "linepacer.h"
#include "rows.h"

using namespace std::chrono_literals;

// At 10,000 baud a byte takes 1 ms, which keeps the numbers readable.
constexpr int kBaud = 10'000;

class LinePacerTest : public QObject {
    Q_OBJECT

private slots:
    void bytesBecomeDueOneByOne_data()
    {
        addRows<qint64, QByteArray>({"microseconds", "due"},
                                    {{"at once", 0, {}},
                                     {"before the first byte is through", 999, {}},
                                     {"first byte", 1000, "a"},
                                     {"still one byte", 1999, "a"},
                                     {"third byte", 3000, "abc"},
                                     {"last byte", 5000, "abcde"},
                                     {"long after", qint64(3'600'000'000), "abcde"}});
    }

    void bytesBecomeDueOneByOne()
    {
        QFETCH(qint64, microseconds);
        constexpr auto kStart = 7s;
        LinePacer pacer(kBaud);
        pacer.send("abcde", kStart);
        QTEST(pacer.takeDue(kStart + std::chrono::microseconds(microseconds)).bytes, "due");
    }

    void aByteTakesTenBits_data()
    {
        addRows<int, qint64>({"baud", "nanoseconds"},
                             {// 26 bytes are 260 bits.
                              {"115200 baud", 115'200, qint64(2'256'945)},
                              {"9600 baud", 9600, qint64(27'083'334)},
                              {"1 baud", 1, qint64(260'000'000'000)},
                              {"4 megabaud", 4'000'000, qint64(65'000)}});
    }

    void aByteTakesTenBits()
    {
        QFETCH(int, baud);
        QFETCH(qint64, nanoseconds);
        LinePacer pacer(baud);
        pacer.send(QByteArray(26, 'x'), 0ns);
        QCOMPARE(pacer.takeDue(LinePacer::Time(nanoseconds - 1)).bytes.size(), 25);
        QCOMPARE(pacer.takeDue(LinePacer::Time(nanoseconds)).bytes.size(), 1);
        QVERIFY(pacer.isIdle());
    }

    void aReplyWaitsForTheRequest()
    {
        LinePacer pacer(kBaud);
        pacer.received(13, 100ms);
        pacer.send("ab", 100ms);
        QCOMPARE(pacer.takeDue(113ms).bytes, QByteArray());
        QCOMPARE(pacer.takeDue(114ms).bytes, QByteArray("a"));
        QCOMPARE(pacer.takeDue(115ms).bytes, QByteArray("b"));
    }

    void bytesThatTrickleInAreNotCountedTwice()
    {
        LinePacer pacer(kBaud);
        for (int i = 0; i < 13; ++i) {
            pacer.received(1, i * 1ms);
        }
        // The last byte is on its way from 12 to 13 ms.
        pacer.send("a", 12ms);
        QCOMPARE(pacer.takeDue(13'999us).bytes, QByteArray());
        QCOMPARE(pacer.takeDue(14ms).bytes, QByteArray("a"));
    }

    void theDelayStartsAfterTheRequest()
    {
        LinePacer pacer(kBaud);
        pacer.received(10, 0ms);
        pacer.send("a", 0ms, 500ms);
        QCOMPARE(pacer.takeDue(510ms).bytes, QByteArray());
        QCOMPARE(pacer.takeDue(511ms).bytes, QByteArray("a"));
    }

    void framesFollowEachOther()
    {
        LinePacer pacer(kBaud);
        pacer.send("abc", 0ms);
        pacer.send("de", 1ms);
        QCOMPARE(pacer.takeDue(4ms).bytes, QByteArray("abcd"));
        QCOMPARE(pacer.takeDue(5ms).bytes, QByteArray("e"));
        // The line was free meanwhile, which does not let the next frame be early.
        pacer.send("f", 20ms);
        QCOMPARE(pacer.takeDue(20ms).bytes, QByteArray());
        QCOMPARE(pacer.takeDue(21ms).bytes, QByteArray("f"));
    }

    void anUnlimitedLineTakesNoTime()
    {
        LinePacer pacer(0);
        pacer.received(100, 5ms);
        pacer.send("abc", 5ms);
        QCOMPARE(pacer.takeDue(5ms).bytes, QByteArray("abc"));
        pacer.send("de", 5ms, 3ms);
        QCOMPARE(pacer.takeDue(7'999us).bytes, QByteArray());
        QCOMPARE(pacer.takeDue(8ms).bytes, QByteArray("de"));
    }

    void tellsWhichFramesAreComplete()
    {
        LinePacer pacer(kBaud);
        QVERIFY(pacer.isIdle());
        pacer.send("ab", 0ms);
        pacer.send("c", 0ms);
        QVERIFY(!pacer.isIdle());
        QCOMPARE(pacer.takeDue(1ms).completed, QVector<QByteArray>());
        QCOMPARE(pacer.takeDue(2ms).completed, QVector<QByteArray>{"ab"});
        QVERIFY(!pacer.isIdle());
        QCOMPARE(pacer.takeDue(3ms).completed, QVector<QByteArray>{"c"});
        QVERIFY(pacer.isIdle());
        QCOMPARE(pacer.takeDue(4ms).completed, QVector<QByteArray>());
    }

    void isDueForEachPartAndForTheEnd_data()
    {
        addRows<int, int>({"now", "due"},
                          {{"before the request is through", 0, 14},
                           {"at the first byte", 10, 14},
                           {"within the reply", 12, 16},
                           {"less than a part is left", 14, 17},
                           {"long after", 3'600'000, 17}});
    }

    void isDueForEachPartAndForTheEnd()
    {
        QFETCH(int, now);
        QFETCH(int, due);
        LinePacer pacer(kBaud);
        pacer.received(10, 0ms);
        pacer.send("abcdefg", 0ms);
        pacer.send("h", 0ms);
        pacer.takeDue(10ms);
        QCOMPARE(pacer.nextDue(now * 1ms, 4ms), LinePacer::Time(due * 1ms));
        pacer.takeDue(17ms);
        QCOMPARE(pacer.nextDue(17ms, 4ms), LinePacer::Time(18ms));
    }

    void clearForgetsEverything()
    {
        LinePacer pacer(kBaud);
        pacer.received(1000, 0ms);
        pacer.send("abc", 0ms);
        pacer.clear();
        QVERIFY(pacer.isIdle());
        QCOMPARE(pacer.takeDue(1h).bytes, QByteArray());
        LinePacer other(kBaud);
        other.received(1000, 0ms);
        other.send("abc", 0ms);
        other.clear();
        other.send("d", 0ms);
        QCOMPARE(other.takeDue(1ms).bytes, QByteArray("d"));
    }
};

QTEST_GUILESS_MAIN(LinePacerTest)
#include "tst_linepacer.moc"
