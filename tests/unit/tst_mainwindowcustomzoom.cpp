// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "patience.h"
#include "rows.h"
#include "widgetrecorder.h"
#include "windowfixture.h"

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
    void sendsThePresetAndShowsTheZoom_data()
    {
        addRows<QByteArray>({"frame"},
                            {{"pushButton_custom_zoom_1", Frames::firstZoomRequest()},
                             {"pushButton_custom_zoom_2", Frames::secondZoomRequest()}});
    }

    void sendsThePresetAndShowsTheZoom()
    {
        WindowFixture fixture;
        QVERIFY(fixture.connectCamera());
        fixture.replyWith(zoomReply());
        WidgetRecorder recorder(&fixture.window);
        fixture.click(QTest::currentDataTag());
        QTEST(fixture.line.received(), "frame");
        QCOMPARE(recorder.changes(),
                 QStringList(
                     {"textEdit_device_info = ", "textEdit_device_info = Device Version: 1.0.a.10",
                      "textEdit_device_info = Device Version: 1.0.a.10|"
                      "Setting custom zoom: 272"}));
        QCOMPARE(fixture.dialogs.texts(), QStringList());
        QCOMPARE(fixture.log.statusTexts().constLast(),
                 QString("UART_CTRL_CMD_SET_CUSTOM_ZOOM Received 272"));
    }

    void saysSoAfterTheLimitWithoutAReply_data()
    {
        addRows<QString>({"pane"},
                         {{"pushButton_custom_zoom_1",
                           "Device Version: 1.0.a.10\nSetting custom zoom 1 failed!"},
                          {"pushButton_custom_zoom_2",
                           "Device Version: 1.0.a.10\nSetting custom zoom 2 failed!"}});
    }

    void saysSoAfterTheLimitWithoutAReply()
    {
        WindowFixture fixture;
        QVERIFY(fixture.connectCamera());
        fixture.child<QTextEdit>("textEdit_device_info")->append("typed by the operator");
        fixture.letLimitPass();
        WidgetRecorder recorder(&fixture.window);
        fixture.click(QTest::currentDataTag());
        QTEST(fixture.text("textEdit_device_info"), "pane");
        const QStringList changes = recorder.changes();
        QCOMPARE(changes.filter("textEdit_device_info = "), changes);
        QCOMPARE(changes.size(), 3);
        QCOMPARE(fixture.dialogs.texts(), QStringList());
        QCOMPARE(fixture.log.texts(), QStringList());
        QCOMPARE(fixture.line.received().size(), 15);
    }

    void withoutAVersionTheVersionLineStandsAlone()
    {
        WindowFixture fixture;
        fixture.letLimitPass();
        fixture.call("on_pushButton_custom_zoom_2_clicked");
        QCOMPARE(fixture.text("textEdit_device_info"),
                 QString("Device Version: \nSetting custom zoom 2 failed!"));
    }

    void aReplyBehindTheTimeOutReplacesTheFailure()
    {
        WindowFixture fixture;
        QVERIFY(fixture.connectCamera());
        fixture.letLimitPass();
        fixture.click("pushButton_custom_zoom_1");
        fixture.line.send(zoomReply());
        QTRY_COMPARE(fixture.text("textEdit_device_info"),
                     QString("Device Version: 1.0.a.10\nSetting custom zoom: 272"));
    }

    void aClickDuringTheWaitIsNested()
    {
        WindowFixture fixture;
        QVERIFY(fixture.connectCamera());
        QTimer::singleShot(0, &fixture.window, [&fixture] {
            fixture.replyWith(zoomReply());
            fixture.click("pushButton_custom_zoom_2");
        });
        fixture.click("pushButton_custom_zoom_1");
        QCOMPARE(fixture.text("textEdit_device_info"),
                 QString("Device Version: 1.0.a.10\nSetting custom zoom: 272"));
        QCOMPARE(fixture.line.received(), Frames::firstZoomRequest() + Frames::secondZoomRequest());
    }

    void closingTheWindowDuringTheWaitShowsNothing()
    {
        WindowFixture fixture;
        QVERIFY(fixture.connectCamera());
        fixture.window.show();
        QTimer::singleShot(0, &fixture.window,
                           [&fixture] { fixture.click("pushButton_custom_zoom_1"); });
        connect(&fixture.line, &PseudoTerminal::bytesReceived, &fixture.window, &QWidget::close);
        QApplication::exec();
        QCOMPARE(fixture.text("textEdit_device_info"), QString("Device Version: 1.0.a.10"));
    }
};

QTEST_MAIN(MainWindowCustomZoomTest)
#include "tst_mainwindowcustomzoom.moc"
