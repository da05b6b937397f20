// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "firmwarepacket.h"

#include <QtTest>

class FirmwarePacketTest : public QObject {
    Q_OBJECT

private slots:
    void cutsAFirmwareOf_data()
    {
        QTest::addColumn<int>("size");
        QTest::addColumn<QList<int>>("lengths");

        QTest::newRow("0 bytes") << 0 << QList<int>{};
        QTest::newRow("1 byte") << 1 << QList<int>{1};
        QTest::newRow("127 bytes") << 127 << QList<int>{127};
        QTest::newRow("128 bytes") << 128 << QList<int>{128};
        QTest::newRow("129 bytes") << 129 << QList<int>{128, 1};
        QTest::newRow("256 bytes") << 256 << QList<int>{128, 128};
        QTest::newRow("300 bytes") << 300 << QList<int>{128, 128, 44};
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

    void theLargestFirmwareIsWhatTheSizeFieldCanSay()
    {
        QCOMPARE(FirmwarePacket::kMaximumFirmwareSize, 16777215);
        QCOMPARE(FirmwarePacket::count(16777215), 131072);
        QCOMPARE(int(FirmwarePacket::at(131071, 16777215).length), 127);
    }
};

QTEST_APPLESS_MAIN(FirmwarePacketTest)
#include "tst_firmwarepacket.moc"
