// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "rows.h"
#include "uartframe.h"

#include <QtTest>

class UARTFrameTest : public QObject {
    Q_OBJECT

private slots:
    // What the camera's side relies on, pinned by number.
    void wireConstantsAreFixed()
    {
        QCOMPARE(int(UART_COMM_TYPE_REQUEST), 1);
        QCOMPARE(int(UART_COMM_TYPE_RESERVED), 2);
        QCOMPARE(int(UART_COMM_TYPE_ACK), 5);
        QCOMPARE(int(UART_CTRL_CMD_UPLOAD_FIRMWARE), 1);
        QCOMPARE(int(UART_CTRL_CMD_RECEIVE_FW_INFO), 16);
        QCOMPARE(int(UART_CTRL_CMD_HELLO), 22);
        QCOMPARE(int(UART_CTRL_CMD_REBOOT), 31);
        QCOMPARE(int(UART_CTRL_CMD_SET_CUSTOM_ZOOM), 58);
        QCOMPARE(int(UART_CTRL_CMD_CUSTOM_SETTING), 85);
        QCOMPARE(UARTFrame::kMaximumPayloadSize, 128);
        QCOMPARE(UARTFrame::kMaximumSize, 141);
        QCOMPARE(UARTFrame::kMaximumLength, 138);
    }

    void buildsTheFrameOfEachRequest_data()
    {
        addRows<int, int, int, QByteArray, QByteArray>(
            {"type", "command", "parameter", "payload", "frame"},
            {{"HELLO has no payload", 1, 22, 0, QByteArray(), "ffff0a4101060706090116007f"},
             {"SET_CUSTOM_ZOOM, second preset", 1, 58, 0, "0100",
              "ffff0c41010607060901 3a00 0100a6"},
             {"CUSTOM_SETTING, sum wraps", 1, 85, 0, "0100000100",
              "ffff0f4101060706090155000100000100c5"},
             {"CUSTOM_SETTING, pan, preset 7, upside down, off, custom", 1, 85, 0, "0209010003",
              "ffff0f4101060706090155000209010003d2"},
             {"RECEIVE_FW_INFO, 74565 bytes", 1, 16, 0, "02012345",
              "ffff0e41010607060901100002012345e8"},
             {"UPLOAD_FIRMWARE carries the packet number as parameter", 1, 1, 255, "ab",
              "ffff0b410106070609 0101ff ab 15"},
             {"bytes count as unsigned in the sum", 5, 58, 0, "ff80",
              "ffff0c410106070609053a00ff8028"},
             {"of the type only the low 8 bits", 0x101, 22, 0, QByteArray(),
              "ffff0a4101060706090116007f"},
             // 138 + 94 + 1 + 1 + 1 + 128 * 0x11 = 2411, low 8 bits 6b
             {"128 bytes of payload, the most", 1, 1, 1, QByteArray("11").repeated(128),
              QByteArray("ffff8a410106070609010101") + QByteArray("11").repeated(128)
                  + QByteArray("6b")}});
    }

    void buildsTheFrameOfEachRequest()
    {
        QFETCH(int, type);
        QFETCH(int, command);
        QFETCH(int, parameter);
        QFETCH(QByteArray, payload);
        QFETCH(QByteArray, frame);

        const QByteArray data = QByteArray::fromHex(payload);
        const auto built = UARTFrame::build(static_cast<UARTCommunicationType_t>(type),
                                            static_cast<unsigned char>(command),
                                            static_cast<unsigned char>(parameter),
                                            reinterpret_cast<const unsigned char *>(data.data()),
                                            static_cast<unsigned char>(data.size()));
        QVERIFY(built.has_value());
        QCOMPARE(built->toHex(' '), QByteArray::fromHex(frame).toHex(' '));
    }

    void everyPayloadLengthGivesThatMuchFrame()
    {
        const QByteArray data(128, '\x01');
        for (int length = 0; length <= 128; ++length) {
            const auto built = UARTFrame::build(
                UART_COMM_TYPE_REQUEST, 1, 0, reinterpret_cast<const unsigned char *>(data.data()),
                static_cast<unsigned char>(length));
            QVERIFY(built.has_value());
            QCOMPARE(built->size(), 13 + length);
            QCOMPARE(static_cast<unsigned char>(built->at(2)),
                     static_cast<unsigned char>(10 + length));
            // 94 for the signature, 1 for the type, 1 for the command
            const int sum = 10 + length + 94 + 1 + 1 + length;
            QCOMPARE(static_cast<unsigned char>(built->back()),
                     static_cast<unsigned char>(sum % 256));
        }
    }

    void refusesWhatDoesNotFit_data()
    {
        addRows<bool, int, bool>({"hasData", "length", "accepted"},
                                 {{"no payload and no data", false, 0, true},
                                  {"no payload", true, 0, true},
                                  {"128 bytes, a frame of 141", true, 128, true},
                                  {"129 bytes, a frame of 142", true, 129, false},
                                  {"255 bytes", true, 255, false},
                                  {"a length without data", false, 1, false},
                                  {"too long and without data", false, 129, false}});
    }

    void refusesWhatDoesNotFit()
    {
        QFETCH(bool, hasData);
        QFETCH(int, length);
        const std::array<unsigned char, 255> data{};
        const auto built =
            UARTFrame::build(UART_COMM_TYPE_REQUEST, 1, 0, hasData ? data.data() : nullptr,
                             static_cast<unsigned char>(length));
        QTEST(built.has_value(), "accepted");
    }
};

QTEST_APPLESS_MAIN(UARTFrameTest)
#include "tst_uartframe.moc"
