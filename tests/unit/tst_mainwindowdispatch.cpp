// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "patience.h"
#include "rows.h"
#include "widgetrecorder.h"
#include "windowfixture.h"

#include <QRadioButton>

namespace {

// A frame as the parser delivers it: everything in front of the payload, then the payload. The
// dispatcher looks at neither length nor signature.
QByteArray delivered(int type, int command, const QByteArray &hexPayload = {})
{
    QByteArray frame = QByteArray::fromHex("ffff00410106070609");
    frame += static_cast<char>(type);
    frame += static_cast<char>(command);
    frame += '\0';
    return frame + QByteArray::fromHex(hexPayload);
}

QByteArray everythingOff()
{
    return "01000005 00 0000 0000 0000 00 00";
}
QByteArray everythingOn()
{
    return "01020a10 09 0000 0101 0101 01 03";
}

} // namespace

class MainWindowDispatchTest : public QObject {
    Q_OBJECT

private slots:
    // No number is shown with the separators of a language.
    void initTestCase() { QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany)); }

    void answersEachKindOfFrame_data()
    {
        const QString ack = QStringLiteral("UART_COMM_TYPE_ACK Received");
        addRows<QByteArray, QStringList>(
            {"frame", "lines"},
            {{"reserved type", delivered(2, 22, everythingOn()), {"AnalyzeReceiveData 25"}},
             {"request type", delivered(1, 22), {"AnalyzeReceiveData 12"}},
             {"unknown type", delivered(133, 22), {"AnalyzeReceiveData 12"}},
             {"unknown command", delivered(5, 99), {"AnalyzeReceiveData 12", ack}},
             {"empty", QByteArray(), {"AnalyzeReceiveData 0"}},
             {"type without a command", delivered(5, 22).left(10), {"AnalyzeReceiveData 10", ack}},
             {"firmware packet acknowledged",
              delivered(5, 1),
              {"AnalyzeReceiveData 12", ack, "UART_CTRL_CMD_RECEIVE_FW_INFO Received",
               "receive_fw_info_ack"}},
             {"firmware size acknowledged",
              delivered(5, 16),
              {"AnalyzeReceiveData 12", ack, "UART_CTRL_CMD_RECEIVE_FW_INFO Received",
               "receive_fw_info_ack"}},
             {"HELLO",
              delivered(5, 22, everythingOn()),
              {"AnalyzeReceiveData 25", ack, "receive_hello_ack", "UART_CTRL_CMD_HELLO Received",
               "ClientVersion: 1.2.a.10", "9.1.1.1.1.1.3"}},
             {"settings are shown as signed hexadecimal",
              delivered(5, 22, "80ff0010 ff 0000 8001 7f0f 0a f6"),
              {"AnalyzeReceiveData 25", ack, "receive_hello_ack", "UART_CTRL_CMD_HELLO Received",
               "ClientVersion: -80.-1.0.10", "-1.-80.1.7f.f.a.-a"}},
             {"reboot",
              delivered(5, 31),
              {"AnalyzeReceiveData 12", ack, "UART_CTRL_CMD_REBOOT Received",
               "receive_reboot_ack"}},
             {"custom zoom",
              delivered(5, 58, "0190"),
              {"AnalyzeReceiveData 14", ack, "receive_custom_zoom_ack",
               "UART_CTRL_CMD_SET_CUSTOM_ZOOM Received 144"}},
             {"custom zoom of more than 999",
              delivered(5, 58, "7f7f"),
              {"AnalyzeReceiveData 14", ack, "receive_custom_zoom_ack",
               "UART_CTRL_CMD_SET_CUSTOM_ZOOM Received 32639"}},
             {"more than 999 bytes",
              delivered(2, 22, QByteArray("00").repeated(1000)),
              {"AnalyzeReceiveData 1012"}},
             {"custom zoom of -1",
              delivered(5, 58, "00ff"),
              {"AnalyzeReceiveData 14", ack, "receive_custom_zoom_ack",
               "UART_CTRL_CMD_SET_CUSTOM_ZOOM Received -1"}},
             {"custom zoom without its low byte",
              delivered(5, 58, "01"),
              {"AnalyzeReceiveData 13", ack, "receive_custom_zoom_ack",
               "UART_CTRL_CMD_SET_CUSTOM_ZOOM Received 256"}},
             {"setting, short form of 13 bytes",
              delivered(5, 85, "00"),
              {"AnalyzeReceiveData 13", ack, "receive_setting_ack",
               "UART_CTRL_CMD_CUSTOM_SETTING Received"}},
             {"setting, long form from 14 bytes on",
              delivered(5, 85, "0102"),
              {"AnalyzeReceiveData 14", ack, "receive_setting_ack",
               "UART_CTRL_CMD_CUSTOM_SETTING Received", "ClientVersion: 1.2.0.0",
               "0.0.0.0.0.0.0"}}});
    }

    void answersEachKindOfFrame()
    {
        QFETCH(QByteArray, frame);
        WindowFixture fixture;
        // Each signal goes into the same log, so that its place among the status lines shows.
        const auto logAs = [&fixture](const char *name) {
            return [&fixture, name] { fixture.window.showStatusMessage(QLatin1String(name)); };
        };
        const MainWindow *const window = &fixture.window;
        connect(window, &MainWindow::receive_hello_ack, this, logAs("receive_hello_ack"));
        connect(window, &MainWindow::receive_fw_info_ack, this, logAs("receive_fw_info_ack"));
        connect(window, &MainWindow::receive_custom_zoom_ack, this,
                logAs("receive_custom_zoom_ack"));
        connect(window, &MainWindow::receive_setting_ack, this, logAs("receive_setting_ack"));
        connect(window, &MainWindow::receive_reboot_ack, this, logAs("receive_reboot_ack"));
        fixture.deliver(frame);
        QTEST(fixture.log.statusTexts(), "lines");
    }

    void everyReplyOfEveryLengthIsTaken_data()
    {
        QTest::addColumn<int>("command");
        for (const int command : {1, 16, 22, 31, 58, 85, 0, 255}) {
            QTest::addRow("command %d", command) << command;
        }
    }

    // Nothing is read beyond the end of the array; the address sanitizer watches.
    void everyReplyOfEveryLengthIsTaken()
    {
        QFETCH(int, command);
        WindowFixture fixture;
        const QByteArray whole = delivered(5, command, QByteArray("7f").repeated(18));
        for (int size = 0; size <= 30; ++size) {
            const QByteArray frame(whole.constData(), size);
            fixture.log.clear();
            fixture.deliver(frame);
            QCOMPARE(fixture.log.statusTexts().constFirst(),
                     QStringLiteral("AnalyzeReceiveData %1").arg(size));
            QCOMPARE(fixture.log.statusTexts().size() > 1, size >= 10);
        }
    }

    void raisesTheSignalOfTheReply_data()
    {
        addRows<int, int>({"command", "signal"},
                          {{"UPLOAD_FIRMWARE", 1, 1},
                           {"RECEIVE_FW_INFO", 16, 1},
                           {"HELLO", 22, 0},
                           {"REBOOT", 31, 4},
                           {"SET_CUSTOM_ZOOM", 58, 2},
                           {"CUSTOM_SETTING", 85, 3},
                           {"unknown", 2, -1}});
    }

    void raisesTheSignalOfTheReply()
    {
        QFETCH(int, command);
        QFETCH(int, signal);
        WindowFixture fixture;
        QVector<QSignalSpy *> spies;
        for (const char *name : {SIGNAL(receive_hello_ack()), SIGNAL(receive_fw_info_ack()),
                                 SIGNAL(receive_custom_zoom_ack()), SIGNAL(receive_setting_ack()),
                                 SIGNAL(receive_reboot_ack())}) {
            spies << new QSignalSpy(&fixture.window, name);
        }
        fixture.deliver(delivered(5, command));
        for (int i = 0; i < spies.size(); ++i) {
            QCOMPARE(spies.at(i)->count(), i == signal ? 1 : 0);
        }
        qDeleteAll(spies);
    }

    void changesTheWidgetsInOrder()
    {
        WindowFixture fixture;
        fixture.widget("tabWidget")->setEnabled(true);
        WidgetRecorder recorder(&fixture.window);
        connect(&fixture.window, &MainWindow::receive_hello_ack, &recorder,
                [&recorder] { recorder.note("receive_hello_ack"); });
        fixture.deliver(delivered(5, 22, everythingOn()));
        QCOMPARE(recorder.changes(),
                 QStringList({"receive_hello_ack", "textEdit_device_info = ",
                              "textEdit_device_info = Device Version: 1.2.a.10",
                              "comboBox_targetmissing = 9", "radioButton_upright = not",
                              "radioButton_upside_down = chosen", "comboBox_autotracking = 1",
                              "comboBox_autozoom = 1", "comboBox_zoomoffset = 3"}));

        recorder.clear();
        fixture.deliver(delivered(5, 22, everythingOff()));
        QCOMPARE(recorder.changes(),
                 QStringList({"receive_hello_ack", "textEdit_device_info = ",
                              "textEdit_device_info = Device Version: 1.0.0.5",
                              "comboBox_targetmissing = 0", "radioButton_upside_down = not",
                              "radioButton_upright = chosen", "comboBox_targetmissing off",
                              "comboBox_autozoom off", "comboBox_autotracking = 0",
                              "comboBox_autozoom = 0", "comboBox_zoomoffset = 0"}));
    }

    void saysWhatItShowsBeforeItShowsIt_data()
    {
        addRows<QByteArray, QStringList>(
            {"frame", "changes"},
            {{"HELLO",
              delivered(5, 22, everythingOn()),
              {"pane after ClientVersion: 1.2.a.10", "target missing after 9.1.1.1.1.1.3"}},
             {"settings",
              delivered(5, 85, everythingOn()),
              {"pane after ClientVersion: 1.2.a.10", "target missing after 9.1.1.1.1.1.3"}},
             {"custom zoom",
              delivered(5, 58, "0010"),
              {"pane after UART_CTRL_CMD_SET_CUSTOM_ZOOM Received 16"}}});
    }

    void saysWhatItShowsBeforeItShowsIt()
    {
        QFETCH(QByteArray, frame);
        QStringList changes; // outlives the window, which clears its panes at its end
        WindowFixture fixture;
        const auto note = [&fixture, &changes](const QString &what) {
            changes << what + " after "
                    + fixture.log.statusTexts().value(fixture.log.statusTexts().size() - 1);
        };
        connect(fixture.child<QTextEdit>("textEdit_device_info"), &QTextEdit::textChanged, this,
                [note] { note("pane"); });
        connect(fixture.combo("comboBox_targetmissing"),
                QOverload<int>::of(&QComboBox::currentIndexChanged), this,
                [note] { note("target missing"); });
        fixture.deliver(frame);
        // The pane changes several times, by itself.
        changes.removeDuplicates();
        QTEST(changes, "changes");
    }

    void setsTheControls_data()
    {
        addRows<QByteArray, int, int, bool, int, int>(
            {"payload", "autoTracking", "targetMissing", "upsideDown", "autoZoom", "zoomOffset"},
            {{"everything off", everythingOff(), 0, 0, false, 0, 0},
             {"everything on", everythingOn(), 1, 9, true, 1, 3},
             {"pan", "00000000 00 0000 0000 0100 00 00", 2, 0, false, 0, 0},
             {"tilt", "00000000 00 0000 0000 0001 00 00", 3, 0, false, 0, 0},
             {"first direction flag alone", "00000000 00 0000 0100 0000 00 00", 0, 0, false, 0, 0},
             {"second direction flag alone", "00000000 00 0000 0001 0000 00 00", 0, 0, false, 0, 0},
             {"flags are anything but zero", "00000000 02 0000 80ff 8080 ff 02", 1, 2, true, 1,
              2}});
    }

    void setsTheControls()
    {
        QFETCH(QByteArray, payload);
        QFETCH(int, autoTracking);
        QFETCH(bool, upsideDown);
        for (const int command : {22, 85}) {
            WindowFixture fixture;
            fixture.widget("tabWidget")->setEnabled(true);
            fixture.deliver(delivered(5, command, payload));
            QCOMPARE(fixture.combo("comboBox_autotracking")->currentIndex(), autoTracking);
            QTEST(fixture.combo("comboBox_targetmissing")->currentIndex(), "targetMissing");
            QCOMPARE(fixture.child<QRadioButton>("radioButton_upside_down")->isChecked(),
                     upsideDown);
            QCOMPARE(fixture.child<QRadioButton>("radioButton_upright")->isChecked(), !upsideDown);
            QTEST(fixture.combo("comboBox_autozoom")->currentIndex(), "autoZoom");
            QTEST(fixture.combo("comboBox_zoomoffset")->currentIndex(), "zoomOffset");
            QCOMPARE(fixture.combo("comboBox_targetmissing")->isEnabled(), autoTracking != 0);
            QCOMPARE(fixture.combo("comboBox_autozoom")->isEnabled(), autoTracking != 0);
            QVERIFY(fixture.combo("comboBox_zoomoffset")->isEnabled());
        }
    }

    void showsEveryByteOfTheSettings()
    {
        WindowFixture fixture;
        fixture.widget("tabWidget")->setEnabled(true);
        // As a combo box shows what it does not have.
        const auto indexOf = [](int byte, int count) { return byte < count ? byte : -1; };
        for (int place = 4; place < 13; ++place) {
            for (int byte = 0; byte < 256; ++byte) {
                QByteArray payload = QByteArray::fromHex("01000005 01 0000 0101 0101 01 01");
                payload[place] = static_cast<char>(byte);
                fixture.deliver(delivered(5, 22, payload.toHex()));
                const bool isZero = byte == 0;
                QCOMPARE(fixture.combo("comboBox_targetmissing")->currentIndex(),
                         place == 4 ? indexOf(byte, 10) : 1);
                QCOMPARE(fixture.child<QRadioButton>("radioButton_upside_down")->isChecked(),
                         !(isZero && (place == 7 || place == 8)));
                QCOMPARE(fixture.combo("comboBox_autotracking")->currentIndex(),
                         isZero && place == 9 ? 3 : (isZero && place == 10 ? 2 : 1));
                QCOMPARE(fixture.combo("comboBox_autozoom")->currentIndex(),
                         isZero && place == 11 ? 0 : 1);
                QCOMPARE(fixture.combo("comboBox_zoomoffset")->currentIndex(),
                         place == 12 ? indexOf(byte, 4) : 1);
            }
        }
    }

    void passesOutOfRangeIndicesToTheComboBoxes()
    {
        WindowFixture fixture;
        for (const char *payload :
             {"00000000 0a 0000 0000 0000 00 04", "00000000 ff 0000 0000 0000 00 80"}) {
            fixture.combo("comboBox_targetmissing")->setCurrentIndex(1);
            fixture.combo("comboBox_zoomoffset")->setCurrentIndex(1);
            fixture.deliver(delivered(5, 22, payload));
            // QComboBox shows nothing for an index that it does not have.
            QCOMPARE(fixture.combo("comboBox_targetmissing")->currentIndex(), -1);
            QCOMPARE(fixture.combo("comboBox_zoomoffset")->currentIndex(), -1);
        }
    }

    void trackingOffDisablesItsDependantsEvenWithoutAChange()
    {
        WindowFixture fixture;
        fixture.widget("tabWidget")->setEnabled(true);
        QCOMPARE(fixture.combo("comboBox_autotracking")->currentIndex(), 0);
        QVERIFY(fixture.combo("comboBox_targetmissing")->isEnabled());
        fixture.deliver(delivered(5, 22, everythingOff()));
        QVERIFY(!fixture.combo("comboBox_targetmissing")->isEnabled());
        QVERIFY(!fixture.combo("comboBox_autozoom")->isEnabled());
    }

    void aShortSettingReplyOnlyShowsTheVersionAgain()
    {
        WindowFixture fixture;
        QVERIFY(fixture.connectCamera());
        fixture.child<QTextEdit>("textEdit_device_info")->append("typed by the operator");
        WidgetRecorder recorder(&fixture.window);
        fixture.deliver(delivered(5, 85, "00"));
        QCOMPARE(recorder.changes(),
                 QStringList({"textEdit_device_info = ",
                              "textEdit_device_info = Device Version: 1.0.a.10"}));
    }

    void customZoomReplacesThePane()
    {
        WindowFixture fixture;
        fixture.deliver(delivered(5, 58, "0010"));
        QCOMPARE(fixture.text("textEdit_device_info"),
                 QString("Device Version: \nSetting custom zoom: 16"));
        QVERIFY(fixture.connectCamera());
        fixture.deliver(delivered(5, 58, "ff00"));
        QCOMPARE(fixture.text("textEdit_device_info"),
                 QString("Device Version: 1.0.a.10\nSetting custom zoom: -256"));
    }

    void textsOutliveADisconnect()
    {
        WindowFixture fixture;
        QVERIFY(fixture.connectCamera());
        fixture.click("pushButton_disconnect");
        QCOMPARE(fixture.text("textEdit_device_info"), QString());
        fixture.deliver(delivered(5, 85));
        QCOMPARE(fixture.text("textEdit_device_info"), QString("Device Version: 1.0.a.10"));
    }

    void isDeliveredThroughTheLineAndTheParser()
    {
        WindowFixture fixture;
        QVERIFY(fixture.connectCamera());
        fixture.line.send(Frames::rebootAcknowledgement());
        QTRY_COMPARE(fixture.log.statusTexts(),
                     QStringList({"AnalyzeReceiveData 12", "UART_COMM_TYPE_ACK Received",
                                  "UART_CTRL_CMD_REBOOT Received"}));
    }
};

QTEST_MAIN(MainWindowDispatchTest)
#include "tst_mainwindowdispatch.moc"
