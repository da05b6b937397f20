// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "requestpayload.h"

#include <QtTest>

class RequestPayloadTest : public QObject {
    Q_OBJECT

private slots:
    void settingsStandInTheOrderOfTheWire_data()
    {
        QTest::addColumn<int>("autoTracking");
        QTest::addColumn<int>("targetMissing");
        QTest::addColumn<bool>("upsideDown");
        QTest::addColumn<int>("autoZoom");
        QTest::addColumn<int>("zoomOffset");
        QTest::addColumn<QByteArray>("payload");

        QTest::newRow("all off") << 0 << 0 << false << 0 << 0 << QByteArray("00 00 00 00 00");
        QTest::newRow("defaults") << 1 << 1 << false << 1 << 1 << QByteArray("01 01 00 01 01");
        QTest::newRow("pan, preset 7, upside down, zoom off, custom")
            << 2 << 9 << true << 0 << 3 << QByteArray("02 09 01 00 03");
        QTest::newRow("each byte its own value")
            << 3 << 4 << true << 1 << 2 << QByteArray("03 04 01 01 02");
        QTest::newRow("nothing chosen is the low byte of -1")
            << -1 << -1 << false << -1 << -1 << QByteArray("ff ff 00 ff ff");
    }

    void settingsStandInTheOrderOfTheWire()
    {
        QFETCH(int, autoTracking);
        QFETCH(int, targetMissing);
        QFETCH(bool, upsideDown);
        QFETCH(int, autoZoom);
        QFETCH(int, zoomOffset);

        CameraSettings settings;
        settings.autoTracking = autoTracking;
        settings.targetMissing = targetMissing;
        settings.upsideDown = upsideDown;
        settings.autoZoom = autoZoom;
        settings.zoomOffset = zoomOffset;
        QTEST(cameraSettingsPayload(settings).toHex(' '), "payload");
    }

    void whatIsNotSetIsOff()
    {
        QCOMPARE(cameraSettingsPayload(CameraSettings()).toHex(' '), QByteArray("00 00 00 00 00"));
    }

    void customZoomIsThePresetAndZero()
    {
        QCOMPARE(customZoomPayload(0).toHex(' '), QByteArray("00 00"));
        QCOMPARE(customZoomPayload(1).toHex(' '), QByteArray("01 00"));
    }

    void firmwareSizeTravelsInThreeBytes_data()
    {
        QTest::addColumn<int>("size");
        QTest::addColumn<QByteArray>("payload");
        QTest::newRow("0") << 0 << QByteArray("02 00 00 00");
        QTest::newRow("300") << 300 << QByteArray("02 00 01 2c");
        QTest::newRow("74565") << 74565 << QByteArray("02 01 23 45");
        QTest::newRow("the largest") << 16777215 << QByteArray("02 ff ff ff");
        QTest::newRow("higher bits are not sent") << 16777216 + 300 << QByteArray("02 00 01 2c");
    }

    void firmwareSizeTravelsInThreeBytes()
    {
        QFETCH(int, size);
        QTEST(firmwareSizePayload(size).toHex(' '), "payload");
    }
};

QTEST_APPLESS_MAIN(RequestPayloadTest)
#include "tst_requestpayload.moc"
