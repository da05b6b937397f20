// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "patience.h"
#include "widgetrecorder.h"
#include "windowonline.h"

namespace {

// 12 + 94 + 5 + 58 + 1 + 16 = 186
QByteArray zoomReply()
{
    return QByteArray::fromHex("ffff0c410106070609053a000110ba");
}

} // namespace

class MainWindowCustomZoomTest : public QObject {
    Q_OBJECT

private slots:
    void sendsThePresetAndShowsTheZoom_data();
    void sendsThePresetAndShowsTheZoom();
    void saysSoAfterTheLimitWithoutAReply_data();
    void saysSoAfterTheLimitWithoutAReply();
    void withoutAVersionTheVersionLineStandsAlone();
    void aReplyBehindTheTimeOutReplacesTheFailure();
    void aClickDuringTheWaitIsNested();
    void closingTheWindowDuringTheWaitShowsNothing();
};

void MainWindowCustomZoomTest::sendsThePresetAndShowsTheZoom_data()
{
    QTest::addColumn<QByteArray>("frame");
    QTest::newRow("pushButton_custom_zoom_1") << QByteArray("ffff0c410106070609013a000000a5");
    QTest::newRow("pushButton_custom_zoom_2") << QByteArray("ffff0c410106070609013a000100a6");
}

void MainWindowCustomZoomTest::sendsThePresetAndShowsTheZoom()
{
    WindowOnLine desk;
    QVERIFY(desk.connectCamera());
    desk.replyWith(zoomReply());
    desk.click(QTest::currentDataTag());
    QTEST(desk.line.received().toHex(), "frame");
    QCOMPARE(desk.text("textEdit_device_info"),
             QString("Device Version: 1.0.a.10\nSetting custom zoom: 272"));
    QCOMPARE(desk.dialogs.texts(), QStringList());
    QCOMPARE(desk.log.statusTexts().constLast(),
             QString("UART_CTRL_CMD_SET_CUSTOM_ZOOM Received 272"));
}

void MainWindowCustomZoomTest::saysSoAfterTheLimitWithoutAReply_data()
{
    QTest::addColumn<QString>("pane");
    QTest::newRow("pushButton_custom_zoom_1")
        << "Device Version: 1.0.a.10\nSetting custom zoom 1 failed!";
    QTest::newRow("pushButton_custom_zoom_2")
        << "Device Version: 1.0.a.10\nSetting custom zoom 2 failed!";
}

void MainWindowCustomZoomTest::saysSoAfterTheLimitWithoutAReply()
{
    WindowOnLine desk;
    QVERIFY(desk.connectCamera());
    desk.child<QTextEdit>("textEdit_device_info")->append("typed by the operator");
    desk.letLimitPass();
    desk.click(QTest::currentDataTag());
    QTEST(desk.text("textEdit_device_info"), "pane");
    QCOMPARE(desk.dialogs.texts(), QStringList());
    QCOMPARE(desk.log.texts(), QStringList());
    QCOMPARE(desk.line.received().size(), 15);
}

void MainWindowCustomZoomTest::withoutAVersionTheVersionLineStandsAlone()
{
    WindowOnLine desk;
    desk.letLimitPass();
    QMetaObject::invokeMethod(&desk.window, "on_pushButton_custom_zoom_2_clicked");
    QCOMPARE(desk.text("textEdit_device_info"),
             QString("Device Version: \nSetting custom zoom 2 failed!"));
}

void MainWindowCustomZoomTest::aReplyBehindTheTimeOutReplacesTheFailure()
{
    WindowOnLine desk;
    QVERIFY(desk.connectCamera());
    desk.letLimitPass();
    desk.click("pushButton_custom_zoom_1");
    desk.line.send(zoomReply());
    QTRY_COMPARE(desk.text("textEdit_device_info"),
                 QString("Device Version: 1.0.a.10\nSetting custom zoom: 272"));
}

void MainWindowCustomZoomTest::aClickDuringTheWaitIsNested()
{
    WindowOnLine desk;
    QVERIFY(desk.connectCamera());
    QTimer::singleShot(0, &desk.window, [&desk] {
        desk.replyWith(zoomReply());
        desk.click("pushButton_custom_zoom_2");
    });
    desk.click("pushButton_custom_zoom_1");
    QCOMPARE(desk.text("textEdit_device_info"),
             QString("Device Version: 1.0.a.10\nSetting custom zoom: 272"));
    QCOMPARE(desk.line.received().toHex(),
             QByteArray("ffff0c410106070609013a000000a5ffff0c410106070609013a000100a6"));
}

void MainWindowCustomZoomTest::closingTheWindowDuringTheWaitShowsNothing()
{
    WindowOnLine desk;
    QVERIFY(desk.connectCamera());
    desk.window.show();
    QTimer::singleShot(0, &desk.window, [&desk] { desk.click("pushButton_custom_zoom_1"); });
    connect(&desk.line, &PseudoTerminal::bytesReceived, &desk.window, &QWidget::close);
    QApplication::exec();
    QCOMPARE(desk.text("textEdit_device_info"), QString("Device Version: 1.0.a.10"));
}

QTEST_MAIN(MainWindowCustomZoomTest)
#include "tst_mainwindowcustomzoom.moc"
