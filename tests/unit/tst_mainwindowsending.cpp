// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "patience.h"
#include "rows.h"
#include "windowfixture.h"

namespace {

std::array<unsigned char, 129> payload{0x01, 0x00};

} // namespace

class MainWindowSendingTest : public QObject {
    Q_OBJECT

private slots:
    void writesNothingWhileThePortIsClosed()
    {
        WindowFixture fixture;
        QCOMPARE(fixture.window.SendUARTCommand(UART_COMM_TYPE_REQUEST, UART_CTRL_CMD_HELLO, 0,
                                                nullptr, 0, 1),
                 -1);
        QVERIFY(fixture.connectCamera());
        QCOMPARE(fixture.port()->bytesToWrite(), 0);
        QCOMPARE(fixture.line.received(), QByteArray());
    }

    void writesTheFrame()
    {
        WindowFixture fixture;
        QVERIFY(fixture.connectCamera());
        QCOMPARE(fixture.window.SendUARTCommand(UART_COMM_TYPE_REQUEST,
                                                UART_CTRL_CMD_SET_CUSTOM_ZOOM, 0, payload.data(), 2,
                                                1),
                 0);
        QTRY_COMPARE(fixture.line.received().toHex(), Frames::secondZoomRequest().toHex());
        QCOMPARE(fixture.log.texts(), QStringList());
    }

    void refusesWhatDoesNotFit_data()
    {
        addRows<bool, int, int, int>({"hasPayload", "length", "result", "bytesWritten"},
                                     {{"no payload", false, 0, 0, 13},
                                      {"128 bytes", true, 128, 0, 141},
                                      {"129 bytes", true, 129, -1, 0},
                                      {"a length without payload", false, 1, -1, 0}});
    }

    void refusesWhatDoesNotFit()
    {
        QFETCH(bool, hasPayload);
        QFETCH(int, length);
        QFETCH(int, bytesWritten);
        WindowFixture fixture;
        QVERIFY(fixture.connectCamera());
        QTEST(fixture.window.SendUARTCommand(UART_COMM_TYPE_REQUEST, UART_CTRL_CMD_UPLOAD_FIRMWARE,
                                             1, hasPayload ? payload.data() : nullptr,
                                             static_cast<unsigned char>(length), 1),
              "result");
        QCOMPARE(fixture.port()->bytesToWrite(), bytesWritten);
        QTRY_COMPARE(fixture.line.received().size(), bytesWritten);
    }

    void leavesInOneWrite()
    {
        WindowFixture fixture;
        QVERIFY(fixture.connectCamera());
        QSignalSpy written(fixture.port(), &QSerialPort::bytesWritten);
        fixture.window.SendUARTCommand(UART_COMM_TYPE_REQUEST, UART_CTRL_CMD_UPLOAD_FIRMWARE, 1,
                                       payload.data(), 128, 1);
        QTRY_COMPARE(written.count(), 1);
        QCOMPARE(written.constFirst().constFirst().toInt(), 141);
    }

    void whatHasNotLeftIsLostWithTheConnection()
    {
        WindowFixture fixture;
        QVERIFY(fixture.connectCamera());
        fixture.window.SendUARTCommand(UART_COMM_TYPE_REQUEST, UART_CTRL_CMD_UPLOAD_FIRMWARE, 1,
                                       payload.data(), 128, 1);
        fixture.click("pushButton_disconnect");
        fixture.replyWith(Frames::helloReply());
        fixture.click("pushButton_connect");
        QCOMPARE(fixture.line.received().toHex(), Frames::helloRequest().toHex());
    }
};

QTEST_MAIN(MainWindowSendingTest)
#include "tst_mainwindowsending.moc"
