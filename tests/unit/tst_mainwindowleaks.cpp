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
    for (const char *const signal : {SIGNAL(readyRead()), SIGNAL(aboutToClose()),
                                     SIGNAL(error(QSerialPort::SerialPortError))}) {
        count(signal, Signals::connections(fixture.port(), signal));
    }
    return counts;
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
        const Requests fixture;
        const QStringList counts = census(fixture);
        QVERIFY(counts.contains(QStringLiteral("1 ") + SIGNAL(readyRead())));
        // The window's own, and the detector's of a line that has hung up.
        QVERIFY(
            counts.contains(QStringLiteral("2 ") + SIGNAL(error(QSerialPort::SerialPortError))));
        QCOMPARE(counts.filter("0 2receive_").size(), 5);
    }

    void noRequestLeavesAnythingBehind_data()
    {
        QTest::addColumn<std::function<void(Requests &)>>("request");
        const auto addRow = [](const char *name, const std::function<void(Requests &)> &request) {
            QTest::newRow(name) << request;
        };
        addRow("a connection", [](Requests &requests) { requests.connectAndDisconnect(); });
        addRow("a connection that fails", [](Requests &requests) {
            requests.answers = false;
            requests.letLimitPass();
            requests.connectAndDisconnect();
        });
        addRow("a port that does not open", [](Requests &requests) {
            requests.choosePort("/dev/null (test)");
            requests.connectAndDisconnect();
            requests.combo("comboBox_portlist")
                ->removeItem(requests.combo("comboBox_portlist")->count() - 1);
        });
        for (const bool isAnswered : {true, false}) {
            for (const char *const slot :
                 {"on_pushButton_apply_clicked", "on_pushButton_custom_zoom_1_clicked",
                  "on_pushButton_custom_zoom_2_clicked", "on_pushButton_start_upgrade_clicked"}) {
                QTest::addRow("%s, %s", slot, isAnswered ? "answered" : "not answered")
                    << std::function<void(Requests &)>([slot, isAnswered](Requests &requests) {
                           requests.request(slot, isAnswered);
                       });
            }
        }
        addRow("about", [](Requests &requests) { requests.click("toolButton_about"); });
        addRow("a cancelled choice", [](Requests &requests) { requests.chooseFile({}); });
        addRow("a choice", [](Requests &requests) {
            requests.chooseFile(requests.child<QLineEdit>("lineEdit_firmware")->text());
        });
        addRow("the list of ports", [](Requests &requests) {
            requests.combo("comboBox_portlist")->showPopup();
            requests.combo("comboBox_portlist")->hidePopup();
            requests.choosePort(requests.line.portName() + " (test line)");
        });
    }

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
};

QTEST_MAIN(MainWindowLeaksTest)
#include "tst_mainwindowleaks.moc"
