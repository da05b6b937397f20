// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "fakeline.h"
#include "frames.h"
#include "rows.h"
#include "upgrade.h"

#include <memory>

using State = Upgrade::State;

Q_DECLARE_METATYPE(Upgrade::State)

/// The upgrade of one camera, without a port and without waiting.
class UpgradeTest : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        m_plan = {{}, "1.0.0.7"};
        prepare(Hex::firmware());
    }

    void sendsTheFirmwareInPackets()
    {
        m_upgrade->start();
        QCOMPARE(m_line->written(), Hex::announcement());
        QCOMPARE(m_upgrade->state(), State::Announcing);
        m_line->send(Hex::announcementReply());
        QCOMPARE(m_line->written().replace(" ", ""), bytesOf(Hex::firstPacket()));
        QCOMPARE(m_upgrade->state(), State::Uploading);
        m_line->send(Hex::packetReply());
        QCOMPARE(m_line->written().replace(" ", ""), bytesOf(Hex::secondPacket()));
        QCOMPARE(m_upgrade->packetsAcknowledged(), 1);
        m_line->send(Hex::packetReply());
        QCOMPARE(m_line->written().replace(" ", ""), bytesOf(Hex::thirdPacket()));
        QVERIFY(m_upgrade->isUploading());
        m_line->send(Hex::packetReply());
        QCOMPARE(m_line->written(), QByteArray());
        QCOMPARE(m_upgrade->state(), State::Rebooting);
        QVERIFY(!m_upgrade->isUploading());
        QCOMPARE(m_upgrade->packetsAcknowledged(), 3);
        QCOMPARE(m_upgrade->packetCount(), 3);
    }

    void numbersPacketsFromOneAndGoesOnWithZeroAfter255()
    {
        prepare(QByteArray(257 * 128, '\0'));
        upload();
        // Header, length, signature, type and command are before the number.
        QCOMPARE(m_numbers.mid(0, 2), (QVector<int>{1, 2}));
        QCOMPARE(m_numbers.mid(253), (QVector<int>{254, 255, 0, 1}));
    }

    void waitsForTheNewVersion()
    {
        upload();
        // The camera is given a second to begin its restart, and then asked every second.
        m_line->pass(999);
        QCOMPARE(m_line->written(), QByteArray());
        m_line->pass(1);
        QCOMPARE(m_line->written(), Hex::hello());
        m_line->pass(1000);
        QCOMPARE(m_line->written(), Hex::hello());
        m_line->send(Hex::raisedHelloReply());
        QCOMPARE(m_upgrade->state(), State::Done);
        QCOMPARE(m_upgrade->versionAfter(), QString("1.0.0.7"));
        QVERIFY(!m_line->hasAlarm());
    }

    void givesUpAtTheRebootLimit_data()
    {
        addRows<int>({"seconds"}, {{"shortest", 2}, {"usual", 60}});
    }

    void givesUpAtTheRebootLimit()
    {
        QFETCH(int, seconds);
        m_plan.rebootLimit = std::chrono::seconds(seconds);
        prepare(Hex::firmware());
        upload();
        m_line->pass(seconds * 1000 - 1);
        QCOMPARE(m_upgrade->state(), State::Rebooting);
        m_line->pass(1);
        QCOMPARE(m_upgrade->state(), State::Failed);
        QCOMPARE(m_upgrade->failure().id, QString("not-back"));
        QVERIFY(m_upgrade->failure().sentence.contains(
            QString(" within %1 s after the last one").arg(seconds)));
        QCOMPARE(m_line->written().count("FF FF"), seconds - 1);
    }

    void failsWithAnotherVersion()
    {
        upload();
        m_line->pass(1000);
        m_line->send(Hex::helloReply());
        QCOMPARE(m_upgrade->state(), State::Failed);
        QCOMPARE(m_upgrade->failure().id, QString("other-version"));
        QCOMPARE(
            m_upgrade->failure().sentence,
            QString("The camera runs version 1.0.0.6 after the upgrade, and not 1.0.0.7 as the "
                    "image says."));
        QCOMPARE(m_upgrade->versionAfter(), QString("1.0.0.6"));
    }

    void wantsToSeeARestartWhereTheVersionStays_data()
    {
        addRows<int, State, QString>({"milliseconds", "state", "failure"},
                                     {{"never away", 1000, State::Failed, "not-restarted"},
                                      {"away for a moment", 2000, State::Done, ""}});
    }

    void wantsToSeeARestartWhereTheVersionStays()
    {
        m_plan.imageVersion = "1.0.0.6";
        prepare(Hex::firmware());
        upload();
        QFETCH(int, milliseconds);
        m_line->pass(milliseconds);
        m_line->send(Hex::helloReply());
        QTEST(m_upgrade->state(), "state");
        QTEST(m_upgrade->failure().id, "failure");
    }

    void failsWithoutAcknowledgement_data()
    {
        addRows<int, int, QString>(
            {"acknowledged", "limit", "sentence"},
            {{"announcement", 0, 5000,
              "The camera has not acknowledged the announcement of the firmware within 5 s."},
             {"first packet", 1, 2000, "The camera has not acknowledged packet 1 of 3 within 2 s."},
             {"last packet", 3, 2000,
              "The camera has not acknowledged packet 3 of 3 within 2 s."}});
    }

    void failsWithoutAcknowledgement()
    {
        QFETCH(int, acknowledged);
        QFETCH(int, limit);
        m_upgrade->start();
        acknowledge(acknowledged);
        m_line->written();
        m_line->pass(limit - 1);
        QVERIFY(m_upgrade->isUploading());
        m_line->pass(1);
        QCOMPARE(m_upgrade->state(), State::Failed);
        QTEST(m_upgrade->failure().sentence, "sentence");
        QCOMPARE(m_upgrade->attempt(), 1);
        // Nothing is repeated, and nothing changes any more.
        m_line->send(Hex::packetReply());
        m_line->pass(60'000);
        emit m_line->lost("gone");
        QTEST(m_upgrade->failure().sentence, "sentence");
        QCOMPARE(m_line->written(), QByteArray());
    }

    void startsAgainFromTheAnnouncement()
    {
        m_plan.attempts = 2;
        prepare(Hex::firmware());
        m_upgrade->start();
        acknowledge(2);
        m_line->pass(2000);
        QCOMPARE(m_upgrade->state(), State::Pausing);
        QVERIFY(m_upgrade->isUploading());
        m_line->written();
        // The acknowledgement that was late belongs to nothing any more.
        m_line->pass(2999);
        m_line->send(Hex::packetReply());
        QCOMPARE(m_line->written(), QByteArray());
        m_line->pass(1);
        QCOMPARE(m_line->written(), Hex::announcement());
        QCOMPARE(m_upgrade->attempt(), 2);
        QCOMPARE(m_upgrade->packetsAcknowledged(), 0);
        acknowledge(1);
        QCOMPARE(m_line->written().replace(" ", ""), bytesOf(Hex::firstPacket()));
        acknowledge(1);
        m_line->pass(2000);
        QCOMPARE(m_upgrade->state(), State::Failed);
        QCOMPARE(m_upgrade->attempt(), 2);
    }

    void makesNoMoreAttemptsWhenAsked_data()
    {
        addRows<int>({"before"}, {{"while uploading", 0}, {"while pausing", 2000}});
    }

    void makesNoMoreAttemptsWhenAsked()
    {
        QFETCH(int, before);
        m_plan.attempts = 5;
        prepare(Hex::firmware());
        m_upgrade->start();
        acknowledge(2);
        m_line->pass(before);
        m_upgrade->makeNoMoreAttempts();
        m_line->pass(2000);
        QCOMPARE(m_upgrade->state(), State::Failed);
        QCOMPARE(m_upgrade->failure().id, QString("packet-lost"));
    }

    void failsWhenTheLineIsLost_data()
    {
        addRows<int, QString>(
            {"acknowledged", "sentence"},
            {{"before any packet", 0, "The port failed after 0 of 3 packets: No such device."},
             {"between packets", 2, "The port failed after 1 of 3 packets: No such device."},
             {"after the last", 4, "The port failed after the last packet: No such device."}});
    }

    void failsWhenTheLineIsLost()
    {
        QFETCH(int, acknowledged);
        // However many attempts there are.
        m_plan.attempts = 3;
        prepare(Hex::firmware());
        m_upgrade->start();
        acknowledge(acknowledged);
        emit m_line->lost("No such device");
        QCOMPARE(m_upgrade->state(), State::Failed);
        QCOMPARE(m_upgrade->failure().id, QString("hung-up"));
        QTEST(m_upgrade->failure().sentence, "sentence");
    }

    void saysEachStepOnce()
    {
        QVector<State> states;
        connect(m_upgrade.get(), &Upgrade::stateChanged, this,
                [this, seen = &states] { *seen += m_upgrade->state(); });
        const QSignalSpy progressed(m_upgrade.get(), &Upgrade::progressed);
        upload();
        QCOMPARE(progressed.size(), 3);
        m_line->pass(1000);
        m_line->send(Hex::raisedHelloReply());
        QCOMPARE(
            states,
            (QVector<State>{State::Announcing, State::Uploading, State::Rebooting, State::Done}));
    }

private:
    void prepare(const QByteArray &firmware)
    {
        m_plan.firmware = firmware;
        m_upgrade.reset();
        m_line = std::make_unique<FakeLine>();
        m_conversation = std::make_unique<Conversation>(*m_line);
        m_upgrade = std::make_unique<Upgrade>(*m_conversation, m_plan, "1.0.0.6");
        m_numbers.clear();
    }

    /// The announcement's acknowledgement, and so many packets' after it.
    void acknowledge(int count)
    {
        for (int i = 0; i < count; ++i) {
            m_line->send(i == 0 && m_upgrade->state() == State::Announcing
                             ? Hex::announcementReply()
                             : Hex::packetReply());
        }
    }

    void upload()
    {
        m_upgrade->start();
        m_line->written();
        acknowledge(1);
        while (m_upgrade->state() == State::Uploading) {
            constexpr int kNumberOffset = 11;
            m_numbers += static_cast<unsigned char>(
                QByteArray::fromHex(m_line->written()).at(kNumberOffset));
            acknowledge(1);
        }
    }

    static QByteArray bytesOf(const QByteArray &hexadecimal)
    {
        return QByteArray::fromHex(hexadecimal).toHex().toUpper();
    }

    UpgradePlan m_plan;
    std::unique_ptr<FakeLine> m_line;
    std::unique_ptr<Conversation> m_conversation;
    std::unique_ptr<Upgrade> m_upgrade;
    QVector<int> m_numbers; ///< of the packets
};

QTEST_GUILESS_MAIN(UpgradeTest)

#include "tst_upgrade.moc"
