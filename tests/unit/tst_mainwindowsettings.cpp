// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "patience.h"
#include "rows.h"
#include "widgetrecorder.h"
#include "windowfixture.h"

#include <QRadioButton>

namespace {

// The long acknowledgement: version 1.0.0.6, tilt tracking, target missing off, upright, auto zoom
// on, zoom offset 2. 23 + 94 + 5 + 85 + 1 + 6 + 1 + 1 + 2 = 218
QByteArray longReply()
{
    return QByteArray::fromHex("ffff17410106070609055500 01000006 00 0000 0000 0001 01 02 da");
}

} // namespace

class MainWindowSettingsTest : public QObject {
    Q_OBJECT

private slots:
    void trackingModeEnablesItsDependants()
    {
        WindowFixture fixture;
        QVERIFY(fixture.connectCamera());
        auto *const mode = fixture.combo("comboBox_autotracking");
        mode->setCurrentIndex(1);
        for (const int index : {0, 1, 0, 2, 0, 3}) {
            mode->setCurrentIndex(index);
            QCOMPARE(fixture.isEnabled("comboBox_targetmissing"), index != 0);
            QCOMPARE(fixture.isEnabled("comboBox_autozoom"), index != 0);
            QVERIFY(fixture.isEnabled("comboBox_zoomoffset"));
            QVERIFY(fixture.isEnabled("radioButton_upright"));
            QVERIFY(fixture.isEnabled("radioButton_upside_down"));
        }
    }

    void defaultSetsTheControlsInOrderAndSendsNothing()
    {
        WindowFixture fixture;
        QVERIFY(fixture.connectCamera());
        fixture.combo("comboBox_autotracking")->setCurrentIndex(0);
        WidgetRecorder recorder(&fixture.window);
        fixture.click("pushButton_default");
        QCOMPARE(recorder.changes(),
                 QStringList({"comboBox_targetmissing on", "comboBox_autozoom on",
                              "comboBox_autotracking = 1", "comboBox_targetmissing = 1",
                              "radioButton_upside_down = not", "radioButton_upright = chosen",
                              "comboBox_autozoom = 1", "comboBox_zoomoffset = 1"}));
        QCOMPARE(fixture.port()->bytesToWrite(), 0);
        QCOMPARE(fixture.line.received(), QByteArray());
        QCOMPARE(fixture.log.texts(), QStringList());
    }

    void choosingSendsNothing()
    {
        WindowFixture fixture;
        QVERIFY(fixture.connectCamera());
        for (const char *name : {"comboBox_autotracking", "comboBox_targetmissing",
                                 "comboBox_autozoom", "comboBox_zoomoffset"}) {
            QComboBox *const combo = fixture.combo(name);
            for (int index = 0; index < combo->count(); ++index) {
                combo->setCurrentIndex(index);
            }
        }
        fixture.click("radioButton_upright");
        fixture.click("radioButton_upside_down");
        QCOMPARE(fixture.port()->bytesToWrite(), 0);
        QCOMPARE(fixture.line.received(), QByteArray());
        QCOMPARE(fixture.log.texts(), QStringList());
    }

    void applySendsTheControls_data()
    {
        addRows<int, int, bool, int, int, QByteArray>(
            {"autoTracking", "targetMissing", "upsideDown", "autoZoom", "zoomOffset", "frame"},
            {{"pan, preset 7, upside down, off, custom", 2, 9, true, 0, 3,
              "ffff0f4101060706090155000209010003d2"},
             {"the defaults", 1, 1, false, 1, 1, "ffff0f4101060706090155000101000101c7"},
             {"everything off", 0, 0, false, 0, 0, "ffff0f4101060706090155000000000000c3"},
             {"what is disabled without tracking as well", 0, 9, true, 1, 3,
              "ffff0f4101060706090155000009010103d1"},
             // 195 + 3 + 4 + 1 + 2 = 205
             {"tilt, preset 2, upright, on, 2", 3, 4, false, 1, 2,
              "ffff0f4101060706090155000304000102cd"}});
    }

    void applySendsTheControls()
    {
        QFETCH(int, autoTracking);
        QFETCH(int, targetMissing);
        QFETCH(bool, upsideDown);
        QFETCH(int, autoZoom);
        QFETCH(int, zoomOffset);
        WindowFixture fixture;
        QVERIFY(fixture.connectCamera());
        fixture.combo("comboBox_autotracking")->setCurrentIndex(autoTracking);
        fixture.combo("comboBox_targetmissing")->setCurrentIndex(targetMissing);
        fixture.click(upsideDown ? "radioButton_upside_down" : "radioButton_upright");
        fixture.combo("comboBox_autozoom")->setCurrentIndex(autoZoom);
        fixture.combo("comboBox_zoomoffset")->setCurrentIndex(zoomOffset);
        fixture.replyWith(Frames::settingsAcknowledgement());
        fixture.click("pushButton_apply");
        QTEST(fixture.line.received().toHex(), "frame");
    }

    void applyReportsSuccess()
    {
        WindowFixture fixture;
        QVERIFY(fixture.connectCamera());
        fixture.replyWith(longReply());
        WidgetRecorder recorder(&fixture.window);
        fixture.click("pushButton_apply");
        // Nothing is disabled meanwhile.
        QCOMPARE(recorder.changes().filter(" off"), QStringList());
        QCOMPARE(fixture.dialogs.texts(), QStringList{"Information: Apply Success."});
        QCOMPARE(fixture.dialogs.seen().constFirst().icon, QMessageBox::Information);
        QCOMPARE(fixture.dialogs.seen().constFirst().buttons, QMessageBox::Ok);
        QVERIFY(fixture.port()->isOpen());
    }

    void theReplysSettingsAreShownBeforeTheBox()
    {
        WindowFixture fixture(false);
        QVERIFY(fixture.connectCamera());
        fixture.replyWith(longReply());
        fixture.click("pushButton_default");
        QString paneAtTheBox;
        QTimer poll;
        connect(&poll, &QTimer::timeout, &poll, [&] {
            if (fixture.dialogs.isOpen()) {
                paneAtTheBox = fixture.text("textEdit_device_info");
                fixture.dialogs.answer();
            }
        });
        poll.start(0);
        fixture.click("pushButton_apply");
        QCOMPARE(paneAtTheBox, QString("Device Version: 1.0.0.6"));
        QCOMPARE(fixture.combo("comboBox_autotracking")->currentIndex(), 3);
        QCOMPARE(fixture.combo("comboBox_targetmissing")->currentIndex(), 0);
        QVERIFY(fixture.child<QRadioButton>("radioButton_upright")->isChecked());
        QCOMPARE(fixture.combo("comboBox_autozoom")->currentIndex(), 1);
        QCOMPARE(fixture.combo("comboBox_zoomoffset")->currentIndex(), 2);
    }

    void aShortReplyKeepsTheControls()
    {
        WindowFixture fixture;
        QVERIFY(fixture.connectCamera());
        fixture.click("pushButton_default");
        fixture.replyWith(Frames::settingsAcknowledgement());
        WidgetRecorder recorder(&fixture.window);
        fixture.click("pushButton_apply");
        QCOMPARE(fixture.dialogs.texts(), QStringList{"Information: Apply Success."});
        QCOMPARE(recorder.changes(),
                 QStringList({"textEdit_device_info = ",
                              "textEdit_device_info = Device Version: 1.0.a.10"}));
    }

    void applyReportsFailureAfterTheLimit()
    {
        WindowFixture fixture;
        QVERIFY(fixture.connectCamera());
        // Not the defaults, and the other page's own.
        for (const char *const name : {"comboBox_autotracking", "comboBox_targetmissing",
                                       "comboBox_autozoom", "comboBox_zoomoffset"}) {
            fixture.combo(name)->setCurrentIndex(fixture.combo(name)->count() - 1);
        }
        fixture.child<QTextEdit>("textEdit_firmware_info")->setPlainText("from before");
        WidgetRecorder recorder(&fixture.window);
        fixture.letLimitPass();
        fixture.click("pushButton_apply");
        QCOMPARE(fixture.dialogs.texts(), QStringList{"Error: Apply fail!"});
        QCOMPARE(fixture.dialogs.seen().constFirst().icon, QMessageBox::Critical);
        QCOMPARE(fixture.dialogs.seen().constFirst().buttons, QMessageBox::Ok);
        QCOMPARE(recorder.changes(), QStringList());
        QCOMPARE(fixture.log.statusTexts(), QStringList());
        QVERIFY(fixture.port()->isOpen());
        // Sent once: nothing is tried again.
        QCOMPARE(fixture.line.received().size(), 18);
    }

    void applyOnAClosedPortFailsByItsTimeOut()
    {
        WindowFixture fixture;
        fixture.letLimitPass();
        fixture.call("on_pushButton_apply_clicked");
        QCOMPARE(fixture.dialogs.texts(), QStringList{"Error: Apply fail!"});
        QCOMPARE(fixture.line.received(), QByteArray());
    }

    void aReplyBehindTheTimeOutStillSetsTheControls()
    {
        WindowFixture fixture;
        QVERIFY(fixture.connectCamera());
        fixture.letLimitPass();
        fixture.click("pushButton_apply");
        fixture.line.send(longReply());
        QTRY_COMPARE(fixture.combo("comboBox_autotracking")->currentIndex(), 3);
        QCOMPARE(fixture.dialogs.texts(), QStringList{"Error: Apply fail!"});
    }

    void applyDuringApplyIsNested()
    {
        WindowFixture fixture;
        QVERIFY(fixture.connectCamera());
        fixture.limits.clear();
        QTimer::singleShot(0, &fixture.window, [&fixture] {
            QVERIFY(fixture.isEnabled("pushButton_apply"));
            QVERIFY(fixture.isEnabled("pushButton_default"));
            QVERIFY(fixture.isEnabled("pushButton_custom_zoom_1"));
            fixture.replyWith(Frames::settingsAcknowledgement());
            fixture.click("pushButton_apply");
        });
        fixture.click("pushButton_apply");
        QCOMPARE(fixture.limits.asked(), QList<int>({5000, 5000}));
        // One acknowledgement ends both waits.
        QCOMPARE(fixture.dialogs.texts(),
                 QStringList({"Information: Apply Success.", "Information: Apply Success."}));
        QCOMPARE(fixture.line.received().size(), 2 * 18);
    }

    void closingTheWindowDuringApplyClaimsNothing()
    {
        WindowFixture fixture;
        QVERIFY(fixture.connectCamera());
        fixture.window.show();
        QTimer::singleShot(0, &fixture.window, [&fixture] { fixture.click("pushButton_apply"); });
        connect(&fixture.line, &PseudoTerminal::bytesReceived, &fixture.window, &QWidget::close);
        QApplication::exec();
        QCOMPARE(fixture.dialogs.texts(), QStringList());
        QCOMPARE(fixture.line.received().size(), 18);
    }
};

QTEST_MAIN(MainWindowSettingsTest)
#include "tst_mainwindowsettings.moc"
