// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "firmwarepacket.h"
#include "rows.h"

#include <QtTest>

class FirmwarePacketTest : public QObject {
    Q_OBJECT

private slots:
    void cutsAFirmwareOf_data()
    {
        addRows<int, QList<int>>({"size", "lengths"},
                                 {{"0 bytes", 0, {}},
                                  {"1 byte", 1, {1}},
                                  {"127 bytes", 127, {127}},
                                  {"128 bytes", 128, {128}},
                                  {"129 bytes", 129, {128, 1}},
                                  {"256 bytes", 256, {128, 128}},
                                  {"300 bytes", 300, {128, 128, 44}}});
    }

    void cutsAFirmwareOf()
    {
        QFETCH(int, size);
        QFETCH(QList<int>, lengths);
        QCOMPARE(FirmwarePacket::count(size), lengths.size());
        for (int i = 0; i < lengths.size(); ++i) {
            const FirmwarePacket packet = FirmwarePacket::at(i, size);
            QCOMPARE(packet.offset, i * 128);
            QCOMPARE(int(packet.length), lengths.at(i));
            QCOMPARE(int(packet.number), i + 1);
        }
    }

    void numbersWrapBehind255()
    {
        QCOMPARE(FirmwarePacket::count(40000), 313);
        QCOMPARE(int(FirmwarePacket::at(254, 40000).number), 255);
        QCOMPARE(int(FirmwarePacket::at(255, 40000).number), 0);
        QCOMPARE(int(FirmwarePacket::at(256, 40000).number), 1);
        QCOMPARE(int(FirmwarePacket::at(312, 40000).number), 57);
        QCOMPARE(FirmwarePacket::at(312, 40000).offset, 39936);
        QCOMPARE(int(FirmwarePacket::at(312, 40000).length), 64);
    }

    // No QCOMPARE for each of the 67 million packets: that would take most of the time.
    void everySizeOfUpTo131072BytesIsCovered()
    {
        for (int size = 0; size <= 131072; ++size) {
            const int count = FirmwarePacket::count(size);
            int end = 0;
            bool isRight = true;
            for (int i = 0; i < count; ++i) {
                const FirmwarePacket packet = FirmwarePacket::at(i, size);
                const bool isLast = i + 1 == count;
                isRight = isRight && packet.offset == end && packet.number == (i + 1) % 256
                    && packet.length >= 1 && packet.length <= 128
                    && (isLast || packet.length == 128);
                end += packet.length;
            }
            QVERIFY2(isRight && end == size, QByteArray::number(size).constData());
        }
    }

    void theLargestFirmwareIsWhatTheSizeFieldCanSay()
    {
        QCOMPARE(FirmwarePacket::kMaximumFirmwareSize, 16777215);
        QCOMPARE(FirmwarePacket::count(16777215), 131072);
        QCOMPARE(int(FirmwarePacket::at(131071, 16777215).length), 127);
    }
};

QTEST_APPLESS_MAIN(FirmwarePacketTest)
#include "tst_firmwarepacket.moc"
