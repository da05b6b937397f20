// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "patience.h"
#include "windowfixture.h"

#include <QFileDialog>
#include <QLabel>

namespace {

/// How many connections a signal has.
class Signals : public QObject {
public:
    static int connections(const QObject *sender, const char *signal)
    {
        return (sender->*&Signals::receivers)(signal);
    }
};

/// All that a request could leave, counted.
QStringList census(const WindowFixture &fixture)
{
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QStringList counts;
    const auto count = [&counts](const char *what, int number) {
        counts << QStringLiteral("%1 %2").arg(number).arg(QLatin1String(what));
    };
    count("below the window", fixture.window.findChildren<QObject *>().size());
    count("below the application", qApp->findChildren<QObject *>().size());
    count("widgets", QApplication::allWidgets().size());
    for (const char *const signal : {SIGNAL(receive_hello_ack()), SIGNAL(receive_fw_info_ack()),
                                     SIGNAL(receive_custom_zoom_ack()),
                                     SIGNAL(receive_setting_ack()), SIGNAL(receive_reboot_ack())}) {
        count(signal, Signals::connections(&fixture.window, signal));
    }
    for (const char *const signal :
         {SIGNAL(readyRead()), SIGNAL(aboutToClose()), serialPortErrorSignal()}) {
        count(signal, Signals::connections(fixture.port(), signal));
    }
    return counts;
}

/// All that can be set on the window and its controls, but for what enables these.
QMap<QString, QVariant> properties(const WindowFixture &fixture)
{
    // The last three say the same as currentIndex and html.
    const QByteArrayList ignored{"enabled", "currentText", "markdown", "plainText"};
    QMap<QString, QVariant> values;
    const auto add = [&values, &ignored](const QWidget &widget) {
        const QMetaObject &meta = *widget.metaObject();
        for (int i = 0; i < meta.propertyCount(); ++i) {
            const QMetaProperty property = meta.property(i);
            if (property.isWritable() && property.isStored()
                && !ignored.contains(property.name())) {
                values[widget.objectName() + '.' + property.name()] = property.read(&widget);
            }
        }
        values[widget.objectName() + ".hidden"] = widget.isHidden();
    };
    add(fixture.window);
    const auto widgets = fixture.window.findChildren<QWidget *>();
    for (const QWidget *const widget : widgets) {
        const QString name = widget->objectName();
        const bool isQtsOwn = name.startsWith("qt_") || !name.contains('_');
        if (!isQtsOwn) {
            add(*widget);
        }
    }
    return values;
}

/// Deletes the status label, which has no owner, once the window is gone.
struct StatusLabelOwner {
    StatusLabelOwner() = default;
    StatusLabelOwner(const StatusLabelOwner &) = delete;
    StatusLabelOwner &operator=(const StatusLabelOwner &) = delete;
    ~StatusLabelOwner()
    {
        const auto widgets = QApplication::topLevelWidgets();
        for (QWidget *const widget : widgets) {
            if (qobject_cast<QLabel *>(widget) != nullptr) {
                delete widget;
            }
        }
    }
};

/// A window, and a camera that answers everything or nothing.
class Requests : private StatusLabelOwner, public WindowFixture {
public:
    Requests()
    {
        QObject::connect(&line, &PseudoTerminal::bytesReceived, &line,
                         [this](const QByteArray &bytes) {
                             if (answers && bytes.size() > 10) {
                                 line.send(replyTo(bytes.at(10)));
                             }
                         });
    }

    bool answers = true;

    void connectAndDisconnect()
    {
        click("pushButton_connect");
        call("on_pushButton_disconnect_clicked");
    }
    /// Presses a button of the pages, with and without an answer.
    void request(const char *slot, bool isAnswered)
    {
        if (!port()->isOpen()) {
            click("pushButton_connect");
        }
        answers = isAnswered;
        if (!isAnswered) {
            letLimitPass();
        }
        call(slot);
        answers = true;
    }
    /// @param path  empty to cancel
    void chooseFile(const QString &path)
    {
        QTimer poll;
        poll.callOnTimeout([path] {
            auto *const dialog = qobject_cast<QFileDialog *>(QApplication::activeModalWidget());
            if (dialog != nullptr && path.isEmpty()) {
                dialog->reject();
            } else if (dialog != nullptr) {
                dialog->findChild<QLineEdit *>("fileNameEdit")->setText(path);
                QMetaObject::invokeMethod(dialog, "accept");
            }
        });
        poll.start(10);
        call("on_pushButton_choose_file_clicked");
    }

private:
    static QByteArray replyTo(char command)
    {
        switch (command) {
        case 0x16:
            return Frames::helloReply();
        case 0x3A:
            return QByteArray::fromHex(Hex::zoomReply());
        case 0x55:
            return Frames::settingsAcknowledgement();
        case 0x10:
            return Frames::sizeAcknowledgement();
        default:
            return Frames::packetAcknowledgement();
        }
    }
};

} // namespace

Q_DECLARE_METATYPE(std::function<void(Requests &)>)

/// Runs without the suppression of the status label, which would hide everything that the window's
/// constructor allocates: under the leak sanitizer anything else that it does not free is reported
/// here.

class MainWindowLeaksTest : public QObject {
    Q_OBJECT

private slots:
    void leavesOnlyTheStatusLabel()
    {
        {
            MainWindow window;
            window.show();
            QVERIFY(QTest::qWaitForWindowExposed(&window));
        }
        const QWidgetList left = QApplication::topLevelWidgets();
        QCOMPARE(left.size(), 1);
        QVERIFY(qobject_cast<QLabel *>(left.first()) != nullptr);
        delete left.first();
    }

    void connectsWhatItNeedsAndNothingTwice()
    {
        Requests fixture;
        fixture.click("pushButton_connect");
        const QStringList counts = census(fixture);
        QVERIFY(counts.contains(QStringLiteral("1 ") + SIGNAL(readyRead())));
        // The window's own, and the detector's of a line that has hung up.
        QVERIFY(counts.contains(QStringLiteral("2 ") + serialPortErrorSignal()));
        QCOMPARE(counts.filter("0 2receive_").size(), 5);
        // The detector goes with the connection.
        QCOMPARE(fixture.port()->findChildren<HangUpDetector *>().size(), 1);
        fixture.click("pushButton_disconnect");
        QVERIFY(census(fixture).contains(QStringLiteral("1 ") + serialPortErrorSignal()));
    }

    void noRequestLeavesAnythingBehind_data() { addRequests(); }

    void noRequestLeavesAnythingBehind()
    {
        QFETCH(std::function<void(Requests &)>, request);
        const ImageFile image(QByteArray("KVEL").leftJustified(160, '\0'));
        Requests requests;
        requests.enterFirmwarePath(image.fileName());
        // The first of its kind may fill a cache of Qt's.
        request(requests);
        const QStringList before = census(requests);
        for (int i = 0; i < 3; ++i) {
            request(requests);
        }
        QCOMPARE(census(requests), before);
    }

    void aRequestChangesNothingElse_data() { addRequests(); }

    void aRequestChangesNothingElse()
    {
        QFETCH(std::function<void(Requests &)>, request);
        const ImageFile image(QByteArray("KVEL").leftJustified(160, '\0'));
        Requests requests;
        requests.enterFirmwarePath(image.fileName());
        requests.window.grab(); // which has the style sheets applied
        const auto before = properties(requests);
        request(requests);
        const auto after = properties(requests);
        QStringList changed;
        for (auto each = before.begin(); each != before.end(); ++each) {
            // Pictures cannot be compared.
            const bool isPicture =
                each->userType() == QMetaType::QIcon || each->userType() == QMetaType::QPixmap;
            if (!isPicture && after.value(each.key()) != each.value()) {
                changed << each.key();
            }
        }
        QFETCH(QStringList, changes);
        QCOMPARE(changed.join('\n'), changes.join('\n'));
    }

private:
    /// Each with what it changes on a new window, for which a page has to connect first.
    static void addRequests()
    {
        const QStringList none;
        const QStringList connected{
            "comboBox_autotracking.currentIndex", "comboBox_targetmissing.currentIndex",
            "comboBox_zoomoffset.currentIndex",   "radioButton_upright.checked",
            "radioButton_upside_down.checked",    "textEdit_firmware_info.html"};
        const QStringList reported = connected + QStringList{"textEdit_device_info.html"};
        const QStringList upgraded =
            connected + QStringList{"progressBar_updating.maximum", "progressBar_updating.value"};

        QTest::addColumn<QStringList>("changes");
        QTest::addColumn<std::function<void(Requests &)>>("request");
        const auto addRow = [](const char *name, QStringList changes,
                               const std::function<void(Requests &)> &request) {
            changes.sort();
            QTest::newRow(name) << changes << request;
        };
        addRow("a connection", connected,
               [](Requests &requests) { requests.connectAndDisconnect(); });
        addRow("a connection that fails", none, [](Requests &requests) {
            requests.answers = false;
            requests.letLimitPass();
            requests.connectAndDisconnect();
        });
        addRow("a port that does not open", none, [](Requests &requests) {
            requests.choosePort("/dev/null (test)");
            requests.connectAndDisconnect();
            requests.combo("comboBox_portlist")
                ->removeItem(requests.combo("comboBox_portlist")->count() - 1);
        });
        const auto addButton = [&addRow](const char *name, const QStringList &changes,
                                         const char *slot, bool isAnswered) {
            addRow(name, changes,
                   [slot, isAnswered](Requests &requests) { requests.request(slot, isAnswered); });
        };
        addButton("settings", reported, "on_pushButton_apply_clicked", true);
        addButton("settings, not answered", reported, "on_pushButton_apply_clicked", false);
        addButton("zoom 1", reported, "on_pushButton_custom_zoom_1_clicked", true);
        addButton("zoom 1, not answered", reported, "on_pushButton_custom_zoom_1_clicked", false);
        addButton("zoom 2", reported, "on_pushButton_custom_zoom_2_clicked", true);
        addButton("zoom 2, not answered", reported, "on_pushButton_custom_zoom_2_clicked", false);
        addButton("an upgrade", upgraded, "on_pushButton_start_upgrade_clicked", true);
        addButton("an upgrade, not answered", connected, "on_pushButton_start_upgrade_clicked",
                  false);
        addRow("about", none, [](Requests &requests) { requests.click("toolButton_about"); });
        addRow("a cancelled choice", none, [](Requests &requests) { requests.chooseFile({}); });
        addRow("a choice", none, [](Requests &requests) {
            requests.chooseFile(requests.child<QLineEdit>("lineEdit_firmware")->text());
        });
        addRow("the list of ports", none, [](Requests &requests) {
            requests.combo("comboBox_portlist")->showPopup();
            requests.combo("comboBox_portlist")->hidePopup();
            requests.choosePort(requests.line.portName() + " (test line)");
        });
    }
};

QTEST_MAIN(MainWindowLeaksTest)
#include "tst_mainwindowleaks.moc"
