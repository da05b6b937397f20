// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "request.h"

#include <QtTest>

class RequestTest : public QObject {
    Q_OBJECT

private slots:
    void takesAFrameApart_data()
    {
        QTest::addColumn<QByteArray>("frame");
        QTest::addColumn<int>("type");
        QTest::addColumn<int>("command");
        QTest::addColumn<int>("parameter");
        QTest::addColumn<QByteArray>("payload");

        QTest::newRow("no payload")
            << QByteArray("FF FF 0A 41 01 06 07 06 09 01 16 00 7F") << 1 << 22 << 0 << QByteArray();
        QTest::newRow("two bytes of payload")
            << QByteArray("FF FF 0C 41 01 06 07 06 09 01 3A 00 01 00 A6") << 1 << 58 << 0
            << QByteArray("01 00");
        QTest::newRow("bytes are unsigned")
            << QByteArray("FF FF 0B 41 01 06 07 06 09 80 FE FF 90 00") << 128 << 254 << 255
            << QByteArray("90");
    }

    void takesAFrameApart()
    {
        QFETCH(QByteArray, frame);
        QFETCH(QByteArray, payload);
        const auto request = Request::fromFrame(QByteArray::fromHex(frame));
        QVERIFY(request);
        QTEST(int(request->type), "type");
        QTEST(int(request->command), "command");
        QTEST(int(request->parameter), "parameter");
        QCOMPARE(request->payload.toHex(' ').toUpper(), payload);
    }

    void needsTheSignature_data()
    {
        QTest::addColumn<QByteArray>("frame");

        QTest::newRow("first byte") << QByteArray("FF FF 0A 42 01 06 07 06 09 01 16 00 80");
        QTest::newRow("second byte") << QByteArray("FF FF 0A 41 00 06 07 06 09 01 16 00 7E");
        QTest::newRow("third byte") << QByteArray("FF FF 0A 41 01 07 07 06 09 01 16 00 80");
        QTest::newRow("fourth byte") << QByteArray("FF FF 0A 41 01 06 06 06 09 01 16 00 7E");
        QTest::newRow("fifth byte") << QByteArray("FF FF 0A 41 01 06 07 07 09 01 16 00 80");
        QTest::newRow("last byte") << QByteArray("FF FF 0A 41 01 06 07 06 08 01 16 00 7E");
    }

    void needsTheSignature()
    {
        QFETCH(QByteArray, frame);
        QVERIFY(!Request::fromFrame(QByteArray::fromHex(frame)));
    }
};

QTEST_GUILESS_MAIN(RequestTest)
#include "tst_request.moc"
