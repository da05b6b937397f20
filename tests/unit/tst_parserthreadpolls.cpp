// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "parserthread.h"

#include "patience.h"
#include "ringbuffer.h"
#include "rows.h"
#include "threadclock.h"

#include <QSet>

namespace {

QSet<unsigned long> kindsOf(const QList<unsigned long> &pauses)
{
    return {pauses.begin(), pauses.end()};
}

} // namespace

class ParserThreadPollsTest : public QObject {
    Q_OBJECT

private slots:
    void pausesForHalfASecondWithoutABuffer()
    {
        ThreadClock clock;
        {
            ParserThread parser;
            parser.start();
            QTRY_VERIFY(clock.pauses().size() >= 3);
        }
        QCOMPARE(kindsOf(clock.pauses()), QSet<unsigned long>{500});
    }

    void pausesForATwentiethOfASecondWhileTheBufferIsEmpty()
    {
        ThreadClock clock;
        RingBuffer buffer;
        {
            ParserThread parser;
            parser.startParser(&buffer);
            QTRY_VERIFY(clock.pauses().size() >= 3);
        }
        QCOMPARE(kindsOf(clock.pauses()), QSet<unsigned long>{50});
    }

    void doesNotPauseBetweenBytes()
    {
        constexpr int kBytes = 100000;
        ThreadClock clock;
        RingBuffer buffer;
        buffer.append(QByteArray(kBytes, '\0'));
        {
            ParserThread parser;
            parser.startParser(&buffer);
            QTRY_VERIFY(buffer.isEmpty());
        }
        // At most the polls after the last byte.
        const int pauses = clock.pauses().size();
        QVERIFY2(pauses < kBytes / 10, qPrintable(QString::number(pauses)));
    }

    void endsWithinOnePoll_data()
    {
        addRows<bool>({"hasBuffer"}, {{"with a buffer", true}, {"without a buffer", false}});
    }

    // It is destroyed during a pause. When that is over, it neither pauses again nor takes any of
    // the bytes that have arrived meanwhile.
    void endsWithinOnePoll()
    {
        QFETCH(bool, hasBuffer);
        constexpr int kBytes = 1000;
        ThreadClock clock;
        clock.holdOthers();
        RingBuffer buffer;
        {
            ParserThread parser;
            if (hasBuffer) {
                parser.startParser(&buffer);
            } else {
                parser.start();
            }
            QTRY_VERIFY(ThreadClock::isHolding());
            buffer.append(QByteArray(kBytes, '\0'));
            clock.clear();
        }
        QCOMPARE(clock.pauses(), QList<unsigned long>());
        int bytes = 0;
        while (buffer.getChar() >= 0) {
            ++bytes;
        }
        QCOMPARE(bytes, kBytes);
    }
};

QTEST_GUILESS_MAIN(ParserThreadPollsTest)
#include "tst_parserthreadpolls.moc"
