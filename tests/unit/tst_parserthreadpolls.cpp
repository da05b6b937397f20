// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "parserthread.h"
#include "patience.h"
#include "ringbuffer.h"

#include <QSet>

#include <chrono>
#include <mutex>
#include <thread>

namespace {

/// Remembers for how long the parser thread asked to sleep, in milliseconds.
class PauseLog {
public:
    void add(unsigned long milliseconds)
    {
        const std::lock_guard lock(m_mutex);
        m_durations << milliseconds;
        ++m_count;
    }
    QSet<unsigned long> durations() const
    {
        const std::lock_guard lock(m_mutex);
        return m_durations;
    }
    int count() const
    {
        const std::lock_guard lock(m_mutex);
        return m_count;
    }
    void clear()
    {
        const std::lock_guard lock(m_mutex);
        m_durations.clear();
        m_count = 0;
    }

private:
    mutable std::mutex m_mutex;
    QSet<unsigned long> m_durations;
    int m_count = 0;
};

PauseLog &pauseLog()
{
    static PauseLog log;
    return log;
}

} // namespace

// The linker prefers this to the one in Qt's library. How long a pause really takes is the
// machine's affair, so the test looks at what is asked for.
void QThread::msleep(unsigned long milliseconds)
{
    pauseLog().add(milliseconds);
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

class ParserThreadPollsTest : public QObject {
    Q_OBJECT

private slots:
    void init() { pauseLog().clear(); }

    void pausesForHalfASecondWithoutABuffer()
    {
        {
            ParserThread parser;
            parser.start();
            QTRY_VERIFY(pauseLog().count() >= 3);
        }
        QCOMPARE(pauseLog().durations(), QSet<unsigned long>{500});
    }

    void pausesForATwentiethOfASecondWhileTheBufferIsEmpty()
    {
        RingBuffer buffer;
        {
            ParserThread parser;
            parser.startParser(&buffer);
            QTRY_VERIFY(pauseLog().count() >= 3);
        }
        QCOMPARE(pauseLog().durations(), QSet<unsigned long>{50});
    }

    void doesNotPauseBetweenBytes()
    {
        constexpr int kBytes = 100000;
        RingBuffer buffer;
        buffer.append(QByteArray(kBytes, '\0'));
        {
            ParserThread parser;
            parser.startParser(&buffer);
            QTRY_VERIFY(buffer.isEmpty());
        }
        // At most the polls after the last byte.
        QVERIFY2(pauseLog().count() < kBytes / 10, qPrintable(QString::number(pauseLog().count())));
    }
};

QTEST_GUILESS_MAIN(ParserThreadPollsTest)
#include "tst_parserthreadpolls.moc"
