// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "parserthread.h"

#include "frames.h"
#include "logcapture.h"
#include "patience.h"
#include "ringbuffer.h"
#include "rows.h"

#include <atomic>
#include <memory>
#include <mutex>

namespace {

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

/// Takes frames on the parser thread itself, under a lock that the thread sanitizer understands.
class FrameList {
public:
    void listenTo(const ParserThread &parser)
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

struct Receiver {
    explicit Receiver(bool starts = true)
    {
        watchEnd(parser);
        frames.listenTo(parser);
        if (starts) {
            parser.startParser(&buffer);
        }
    }

    RingBuffer buffer;
    FrameList frames;
    ParserThread parser;
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

    // No sum, length or size is shown with the separators of a language.
    void initTestCase() { QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany)); }

    void startsWithABufferOnly()
    {
        LogCapture log;
        Receiver receiver(false);
        auto &[buffer, frames, parser] = receiver;
        parser.startParser(nullptr);
        QVERIFY(!parser.isRunning());
        parser.startParser(&buffer);
        QVERIFY(parser.isRunning());
        QCOMPARE(parser.priority(), QThread::InheritPriority);
        parser.startParser(&buffer);
        QVERIFY(parser.isRunning());
        QCOMPARE(log.texts(), QStringList({"startParser", "startParser", "startParser"}));
    }

    void readsTheBufferThatItWasGivenLast()
    {
        RingBuffer other;
        Receiver receiver;
        receiver.buffer.append(Frames::helloReply().left(10));
        QTRY_VERIFY(receiver.buffer.isEmpty());
        receiver.parser.startParser(&other);
        receiver.parser.startParser(nullptr);
        // What was begun is completed.
        other.append(Frames::helloReply().mid(10));
        QTRY_COMPARE(receiver.frames.count(), 1);
    }

    void writesDebugLinesInQuotes()
    {
        LogCapture log;
        ParserThread().showDebugMessage("a line");
        QCOMPARE(log.lines().size(), 1);
        QCOMPARE(log.lines().constFirst().type, QtDebugMsg);
        QCOMPARE(log.lines().constFirst().printed, QString("\"a line\""));
    }

    void deliversAFrameWithoutItsChecksum()
    {
        Receiver receiver;
        receiver.buffer.append(Frames::helloReply());
        QTRY_COMPARE(receiver.frames.count(), 1);
        QCOMPARE(receiver.frames.at(0).toHex(), Frames::helloReply().chopped(1).toHex());
    }

    void deliversAFrameThatArrivesInPieces()
    {
        Receiver receiver;
        const QByteArray bytes = Frames::helloReply();
        for (const char byte : bytes) {
            QCOMPARE(receiver.frames.count(), 0);
            receiver.buffer.append(QByteArray(1, byte));
            QTRY_VERIFY(receiver.buffer.isEmpty());
        }
        QTRY_COMPARE(receiver.frames.count(), 1);
        QCOMPARE(receiver.frames.at(0).toHex(), Frames::helloReply().chopped(1).toHex());
    }

    void deliversTwoFramesOfOneAppendInOrder()
    {
        Receiver receiver;
        receiver.buffer.append(Frames::helloReply() + Frames::settingsAcknowledgement());
        QTRY_COMPARE(receiver.frames.count(), 2);
        QCOMPARE(receiver.frames.at(0).toHex(), Frames::helloReply().chopped(1).toHex());
        QCOMPARE(receiver.frames.at(1).toHex(),
                 Frames::settingsAcknowledgement().chopped(1).toHex());
    }

    void deliversQueuedAcrossThreads()
    {
        Receiver receiver;
        QThread *receivingThread = nullptr;
        connect(&receiver.parser, &ParserThread::command, this,
                [&receivingThread] { receivingThread = QThread::currentThread(); });
        receiver.buffer.append(Frames::settingsAcknowledgement());
        QTRY_COMPARE(receivingThread, thread());
    }

    void logsWhatTheAssemblerSays_data()
    {
        addRows<QByteArray, QStringList>(
            {"stream", "lines"},
            {{"a good frame",
              Frames::settingsAcknowledgement(),
              {"data_step_head_ready: length = 10", "Analyze Data: length = 10"}},
             {"numbers are decimal",
              Frames::helloReply(),
              {"data_step_head_ready: length = 23", "Analyze Data: length = 23"}},
             {"a wrong sum is shown unreduced",
              QByteArray::fromHex("ffff0b410106070609053a00c871"),
              {"data_step_head_ready: length = 11", "Checksum Error 368"}},
             // 11 + 10 * 254 = 2551
             {"a sum of more than 999",
              QByteArray::fromHex("ffff0bfefefefefefefefefefe00"),
              {"data_step_head_ready: length = 11", "Checksum Error 2551"}},
             {"a length of 0",
              QByteArray::fromHex("ffff0000"),
              {"data_step_head_ready: length = 0", "Error 0"}},
             {"noise says nothing", "noise", {}}});
    }

    void logsWhatTheAssemblerSays()
    {
        QFETCH(QByteArray, stream);
        QFETCH(QStringList, lines);
        LogCapture log;
        {
            Receiver receiver;
            receiver.buffer.append(stream);
            QTRY_VERIFY(receiver.buffer.isEmpty());
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
            connect(
                &receiver.parser, &ParserThread::command, &receiver.parser,
                [] { qDebug("handed over"); }, Qt::DirectConnection);
            receiver.buffer.append(Frames::settingsAcknowledgement());
            QTRY_VERIFY(receiver.buffer.isEmpty());
        }
        QCOMPARE(log.texts(),
                 QStringList({"startParser", "data_step_head_ready: length = 10",
                              "Analyze Data: length = 10", "handed over"}));
    }

    void dropsWhatIsTooLongAndGoesOn()
    {
        Receiver receiver;
        receiver.buffer.append(QByteArray::fromHex("ffff8b") + QByteArray(139, '\x01')
                               + Frames::settingsAcknowledgement());
        QTRY_COMPARE(receiver.frames.count(), 1);
        QCOMPARE(receiver.frames.at(0).toHex(),
                 Frames::settingsAcknowledgement().chopped(1).toHex());
    }

    void keepsAPartialFrameForLater()
    {
        Receiver receiver;
        receiver.buffer.append(Frames::helloReply().left(10));
        QTRY_VERIFY(receiver.buffer.isEmpty());
        receiver.buffer.append(Frames::helloReply().mid(10));
        QTRY_COMPARE(receiver.frames.count(), 1);
    }

    void takesTenThousandFramesWhileTheyArrive()
    {
        constexpr int kFrames = 10000;
        Receiver receiver;
        const auto previous =
            qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
        for (int i = 0; i < kFrames; ++i) {
            receiver.buffer.append(i % 2 == 0 ? Frames::settingsAcknowledgement()
                                              : Frames::helloReply());
        }
        QTRY_COMPARE(receiver.frames.count(), kFrames);
        qInstallMessageHandler(previous);
        QCOMPARE(receiver.frames.at(kFrames - 1).toHex(), Frames::helloReply().chopped(1).toHex());
    }
};

QTEST_GUILESS_MAIN(ParserThreadTest)
#include "tst_parserthread.moc"
