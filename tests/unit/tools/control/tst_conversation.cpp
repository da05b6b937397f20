// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "conversation.h"
#include "fakeline.h"
#include "frames.h"
#include "rows.h"

#include <memory>

/// A request and its acknowledgement, without a port and without waiting.
class ConversationTest : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        m_line = std::make_unique<FakeLine>();
        m_conversation = std::make_unique<Conversation>(*m_line);
        m_events.clear();
        connect(m_conversation.get(), &Conversation::answered, this,
                [this](const QByteArray &frame) { m_events << frame.toHex(' ').toUpper(); });
        connect(m_conversation.get(), &Conversation::timedOut, this,
                [this] { m_events << "timed out"; });
        connect(m_conversation.get(), &Conversation::lost, this, [this](const QString &reason) {
            // As a time-out would contradict it.
            QVERIFY(!m_line->hasAlarm());
            m_events << "lost: " + reason;
        });
    }

    void sendsTheFrame_data()
    {
        addRows<int, QByteArray, int, QByteArray>(
            {"command", "payload", "parameter", "frame"},
            {{"HELLO", 22, "", 0, Hex::hello()},
             {"zoom 2", 58, "0100", 0, Hex::zoom2()},
             {"settings", 85, "0209010003", 0, Hex::settings()},
             {"announcement", 16, "0200012C", 0, Hex::announcement()},
             {"packet", 1, "010203", 1, Hex::smallPacket()}});
    }

    void sendsTheFrame()
    {
        QFETCH(int, command);
        QFETCH(QByteArray, payload);
        QFETCH(int, parameter);
        ask(command, payload, parameter);
        QTEST(m_line->written(), "frame");
        QCOMPARE(events(), QString());
    }

    void waitsAsLongAsTheCommandHas_data()
    {
        addRows<int, int>({"command", "limit"},
                          {{"HELLO", 22, 5000},
                           {"announcement", 16, 5000},
                           {"settings", 85, 5000},
                           {"zoom", 58, 2000},
                           {"packet", 1, 2000}});
    }

    void waitsAsLongAsTheCommandHas()
    {
        QFETCH(int, command);
        QFETCH(int, limit);
        ask(command);
        m_line->pass(limit - 1);
        QCOMPARE(events(), QString());
        m_line->pass(1);
        QCOMPARE(events(), QString("timed out"));
        m_line->pass(10'000);
        QCOMPARE(events(), QString("timed out"));
    }

    void givesAnAnswerByTheLastMoment()
    {
        ask(22);
        m_line->pass(4999);
        m_line->send(Hex::helloReply());
        QCOMPARE(events(), withoutSum(Hex::helloReply()));
        QVERIFY(!m_line->hasAlarm());
    }

    void findsTheAnswerHoweverItComes_data()
    {
        addRows<QByteArray>(
            {"bytes"},
            {{"alone", Hex::packetReply()},
             {"after noise", "00 FF 12 " + Hex::packetReply()},
             {"after half a frame", "FF FF 0A 41 01 " + Hex::packetReply()},
             {"after a reply to something else", Hex::announcementReply() + Hex::packetReply()},
             {"after a request", Hex::hello() + Hex::packetReply()},
             {"twice", Hex::packetReply() + Hex::packetReply()}});
    }

    void findsTheAnswerHoweverItComes()
    {
        QFETCH(QByteArray, bytes);
        ask(1);
        m_line->send(bytes);
        QCOMPARE(events(), withoutSum(Hex::packetReply()));

        // Byte by byte.
        init();
        ask(1);
        const QByteArray all = QByteArray::fromHex(bytes);
        for (const char byte : all) {
            m_line->send(QByteArray(1, byte).toHex());
        }
        QCOMPARE(events(), withoutSum(Hex::packetReply()));
    }

    void takesNothingElseForTheAnswer_data()
    {
        addRows<QByteArray>({"bytes"},
                            {{"another command", Hex::helloReply()},
                             {"a request", "FF FF 0A 41 01 06 07 06 09 01 01 00 6A"},
                             {"a wrong sum", "FF FF 0A 41 01 06 07 06 09 05 01 00 6F"},
                             {"a part", "FF FF 0A 41 01 06 07 06 09 05 01 00"},
                             {"nothing", ""}});
    }

    void takesNothingElseForTheAnswer()
    {
        QFETCH(QByteArray, bytes);
        ask(1);
        m_line->pass(1000);
        m_line->send(bytes);
        QCOMPARE(events(), QString());
        // Nor does the camera get more time for it, or less.
        m_line->pass(999);
        QCOMPARE(events(), QString());
        m_line->pass(1);
        QCOMPARE(events(), QString("timed out"));
    }

    void ignoresWhatComesUnasked()
    {
        m_line->send(Hex::helloReply());
        ask(22);
        m_line->pass(5000);
        m_line->send(Hex::helloReply());
        QCOMPARE(events(), QString("timed out"));
    }

    void theFirstOfTwoAnswersCounts()
    {
        ask(58);
        m_line->send(Hex::zoomReply() + "FF FF 0C 41 01 06 07 06 09 05 3A 00 01 90 3A");
        QCOMPARE(events(), withoutSum(Hex::zoomReply()));
    }

    void isNotSpoiltByTheReplyBefore()
    {
        // With a checksum of FF, which makes a pair with the header that follows.
        const QByteArray reply = "FF FF 0B 41 01 06 07 06 09 05 3A 00 57 FF";
        ask(58);
        m_line->send(reply);
        ask(58);
        m_line->send(Hex::zoomReply());
        QCOMPARE(events(), withoutSum(reply) + ", " + withoutSum(Hex::zoomReply()));
    }

    void canAskFromWithinTheAnswer()
    {
        const auto connection =
            connect(m_conversation.get(), &Conversation::answered, this, [this] { ask(58); });
        ask(22);
        m_line->send(Hex::helloReply() + Hex::zoomReply());
        // What came with the answer is older than the second request.
        QCOMPARE(events(), withoutSum(Hex::helloReply()));
        disconnect(connection);
        m_line->send(Hex::zoomReply());
        QCOMPARE(m_events.size(), 2);
    }

    void pausesAndStops()
    {
        ask(22);
        m_conversation->pause(std::chrono::milliseconds(300));
        m_line->pass(299);
        m_line->send(Hex::helloReply());
        QCOMPARE(events(), QString());
        m_line->pass(1);
        QCOMPARE(events(), QString("timed out"));

        ask(22);
        m_conversation->stop();
        m_line->send(Hex::helloReply());
        m_line->pass(5000);
        QCOMPARE(events(), QString("timed out"));
    }

    void saysThatTheLineIsLost()
    {
        ask(22);
        emit m_line->lost("No such device");
        m_line->send(Hex::helloReply());
        m_line->pass(5000);
        QCOMPARE(events(), QString("lost: No such device"));
    }

private:
    void ask(int command, const QByteArray &payload = {}, int parameter = 0)
    {
        m_conversation->ask(static_cast<UARTControlCommand>(command), QByteArray::fromHex(payload),
                            static_cast<unsigned char>(parameter));
    }

    QString events() const { return m_events.join(", "); }

    static QString withoutSum(const QByteArray &frame) { return QString(frame).chopped(3); }

    std::unique_ptr<FakeLine> m_line;
    std::unique_ptr<Conversation> m_conversation;
    QStringList m_events;
};

QTEST_GUILESS_MAIN(ConversationTest)

#include "tst_conversation.moc"
