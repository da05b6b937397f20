// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "patience.h"
#include "widgetrecorder.h"
#include "windowonline.h"

#include <QRadioButton>

namespace {

// The long acknowledgement: version 1.0.0.6, tilt tracking, target missing off, upright, auto zoom
// on, zoom offset 2. 23 + 94 + 5 + 85 + 1 + 6 + 1 + 1 + 2 = 218
QByteArray longReply()
{
    return QByteArray::fromHex("ffff17410106070609055500 01000006 00 0000 0000 0001 01 02 da");
}
QByteArray shortReply()
{
    return QByteArray::fromHex("ffff0a410106070609055500c2");
}

} // namespace

class MainWindowSettingsTest : public QObject {
    Q_OBJECT

private slots:
    void trackingModeEnablesItsDependants();
    void defaultSetsTheControlsInOrderAndSendsNothing();
    void choosingSendsNothing();
    void applySendsTheControls_data();
    void applySendsTheControls();
    void applyReportsSuccess();
    void theReplysSettingsAreShownBeforeTheBox();
    void aShortReplyKeepsTheControls();
    void applyReportsFailureAfterTheLimit();
    void applyOnAClosedPortFailsByItsTimeOut();
    void aReplyBehindTheTimeOutStillSetsTheControls();
    void applyDuringApplyIsNested();
    void closingTheWindowDuringApplyClaimsNothing();
};

void MainWindowSettingsTest::trackingModeEnablesItsDependants()
{
    WindowOnLine desk;
    QVERIFY(desk.connectCamera());
    auto *const mode = desk.combo("comboBox_autotracking");
    mode->setCurrentIndex(1);
    for (const int index : {0, 1, 0, 2, 0, 3}) {
        mode->setCurrentIndex(index);
        QCOMPARE(desk.widget("comboBox_targetmissing")->isEnabled(), index != 0);
        QCOMPARE(desk.widget("comboBox_autozoom")->isEnabled(), index != 0);
        QVERIFY(desk.widget("comboBox_zoomoffset")->isEnabled());
        QVERIFY(desk.widget("radioButton_upright")->isEnabled());
        QVERIFY(desk.widget("radioButton_upside_down")->isEnabled());
    }
}

void MainWindowSettingsTest::defaultSetsTheControlsInOrderAndSendsNothing()
{
    WindowOnLine desk;
    QVERIFY(desk.connectCamera());
    desk.combo("comboBox_autotracking")->setCurrentIndex(0);
    WidgetRecorder recorder(&desk.window);
    desk.click("pushButton_default");
    QCOMPARE(recorder.changes(),
             QStringList({"comboBox_targetmissing on", "comboBox_autozoom on",
                          "comboBox_autotracking = 1", "comboBox_targetmissing = 1",
                          "radioButton_upside_down = not", "radioButton_upright = chosen",
                          "comboBox_autozoom = 1", "comboBox_zoomoffset = 1"}));
    QCOMPARE(desk.port()->bytesToWrite(), 0);
    QCOMPARE(desk.line.received(), QByteArray());
    QCOMPARE(desk.log.texts(), QStringList());
}

void MainWindowSettingsTest::choosingSendsNothing()
{
    WindowOnLine desk;
    QVERIFY(desk.connectCamera());
    for (const char *name : {"comboBox_autotracking", "comboBox_targetmissing", "comboBox_autozoom",
                             "comboBox_zoomoffset"}) {
        QComboBox *const combo = desk.combo(name);
        for (int index = 0; index < combo->count(); ++index) {
            combo->setCurrentIndex(index);
        }
    }
    desk.click("radioButton_upright");
    desk.click("radioButton_upside_down");
    QCOMPARE(desk.port()->bytesToWrite(), 0);
    QCOMPARE(desk.line.received(), QByteArray());
    QCOMPARE(desk.log.texts(), QStringList());
}

void MainWindowSettingsTest::applySendsTheControls_data()
{
    QTest::addColumn<int>("autoTracking");
    QTest::addColumn<int>("targetMissing");
    QTest::addColumn<bool>("upsideDown");
    QTest::addColumn<int>("autoZoom");
    QTest::addColumn<int>("zoomOffset");
    QTest::addColumn<QByteArray>("frame");

    QTest::newRow("pan, preset 7, upside down, off, custom")
        << 2 << 9 << true << 0 << 3 << QByteArray("ffff0f4101060706090155000209010003d2");
    QTest::newRow("the defaults") << 1 << 1 << false << 1 << 1
                                  << QByteArray("ffff0f4101060706090155000101000101c7");
    QTest::newRow("everything off")
        << 0 << 0 << false << 0 << 0 << QByteArray("ffff0f4101060706090155000000000000c3");
    // 195 + 3 + 4 + 1 + 2 = 205
    QTest::newRow("tilt, preset 2, upright, on, 2")
        << 3 << 4 << false << 1 << 2 << QByteArray("ffff0f4101060706090155000304000102cd");
}

void MainWindowSettingsTest::applySendsTheControls()
{
    QFETCH(int, autoTracking);
    QFETCH(int, targetMissing);
    QFETCH(bool, upsideDown);
    QFETCH(int, autoZoom);
    QFETCH(int, zoomOffset);
    WindowOnLine desk;
    QVERIFY(desk.connectCamera());
    desk.combo("comboBox_autotracking")->setCurrentIndex(autoTracking);
    desk.combo("comboBox_targetmissing")->setCurrentIndex(targetMissing);
    desk.click(upsideDown ? "radioButton_upside_down" : "radioButton_upright");
    desk.combo("comboBox_autozoom")->setCurrentIndex(autoZoom);
    desk.combo("comboBox_zoomoffset")->setCurrentIndex(zoomOffset);
    desk.replyWith(shortReply());
    desk.click("pushButton_apply");
    QTEST(desk.line.received().toHex(), "frame");
}

void MainWindowSettingsTest::applyReportsSuccess()
{
    WindowOnLine desk;
    QVERIFY(desk.connectCamera());
    desk.replyWith(longReply());
    desk.click("pushButton_apply");
    QCOMPARE(desk.dialogs.texts(), QStringList{"Information: Apply Success."});
    QCOMPARE(desk.dialogs.seen().constFirst().icon, QMessageBox::Information);
    QCOMPARE(desk.dialogs.seen().constFirst().buttons, QMessageBox::Ok);
    QVERIFY(desk.dialogs.seen().constFirst().hasParent);
    QVERIFY(desk.port()->isOpen());
}

void MainWindowSettingsTest::theReplysSettingsAreShownBeforeTheBox()
{
    WindowOnLine desk(false);
    QVERIFY(desk.connectCamera());
    desk.replyWith(longReply());
    desk.click("pushButton_default");
    QString paneAtTheBox;
    QTimer poll;
    connect(&poll, &QTimer::timeout, &poll, [&] {
        if (desk.dialogs.isOpen()) {
            paneAtTheBox = desk.text("textEdit_device_info");
            desk.dialogs.answer();
        }
    });
    poll.start(0);
    desk.click("pushButton_apply");
    QCOMPARE(paneAtTheBox, QString("Device Version: 1.0.0.6"));
    QCOMPARE(desk.combo("comboBox_autotracking")->currentIndex(), 3);
    QCOMPARE(desk.combo("comboBox_targetmissing")->currentIndex(), 0);
    QVERIFY(desk.child<QRadioButton>("radioButton_upright")->isChecked());
    QCOMPARE(desk.combo("comboBox_autozoom")->currentIndex(), 1);
    QCOMPARE(desk.combo("comboBox_zoomoffset")->currentIndex(), 2);
}

void MainWindowSettingsTest::aShortReplyKeepsTheControls()
{
    WindowOnLine desk;
    QVERIFY(desk.connectCamera());
    desk.click("pushButton_default");
    desk.replyWith(shortReply());
    WidgetRecorder recorder(&desk.window);
    desk.click("pushButton_apply");
    QCOMPARE(desk.dialogs.texts(), QStringList{"Information: Apply Success."});
    QCOMPARE(recorder.changes(),
             QStringList(
                 {"textEdit_device_info = ", "textEdit_device_info = Device Version: 1.0.a.10"}));
}

void MainWindowSettingsTest::applyReportsFailureAfterTheLimit()
{
    WindowOnLine desk;
    QVERIFY(desk.connectCamera());
    desk.click("pushButton_default");
    WidgetRecorder recorder(&desk.window);
    desk.letLimitPass();
    desk.click("pushButton_apply");
    QCOMPARE(desk.dialogs.texts(), QStringList{"Error: Apply fail!"});
    QCOMPARE(desk.dialogs.seen().constFirst().icon, QMessageBox::Critical);
    QCOMPARE(desk.dialogs.seen().constFirst().buttons, QMessageBox::Ok);
    QCOMPARE(recorder.changes(), QStringList());
    QCOMPARE(desk.log.statusTexts(), QStringList());
    QVERIFY(desk.port()->isOpen());
    // Sent once: nothing is tried again.
    QCOMPARE(desk.line.received().size(), 18);
}

void MainWindowSettingsTest::applyOnAClosedPortFailsByItsTimeOut()
{
    WindowOnLine desk;
    desk.letLimitPass();
    QMetaObject::invokeMethod(&desk.window, "on_pushButton_apply_clicked");
    QCOMPARE(desk.dialogs.texts(), QStringList{"Error: Apply fail!"});
    QCOMPARE(desk.line.received(), QByteArray());
}

void MainWindowSettingsTest::aReplyBehindTheTimeOutStillSetsTheControls()
{
    WindowOnLine desk;
    QVERIFY(desk.connectCamera());
    desk.letLimitPass();
    desk.click("pushButton_apply");
    desk.line.send(longReply());
    QTRY_COMPARE(desk.combo("comboBox_autotracking")->currentIndex(), 3);
    QCOMPARE(desk.dialogs.texts(), QStringList{"Error: Apply fail!"});
}

void MainWindowSettingsTest::applyDuringApplyIsNested()
{
    WindowOnLine desk;
    QVERIFY(desk.connectCamera());
    QTimer::singleShot(0, &desk.window, [&desk] {
        QVERIFY(desk.widget("pushButton_apply")->isEnabled());
        QVERIFY(desk.widget("pushButton_default")->isEnabled());
        QVERIFY(desk.widget("pushButton_custom_zoom_1")->isEnabled());
        desk.replyWith(shortReply());
        desk.click("pushButton_apply");
    });
    desk.click("pushButton_apply");
    // One acknowledgement ends both waits.
    QCOMPARE(desk.dialogs.texts(),
             QStringList({"Information: Apply Success.", "Information: Apply Success."}));
    QCOMPARE(desk.line.received().size(), 2 * 18);
}

void MainWindowSettingsTest::closingTheWindowDuringApplyClaimsNothing()
{
    WindowOnLine desk;
    QVERIFY(desk.connectCamera());
    desk.window.show();
    QTimer::singleShot(0, &desk.window, [&desk] { desk.click("pushButton_apply"); });
    connect(&desk.line, &PseudoTerminal::bytesReceived, &desk.window, &QWidget::close);
    QApplication::exec();
    QCOMPARE(desk.dialogs.texts(), QStringList());
    QCOMPARE(desk.line.received().size(), 18);
}

QTEST_MAIN(MainWindowSettingsTest)
#include "tst_mainwindowsettings.moc"
