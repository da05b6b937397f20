// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "parserthread.h"

#include "logcapture.h"
#include "patience.h"
#include "ringbuffer.h"

#include <atomic>
#include <memory>
#include <mutex>

namespace {

QByteArray longFrame()
{
    return QByteArray::fromHex("ffff17410106070609051600 01000a10 03 0000 0101 0100 00 03 b4");
}
QByteArray shortFrame()
{
    return QByteArray::fromHex("ffff0a410106070609055500c2");
}

/// Fails the test if the thread is destroyed before it has ended.
///
/// The thread sanitizer needs it too: it does not see the lock inside Qt by which QThread::wait()
/// knows that the thread has ended, but it sees the atomic.
void watchEnd(const ParserThread &parser)
{
    const auto ended = std::make_shared<std::atomic<bool>>(false);
    QObject::connect(
        &parser, &QThread::finished, &parser, [ended] { *ended = true; }, Qt::DirectConnection);
    QObject::connect(&parser, &QObject::destroyed, [ended] { QVERIFY(*ended); });
}

struct Receiver {
    Receiver() { watchEnd(parser); }

    RingBuffer buffer;
    ParserThread parser;
};

/// Takes frames on the parser thread itself, under a lock that the thread sanitizer understands.
class FrameList {
public:
    explicit FrameList(const ParserThread &parser)
    {
        QObject::connect(
            &parser, &ParserThread::command, &parser,
            [this](const QByteArray &frame) {
                const std::lock_guard lock(m_mutex);
                // A copy of the bytes: nothing of it is shared with the parser thread.
                m_frames << QByteArray(frame.constData(), frame.size());
            },
            Qt::DirectConnection);
    }
    int count() const
    {
        const std::lock_guard lock(m_mutex);
        return m_frames.size();
    }
    QByteArray at(int index) const
    {
        const std::lock_guard lock(m_mutex);
        return m_frames.at(index);
    }

private:
    mutable std::mutex m_mutex;
    QList<QByteArray> m_frames;
};

} // namespace

class ParserThreadTest : public QObject {
    Q_OBJECT

private slots:
    void hasOneSignalAndNothingElse()
    {
        const QMetaObject &meta = ParserThread::staticMetaObject;
        QCOMPARE(meta.methodCount() - meta.methodOffset(), 1);
        QCOMPARE(meta.method(meta.methodOffset()).methodSignature(),
                 QByteArray("command(QByteArray)"));
        QCOMPARE(meta.method(meta.methodOffset()).methodType(), QMetaMethod::Signal);
    }

    void startsWithABufferOnly()
    {
        LogCapture log;
        Receiver receiver;
        auto &[buffer, parser] = receiver;
        parser.startParser(nullptr);
        QVERIFY(!parser.isRunning());
        parser.startParser(&buffer);
        QVERIFY(parser.isRunning());
        parser.startParser(&buffer);
        QVERIFY(parser.isRunning());
        QCOMPARE(log.texts(), QStringList({"startParser", "startParser", "startParser"}));
    }

    void deliversAFrameWithoutItsChecksum()
    {
        Receiver receiver;
        auto &[buffer, parser] = receiver;
        const FrameList frames(parser);
        parser.startParser(&buffer);
        buffer.append(longFrame());
        QTRY_COMPARE(frames.count(), 1);
        QCOMPARE(frames.at(0).toHex(), longFrame().chopped(1).toHex());
    }

    void deliversAFrameThatArrivesInPieces()
    {
        Receiver receiver;
        auto &[buffer, parser] = receiver;
        const FrameList frames(parser);
        parser.startParser(&buffer);
        const QByteArray bytes = longFrame();
        for (const char byte : bytes) {
            QCOMPARE(frames.count(), 0);
            buffer.append(QByteArray(1, byte));
            QTRY_VERIFY(buffer.isEmpty());
        }
        QTRY_COMPARE(frames.count(), 1);
        QCOMPARE(frames.at(0).toHex(), longFrame().chopped(1).toHex());
    }

    void deliversTwoFramesOfOneAppendInOrder()
    {
        Receiver receiver;
        auto &[buffer, parser] = receiver;
        const FrameList frames(parser);
        parser.startParser(&buffer);
        buffer.append(longFrame() + shortFrame());
        QTRY_COMPARE(frames.count(), 2);
        QCOMPARE(frames.at(0).toHex(), longFrame().chopped(1).toHex());
        QCOMPARE(frames.at(1).toHex(), shortFrame().chopped(1).toHex());
    }

    void deliversQueuedAcrossThreads()
    {
        Receiver receiver;
        auto &[buffer, parser] = receiver;
        QThread *receivingThread = nullptr;
        connect(&parser, &ParserThread::command, this,
                [&receivingThread] { receivingThread = QThread::currentThread(); });
        parser.startParser(&buffer);
        buffer.append(shortFrame());
        QTRY_COMPARE(receivingThread, thread());
    }

    void logsWhatTheAssemblerSays_data()
    {
        QTest::addColumn<QByteArray>("stream");
        QTest::addColumn<QStringList>("lines");

        QTest::newRow("a good frame")
            << shortFrame()
            << QStringList{"data_step_head_ready: length = 10", "Analyze Data: length = 10"};
        QTest::newRow("numbers are decimal")
            << longFrame()
            << QStringList{"data_step_head_ready: length = 23", "Analyze Data: length = 23"};
        QTest::newRow("a wrong sum is shown unreduced")
            << QByteArray::fromHex("ffff0b410106070609053a00c871")
            << QStringList{"data_step_head_ready: length = 11", "Checksum Error 368"};
        QTest::newRow("a length of 0")
            << QByteArray::fromHex("ffff0000")
            << QStringList{"data_step_head_ready: length = 0", "Error 0"};
        QTest::newRow("noise says nothing") << QByteArray("noise") << QStringList();
    }

    void logsWhatTheAssemblerSays()
    {
        QFETCH(QByteArray, stream);
        QFETCH(QStringList, lines);
        LogCapture log;
        {
            Receiver receiver;
            auto &[buffer, parser] = receiver;
            parser.startParser(&buffer);
            buffer.append(stream);
            QTRY_VERIFY(buffer.isEmpty());
        }
        QCOMPARE(log.texts(), QStringList{"startParser"} + lines);
    }

    // Whoever takes the frame logs what he makes of it, and the log is to be read from top to
    // bottom.
    void logsAFrameBeforeItHandsItOver()
    {
        LogCapture log;
        {
            Receiver receiver;
            auto &[buffer, parser] = receiver;
            connect(
                &parser, &ParserThread::command, &parser, [] { qDebug("handed over"); },
                Qt::DirectConnection);
            parser.startParser(&buffer);
            buffer.append(shortFrame());
            QTRY_VERIFY(buffer.isEmpty());
        }
        QCOMPARE(log.texts(),
                 QStringList({"startParser", "data_step_head_ready: length = 10",
                              "Analyze Data: length = 10", "handed over"}));
    }

    void dropsWhatIsTooLongAndGoesOn()
    {
        Receiver receiver;
        auto &[buffer, parser] = receiver;
        const FrameList frames(parser);
        parser.startParser(&buffer);
        buffer.append(QByteArray::fromHex("ffff8b") + QByteArray(139, '\x01') + shortFrame());
        QTRY_COMPARE(frames.count(), 1);
        QCOMPARE(frames.at(0).toHex(), shortFrame().chopped(1).toHex());
    }

    void keepsAPartialFrameForLater()
    {
        Receiver receiver;
        auto &[buffer, parser] = receiver;
        const FrameList frames(parser);
        parser.startParser(&buffer);
        buffer.append(longFrame().left(10));
        QTRY_VERIFY(buffer.isEmpty());
        buffer.append(longFrame().mid(10));
        QTRY_COMPARE(frames.count(), 1);
    }

    void endsWithinOnePoll()
    {
        RingBuffer buffer;
        {
            ParserThread parser;
            watchEnd(parser);
            parser.startParser(&buffer);
        }
        // Nobody reads any more.
        buffer.append("a");
        QVERIFY(!buffer.isEmpty());
    }

    void endsWithoutEverHavingHadABuffer()
    {
        Receiver receiver;
        auto &[buffer, parser] = receiver;
        parser.start();
        QTRY_VERIFY(parser.isRunning());
    }

    void takesTenThousandFramesWhileTheyArrive()
    {
        constexpr int kFrames = 10000;
        Receiver receiver;
        auto &[buffer, parser] = receiver;
        const FrameList frames(parser);
        const auto previous =
            qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
        parser.startParser(&buffer);
        for (int i = 0; i < kFrames; ++i) {
            buffer.append(i % 2 == 0 ? shortFrame() : longFrame());
        }
        QTRY_COMPARE(frames.count(), kFrames);
        qInstallMessageHandler(previous);
        QCOMPARE(frames.at(kFrames - 1).toHex(), longFrame().chopped(1).toHex());
    }
};

QTEST_GUILESS_MAIN(ParserThreadTest)
#include "tst_parserthread.moc"
