// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "firmwarereceiver.h"
#include "frames.h"
#include "rows.h"

#include <array>

namespace {

/// One UART_CTRL_CMD_UPLOAD_FIRMWARE: its parameter byte and how many bytes it carries.
struct Packet {
    unsigned char number;
    int size;
};

// No two packets of it are the same.
QByteArray someFirmware(int size)
{
    QByteArray bytes;
    for (int i = 0; i < size; ++i) {
        bytes.append(static_cast<char>(i + i / 128));
    }
    return bytes;
}

// The only frame in hexadecimal; anything else as a text that is none.
QByteArray text(const Answer &answer)
{
    if (answer.frames.size() != 1 || !answer.refusal.isEmpty()) {
        return QByteArray::number(answer.frames.size())
            + " frames, refused: " + answer.refusal.toUtf8();
    }
    return answer.frames.first().toHex(' ').toUpper();
}

QByteArray announce(FirmwareReceiver &receiver, const QByteArray &payload)
{
    return text(receiver.announce(QByteArray::fromHex(payload)));
}

} // namespace

Q_DECLARE_METATYPE(Packet)

class FirmwareReceiverTest : public QObject {
    Q_OBJECT

private slots:
    void readsTheAnnouncedSize_data()
    {
        // size: -1 for none
        addRows<QByteArray, int>({"payload", "size"},
                                 {{"nothing", "02 00 00 00", 0},
                                  {"low byte", "02 00 00 FF", 255},
                                  {"two bytes", "02 00 01 2C", 300},
                                  {"three bytes", "02 01 23 45", 74565},
                                  {"highest bit", "02 80 00 00", 8388608},
                                  {"largest", "02 FF FF FF", 16777215},
                                  {"starts with another number", "01 00 01 2C", -1},
                                  {"too short", "02 01 2C", -1},
                                  {"too long", "02 00 00 01 2C", -1},
                                  {"empty", {}, -1}});
    }

    void readsTheAnnouncedSize()
    {
        QFETCH(QByteArray, payload);
        QTEST(FirmwareReceiver::announcedSize(QByteArray::fromHex(payload)).value_or(-1), "size");
    }

    void putsTheFirmwareTogether_data()
    {
        addRows<QByteArray, QVector<int>, int>({"announcement", "sizes", "total"},
                                               {{"0 bytes", "02 00 00 00", {}, 0},
                                                {"1 byte", "02 00 00 01", {1}, 1},
                                                {"127 bytes", "02 00 00 7F", {127}, 127},
                                                {"128 bytes", "02 00 00 80", {128}, 128},
                                                {"129 bytes", "02 00 00 81", {128, 1}, 129},
                                                {"256 bytes", "02 00 01 00", {128, 128}, 256},
                                                {"300 bytes", "02 00 01 2C", {128, 128, 44}, 300}});
    }

    void putsTheFirmwareTogether()
    {
        QFETCH(QByteArray, announcement);
        QFETCH(QVector<int>, sizes);
        QFETCH(int, total);
        const QByteArray firmware = someFirmware(total);
        FirmwareReceiver receiver;
        QVERIFY(!receiver.isComplete());
        QCOMPARE(announce(receiver, announcement), Hex::announcementReply());
        int taken = 0;
        unsigned char number = 0;
        for (const int size : sizes) {
            QVERIFY(!receiver.isComplete());
            ++number;
            QCOMPARE(text(receiver.takePacket(number, firmware.mid(taken, size))),
                     Hex::packetReply());
            taken += size;
            QCOMPARE(receiver.firmware(), firmware.left(taken));
        }
        QVERIFY(receiver.isComplete());
        QCOMPARE(receiver.firmware(), firmware);
    }

    void countsPacketsModulo256()
    {
        const QByteArray firmware = someFirmware(256 * 128 + 5);
        FirmwareReceiver receiver;
        QCOMPARE(announce(receiver, "02 00 80 05"), Hex::announcementReply());
        for (int i = 0; i < 255; ++i) {
            const auto number = static_cast<unsigned char>(i + 1);
            QCOMPARE(text(receiver.takePacket(number, firmware.mid(i * 128, 128))),
                     Hex::packetReply());
        }
        const QByteArray packet256 = firmware.mid(255 * 128, 128);
        QCOMPARE(receiver.takePacket(1, packet256).refusal, QString("packet 1 instead of 0"));
        QCOMPARE(text(receiver.takePacket(0, packet256)), Hex::packetReply());
        const QByteArray packet257 = firmware.mid(256 * 128);
        QCOMPARE(receiver.takePacket(0, packet257).refusal, QString("packet 0 instead of 1"));
        QVERIFY(!receiver.isComplete());
        QCOMPARE(text(receiver.takePacket(1, packet257)), Hex::packetReply());
        QVERIFY(receiver.isComplete());
        QCOMPARE(receiver.firmware(), firmware);
    }

    void refusesAPacketThatDoesNotFit_data()
    {
        // packetsBefore: of 300 bytes
        addRows<int, Packet, QString>(
            {"packetsBefore", "packet", "refusal"},
            {{"counted from 0", 0, {0, 128}, "packet 0 instead of 1"},
             {"first one missing", 0, {2, 128}, "packet 2 instead of 1"},
             {"one in the middle missing", 1, {3, 44}, "packet 3 instead of 2"},
             {"repeated", 1, {1, 128}, "packet 1 instead of 2"},
             {"one before that", 2, {1, 128}, "packet 1 instead of 3"},
             {"too short in the middle", 1, {2, 127}, "payload of 127 bytes, 128 expected"},
             {"last one's length in the middle", 1, {2, 44}, "payload of 44 bytes, 128 expected"},
             {"empty in the middle", 1, {2, 0}, "payload of 0 bytes, 128 expected"},
             {"too long in the middle", 1, {2, 129}, "payload of 129 bytes, 128 expected"},
             {"too short at the end", 2, {3, 43}, "payload of 43 bytes, 44 expected"},
             {"empty at the end", 2, {3, 0}, "payload of 0 bytes, 44 expected"},
             {"one byte more than announced",
              2,
              {3, 45},
              "payload of 45 bytes, only 44 of 300 are missing"},
             {"a full one more than announced",
              2,
              {3, 128},
              "payload of 128 bytes, only 44 of 300 are missing"}});
    }

    void refusesAPacketThatDoesNotFit()
    {
        QFETCH(int, packetsBefore);
        QFETCH(Packet, packet);
        const QByteArray firmware = someFirmware(300);
        const std::array<QByteArray, 3> packets{firmware.mid(0, 128), firmware.mid(128, 128),
                                                firmware.mid(256)};
        FirmwareReceiver receiver;
        announce(receiver, "02 00 01 2C");
        unsigned char next = 1;
        while (next <= packetsBefore) {
            QCOMPARE(text(receiver.takePacket(next, packets.at(next - 1U))), Hex::packetReply());
            ++next;
        }
        const Answer answer = receiver.takePacket(packet.number, QByteArray(packet.size, 'x'));
        QTEST(answer.refusal, "refusal");
        QVERIFY(answer.frames.isEmpty());
        QCOMPARE(receiver.firmware(), firmware.left(packetsBefore * 128));
        QVERIFY(!receiver.isComplete());
        // The right ones may still follow.
        while (next <= packets.size()) {
            QCOMPARE(text(receiver.takePacket(next, packets.at(next - 1U))), Hex::packetReply());
            ++next;
        }
        QVERIFY(receiver.isComplete());
        QCOMPARE(receiver.firmware(), firmware);
    }

    void refusesAPacketWithoutAnAnnouncement()
    {
        FirmwareReceiver receiver;
        const Answer answer = receiver.takePacket(1, QByteArray(128, 'x'));
        QCOMPARE(answer.refusal, QString("no firmware was announced"));
        QVERIFY(answer.frames.isEmpty());
        QVERIFY(receiver.firmware().isEmpty());
        QVERIFY(!receiver.isComplete());
    }

    void refusesAPacketWhenItIsComplete_data()
    {
        addRows<Packet>(
            {"packet"},
            {{"one more", {2, 128}}, {"an empty one", {2, 0}}, {"the last one again", {1, 128}}});
    }

    void refusesAPacketWhenItIsComplete()
    {
        QFETCH(Packet, packet);
        const QByteArray firmware = someFirmware(128);
        FirmwareReceiver receiver;
        announce(receiver, "02 00 00 80");
        receiver.takePacket(1, firmware);
        const Answer answer = receiver.takePacket(packet.number, QByteArray(packet.size, 'x'));
        QCOMPARE(answer.refusal, QString("the firmware is complete"));
        QVERIFY(answer.frames.isEmpty());
        QCOMPARE(receiver.firmware(), firmware);
        QVERIFY(receiver.isComplete());
    }

    void startsAnewWithAnAnnouncement()
    {
        const QByteArray firmware = someFirmware(129);
        FirmwareReceiver receiver;
        announce(receiver, "02 00 01 2C");
        receiver.takePacket(1, QByteArray(128, 'x'));
        for (const char *when : {"in the middle", "when it is complete"}) {
            QCOMPARE(announce(receiver, "02 00 00 81"), Hex::announcementReply());
            QVERIFY2(!receiver.isComplete(), when);
            QVERIFY2(receiver.firmware().isEmpty(), when);
            QCOMPARE(receiver.takePacket(2, firmware.left(128)).refusal,
                     QString("packet 2 instead of 1"));
            QCOMPARE(text(receiver.takePacket(1, firmware.left(128))), Hex::packetReply());
            QCOMPARE(text(receiver.takePacket(2, firmware.mid(128))), Hex::packetReply());
            QVERIFY2(receiver.isComplete(), when);
            QCOMPARE(receiver.firmware(), firmware);
        }
    }

    void goesOnAfterABadAnnouncement_data()
    {
        addRows<QByteArray, QByteArray>(
            {"payload", "refusal"},
            {{"empty", {}, "0 frames, refused: payload of 0 bytes, 4 expected"},
             {"too short", "02 00 80", "0 frames, refused: payload of 3 bytes, 4 expected"},
             {"too long", "02 00 00 00 80", "0 frames, refused: payload of 5 bytes, 4 expected"},
             {"starts with another number", "FF 00 00 80",
              "0 frames, refused: payload starts with 255, 2 expected"}});
    }

    void goesOnAfterABadAnnouncement()
    {
        QFETCH(QByteArray, payload);
        const QByteArray firmware = someFirmware(129);
        FirmwareReceiver receiver;
        announce(receiver, "02 00 00 81");
        receiver.takePacket(1, firmware.left(128));
        QTEST(announce(receiver, payload), "refusal");
        QCOMPARE(text(receiver.takePacket(2, firmware.mid(128))), Hex::packetReply());
        QCOMPARE(receiver.firmware(), firmware);
    }
};

QTEST_GUILESS_MAIN(FirmwareReceiverTest)
#include "tst_firmwarereceiver.moc"
