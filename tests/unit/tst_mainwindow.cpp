// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "mainwindow.h"

#include "patience.h"
#include "progressannouncer.h"
#include "recordingtranslator.h"
#include "resultannouncer.h"
#include "rows.h"
#include "windowfixture.h"

#include <QAbstractItemView>
#include <QAccessible>
#include <QApplication>
#include <QElapsedTimer>
#include <QImage>
#include <QLabel>
#include <QStatusBar>

class MainWindowTest : public QObject {
    Q_OBJECT

private slots:
    void methodsStandInTheOrderOfTheInterface()
    {
        const QStringList expected{
            "signal receive_hello_ack()",
            "signal receive_fw_info_ack()",
            "signal receive_custom_zoom_ack()",
            "signal receive_setting_ack()",
            "signal receive_reboot_ack()",
            "slot on_comboBox_portlist_currentIndexChanged(int)",
            "slot on_comboBox_baudrate_currentIndexChanged(int)",
            "slot on_pushButton_connect_clicked()",
            "slot on_pushButton_disconnect_clicked()",
            "slot on_comboBox_autotracking_currentIndexChanged(int)",
            "slot on_comboBox_targetmissing_currentIndexChanged(int)",
            "slot on_radioButton_upright_clicked()",
            "slot on_radioButton_upside_down_clicked()",
            "slot on_comboBox_autozoom_currentIndexChanged(int)",
            "slot on_comboBox_zoomoffset_currentIndexChanged(int)",
            "slot on_pushButton_default_clicked()",
            "slot on_pushButton_apply_clicked()",
            "slot on_pushButton_choose_file_clicked()",
            "slot on_lineEdit_firmware_editingFinished()",
            "slot on_pushButton_start_upgrade_clicked()",
            "slot on_pushButton_cancel_upgrade_clicked()",
            "slot on_toolButton_about_clicked()",
            "slot on_toolButton_language_clicked()",
            "slot updateSettings()",
            "slot handleError(QSerialPort::SerialPortError)",
            "slot readData()",
            "slot AnalyzeReceiveData(QByteArray)",
            "slot on_pushButton_custom_zoom_1_clicked()",
            "slot on_pushButton_custom_zoom_2_clicked()",
        };
        QStringList actual;
        const QMetaObject &meta = MainWindow::staticMetaObject;
        for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
            const QMetaMethod method = meta.method(i);
            const char *const kind =
                method.methodType() == QMetaMethod::Signal ? "signal " : "slot ";
            actual << kind + QString::fromLatin1(method.methodSignature());
        }
        QCOMPARE(actual, expected);
    }

    void startsDisconnected()
    {
        LogCapture log;
        const MainWindow window;
        QCOMPARE(log.texts(), QStringList({"startParser", "Disconnected"}));

        const auto *const port = window.findChild<QSerialPort *>();
        QVERIFY(port != nullptr);
        QCOMPARE(port->parent(), &window);
        QVERIFY(!port->isOpen());
        QCOMPARE(port->readBufferSize(), 0); // no limit
        const QList<QPair<const char *, bool>> states{
            {"pushButton_connect", true}, {"pushButton_disconnect", false},
            {"comboBox_portlist", true},  {"comboBox_baudrate", true},
            {"tabWidget", false},
        };
        for (const auto &[name, enabled] : states) {
            QVERIFY2(window.findChild<QWidget *>(name)->isEnabled() == enabled, name);
        }
        QCOMPARE(window.findChild<QTextEdit *>("textEdit_device_info")->toPlainText(), QString());
    }

    void hidesWhatHasNoUse()
    {
        MainWindow window;
        window.show();
        QVERIFY(window.findChild<QWidget *>("toolButton_language")->isHidden());
        QVERIFY(window.findChild<QWidget *>("pushButton_cancel_upgrade")->isHidden());
        QVERIFY(window.findChild<QWidget *>("toolButton_about")->isVisible());
    }

    void offersOneBaudRate()
    {
        const MainWindow window;
        const auto *const rates = window.findChild<QComboBox *>("comboBox_baudrate");
        QCOMPARE(rates->count(), 1);
        QCOMPARE(rates->currentText(), QString("115200"));
        QCOMPARE(rates->currentData(Qt::UserRole), QVariant(115200));
    }

    void theRowsOfAnOpenListCanBeRead_data()
    {
        QTest::addColumn<QString>("style");
        QTest::addColumn<QString>("box");
        QTest::addColumn<int>("row");
        for (const char *const style : {"Fusion", "Windows"}) {
            QTest::addRow("%s, a setting as it is", style)
                << style << "comboBox_targetmissing" << 0;
            QTest::addRow("%s, another setting", style) << style << "comboBox_targetmissing" << 3;
            QTest::addRow("%s, the rate as it is", style) << style << "comboBox_baudrate" << 0;
            QTest::addRow("%s, another rate", style) << style << "comboBox_baudrate" << 1;
        }
    }

    void theRowsOfAnOpenListCanBeRead()
    {
        QFETCH(QString, style);
        QFETCH(QString, box);
        QFETCH(int, row);
        QApplication::setStyle(style);
        MainWindow window;
        window.findChild<QComboBox *>("comboBox_baudrate")->addItem("another");
        window.findChild<QWidget *>("tabWidget")->setEnabled(true);
        window.show();
        auto *const list = window.findChild<QComboBox *>(box);
        list->showPopup();
        QAbstractItemView *const view = list->view();
        QTRY_VERIFY(view->isVisible());
        const QModelIndex index = list->model()->index(row, 0);
        view->setCurrentIndex(index);

        const QRect visible = view->visualRect(index) & view->viewport()->rect();
        // Without the edge, which may be framed.
        const QImage picture = view->viewport()->grab(visible.adjusted(3, 3, -3, -3)).toImage();
        int darkest = 255;
        int lightest = 0;
        for (int y = 0; y < picture.height(); ++y) {
            for (int x = 0; x < picture.width(); ++x) {
                darkest = qMin(darkest, qGray(picture.pixel(x, y)));
                lightest = qMax(lightest, qGray(picture.pixel(x, y)));
            }
        }
        QVERIFY2(lightest - darkest > 64, qPrintable(QString::number(lightest - darkest)));
    }

    void takesThePortNameFromTheChosenItem_data()
    {
        addRows<QString, QString>(
            {"item", "portName"},
            {{"name and description", "ttyNone9 (USB Serial)", "ttyNone9"},
             {"no description", "ttyNone9 ()", "ttyNone9"},
             {"only the first \" (\" counts", "a (b) (c)", "a"},
             {"a bracket without a blank is part of the name", "a(b) (c)", "a(b)"},
             {"no \" (\" gives no name", "ttyNone9", ""},
             {"nothing gives no name", "", ""}});
    }

    // The name is seen where it is used: in the port, after an attempt to open it.
    void takesThePortNameFromTheChosenItem()
    {
        QFETCH(QString, item);
        WindowFixture fixture;
        fixture.choosePort(item);
        fixture.click("pushButton_connect");
        QTEST(fixture.port()->portName(), "portName");
        QCOMPARE(fixture.port()->baudRate(), 115200);
        QCOMPARE(fixture.log.statusTexts(), QStringList{"Open error"});
    }

    void anEmptiedPortListGivesNoName()
    {
        WindowFixture fixture;
        fixture.choosePort("ttyNone9 (USB Serial)");
        fixture.combo("comboBox_portlist")->clear();
        fixture.click("pushButton_connect");
        QCOMPARE(fixture.port()->portName(), QString());
    }

    void changingTheBaudRateChangesNothing()
    {
        WindowFixture fixture;
        auto *const rates = fixture.combo("comboBox_baudrate");
        rates->addItem("9600", 9600);
        rates->setCurrentIndex(1);
        QVERIFY(fixture.connectCamera());
        QCOMPARE(fixture.port()->baudRate(), 115200);
    }

    void connectsWithTheSettingsAsTheyWereLastBuilt()
    {
        WindowFixture fixture;
        {
            const QSignalBlocker blocker(fixture.combo("comboBox_portlist"));
            fixture.choosePort("ttyNone9 (USB Serial)");
        }
        QVERIFY(fixture.connectCamera());
        QCOMPARE("/dev/" + fixture.port()->portName(), fixture.line.portName());
    }

    void takesTheBaudRateFromTheItemsData()
    {
        WindowFixture fixture;
        fixture.combo("comboBox_baudrate")->setItemText(0, "9600");
        fixture.call("updateSettings");
        QVERIFY(fixture.connectCamera());
        QCOMPARE(fixture.port()->baudRate(), 115200);
    }

    void statusMessagesEndInTheLogUnderTheirOwnName()
    {
        MainWindow window;
        LogCapture log;
        window.showStatusMessage("some \"text\"");
        QCOMPARE(log.lines().size(), 1);
        const LogCapture::Line line = log.lines().constFirst();
        QCOMPARE(line.type, QtDebugMsg);
        QCOMPARE(line.printed, QString("\"some \\\"text\\\"\""));
        QCOMPARE(line.file, QString("mainwindow"));
        QCOMPARE(line.line, 473);
        QCOMPARE(line.function, QString("void MainWindow::showStatusMessage(const QString &)"));
    }

    void statusLabelIsNowhereOnScreen()
    {
        const QWidgetList before = QApplication::allWidgets();
        MainWindow window;
        window.show();
        window.showStatusMessage("never shown");
        QLabel *label = nullptr;
        const auto widgets = QApplication::allWidgets();
        for (QWidget *widget : widgets) {
            auto *const candidate = qobject_cast<QLabel *>(widget);
            if (!before.contains(widget) && candidate != nullptr
                && candidate->text() == QLatin1String("never shown")) {
                label = candidate;
            }
        }
        QVERIFY(label != nullptr);
        QCOMPARE(label->parent(), nullptr);
        QVERIFY(!label->isVisible());
    }

    void aboutShowsTheVersion()
    {
        WindowFixture fixture;
        fixture.click("toolButton_about");
        QCOMPARE(fixture.dialogs.texts(), QStringList{"about: Corvane: Version 1.0.0.5"});
        QCOMPARE(fixture.log.statusTexts(), QStringList());
    }

    void inertSlotsChangeNothing_data()
    {
        QTest::addColumn<bool>("takesIndex");
        QTest::newRow("on_comboBox_baudrate_currentIndexChanged") << true;
        QTest::newRow("on_comboBox_targetmissing_currentIndexChanged") << true;
        QTest::newRow("on_comboBox_autozoom_currentIndexChanged") << true;
        QTest::newRow("on_comboBox_zoomoffset_currentIndexChanged") << true;
        QTest::newRow("on_radioButton_upright_clicked") << false;
        QTest::newRow("on_radioButton_upside_down_clicked") << false;
        QTest::newRow("on_pushButton_cancel_upgrade_clicked") << false;
        QTest::newRow("on_toolButton_language_clicked") << false;
    }

    void inertSlotsChangeNothing()
    {
        QFETCH(bool, takesIndex);
        const char *const slot = QTest::currentDataTag();
        WindowFixture fixture;
        QVERIFY(fixture.connectCamera());
        const QImage before = fixture.window.grab().toImage();
        for (int index = -1; index <= 4; ++index) {
            const bool called = takesIndex
                ? QMetaObject::invokeMethod(&fixture.window, slot, Q_ARG(int, index))
                : QMetaObject::invokeMethod(&fixture.window, slot);
            QVERIFY(called);
        }
        QCOMPARE(fixture.window.grab().toImage(), before);
        QVERIFY(fixture.port()->isOpen());
        QCOMPARE(fixture.log.texts(), QStringList());
        QCOMPARE(fixture.dialogs.texts(), QStringList());
        QCOMPARE(fixture.line.received(), QByteArray());
    }

    void whatAPaneAnnouncesIsANotification()
    {
        WindowFixture fixture;
        auto *const pane = fixture.child<QTextEdit>("textEdit_device_info");
        auto *const announcer = pane->findChild<ResultAnnouncer *>();
        QElapsedTimer clock;
        clock.start();
        pane->setPlainText("some");
        QTimer::singleShot(300, pane, [pane] { pane->setPlainText("some text"); });
        QTRY_COMPARE(announcer->text(), QString("some text"));
        // Earlier, a screen reader may still have much to read. Coarse timers may be early.
        QVERIFY(clock.elapsed() >= 700);

        const auto *const notification = QAccessible::queryAccessibleInterface(announcer);
        QCOMPARE(notification->role(), QAccessible::Notification);
        QCOMPARE(notification->text(QAccessible::Name), QString("some text"));
        QCOMPARE(notification->text(QAccessible::Description), QString());
        QVERIFY(notification->parent() != nullptr);
        QCOMPARE(notification->parent()->object(), pane);
        QCOMPARE(notification->childCount(), 0);
        QVERIFY(notification->child(0) == nullptr);
        QCOMPARE(notification->indexOfChild(notification->parent()), -1);
        QVERIFY(!notification->state().invisible);
    }

    void theUploadHasAnAnnouncer()
    {
        const WindowFixture fixture;
        const auto *const bar = fixture.child<QProgressBar>("progressBar_updating");
        QVERIFY(bar->findChild<ProgressAnnouncer *>() != nullptr);
    }

    void progressIsAnnouncedFromTimeToTime_data()
    {
        QTest::addColumn<int>("pause"); // milliseconds
        QTest::addColumn<QStringList>("announced");
        QTest::newRow("no pause") << 0
                                  << QStringList({"Upload: 42 %", "Upload: 85 %", "Upload: 64 %"});
        QTest::newRow("a pause longer than the uploads") << 3'600'000 << QStringList();
    }

    void progressIsAnnouncedFromTimeToTime()
    {
        QFETCH(const int, pause);
        QProgressBar bar;
        bar.setAccessibleName("Upload");
        const ProgressAnnouncer announcer(&bar, std::chrono::milliseconds(pause));
        QStringList announced;
        bar.setRange(0, 300);
        for (const int value : {0, 1, 128, 256, 300, 0, 1, 192, 300}) {
            const QString before = announcer.text();
            bar.setValue(value);
            if (announcer.text() != before) {
                announced << announcer.text();
            }
        }
        QTEST(announced, "announced");
    }

    void progressIsNotAnnouncedSoonAgain()
    {
        QProgressBar bar;
        const ProgressAnnouncer announcer(&bar, std::chrono::milliseconds(500));
        bar.setRange(0, 300);
        bar.setValue(1);
        const auto announces = [&bar, &announcer](int value) {
            const QString before = announcer.text();
            bar.setValue(value);
            return announcer.text() != before;
        };
        int value = 3;
        bool isAnnounced = false;
        QTRY_VERIFY(isAnnounced = isAnnounced || announces(++value));
        QVERIFY(!announces(256));
    }

    void closesThePortBeforeItStopsTheParser()
    {
        PseudoTerminal line;
        DialogWatcher dialogs;
        LogCapture log;
        auto window = std::make_unique<MainWindow>();
        auto *const ports = window->findChild<QComboBox *>("comboBox_portlist");
        ports->addItem(line.portName() + " (test line)");
        ports->setCurrentIndex(ports->count() - 1);
        QTimer::singleShot(0, &line, [&line] { line.send(Frames::helloReply()); });
        window->findChild<QAbstractButton *>("pushButton_connect")->click();

        auto *const port = window->findChild<QSerialPort *>();
        auto *const tabs = window->findChild<QWidget *>("tabWidget");
        QVERIFY(port->isOpen());
        QVERIFY(tabs->isEnabled());
        log.clear();

        const auto order = std::make_shared<QStringList>();
        connect(port, &QIODevice::aboutToClose, this, [order, tabs] {
            *order << (tabs->isEnabled() ? "port closes, window still whole" : "too late");
        });
        connect(tabs, &QObject::destroyed, this, [order] { *order << "form is deleted"; });
        connect(port, &QObject::destroyed, this, [order] { *order << "port is deleted"; });
        window.reset();
        QCOMPARE(
            *order,
            QStringList({"port closes, window still whole", "form is deleted", "port is deleted"}));
        QCOMPARE(log.statusTexts(), QStringList{"Disconnected"});
    }

    // Everything that an operator can come to read, in a language that wraps it in brackets.
    void translatesWhatAnOperatorReadsAndNothingElse()
    {
        RecordingTranslator translator;
        QCoreApplication::installTranslator(&translator);
        QStringList panes; // outlives the window, which clears its panes at its end
        WindowFixture fixture;
        QCOMPARE(fixture.window.windowTitle(), QString("[Corvane]"));
        translator.texts.clear();
        for (const char *const name : {"textEdit_device_info", "textEdit_firmware_info"}) {
            const auto *const pane = fixture.child<QTextEdit>(name);
            connect(pane, &QTextEdit::textChanged, pane,
                    [pane, texts = &panes] { *texts << plainText(*pane); });
        }
        const auto fail = [&fixture](const char *slot) {
            fixture.letLimitPass();
            fixture.call(slot);
        };

        fixture.choosePort("/dev/null (test)");
        fixture.click("pushButton_connect");
        const QString openError = fixture.port()->errorString();
        fixture.choosePort(fixture.line.portName() + " (test line)");
        fail("on_pushButton_connect_clicked");
        QVERIFY(fixture.connectCamera());
        fail("on_pushButton_apply_clicked");
        fixture.replyWith(Frames::settingsAcknowledgement());
        fixture.click("pushButton_apply");
        fail("on_pushButton_custom_zoom_1_clicked");
        fail("on_pushButton_custom_zoom_2_clicked");
        fixture.replyWith(QByteArray::fromHex(Hex::zoomReply()));
        fixture.click("pushButton_custom_zoom_1");
        fixture.click("toolButton_about");
        QString caption;
        QTimer closer;
        closer.callOnTimeout([&caption] {
            if (QWidget *const dialog = QApplication::activeModalWidget()) {
                caption = dialog->windowTitle();
                dialog->close();
            }
        });
        closer.start(10);
        fixture.click("pushButton_choose_file");
        closer.stop();
        upgradeInEveryWay(fixture);

        QCOMPARE(caption, QString("[Open File]"));
        QCOMPARE(fixture.dialogs.texts(),
                 QStringList({"[Error]: " + openError, "[Error]: [Connection fail!]",
                              "[Error]: [Apply fail!]", "[Information]: [Apply Success.]",
                              "[about]: Corvane: Version 1.0.0.5", "[Error]: [Connection timeout!]",
                              "[Error]: [Transmission stop!]"}));
        const QString versions = "Protocol version: 0.0.0.0|Image version: 0.0.0.0";
        QCOMPARE(panesOfInterest(panes),
                 QStringList({"[Device Version: ]1.0.a.10",
                              "[Device Version: ]1.0.a.10|[Setting custom zoom 1 failed!]",
                              "[Device Version: ]1.0.a.10|[Setting custom zoom 2 failed!]",
                              "[Device Version: ]1.0.a.10|[Setting custom zoom: ]100",
                              "[Firmware file error.]", "Protocol version: 0.0.0.0", versions,
                              versions + "|Current version: 1.0.a.10",
                              "[Update is complete. Device auto-rebooting.]"}));
        QStringList translated = translator.texts;
        translated.removeDuplicates();
        translated.sort();
        QCOMPARE(translated,
                 QStringList({"Apply Success.", "Apply fail!", "Connection fail!",
                              "Connection timeout!", "Device Version: ", "Error",
                              "Firmware file error.", "Information", "Open File", "Open error",
                              "Setting custom zoom 1 failed!", "Setting custom zoom 2 failed!",
                              "Setting custom zoom: ", "Transmission stop!",
                              "Update is complete. Device auto-rebooting.", "about"}));
        QCOMPARE(fixture.log.statusTexts().filter("["), QStringList());

        // Whatever has happened, these are as they were.
        QCOMPARE(fixture.window.windowTitle(), QString("[Corvane]"));
        QCOMPARE(fixture.child<QStatusBar>("statusBar")->currentMessage(), QString());
        for (const char *const name : {"textEdit_device_info", "textEdit_firmware_info"}) {
            QVERIFY(!fixture.child<QTextEdit>(name)->isReadOnly());
        }
        const QList<QMessageBox::Icon> icons{QMessageBox::Critical, QMessageBox::Critical,
                                             QMessageBox::Critical, QMessageBox::Information,
                                             QMessageBox::NoIcon,   QMessageBox::Critical,
                                             QMessageBox::Critical};
        for (int i = 0; i < icons.size(); ++i) {
            const DialogWatcher::Seen box = fixture.dialogs.seen().at(i);
            QCOMPARE(box.icon, icons.at(i));
            QCOMPARE(box.parent, &fixture.window);
            QCOMPARE(box.modality, Qt::ApplicationModal);
            QCOMPARE(box.buttons, QMessageBox::Ok);
        }
    }

private:
    /// Marked where it has formats of its own.
    static QString plainText(const QTextEdit &pane)
    {
        const auto formats = pane.document()->allFormats();
        const bool isFormatted =
            std::any_of(formats.begin(), formats.end(), [](const QTextFormat &format) {
                return format.isCharFormat() && format.propertyCount() > 0;
            });
        return (isFormatted ? "formatted: " : "") + pane.toPlainText();
    }

    /// A file that is none, then one whose upgrade fails at the size, at the packet and not at all,
    /// and which is none any more at the last start.
    static void upgradeInEveryWay(WindowFixture &fixture)
    {
        ImageFile image("kvel");
        fixture.enterFirmwarePath(image.fileName());
        image.seek(0);
        image.write(QByteArray("KVEL").leftJustified(160, '\0'));
        image.flush();
        fixture.enterFirmwarePath(image.fileName());

        for (const int answered : {0, 1, 2}) {
            QVERIFY(fixture.port()->isOpen() || fixture.connectCamera());
            QByteArrayList replies{Frames::sizeAcknowledgement(), Frames::packetAcknowledgement()};
            replies = replies.mid(0, answered);
            QObject context;
            connect(&fixture.line, &PseudoTerminal::bytesReceived, &context, [&] {
                if (!replies.isEmpty()) {
                    fixture.line.send(replies.takeFirst());
                }
            });
            fixture.limits.clear();
            if (answered < 2) {
                fixture.limits.passWhen("the last reply has come", [&fixture, answered] {
                    return fixture.limits.runsAfter(answered);
                });
            }
            fixture.call("on_pushButton_start_upgrade_clicked");
        }
        image.seek(0);
        image.write("kvel");
        image.flush();
        fixture.call("on_pushButton_start_upgrade_clicked");
    }

    /// Each once, in the order of their first appearance, without what is empty.
    static QStringList panesOfInterest(QStringList panes)
    {
        panes.replaceInStrings("\n", "|");
        panes.removeDuplicates();
        panes.removeAll(QString());
        return panes;
    }
};

QTEST_MAIN(MainWindowTest)
#include "tst_mainwindow.moc"
