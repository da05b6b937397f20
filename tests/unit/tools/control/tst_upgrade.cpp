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
        // Nothing undoes that.
        emit m_line->lost("No such device");
        QCOMPARE(m_upgrade->state(), State::Done);
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
        QCOMPARE(failure(),
                 QString("not-back: The camera has all packets, but has not answered within %1 s "
                         "after the last one. See with \"corvanectl info\" whether it answers by "
                         "now, and which version it runs. If it never does, switch it off and on "
                         "again. --reboot-limit waits for longer.")
                     .arg(seconds));
        QCOMPARE(m_line->written().count("FF FF"), seconds - 1);
    }

    void failsWithAnotherVersion()
    {
        upload();
        m_line->pass(1000);
        m_line->send(Hex::helloReply());
        QCOMPARE(m_upgrade->state(), State::Failed);
        QCOMPARE(failure(),
                 QString("other-version: The camera runs version 1.0.0.6 after the upgrade, and "
                         "not 1.0.0.7 as the image says. Is the image for this camera? If so, "
                         "upgrade it again: a packet may have been damaged on the line."));
        QCOMPARE(m_upgrade->versionAfter(), QString("1.0.0.6"));
    }

    void wantsToSeeARestartWhereTheVersionStays_data()
    {
        addRows<int, State, QString>({"milliseconds", "state", "failure"},
                                     {{"never away", 1000, State::Failed,
                                       "not-restarted: The camera ran version 1.0.0.6 before, and "
                                       "has not been seen to restart after the last packet. "
                                       "Upgrade it again: it may not have taken the last packet."},
                                      {"away for a moment", 2000, State::Done, ":"}});
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
        QTEST(failure(), "failure");
    }

    void failsWithoutAcknowledgement_data()
    {
        addRows<int, int, QString>(
            {"acknowledged", "limit", "failure"},
            {{"announcement", 0, 5000,
              "not-announced: The camera has not acknowledged the announcement of the firmware "
              "within 5 s."
                  + incomplete()},
             {"first packet", 1, 2000,
              "packet-lost: The camera has not acknowledged packet 1 of 3 within 2 s."
                  + incomplete()},
             {"last packet", 3, 2000,
              "packet-lost: The camera has not acknowledged packet 3 of 3 within 2 s."
                  + incomplete()}});
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
        QTEST(failure(), "failure");
        QCOMPARE(m_upgrade->attempt(), 1);
        // Nothing is repeated, and nothing changes any more.
        m_line->send(Hex::packetReply());
        m_line->pass(60'000);
        emit m_line->lost("gone");
        QTEST(failure(), "failure");
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
        connect(m_upgrade.get(), &Upgrade::stateChanged, this,
                [this] { QVERIFY(!m_line->hasAlarm()); });
        m_upgrade->makeNoMoreAttempts();
        m_line->pass(2000);
        QCOMPARE(m_upgrade->state(), State::Failed);
        QCOMPARE(m_upgrade->failure().id, QString("packet-lost"));
    }

    void failsWhenTheLineIsLost_data()
    {
        addRows<int, QString>(
            {"acknowledged", "failure"},
            {{"before any packet", 0,
              "hung-up: The port failed after 0 of 3 packets: No such device." + incomplete()},
             {"between packets", 2,
              "hung-up: The port failed after 1 of 3 packets: No such device." + incomplete()},
             {"after the last", 4,
              "hung-up: The port failed after the last packet: No such device. The camera has the "
              "whole firmware. Plug the adapter in again and see with \"corvanectl info\" which "
              "version it runs."}});
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
        QTEST(failure(), "failure");
    }

    void saysEachStepOnceItIsTaken()
    {
        m_plan.attempts = 2;
        prepare(Hex::firmware());
        // What is to come needs the alarm, so that a listener can end it by stopping the line.
        QStringList steps;
        connect(m_upgrade.get(), &Upgrade::stateChanged, this,
                [this, all = &steps] { *all += step() + (m_line->hasAlarm() ? ", goes on" : ""); });
        connect(m_upgrade.get(), &Upgrade::progressed, this,
                [this, all = &steps] { *all += step(); });
        m_upgrade->start();
        acknowledge(2);
        m_line->pass(5000);
        acknowledge(4);
        m_line->pass(1000);
        m_line->send(Hex::raisedHelloReply());
        QCOMPARE(steps,
                 (QStringList{"announcing 1, 0 packets, goes on", "uploading 1, 0 packets, goes on",
                              "uploading 1, 1 packets", "pausing 1, 1 packets, goes on",
                              "announcing 2, 0 packets, goes on", "uploading 2, 0 packets, goes on",
                              "uploading 2, 1 packets", "uploading 2, 2 packets",
                              "uploading 2, 3 packets", "rebooting 2, 3 packets, goes on",
                              "done 2, 3 packets"}));
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

    QString step() const
    {
        static const QStringList kStates{"announcing", "uploading", "pausing",
                                         "rebooting",  "done",      "failed"};
        return QString("%1 %2, %3 packets")
            .arg(kStates.at(static_cast<int>(m_upgrade->state())))
            .arg(m_upgrade->attempt())
            .arg(m_upgrade->packetsAcknowledged());
    }

    QString failure() const
    {
        const Verdict &failure = m_upgrade->failure();
        return QString("%1: %2 %3").arg(failure.id, failure.sentence, failure.remedy).trimmed();
    }

    static QString incomplete()
    {
        return " The camera may have an incomplete firmware: leave it on, look at the plugs and "
               "the cable, and upgrade it again. --attempts 3 does so by itself.";
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
