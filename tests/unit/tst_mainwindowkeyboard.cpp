// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "patience.h"
#include "rows.h"
#include "windowfixture.h"

#include <QDialog>
#include <QFocusFrame>
#include <QImage>
#include <QLineEdit>
#include <QPainter>
#include <QRadioButton>
#include <QStyleOptionButton>
#include <QTabBar>
#include <QTabWidget>

#include <thread>

namespace {

/// The window with the focus on it, and a hand on the keyboard.
class WindowAtTheKeyboard : public WindowFixture {
public:
    explicit WindowAtTheKeyboard(bool answersDialogs = true)
        : WindowFixture(answersDialogs)
    {
        window.show();
        window.activateWindow();
        isActive = QTest::qWaitForWindowActive(&window);
    }

    /// A key as the window system delivers it: to the widget with the focus.
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QTest::keyClick(window.windowHandle(), key, modifiers);
    }

    QString focus() const
    {
        const QWidget *const widget = window.focusWidget();
        return widget != nullptr ? widget->objectName() : QString();
    }

    /// Presses a key again and again until the widget has the focus.
    bool goTo(const char *widget, Qt::Key key = Qt::Key_Tab)
    {
        constexpr int kMoreThanThereAre = 40;
        for (int count = 0; count < kMoreThanThereAre; ++count) {
            if (focus() == QLatin1String(widget)) {
                return true;
            }
            press(key);
        }
        return false;
    }

    /// Where the focus goes from a widget at each press, until it comes back or no longer moves.
    QStringList walk(const char *from, Qt::Key key)
    {
        QStringList stations;
        widget(from)->setFocus(Qt::OtherFocusReason);
        QString before;
        while (focus() != before && !stations.contains(focus())) {
            before = focus();
            stations << before;
            press(key);
        }
        return stations;
    }

    void showFirmwarePage() { child<QTabWidget>("tabWidget")->setCurrentIndex(1); }

    bool isActive = false;
};

const char *const kTabBar = "qt_tabwidget_tabbar";

// From a thread other than the GUI's, these wait for their turn, as what a display sends does.
void pressSpace(QWindow *window, const QPoint &)
{
    qt_handleKeyEvent(window, QEvent::KeyPress, Qt::Key_Space, Qt::NoModifier, " ");
    qt_handleKeyEvent(window, QEvent::KeyRelease, Qt::Key_Space, Qt::NoModifier, " ");
}
void click(QWindow *window, const QPoint &at)
{
    const QPoint global = window->mapToGlobal(at);
    qt_handleMouseEvent(window, at, global, Qt::LeftButton, Qt::LeftButton,
                        QEvent::MouseButtonPress, Qt::NoModifier, 1);
    qt_handleMouseEvent(window, at, global, Qt::NoButton, Qt::LeftButton,
                        QEvent::MouseButtonRelease, Qt::NoModifier, 2);
}

bool isForUse(const QWidget *widget)
{
    return qobject_cast<const QAbstractButton *>(widget) != nullptr
        || qobject_cast<const QComboBox *>(widget) != nullptr
        || qobject_cast<const QLineEdit *>(widget) != nullptr
        || qobject_cast<const QTextEdit *>(widget) != nullptr
        || qobject_cast<const QTabBar *>(widget) != nullptr;
}

} // namespace

class MainWindowKeyboardTest : public QObject {
    Q_OBJECT

private slots:
    void tabVisitsWhatIsEnabled_data()
    {
        QTest::addColumn<bool>("isConnected");
        QTest::addColumn<int>("page");
        QTest::addColumn<QByteArray>("from");
        QTest::addColumn<bool>("isBackward");
        QTest::addColumn<QStringList>("stations");

        QTest::newRow("disconnected") << false << 0 << QByteArray("comboBox_portlist") << false
                                      << QStringList{"comboBox_portlist", "comboBox_baudrate",
                                                     "pushButton_connect", "toolButton_about"};
        QTest::newRow("disconnected, backward")
            << false << 0 << QByteArray("comboBox_portlist") << true
            << QStringList{"comboBox_portlist", "toolButton_about", "pushButton_connect",
                           "comboBox_baudrate"};
        // The pane takes the Tab key for itself, because text can be typed there.
        QTest::newRow("settings, up to the pane")
            << true << 0 << QByteArray("pushButton_disconnect") << false
            << QStringList{
                   "pushButton_disconnect", "toolButton_about",       kTabBar,
                   "pushButton_default",    "pushButton_apply",       "comboBox_autozoom",
                   "comboBox_zoomoffset",   "comboBox_targetmissing", "comboBox_autotracking",
                   "radioButton_upright",   "textEdit_device_info"};
        QTest::newRow("settings, backward")
            << true << 0 << QByteArray("pushButton_disconnect") << true
            << QStringList{
                   "pushButton_disconnect",  "pushButton_custom_zoom_2", "pushButton_custom_zoom_1",
                   "textEdit_device_info",   "radioButton_upside_down",  "comboBox_autotracking",
                   "comboBox_targetmissing", "comboBox_zoomoffset",      "comboBox_autozoom",
                   "pushButton_apply",       "pushButton_default",       kTabBar,
                   "toolButton_about"};
        QTest::newRow("firmware, up to the pane")
            << true << 1 << QByteArray("pushButton_disconnect") << false
            << QStringList{"pushButton_disconnect",  "toolButton_about",  kTabBar,
                           "pushButton_choose_file", "lineEdit_firmware", "textEdit_firmware_info"};
        QTest::newRow("firmware, backward")
            << true << 1 << QByteArray("pushButton_disconnect") << true
            << QStringList{"pushButton_disconnect",
                           "textEdit_firmware_info",
                           "lineEdit_firmware",
                           "pushButton_choose_file",
                           kTabBar,
                           "toolButton_about"};
    }

    void tabVisitsWhatIsEnabled()
    {
        QFETCH(bool, isConnected);
        QFETCH(int, page);
        QFETCH(QByteArray, from);
        QFETCH(bool, isBackward);
        WindowAtTheKeyboard fixture;
        QVERIFY(fixture.isActive);
        QVERIFY(!isConnected || fixture.connectCamera());
        fixture.child<QTabWidget>("tabWidget")->setCurrentIndex(page);
        QTEST(fixture.walk(from, isBackward ? Qt::Key_Backtab : Qt::Key_Tab), "stations");
    }

    void whatIsEnabledIsVisited_data()
    {
        addRows<bool, int>(
            {"isConnected", "page"},
            {{"disconnected", false, 0}, {"settings", true, 0}, {"firmware", true, 1}});
    }

    void whatIsEnabledIsVisited()
    {
        QFETCH(bool, isConnected);
        QFETCH(int, page);
        WindowAtTheKeyboard fixture;
        QVERIFY(fixture.isActive);
        QVERIFY(!isConnected || fixture.connectCamera());
        fixture.child<QTabWidget>("tabWidget")->setCurrentIndex(page);

        // Backward, because the panes take Tab for themselves.
        const QStringList visited = fixture.walk(
            isConnected ? "pushButton_disconnect" : "pushButton_connect", Qt::Key_Backtab);
        QStringList missed;
        const auto widgets = fixture.window.findChildren<QWidget *>();
        for (const QWidget *widget : widgets) {
            // Of the radio buttons, the one that is checked takes the focus for both.
            const auto *const radio = qobject_cast<const QRadioButton *>(widget);
            const bool isStation = widget->isVisible() && widget->isEnabled() && isForUse(widget)
                && (radio == nullptr || radio->isChecked());
            if (isStation && !visited.contains(widget->objectName())) {
                missed << widget->objectName();
            }
        }
        QCOMPARE(missed, QStringList());
    }

    void theFocusIsFramed_data()
    {
        addRows<int, QByteArray>({"page", "control"},
                                 {{"a button", 0, "pushButton_disconnect"},
                                  {"a button that is flat", 0, "pushButton_apply"},
                                  {"on the banner", 0, "toolButton_about"},
                                  {"the tabs", 0, kTabBar},
                                  {"a list", 0, "comboBox_autotracking"},
                                  {"a direction", 0, "radioButton_upright"},
                                  {"a pane", 0, "textEdit_device_info"},
                                  {"the path", 1, "lineEdit_firmware"}});
    }

    void theFocusIsFramed()
    {
        QFETCH(int, page);
        QFETCH(QByteArray, control);
        WindowAtTheKeyboard fixture;
        QVERIFY(fixture.isActive);
        QVERIFY(fixture.connectCamera());
        fixture.child<QTabWidget>("tabWidget")->setCurrentIndex(page);
        QWidget *const widget = fixture.widget(control);
        const QPoint beside = widget->mapTo(&fixture.window, QPoint(-1, widget->height() / 2));
        const QPoint outside = beside - QPoint(2, 0);
        fixture.window.focusWidget()->clearFocus();
        QVERIFY(fixture.window.grab().toImage().pixelColor(beside) != QColor(Qt::black));

        // Black can be seen on the window's ground, white on the banner's.
        widget->setFocus();
        const QImage framed = fixture.window.grab().toImage();
        QCOMPARE(framed.pixelColor(beside), QColor(Qt::black));
        QCOMPARE(framed.pixelColor(outside), QColor(Qt::white));

        widget->clearFocus();
        QVERIFY(fixture.window.grab().toImage().pixelColor(beside) != QColor(Qt::black));
    }

    void theFrameStaysOutOfDialogs()
    {
        WindowAtTheKeyboard fixture;
        QVERIFY(fixture.isActive);
        fixture.widget("toolButton_about")->setFocus();
        const auto *const frame = fixture.window.findChild<QFocusFrame *>();
        QCOMPARE(frame->widget(), fixture.widget("toolButton_about"));
        QDialog dialog(&fixture.window);
        auto *const button = new QPushButton(&dialog);
        dialog.show();
        dialog.activateWindow();
        button->setFocus();
        QTRY_COMPARE(QApplication::focusWidget(), button);
        QVERIFY(frame->widget() == nullptr);
    }

    void aTextPaneKeepsTabButNotTheOthers()
    {
        WindowAtTheKeyboard fixture;
        QVERIFY(fixture.connectCamera());
        fixture.widget("textEdit_device_info")->setFocus();
        fixture.press(Qt::Key_Tab);
        QCOMPARE(fixture.focus(), QString("textEdit_device_info"));
        QVERIFY(fixture.text("textEdit_device_info").contains('\t'));

        fixture.press(Qt::Key_Backtab, Qt::ShiftModifier);
        QCOMPARE(fixture.focus(), QString("radioButton_upside_down"));

        fixture.widget("textEdit_device_info")->setFocus();
        fixture.press(Qt::Key_Tab, Qt::ControlModifier);
        QCOMPARE(fixture.child<QTabWidget>("tabWidget")->currentIndex(), 1);
        QVERIFY(fixture.focus() != "textEdit_device_info");
    }

    void spaceConnectsAndDisconnects()
    {
        WindowAtTheKeyboard fixture;
        QVERIFY(fixture.isActive);
        fixture.replyWith(Frames::helloReply());
        QVERIFY(fixture.goTo("pushButton_connect"));
        fixture.press(Qt::Key_Space);
        QVERIFY(fixture.isEnabled("tabWidget"));
        QCOMPARE(fixture.line.received(), Frames::helloRequest());

        QVERIFY(fixture.goTo("pushButton_disconnect", Qt::Key_Backtab));
        fixture.press(Qt::Key_Space);
        QVERIFY(!fixture.isEnabled("tabWidget"));
        QVERIFY(!fixture.port()->isOpen());
    }

    void keysAndClicksDuringAWaitTakeEffectBeforeItsEnd_data()
    {
        QTest::addColumn<QByteArray>("slot");
        QTest::addColumn<int>("waitsBefore");
        QTest::addColumn<bool>("isKey");
        for (const bool isKey : {true, false}) {
            const auto addRow = [isKey](const char *wait, const char *slot, int waitsBefore = 0) {
                QTest::addRow("%s while waiting for %s", isKey ? "a key" : "a click", wait)
                    << QByteArray(slot) << waitsBefore << isKey;
            };
            addRow("HELLO", "on_pushButton_connect_clicked");
            addRow("settings", "on_pushButton_apply_clicked");
            addRow("a zoom", "on_pushButton_custom_zoom_1_clicked");
            addRow("a firmware's size", "on_pushButton_start_upgrade_clicked");
            addRow("a packet", "on_pushButton_start_upgrade_clicked", 1);
        }
    }

    void keysAndClicksDuringAWaitTakeEffectBeforeItsEnd()
    {
        QFETCH(QByteArray, slot);
        QFETCH(int, waitsBefore);
        QFETCH(bool, isKey);
        const ImageFile image(QByteArray("KVEL").leftJustified(160, '\0'));
        WindowAtTheKeyboard fixture;
        QVERIFY(fixture.isActive);
        fixture.enterFirmwarePath(image.fileName());
        fixture.limits.clear();
        auto *const about = fixture.widget("toolButton_about");
        about->setFocus();
        const QPoint middle = about->mapTo(&fixture.window, about->rect().center());

        std::thread hand;
        QTimer poll;
        poll.callOnTimeout([&] {
            if (!hand.joinable() && fixture.limits.runsAfter(waitsBefore)) {
                hand =
                    std::thread(isKey ? pressSpace : click, fixture.window.windowHandle(), middle);
            } else if (!hand.joinable()
                       || (!fixture.dialogs.texts().isEmpty() && !fixture.dialogs.isOpen())) {
                for (const int command : {22, 85, 58, 16}) {
                    fixture.deliver(Frames::hex("ffff0a410106070609 05")
                                    + static_cast<char>(command) + '\0');
                }
            }
        });
        poll.start(1);
        fixture.call(slot);
        QVERIFY(hand.joinable());
        hand.join();
        QCOMPARE(fixture.dialogs.texts().value(0), QString("about: Corvane: Version 1.0.0.5"));
    }

    void theFrameAroundTheFocusLeavesTheRestToTheStyle()
    {
        const WindowFixture fixture;
        const QStyle *const style = fixture.window.findChild<QFocusFrame *>()->style();
        const auto draw = [](const QStyle *with) {
            QImage picture(80, 40, QImage::Format_RGB32);
            picture.fill(Qt::white);
            QPainter painter(&picture);
            QStyleOptionButton button;
            button.rect = picture.rect();
            button.text = "text";
            with->drawControl(QStyle::CE_PushButton, &button, &painter);
            return picture;
        };
        QCOMPARE(draw(style), draw(QApplication::style()));
        QCOMPARE(style->pixelMetric(QStyle::PM_FocusFrameHMargin), 3);
        QCOMPARE(style->pixelMetric(QStyle::PM_FocusFrameVMargin), 3);
        QCOMPARE(style->pixelMetric(QStyle::PM_ButtonMargin),
                 QApplication::style()->pixelMetric(QStyle::PM_ButtonMargin));
    }

    void spacePressesTheButtonsOfThePage_data()
    {
        QTest::addColumn<QByteArray>("button");
        QTest::addColumn<Qt::Key>("key");
        QTest::addColumn<QByteArray>("reply");
        QTest::addColumn<QString>("pane");
        QTest::addColumn<QStringList>("boxes");

        QTest::newRow("Apply") << QByteArray("pushButton_apply") << Qt::Key_Tab
                               << Frames::settingsAcknowledgement() << "Device Version: 1.0.a.10"
                               << QStringList{"Information: Apply Success."};
        // A zoom of 25: 12 + 94 + 5 + 58 + 25 = 194
        QTest::newRow("Zoom 1") << QByteArray("pushButton_custom_zoom_1") << Qt::Key_Backtab
                                << QByteArray::fromHex("ffff0c410106070609053a000019c2")
                                << "Device Version: 1.0.a.10\nSetting custom zoom: 25"
                                << QStringList();
        QTest::newRow("Zoom 2") << QByteArray("pushButton_custom_zoom_2") << Qt::Key_Backtab
                                << QByteArray::fromHex("ffff0c410106070609053a000019c2")
                                << "Device Version: 1.0.a.10\nSetting custom zoom: 25"
                                << QStringList();
    }

    void spacePressesTheButtonsOfThePage()
    {
        QFETCH(QByteArray, button);
        QFETCH(Qt::Key, key);
        QFETCH(QByteArray, reply);
        WindowAtTheKeyboard fixture;
        QVERIFY(fixture.connectCamera());
        fixture.replyWith(reply);
        QVERIFY(fixture.goTo("pushButton_disconnect", Qt::Key_Backtab));
        QVERIFY(fixture.goTo(button, key));
        fixture.press(Qt::Key_Space);
        QTEST(fixture.text("textEdit_device_info"), "pane");
        QTEST(fixture.dialogs.texts(), "boxes");
    }

    void spaceOpensTheAboutBoxAndEscapeClosesIt()
    {
        WindowAtTheKeyboard fixture(false);
        QVERIFY(fixture.isActive);
        QVERIFY(fixture.goTo("toolButton_about"));
        QTimer poll;
        connect(&poll, &QTimer::timeout, &poll, [] {
            if (QWidget *const box = QApplication::activeModalWidget()) {
                QTest::keyClick(box, Qt::Key_Escape);
            }
        });
        poll.start(10);
        fixture.press(Qt::Key_Space);
        QCOMPARE(fixture.dialogs.texts(), QStringList{"about: Corvane: Version 1.0.0.5"});
        QVERIFY(!fixture.dialogs.isOpen());
    }

    void arrowsChooseInComboBoxes_data()
    {
        addRows<QByteArray, int>({"comboBox", "count"},
                                 {{"auto tracking", "comboBox_autotracking", 4},
                                  {"target missing", "comboBox_targetmissing", 10},
                                  {"auto zoom", "comboBox_autozoom", 2},
                                  {"zoom offset", "comboBox_zoomoffset", 4}});
    }

    void arrowsChooseInComboBoxes()
    {
        QFETCH(QByteArray, comboBox);
        QFETCH(int, count);
        WindowAtTheKeyboard fixture;
        QVERIFY(fixture.connectCamera());
        QVERIFY(fixture.goTo("pushButton_disconnect", Qt::Key_Backtab));
        QVERIFY(fixture.goTo(comboBox));
        fixture.press(Qt::Key_Home);
        QCOMPARE(fixture.combo(comboBox)->currentIndex(), 0);
        fixture.press(Qt::Key_Down);
        QCOMPARE(fixture.combo(comboBox)->currentIndex(), 1);
        fixture.press(Qt::Key_End);
        QCOMPARE(fixture.combo(comboBox)->currentIndex(), count - 1);
        fixture.press(Qt::Key_Up);
        QCOMPARE(fixture.combo(comboBox)->currentIndex(), count - 2);
    }

    void anOpenListIsChosenFromByArrowsAndReturn()
    {
        WindowAtTheKeyboard fixture;
        QVERIFY(fixture.connectCamera());
        QVERIFY(fixture.goTo("comboBox_autotracking", Qt::Key_Backtab));
        QCOMPARE(fixture.combo("comboBox_autotracking")->currentIndex(), 2);
        fixture.press(Qt::Key_Down, Qt::AltModifier);
        QWidget *const list = QApplication::activePopupWidget();
        QVERIFY(list != nullptr);
        QTest::keyClick(list->windowHandle(), Qt::Key_Up);
        QTest::keyClick(list->windowHandle(), Qt::Key_Return);
        QCOMPARE(fixture.combo("comboBox_autotracking")->currentIndex(), 1);
        QTRY_VERIFY(QApplication::activePopupWidget() == nullptr);
    }

    void arrowsChooseTheDirection()
    {
        WindowAtTheKeyboard fixture;
        QVERIFY(fixture.connectCamera());
        QVERIFY(fixture.goTo("radioButton_upside_down", Qt::Key_Backtab));
        const auto *const upright = fixture.child<QRadioButton>("radioButton_upright");
        QVERIFY(!upright->isChecked());
        fixture.press(Qt::Key_Left);
        QVERIFY(upright->isChecked());
        fixture.press(Qt::Key_Right);
        QVERIFY(!upright->isChecked());
        QVERIFY(fixture.child<QRadioButton>("radioButton_upside_down")->isChecked());
    }

    void arrowsOnTheTabsAndCtrlTabElsewhereChangeThePage()
    {
        WindowAtTheKeyboard fixture;
        QVERIFY(fixture.connectCamera());
        const auto *const tabs = fixture.child<QTabWidget>("tabWidget");
        QVERIFY(fixture.goTo(kTabBar, Qt::Key_Backtab));
        fixture.press(Qt::Key_Right);
        QCOMPARE(tabs->currentIndex(), 1);
        fixture.press(Qt::Key_Left);
        QCOMPARE(tabs->currentIndex(), 0);

        QVERIFY(fixture.goTo("pushButton_apply", Qt::Key_Backtab));
        fixture.press(Qt::Key_Tab, Qt::ControlModifier);
        QCOMPARE(tabs->currentIndex(), 1);
        fixture.press(Qt::Key_Backtab, Qt::ControlModifier | Qt::ShiftModifier);
        QCOMPARE(tabs->currentIndex(), 0);
    }

    void aTypedPathIsCheckedAtReturnAndAtTab_data()
    {
        addRows<Qt::Key>({"key"}, {{"Return", Qt::Key_Return}, {"Tab", Qt::Key_Tab}});
    }

    void aTypedPathIsCheckedAtReturnAndAtTab()
    {
        QFETCH(Qt::Key, key);
        const ImageFile image;
        WindowAtTheKeyboard fixture;
        QVERIFY(fixture.connectCamera());
        fixture.showFirmwarePage();
        QVERIFY(fixture.goTo("lineEdit_firmware", Qt::Key_Backtab));
        fixture.child<QTextEdit>("textEdit_firmware_info")->setPlainText("from before");
        QTest::keyClicks(fixture.window.focusWidget(), image.fileName());
        QCOMPARE(fixture.text("textEdit_firmware_info"), QString("from before"));
        fixture.press(key);
        QCOMPARE(fixture.text("textEdit_firmware_info"), ImageFile::versions());
        QVERIFY(fixture.isEnabled("pushButton_start_upgrade"));
        QVERIFY(fixture.goTo("pushButton_start_upgrade", Qt::Key_Backtab));
    }
};

QTEST_MAIN(MainWindowKeyboardTest)
#include "tst_mainwindowkeyboard.moc"
