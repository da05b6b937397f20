// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "devicereply.h"
#include "rows.h"

#include <QtTest>

namespace {

// Frame as delivered, up to the payload: header, length, signature, type 5, command, parameter.
QByteArray delivered(const QByteArray &payload)
{
    return QByteArray::fromHex("ffff17410106070609051600" + payload);
}

} // namespace

class DeviceReplyTest : public QObject {
    Q_OBJECT

private slots:
    void readsTypeAndCommand_data()
    {
        addRows<QByteArray, int, int>({"frame", "type", "command"},
                                      {{"acknowledged HELLO", "ffff0a410106070609051600", 5, 22},
                                       {"reserved type", "ffff0a410106070609025500", 2, 85},
                                       {"bytes are unsigned", "ffff0a41010607060985ff00", 133, 255},
                                       {"no command", "ffff0741010607060905", 5, 0},
                                       {"no type", "ffff06410106070609", 0, 0},
                                       {"empty", QByteArray(), 0, 0}});
    }

    void readsTypeAndCommand()
    {
        QFETCH(QByteArray, frame);
        const DeviceReply reply(QByteArray::fromHex(frame));
        QTEST(int(reply.communicationType()), "type");
        QTEST(int(reply.command()), "command");
    }

    void readsTheSettingsBlock_data()
    {
        addRows<QByteArray, QString, QString, int, bool, int, int, int>(
            {"payload", "version", "summary", "targetMissing", "upsideDown", "autoTracking",
             "autoZoom", "zoomOffset"},
            {{"everything off", "00000000 00 0000 0000 0000 00 00", "0.0.0.0", "0.0.0.0.0.0.0", 0,
              false, 0, 0, 0},
             {"each byte its own value", "01020a10 09 aabb 0102 0304 05 06", "1.2.a.10",
              "9.1.2.3.4.5.6", 9, true, 1, 5, 6},
             {"negative bytes", "80ff7f81 ff 0000 8080 fffe f6 80", "-80.-1.7f.-7f",
              "-1.-80.-80.-1.-2.-a.-80", -1, true, 1, -10, -128},
             {"first direction flag alone is upright", "00000000 00 0000 0100 0000 00 00",
              "0.0.0.0", "0.1.0.0.0.0.0", 0, false, 0, 0, 0},
             {"second direction flag alone is upright", "00000000 00 0000 0001 0000 00 00",
              "0.0.0.0", "0.0.1.0.0.0.0", 0, false, 0, 0, 0},
             {"pan alone is mode 2", "00000000 00 0000 0000 0100 00 00", "0.0.0.0", "0.0.0.1.0.0.0",
              0, false, 2, 0, 0},
             {"tilt alone is mode 3", "00000000 00 0000 0000 0001 00 00", "0.0.0.0",
              "0.0.0.0.1.0.0", 0, false, 3, 0, 0},
             {"the two bytes not used change nothing", "00000000 00 ffff 0000 0000 00 00",
              "0.0.0.0", "0.0.0.0.0.0.0", 0, false, 0, 0, 0}});
    }

    void readsTheSettingsBlock()
    {
        QFETCH(QByteArray, payload);
        const SettingsReport report = DeviceReply(delivered(payload)).settings();
        QTEST(report.version, "version");
        QTEST(report.summary(), "summary");
        QTEST(int(report.targetMissing), "targetMissing");
        QTEST(report.isUpsideDown(), "upsideDown");
        QTEST(report.autoTracking(), "autoTracking");
        QTEST(int(report.autoZoom), "autoZoom");
        QTEST(int(report.zoomOffset), "zoomOffset");
    }

    void readsEveryByteOfTheSettingsBlock()
    {
        // Which byte of the payload each field is.
        const std::array<int, 7> places{4, 7, 8, 9, 10, 11, 12};
        for (int place = 0; place < 13; ++place) {
            for (int byte = 0; byte < 256; ++byte) {
                QByteArray payload(13, '\x01');
                payload[place] = static_cast<char>(byte);
                const auto report = DeviceReply(delivered(payload.toHex())).settings();
                const std::array<int, 7> fields{
                    report.targetMissing, report.firstDirectionFlag, report.secondDirectionFlag,
                    report.panTracking,   report.tiltTracking,       report.autoZoom,
                    report.zoomOffset};
                for (std::size_t i = 0; i < fields.size(); ++i) {
                    const int expected = byte < 128 ? byte : byte - 256;
                    QCOMPARE(fields[i], places[i] == place ? expected : 1);
                }
                QCOMPARE(report.isUpsideDown(), byte != 0 || (place != 7 && place != 8));
                const int modeWithoutTheFlag = place == 9 ? 3 : (place == 10 ? 2 : 1);
                QCOMPARE(report.autoTracking(), byte != 0 ? 1 : modeWithoutTheFlag);
            }
        }
    }

    void missingBytesReadAsZero_data()
    {
        QTest::addColumn<int>("size");
        QTest::addColumn<QString>("version");
        QTest::addColumn<QString>("summary");

        // From 12 and from 16 bytes on, one more for each byte.
        const QStringList versions{"0.0.0.0", "1.0.0.0", "1.2.0.0", "1.2.3.0", "1.2.3.4"};
        const QStringList summaries{
            "0.0.0.0.0.0.0", "5.0.0.0.0.0.0", "5.0.0.0.0.0.0", "5.0.0.0.0.0.0", "5.8.0.0.0.0.0",
            "5.8.9.0.0.0.0", "5.8.9.a.0.0.0", "5.8.9.a.b.0.0", "5.8.9.a.b.c.0", "5.8.9.a.b.c.d"};
        for (int size = 0; size <= 30; ++size) {
            QTest::addRow("%d bytes", size) << size << versions.at(qBound(0, size - 12, 4))
                                            << summaries.at(qBound(0, size - 16, 9));
        }
    }

    void missingBytesReadAsZero()
    {
        QFETCH(int, size);
        const QByteArray whole = delivered("01020304 05 0607 0809 0a0b 0c 0d 0e0f101112");
        const DeviceReply reply(whole.left(size));
        QCOMPARE(reply.size(), size);
        QTEST(reply.settings().version, "version");
        QTEST(reply.settings().summary(), "summary");
        QCOMPARE(reply.customZoom(), size > 13 ? 0x0102 : (size > 12 ? 0x0100 : 0));
    }

    void settingsNeedFourteenBytes()
    {
        for (int size = 0; size <= 30; ++size) {
            QCOMPARE(DeviceReply(QByteArray(size, '\0')).hasSettings(), size >= 14);
        }
    }

    void combinesTheZoomFromTwoSignedBytes_data()
    {
        addRows<QByteArray, int>({"payload", "zoom"},
                                 {{"zero", "0000", 0},
                                  {"low byte", "007f", 127},
                                  {"both bytes", "0102", 258},
                                  {"low byte of 80 or more lowers by 256", "0190", 144},
                                  {"low byte ff is -1", "00ff", -1},
                                  {"high byte ff", "ff00", -256},
                                  {"largest", "7f7f", 32639},
                                  {"smallest", "8080", -32896}});
    }

    void combinesTheZoomFromTwoSignedBytes()
    {
        QFETCH(QByteArray, payload);
        QTEST(DeviceReply(delivered(payload)).customZoom(), "zoom");
    }

    void combinesEveryPairOfBytes()
    {
        QByteArray frame = delivered("0000");
        for (int high = 0; high < 256; ++high) {
            for (int low = 0; low < 256; ++low) {
                frame[12] = static_cast<char>(high);
                frame[13] = static_cast<char>(low);
                QCOMPARE(DeviceReply(frame).customZoom(),
                         high * 256 + low - (high < 128 ? 0 : 65536) - (low < 128 ? 0 : 256));
            }
        }
    }
};

QTEST_APPLESS_MAIN(DeviceReplyTest)
#include "tst_devicereply.moc"
