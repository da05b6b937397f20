// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "patience.h"
#include "rows.h"
#include "widgetrecorder.h"
#include "windowfixture.h"

#include <QLibraryInfo>
#include <QProgressBar>
#include <QTabWidget>
#include <QVersionNumber>

#include <csignal>
#include <utility>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

const char *const kFail = "Error: Connection fail!";

/// Puts what is no business of a connection into a state that it does not start in.
void chooseEverything(const WindowFixture &fixture)
{
    for (const char *const name : {"comboBox_autotracking", "comboBox_targetmissing",
                                   "comboBox_autozoom", "comboBox_zoomoffset"}) {
        fixture.combo(name)->setCurrentIndex(1);
    }
    fixture.child<QAbstractButton>("radioButton_upside_down")->setChecked(true);
    fixture.child<QTabWidget>("tabWidget")->setCurrentIndex(1);
    fixture.child<QProgressBar>("progressBar_updating")->setValue(50);
    fixture.child<QLineEdit>("lineEdit_firmware")->setText("/some/where.img");
    fixture.child<QTextEdit>("textEdit_device_info")->setPlainText("typed by the operator");
    fixture.child<QTextEdit>("textEdit_firmware_info")->setPlainText("from before");
}

bool hangUpAsAnotherProgram(const QString &port)
{
    const QByteArray path = QFile::encodeName(port);
    const pid_t process = ::fork();
    if (process == 0) {
        ::signal(SIGHUP, SIG_IGN); // which the terminal's owner gets as well
        const bool isHungUp = ::setsid() >= 0 && ::open(path.constData(), O_RDWR | O_CLOEXEC) >= 0
            && ::vhangup() == 0;
        ::_exit(isHungUp ? 0 : 1);
    }
    int status = -1;
    return process > 0 && ::waitpid(process, &status, 0) == process && status == 0;
}

} // namespace

class MainWindowConnectionTest : public QObject {
    Q_OBJECT

private slots:
    void aCameraThatAnswersIsConnected()
    {
        WindowFixture fixture;
        fixture.child<QTextEdit>("textEdit_firmware_info")->setPlainText("from before");
        fixture.replyWith(Frames::helloReply());
        fixture.click("pushButton_connect");

        QCOMPARE(fixture.line.received().toHex(), Frames::helloRequest().toHex());
        QCOMPARE(fixture.dialogs.texts(), QStringList());
        QCOMPARE(fixture.log.texts(),
                 QStringList({"Connected to " + fixture.line.portName(),
                              "data_step_head_ready: length = 23", "Analyze Data: length = 23",
                              "AnalyzeReceiveData 25", "UART_COMM_TYPE_ACK Received",
                              "UART_CTRL_CMD_HELLO Received", "ClientVersion: 1.0.a.10",
                              "3.1.1.1.0.0.3"}));
        QVERIFY(fixture.port()->isOpen());
        QVERIFY(!fixture.isEnabled("pushButton_connect"));
        QVERIFY(fixture.isEnabled("pushButton_disconnect"));
        QVERIFY(!fixture.isEnabled("comboBox_portlist"));
        QVERIFY(!fixture.isEnabled("comboBox_baudrate"));
        QVERIFY(fixture.isEnabled("tabWidget"));
        QVERIFY(fixture.isEnabled("pushButton_default"));
        QVERIFY(fixture.isEnabled("pushButton_apply"));
        QCOMPARE(fixture.text("textEdit_device_info"), QString("Device Version: 1.0.a.10"));
        QCOMPARE(fixture.text("textEdit_firmware_info"), QString());
    }

    void widgetsChangeInOrder()
    {
        WindowFixture fixture;
        fixture.widget("pushButton_default")->setEnabled(false);
        fixture.widget("pushButton_apply")->setEnabled(false);
        chooseEverything(fixture);
        WidgetRecorder recorder(&fixture.window);
        connect(fixture.port(), &QSerialPort::aboutToClose, &recorder,
                [&recorder] { recorder.note("the port closes"); });
        connect(&fixture.window, &MainWindow::receive_hello_ack, &recorder,
                [&recorder] { recorder.note("receive_hello_ack"); });
        fixture.replyWith(Frames::helloReply());
        fixture.click("pushButton_connect");
        const QStringList changes = recorder.changes();
        QCOMPARE(changes.mid(0, 4),
                 QStringList({"pushButton_connect off", "comboBox_portlist off",
                              "comboBox_baudrate off", "receive_hello_ack"}));
        // The order on the way is that of the reply, which has a test of its own.
        QCOMPARE(changes.mid(changes.indexOf("textEdit_firmware_info = ")),
                 QStringList({"textEdit_firmware_info = ", "pushButton_disconnect on",
                              "tabWidget on", "pushButton_default on", "pushButton_apply on"}));

        chooseEverything(fixture);
        recorder.clear();
        fixture.click("pushButton_disconnect");
        QCOMPARE(recorder.changes(),
                 QStringList({"the port closes", "pushButton_connect on",
                              "pushButton_disconnect off", "comboBox_portlist on",
                              "comboBox_baudrate on", "tabWidget off", "textEdit_device_info = "}));
    }

    void usesTheFixedLineParameters()
    {
        WindowFixture fixture;
        fixture.port()->setBaudRate(9600);
        fixture.port()->setDataBits(QSerialPort::Data7);
        fixture.port()->setParity(QSerialPort::EvenParity);
        fixture.port()->setStopBits(QSerialPort::TwoStop);
        fixture.port()->setFlowControl(QSerialPort::HardwareControl);
        QVERIFY(fixture.connectCamera());
        QCOMPARE("/dev/" + fixture.port()->portName(), fixture.line.portName());
        QCOMPARE(fixture.port()->baudRate(), 115200);
        QCOMPARE(fixture.port()->dataBits(), QSerialPort::Data8);
        QCOMPARE(fixture.port()->parity(), QSerialPort::NoParity);
        QCOMPARE(fixture.port()->stopBits(), QSerialPort::OneStop);
        QCOMPARE(fixture.port()->flowControl(), QSerialPort::NoFlowControl);
        QCOMPARE(fixture.port()->openMode(), QIODevice::ReadWrite);
    }

    void saysWhatItConnectsToBeforeItSends()
    {
        WindowFixture fixture;
        qint64 unsent = -1;
        fixture.log.atStatus = [&](const QString &line) {
            if (line.startsWith("Connected to ")) {
                unsent = fixture.port()->bytesToWrite();
            }
        };
        QVERIFY(fixture.connectCamera());
        fixture.log.atStatus = nullptr;
        QCOMPARE(unsent, 0);
    }

    void takesEverythingThatHasArrivedAtOnce_data()
    {
        addRows<int>({"size"}, {{"200 bytes", 200}, {"5,000 bytes", 5000}, {"9,000 bytes", 9000}});
    }

    void takesEverythingThatHasArrivedAtOnce()
    {
        QFETCH(int, size);
        WindowFixture fixture;
        QVERIFY(fixture.connectCamera());
        const QByteArray frame = Frames::rebootAcknowledgement();
        const int count = size / frame.size();
        const QByteArray burst = QByteArray(size % frame.size(), 'x') + frame.repeated(count);
        {
            // Until all of it is there.
            const QSignalBlocker blocker(fixture.port());
            constexpr int kPiece = 2000;
            for (int sent = 0; sent < size; sent += kPiece) {
                fixture.line.send(burst.mid(sent, kPiece));
                QTRY_COMPARE(fixture.port()->bytesAvailable(), qMin(sent + kPiece, size));
            }
        }
        QVERIFY(QMetaObject::invokeMethod(fixture.port(), "readyRead"));
        QCOMPARE(fixture.port()->bytesAvailable(), 0);
        QTRY_COMPARE(fixture.log.statusTexts().filter("REBOOT").size(), count);
    }

    void bytesThatWaitedForThePortAreTaken()
    {
        WindowFixture fixture;
        fixture.line.send(Frames::rebootAcknowledgement());
        fixture.replyWith(Frames::helloReply());
        fixture.click("pushButton_connect");
        QVERIFY(fixture.isEnabled("tabWidget"));
        QStringList taken{"UART_CTRL_CMD_REBOOT Received", "UART_CTRL_CMD_HELLO Received"};
        if (QLibraryInfo::version() >= QVersionNumber(6, 8)) {
            taken.removeFirst(); // which empties a port as it opens it
        }
        QCOMPARE(fixture.log.statusTexts().filter("_CMD_"), taken);
    }

    void setsTheLineParametersInOrderBeforeItOpens()
    {
        WindowFixture fixture;
        QSerialPort *const port = fixture.port();
        port->setBaudRate(9600);
        port->setDataBits(QSerialPort::Data7);
        port->setParity(QSerialPort::EvenParity);
        port->setStopBits(QSerialPort::TwoStop);
        port->setFlowControl(QSerialPort::HardwareControl);
        QStringList changes;
        const auto note = [&fixture, port, &changes](const QString &what) {
            const bool hasName = "/dev/" + port->portName() == fixture.line.portName();
            changes << what + (hasName && !port->isOpen() ? "" : " out of turn");
        };
        connect(port, &QSerialPort::baudRateChanged, port, [note] { note("baud rate"); });
        connect(port, &QSerialPort::dataBitsChanged, port, [note] { note("data bits"); });
        connect(port, &QSerialPort::parityChanged, port, [note] { note("parity"); });
        connect(port, &QSerialPort::stopBitsChanged, port, [note] { note("stop bits"); });
        connect(port, &QSerialPort::flowControlChanged, port, [note] { note("flow control"); });
        QVERIFY(fixture.connectCamera());
        QCOMPARE(changes,
                 QStringList({"baud rate", "data bits", "parity", "stop bits", "flow control"}));
    }

    void connectsOn_data()
    {
        QTest::addColumn<QList<QByteArray>>("pieces");

        const QByteArray reply = Frames::helloReply();
        QList<QByteArray> bytes;
        for (const char byte : reply) {
            bytes << QByteArray(1, byte);
        }
        QTest::newRow("a reply at once") << QList<QByteArray>{reply};
        QTest::newRow("a reply in pieces of one byte") << bytes;
        QTest::newRow("two replies at once") << QList<QByteArray>{reply + reply};
        QTest::newRow("a reply after noise")
            << QList<QByteArray>{QByteArray::fromHex("00ff41"), reply};
        QTest::newRow("a good reply after one with a wrong checksum")
            << QList<QByteArray>{reply.chopped(1) + '\x00', reply};
    }

    void connectsOn()
    {
        QFETCH(QList<QByteArray>, pieces);
        WindowFixture fixture;
        int afterMs = 0;
        for (const QByteArray &piece : std::as_const(pieces)) {
            QTimer::singleShot(afterMs, &fixture.line,
                               [&fixture, piece] { fixture.line.send(piece); });
            afterMs += 5;
        }
        fixture.click("pushButton_connect");
        QCOMPARE(fixture.dialogs.texts(), QStringList());
        QVERIFY(fixture.isEnabled("tabWidget"));
        QCOMPARE(fixture.text("textEdit_device_info"), QString("Device Version: 1.0.a.10"));
    }

    void failsAfterTheLimitOn_data()
    {
        // of the log, before the limit passes

        const QByteArray reply = Frames::helloReply();
        addRows<QByteArray, QString>(
            {"reply", "lastLine"},
            {{"no reply", QByteArray(), QString()},
             {"a reply with a wrong checksum", reply.chopped(1) + '\x00', "Checksum Error 180"},
             {"a reply that is cut short", reply.left(20), "data_step_head_ready: length = 23"},
             {"a reply to something else", Frames::settingsAcknowledgement(),
              "UART_CTRL_CMD_CUSTOM_SETTING Received"},
             {"its own request, as an echo", Frames::helloRequest(), "AnalyzeReceiveData 12"}});
    }

    void failsAfterTheLimitOn()
    {
        QFETCH(QByteArray, reply);
        QFETCH(QString, lastLine);
        WindowFixture fixture;
        fixture.replyWith(reply);
        fixture.letLimitPassAfter(lastLine.isEmpty() ? "Connected to " + fixture.line.portName()
                                                     : lastLine);
        chooseEverything(fixture);
        WidgetRecorder recorder(&fixture.window);
        fixture.click("pushButton_connect");

        QStringList changes = recorder.changes();
        if (changes.removeAll("textEdit_device_info = Device Version: ") > 0) {
            changes.removeOne("textEdit_device_info = ");
        }
        QCOMPARE(
            changes,
            QStringList({"pushButton_connect off", "comboBox_portlist off", "comboBox_baudrate off",
                         "pushButton_connect on", "comboBox_portlist on", "comboBox_baudrate on",
                         "textEdit_device_info = "}));

        QCOMPARE(fixture.dialogs.texts(), QStringList{kFail});
        QCOMPARE(fixture.dialogs.seen().constFirst().icon, QMessageBox::Critical);
        QCOMPARE(fixture.dialogs.seen().constFirst().buttons, QMessageBox::Ok);
        QCOMPARE(fixture.log.statusTexts().constFirst(), "Connected to " + fixture.line.portName());
        QCOMPARE(fixture.log.statusTexts().constLast(), QString("Disconnected"));
        QVERIFY(!fixture.port()->isOpen());
        QVERIFY(fixture.isEnabled("pushButton_connect"));
        QVERIFY(!fixture.isEnabled("pushButton_disconnect"));
        QVERIFY(fixture.isEnabled("comboBox_portlist"));
        QVERIFY(fixture.isEnabled("comboBox_baudrate"));
        QVERIFY(!fixture.isEnabled("tabWidget"));
    }

    void aReplyBehindTheTimeOutIsShownUntilTheBoxIsClosed()
    {
        WindowFixture fixture(false);
        QString paneWhileOpen;
        QTimer afterBox;
        connect(&afterBox, &QTimer::timeout, &afterBox, [&] {
            if (!fixture.dialogs.isOpen()) {
                return;
            }
            if (fixture.text("textEdit_device_info").isEmpty()) {
                if (!fixture.log.texts().contains("data_step_head_ready: length = 23")) {
                    fixture.line.send(Frames::helloReply());
                }
                return;
            }
            paneWhileOpen = fixture.text("textEdit_device_info");
            fixture.dialogs.answer();
        });
        afterBox.start(100);
        fixture.letLimitPass();
        fixture.click("pushButton_connect");
        QCOMPARE(fixture.dialogs.texts(), QStringList{kFail});
        QCOMPARE(paneWhileOpen, QString("Device Version: 1.0.a.10"));
        QCOMPARE(fixture.text("textEdit_device_info"), QString());
        QVERIFY(!fixture.isEnabled("tabWidget"));
    }

    void aPortThatCannotBeOpenedIsReported_data()
    {
        QTest::addColumn<QString>("item");
        QTest::addColumn<QString>("text");

        // Opening a port locks its name for the whole machine. Only a name that no one else tries
        // gives the same text every time.
        QTest::newRow("no such device")
            << QStringLiteral("/dev/no-port-%1 (test)").arg(QCoreApplication::applicationPid())
            << "No such file or directory";
        QTest::newRow("no name, as with an empty list") << "" << QString();
        QTest::newRow("not a terminal") << "/dev/null (test)" << QString();
    }

    void aPortThatCannotBeOpenedIsReported()
    {
        QFETCH(QString, item);
        WindowFixture fixture;
        fixture.choosePort(item);
        chooseEverything(fixture);
        WidgetRecorder recorder(&fixture.window);
        fixture.log.clear();
        fixture.click("pushButton_connect");

        QFETCH(QString, text);
        if (!text.isNull()) {
            QCOMPARE(fixture.port()->errorString(), text);
        }
        QVERIFY(!fixture.port()->errorString().isEmpty());
        QCOMPARE(fixture.dialogs.texts(), QStringList{"Error: " + fixture.port()->errorString()});
        QCOMPARE(fixture.dialogs.seen().constFirst().icon, QMessageBox::Critical);
        QCOMPARE(fixture.dialogs.seen().constFirst().buttons, QMessageBox::Ok);
        // No "Disconnected": nothing was connected.
        QCOMPARE(fixture.log.statusTexts(), QStringList{"Open error"});
        QCOMPARE(
            recorder.changes(),
            QStringList({"pushButton_connect off", "comboBox_portlist off", "comboBox_baudrate off",
                         "pushButton_connect on", "comboBox_portlist on", "comboBox_baudrate on",
                         "textEdit_device_info = "}));
        QVERIFY(!fixture.port()->isOpen());
    }

    void saysThatAPortDoesNotOpenBehindTheBox()
    {
        WindowFixture fixture(false);
        fixture.choosePort("/dev/null (test)");
        QStringList saidAtTheBox{"no box"};
        QTimer poll;
        connect(&poll, &QTimer::timeout, &poll, [&] {
            if (fixture.dialogs.isOpen()) {
                saidAtTheBox = fixture.log.statusTexts();
                fixture.dialogs.answer();
            }
        });
        poll.start(0);
        fixture.log.clear();
        fixture.click("pushButton_connect");
        QCOMPARE(saidAtTheBox, QStringList());
        QCOMPARE(fixture.log.statusTexts(), QStringList{"Open error"});
    }

    void saysThatAPortDoesNotOpenBeforeItReturnsToTheStart()
    {
        QStringList said; // outlives the window, which clears its panes at its end
        WindowFixture fixture;
        fixture.choosePort("/dev/null (test)");
        auto *const pane = fixture.child<QTextEdit>("textEdit_device_info");
        pane->setPlainText("from before");
        connect(pane, &QTextEdit::textChanged, pane,
                [log = &fixture.log, to = &said] { *to = log->statusTexts(); });
        fixture.log.clear();
        fixture.click("pushButton_connect");
        QCOMPARE(said, QStringList{"Open error"});
    }

    void disconnectReturnsToTheStart()
    {
        WindowFixture fixture;
        QVERIFY(fixture.connectCamera());
        fixture.widget("pushButton_apply")->setEnabled(false);
        fixture.child<QTextEdit>("textEdit_firmware_info")->setPlainText("stays");
        fixture.click("pushButton_disconnect");
        QCOMPARE(fixture.log.texts(), QStringList{"Disconnected"});
        QVERIFY(!fixture.port()->isOpen());
        QVERIFY(fixture.isEnabled("pushButton_connect"));
        QVERIFY(!fixture.isEnabled("pushButton_disconnect"));
        QVERIFY(!fixture.isEnabled("tabWidget"));
        QCOMPARE(fixture.text("textEdit_firmware_info"), QString("stays"));
        fixture.widget("tabWidget")->setEnabled(true);
        QVERIFY(fixture.isEnabled("pushButton_default"));
        QVERIFY(!fixture.isEnabled("pushButton_apply"));
        fixture.widget("tabWidget")->setEnabled(false);

        QVERIFY(fixture.connectCamera());
    }

    void disconnectReturnsToTheStartBeforeItSaysSo()
    {
        QStringList said{
            "nothing cleared"}; // outlives the window, which clears its panes at its end
        WindowFixture fixture;
        QVERIFY(fixture.connectCamera());
        auto *const pane = fixture.child<QTextEdit>("textEdit_device_info");
        connect(pane, &QTextEdit::textChanged, pane,
                [log = &fixture.log, to = &said] { *to = log->statusTexts(); });
        fixture.click("pushButton_disconnect");
        QCOMPARE(said, QStringList());
        QCOMPARE(fixture.log.statusTexts(), QStringList{"Disconnected"});
    }

    void disconnectingWhileDisconnectedIsHarmless()
    {
        WindowFixture fixture;
        WidgetRecorder recorder(&fixture.window);
        fixture.call("on_pushButton_disconnect_clicked");
        QCOMPARE(fixture.log.texts(), QStringList{"Disconnected"});
        // The pane is cleared again.
        QCOMPARE(recorder.changes(), QStringList{"textEdit_device_info = "});
    }

    void everythingButTheSerialControlsIsLiveWhileConnecting()
    {
        WindowFixture fixture;
        QStringList duringWait;
        connect(&fixture.line, &PseudoTerminal::bytesReceived, this, [&] {
            for (const char *name :
                 {"pushButton_connect", "pushButton_disconnect", "comboBox_portlist",
                  "comboBox_baudrate", "tabWidget", "toolButton_about"}) {
                duringWait << name + QString(fixture.widget(name)->isEnabled() ? " on" : " off");
            }
            duringWait << (fixture.port()->isOpen() ? "port open" : "port closed");
            fixture.click("toolButton_about");
        });
        QVERIFY(fixture.connectCamera());
        QCOMPARE(duringWait,
                 QStringList({"pushButton_connect off", "pushButton_disconnect off",
                              "comboBox_portlist off", "comboBox_baudrate off", "tabWidget off",
                              "toolButton_about on", "port open"}));
        QCOMPARE(fixture.dialogs.texts(), QStringList{"about: Corvane: Version 1.0.0.5"});
    }

    void aPartialFrameSurvivesAReconnect()
    {
        WindowFixture fixture;
        QVERIFY(fixture.connectCamera());
        fixture.line.send(Frames::rebootAcknowledgement().left(8));
        QTRY_VERIFY(fixture.log.texts().contains("data_step_head_ready: length = 10"));
        fixture.click("pushButton_disconnect");

        // The rest of that frame, then the handshake's reply.
        fixture.replyWith(Frames::rebootAcknowledgement().mid(8) + Frames::helloReply());
        fixture.log.clear();
        fixture.click("pushButton_connect");
        const QStringList parserLines = fixture.log.texts().filter("length = ");
        QCOMPARE(parserLines,
                 QStringList({"Analyze Data: length = 10", "data_step_head_ready: length = 23",
                              "Analyze Data: length = 23"}));
        QVERIFY(fixture.log.texts().contains("UART_CTRL_CMD_REBOOT Received"));
        QVERIFY(fixture.isEnabled("tabWidget"));
    }

    void aHungUpLineDisconnects()
    {
        WindowFixture fixture;
        QVERIFY(fixture.connectCamera());
        fixture.line.hangUp();
        QTRY_VERIFY(!fixture.port()->isOpen());
        QCOMPARE(fixture.log.texts(), QStringList{"Disconnected"});
        QVERIFY(fixture.isEnabled("pushButton_connect"));
        QVERIFY(!fixture.isEnabled("tabWidget"));
        QCOMPARE(fixture.dialogs.texts(), QStringList());
    }

    // As when a program ends that has the port as its terminal. The device stays.
    void aLineThatAnotherProgramHangsUpDisconnects()
    {
        WindowFixture fixture;
        QVERIFY(fixture.connectCamera());
        if (!hangUpAsAnotherProgram(fixture.line.portName())) {
            QSKIP("only root can hang up a line that is not its own");
        }
        QTRY_VERIFY(!fixture.port()->isOpen());
        QCOMPARE(fixture.log.texts(), QStringList{"Disconnected"});
        QVERIFY(fixture.isEnabled("pushButton_connect"));
        QCOMPARE(fixture.dialogs.texts(), QStringList());
    }

    void onlyAReadErrorMakesALineShowThatItIsGone_data()
    {
        QTest::addColumn<QSerialPort::SerialPortError>("error");
        QTest::addColumn<bool>("disconnects");
        QTest::newRow("read error") << QSerialPort::ReadError << true;
        QTest::newRow("no error") << QSerialPort::NoError << false;
        QTest::newRow("write error") << QSerialPort::WriteError << false;
        QTest::newRow("time-out") << QSerialPort::TimeoutError << false;
        QTest::newRow("unknown error") << QSerialPort::UnknownError << false;
    }

    // No event loop runs between, so the port itself has not noticed yet.
    void onlyAReadErrorMakesALineShowThatItIsGone()
    {
        QFETCH(QSerialPort::SerialPortError, error);
        WindowFixture fixture;
        QVERIFY(fixture.connectCamera());
        QVERIFY(fixture.raise(error));
        fixture.line.hangUp();
        QVERIFY(fixture.port()->isOpen());
        QVERIFY(fixture.raise(error));
        QTEST(!fixture.port()->isOpen(), "disconnects");
        QTEST(fixture.log.statusTexts().contains("Disconnected"), "disconnects");
    }

    void aLineThatHangsUpDuringTheHandshakeDisconnectsTwice()
    {
        WindowFixture fixture;
        connect(&fixture.line, &PseudoTerminal::bytesReceived, &fixture.line,
                &PseudoTerminal::hangUp);
        fixture.letLimitPassAfter("Disconnected");
        fixture.click("pushButton_connect");
        QCOMPARE(fixture.dialogs.texts(), QStringList{kFail});
        QCOMPARE(fixture.log.statusTexts(),
                 QStringList(
                     {"Connected to " + fixture.line.portName(), "Disconnected", "Disconnected"}));
        QVERIFY(fixture.isEnabled("pushButton_connect"));
    }

    void otherErrorsChangeNothing_data()
    {
        QTest::addColumn<QSerialPort::SerialPortError>("error");
        QTest::newRow("none") << QSerialPort::NoError;
        QTest::newRow("device not found") << QSerialPort::DeviceNotFoundError;
        QTest::newRow("permission") << QSerialPort::PermissionError;
        QTest::newRow("open") << QSerialPort::OpenError;
        QTest::newRow("write") << QSerialPort::WriteError;
        QTest::newRow("read") << QSerialPort::ReadError;
        QTest::newRow("unsupported") << QSerialPort::UnsupportedOperationError;
        QTest::newRow("unknown") << QSerialPort::UnknownError;
        QTest::newRow("timeout") << QSerialPort::TimeoutError;
        QTest::newRow("not open") << QSerialPort::NotOpenError;
    }

    void otherErrorsChangeNothing()
    {
        QFETCH(QSerialPort::SerialPortError, error);
        WindowFixture fixture;
        QVERIFY(fixture.connectCamera());
        WidgetRecorder recorder(&fixture.window);
        QVERIFY(fixture.raise(error));
        QVERIFY(fixture.port()->isOpen());
        QCOMPARE(recorder.changes(), QStringList());
        QCOMPARE(fixture.log.texts(), QStringList());
        QCOMPARE(fixture.dialogs.texts(), QStringList());
    }

    void aResourceErrorDisconnects()
    {
        WindowFixture fixture;
        QVERIFY(fixture.connectCamera());
        QVERIFY(fixture.raise(QSerialPort::ResourceError));
        QVERIFY(!fixture.port()->isOpen());
        QVERIFY(!fixture.isEnabled("tabWidget"));
        QCOMPARE(fixture.log.texts(), QStringList{"Disconnected"});
    }

    void closingTheWindowWhileConnectingEndsTheProgram()
    {
        WindowFixture fixture;
        fixture.window.show();
        QTimer::singleShot(0, &fixture.window, [&fixture] { fixture.click("pushButton_connect"); });
        connect(&fixture.line, &PseudoTerminal::bytesReceived, &fixture.window, &QWidget::close);
        QApplication::exec();
        QCOMPARE(fixture.dialogs.texts(), QStringList());
        QCOMPARE(fixture.log.statusTexts(), QStringList{"Connected to " + fixture.line.portName()});
        QVERIFY(!fixture.isEnabled("tabWidget"));
        QVERIFY(!fixture.isEnabled("pushButton_disconnect"));
    }
};

QTEST_MAIN(MainWindowConnectionTest)
#include "tst_mainwindowconnection.moc"
