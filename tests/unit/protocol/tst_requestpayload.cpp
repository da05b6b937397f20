// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "requestpayload.h"
#include "rows.h"

#include <QtTest>

class RequestPayloadTest : public QObject {
    Q_OBJECT

private slots:
    void settingsStandInTheOrderOfTheWire_data()
    {
        addRows<int, int, bool, int, int, QByteArray>(
            {"autoTracking", "targetMissing", "upsideDown", "autoZoom", "zoomOffset", "payload"},
            {{"all off", 0, 0, false, 0, 0, "00 00 00 00 00"},
             {"defaults", 1, 1, false, 1, 1, "01 01 00 01 01"},
             {"pan, preset 7, upside down, zoom off, custom", 2, 9, true, 0, 3, "02 09 01 00 03"},
             {"each byte its own value", 3, 4, true, 1, 2, "03 04 01 01 02"},
             {"nothing chosen is the low byte of -1", -1, -1, false, -1, -1, "ff ff 00 ff ff"}});
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

    void everyByteTravelsInItsPlace()
    {
        for (int byte = 0; byte < 256; ++byte) {
            const QByteArray hex = QByteArray(1, static_cast<char>(byte)).toHex();
            CameraSettings settings{byte, 0, false, 0, 0};
            QCOMPARE(cameraSettingsPayload(settings).toHex(' '), hex + " 00 00 00 00");
            settings = {0, byte, false, 0, 0};
            QCOMPARE(cameraSettingsPayload(settings).toHex(' '), "00 " + hex + " 00 00 00");
            settings = {0, 0, false, byte, 0};
            QCOMPARE(cameraSettingsPayload(settings).toHex(' '), "00 00 00 " + hex + " 00");
            settings = {0, 0, false, 0, byte};
            QCOMPARE(cameraSettingsPayload(settings).toHex(' '), "00 00 00 00 " + hex);
            QCOMPARE(customZoomPayload(static_cast<unsigned char>(byte)).toHex(' '), hex + " 00");
        }
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
        addRows<int, QByteArray>({"size", "payload"},
                                 {{"0", 0, "02 00 00 00"},
                                  {"300", 300, "02 00 01 2c"},
                                  {"74565", 74565, "02 01 23 45"},
                                  {"the largest", 16777215, "02 ff ff ff"},
                                  {"higher bits are not sent", 16777216 + 300, "02 00 01 2c"}});
    }

    void firmwareSizeTravelsInThreeBytes()
    {
        QFETCH(int, size);
        QTEST(firmwareSizePayload(size).toHex(' '), "payload");
    }

    void everySizeOfUpTo131072BytesTravels()
    {
        for (int size = 0; size <= 131072; ++size) {
            const QByteArray payload = firmwareSizePayload(size);
            QCOMPARE(payload.size(), 4);
            QCOMPARE(payload.at(0), '\x02');
            QCOMPARE(payload.mid(1).toHex().toInt(nullptr, 16), size);
        }
    }
};

QTEST_APPLESS_MAIN(RequestPayloadTest)
#include "tst_requestpayload.moc"
