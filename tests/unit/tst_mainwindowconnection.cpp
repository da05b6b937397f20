// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "patience.h"
#include "widgetrecorder.h"
#include "windowonline.h"

namespace {

const char *const kFail = "Error: Connection fail!";

} // namespace

class MainWindowConnectionTest : public QObject {
    Q_OBJECT

private slots:
    void aCameraThatAnswersIsConnected();
    void widgetsChangeInOrder();
    void usesTheFixedLineParameters();
    void setsTheLineParametersInOrderBeforeItOpens();
    void connectsOn_data();
    void connectsOn();
    void failsAfterTheLimitOn_data();
    void failsAfterTheLimitOn();
    void aReplyBehindTheTimeOutIsShownUntilTheBoxIsClosed();
    void aPortThatCannotBeOpenedIsReported_data();
    void aPortThatCannotBeOpenedIsReported();
    void saysThatAPortDoesNotOpenBehindTheBox();
    void saysThatAPortDoesNotOpenBeforeItReturnsToTheStart();
    void disconnectReturnsToTheStart();
    void disconnectReturnsToTheStartBeforeItSaysSo();
    void disconnectingWhileDisconnectedIsHarmless();
    void everythingButTheSerialControlsIsLiveWhileConnecting();
    void aPartialFrameSurvivesAReconnect();
    void aHungUpLineDisconnects();
    void onlyAReadErrorMakesALineShowThatItIsGone_data();
    void onlyAReadErrorMakesALineShowThatItIsGone();
    void aLineThatHangsUpDuringTheHandshakeDisconnectsTwice();
    void otherErrorsChangeNothing_data();
    void otherErrorsChangeNothing();
    void aResourceErrorDisconnects();
    void closingTheWindowWhileConnectingEndsTheProgram();
};

void MainWindowConnectionTest::aCameraThatAnswersIsConnected()
{
    WindowOnLine desk;
    desk.child<QTextEdit>("textEdit_firmware_info")->setPlainText("from before");
    desk.replyWith(WindowOnLine::helloReply());
    desk.click("pushButton_connect");

    QCOMPARE(desk.line.received().toHex(), WindowOnLine::helloRequest().toHex());
    QCOMPARE(desk.dialogs.texts(), QStringList());
    QCOMPARE(
        desk.log.texts(),
        QStringList({"Connected to " + desk.line.portName(), "data_step_head_ready: length = 23",
                     "Analyze Data: length = 23", "AnalyzeReceiveData 25",
                     "UART_COMM_TYPE_ACK Received", "UART_CTRL_CMD_HELLO Received",
                     "ClientVersion: 1.0.a.10", "3.1.1.1.0.0.3"}));
    QVERIFY(desk.port()->isOpen());
    QVERIFY(!desk.widget("pushButton_connect")->isEnabled());
    QVERIFY(desk.widget("pushButton_disconnect")->isEnabled());
    QVERIFY(!desk.widget("comboBox_portlist")->isEnabled());
    QVERIFY(!desk.widget("comboBox_baudrate")->isEnabled());
    QVERIFY(desk.widget("tabWidget")->isEnabled());
    QVERIFY(desk.widget("pushButton_default")->isEnabled());
    QVERIFY(desk.widget("pushButton_apply")->isEnabled());
    QCOMPARE(desk.text("textEdit_device_info"), QString("Device Version: 1.0.a.10"));
    QCOMPARE(desk.text("textEdit_firmware_info"), QString());
}

void MainWindowConnectionTest::widgetsChangeInOrder()
{
    WindowOnLine desk;
    desk.widget("pushButton_default")->setEnabled(false);
    desk.widget("pushButton_apply")->setEnabled(false);
    desk.child<QTextEdit>("textEdit_firmware_info")->setPlainText("from before");
    WidgetRecorder recorder(&desk.window);
    connect(desk.port(), &QSerialPort::aboutToClose, &recorder,
            [&recorder] { recorder.note("the port closes"); });
    connect(&desk.window, &MainWindow::receive_hello_ack, &recorder,
            [&recorder] { recorder.note("receive_hello_ack"); });
    desk.replyWith(WindowOnLine::helloReply());
    desk.click("pushButton_connect");
    const QStringList changes = recorder.changes();
    QCOMPARE(changes.mid(0, 4),
             QStringList({"pushButton_connect off", "comboBox_portlist off",
                          "comboBox_baudrate off", "receive_hello_ack"}));
    // The order on the way is that of the reply, which has a test of its own.
    QCOMPARE(changes.mid(changes.indexOf("textEdit_firmware_info = ")),
             QStringList({"textEdit_firmware_info = ", "pushButton_disconnect on", "tabWidget on",
                          "pushButton_default on", "pushButton_apply on"}));

    recorder.clear();
    desk.click("pushButton_disconnect");
    QCOMPARE(recorder.changes(),
             QStringList({"the port closes", "pushButton_connect on", "pushButton_disconnect off",
                          "comboBox_portlist on", "comboBox_baudrate on", "tabWidget off",
                          "textEdit_device_info = "}));
}

void MainWindowConnectionTest::usesTheFixedLineParameters()
{
    WindowOnLine desk;
    desk.port()->setBaudRate(9600);
    desk.port()->setDataBits(QSerialPort::Data7);
    desk.port()->setParity(QSerialPort::EvenParity);
    desk.port()->setStopBits(QSerialPort::TwoStop);
    desk.port()->setFlowControl(QSerialPort::HardwareControl);
    QVERIFY(desk.connectCamera());
    QCOMPARE("/dev/" + desk.port()->portName(), desk.line.portName());
    QCOMPARE(desk.port()->baudRate(), 115200);
    QCOMPARE(desk.port()->dataBits(), QSerialPort::Data8);
    QCOMPARE(desk.port()->parity(), QSerialPort::NoParity);
    QCOMPARE(desk.port()->stopBits(), QSerialPort::OneStop);
    QCOMPARE(desk.port()->flowControl(), QSerialPort::NoFlowControl);
}

void MainWindowConnectionTest::setsTheLineParametersInOrderBeforeItOpens()
{
    WindowOnLine desk;
    QSerialPort *const port = desk.port();
    port->setBaudRate(9600);
    port->setDataBits(QSerialPort::Data7);
    port->setParity(QSerialPort::EvenParity);
    port->setStopBits(QSerialPort::TwoStop);
    port->setFlowControl(QSerialPort::HardwareControl);
    QStringList changes;
    const auto note = [&desk, port, &changes](const QString &what) {
        const bool hasName = "/dev/" + port->portName() == desk.line.portName();
        changes << what + (hasName && !port->isOpen() ? "" : " out of turn");
    };
    connect(port, &QSerialPort::baudRateChanged, port, [note] { note("baud rate"); });
    connect(port, &QSerialPort::dataBitsChanged, port, [note] { note("data bits"); });
    connect(port, &QSerialPort::parityChanged, port, [note] { note("parity"); });
    connect(port, &QSerialPort::stopBitsChanged, port, [note] { note("stop bits"); });
    connect(port, &QSerialPort::flowControlChanged, port, [note] { note("flow control"); });
    QVERIFY(desk.connectCamera());
    QCOMPARE(changes,
             QStringList({"baud rate", "data bits", "parity", "stop bits", "flow control"}));
}

void MainWindowConnectionTest::connectsOn_data()
{
    QTest::addColumn<QList<QByteArray>>("pieces");

    const QByteArray reply = WindowOnLine::helloReply();
    QList<QByteArray> bytes;
    for (const char byte : reply) {
        bytes << QByteArray(1, byte);
    }
    QTest::newRow("a reply at once") << QList<QByteArray>{reply};
    QTest::newRow("a reply in pieces of one byte") << bytes;
    QTest::newRow("two replies at once") << QList<QByteArray>{reply + reply};
    QTest::newRow("a reply behind noise")
        << QList<QByteArray>{QByteArray::fromHex("00ff41"), reply};
    QTest::newRow("a good reply behind one with a wrong checksum")
        << QList<QByteArray>{reply.chopped(1) + '\x00', reply};
}

void MainWindowConnectionTest::connectsOn()
{
    QFETCH(QList<QByteArray>, pieces);
    WindowOnLine desk;
    int afterMs = 0;
    for (const QByteArray &piece : qAsConst(pieces)) {
        QTimer::singleShot(afterMs, &desk.line, [&desk, piece] { desk.line.send(piece); });
        afterMs += 5;
    }
    desk.click("pushButton_connect");
    QCOMPARE(desk.dialogs.texts(), QStringList());
    QVERIFY(desk.widget("tabWidget")->isEnabled());
    QCOMPARE(desk.text("textEdit_device_info"), QString("Device Version: 1.0.a.10"));
}

void MainWindowConnectionTest::failsAfterTheLimitOn_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<QString>("lastLine"); // of the log, before the limit passes

    const QByteArray reply = WindowOnLine::helloReply();
    QTest::newRow("no reply") << QByteArray() << QString();
    QTest::newRow("a reply with a wrong checksum")
        << reply.chopped(1) + '\x00' << "Checksum Error 180";
    QTest::newRow("a reply that is cut short")
        << reply.left(20) << "data_step_head_ready: length = 23";
    QTest::newRow("a reply to something else") << QByteArray::fromHex("ffff0a410106070609055500c2")
                                               << "UART_CTRL_CMD_CUSTOM_SETTING Received";
    QTest::newRow("its own request, as an echo")
        << WindowOnLine::helloRequest() << "AnalyzeReceiveData 12";
}

void MainWindowConnectionTest::failsAfterTheLimitOn()
{
    QFETCH(QByteArray, reply);
    QFETCH(QString, lastLine);
    WindowOnLine desk;
    desk.replyWith(reply);
    desk.letLimitPassAfter(lastLine.isEmpty() ? "Connected to " + desk.line.portName() : lastLine);
    desk.click("pushButton_connect");

    QCOMPARE(desk.dialogs.texts(), QStringList{kFail});
    QCOMPARE(desk.dialogs.seen().constFirst().icon, QMessageBox::Critical);
    QCOMPARE(desk.dialogs.seen().constFirst().buttons, QMessageBox::Ok);
    QVERIFY(desk.dialogs.seen().constFirst().hasParent);
    QCOMPARE(desk.log.statusTexts().constFirst(), "Connected to " + desk.line.portName());
    QCOMPARE(desk.log.statusTexts().constLast(), QString("Disconnected"));
    QVERIFY(!desk.port()->isOpen());
    QVERIFY(desk.widget("pushButton_connect")->isEnabled());
    QVERIFY(!desk.widget("pushButton_disconnect")->isEnabled());
    QVERIFY(desk.widget("comboBox_portlist")->isEnabled());
    QVERIFY(desk.widget("comboBox_baudrate")->isEnabled());
    QVERIFY(!desk.widget("tabWidget")->isEnabled());
}

void MainWindowConnectionTest::aReplyBehindTheTimeOutIsShownUntilTheBoxIsClosed()
{
    WindowOnLine desk(false);
    QString paneWhileOpen;
    QTimer afterBox;
    connect(&afterBox, &QTimer::timeout, &afterBox, [&] {
        if (!desk.dialogs.isOpen()) {
            return;
        }
        if (desk.text("textEdit_device_info").isEmpty()) {
            if (!desk.log.texts().contains("data_step_head_ready: length = 23")) {
                desk.line.send(WindowOnLine::helloReply());
            }
            return;
        }
        paneWhileOpen = desk.text("textEdit_device_info");
        desk.dialogs.answer();
    });
    afterBox.start(100);
    desk.letLimitPass();
    desk.click("pushButton_connect");
    QCOMPARE(desk.dialogs.texts(), QStringList{kFail});
    QCOMPARE(paneWhileOpen, QString("Device Version: 1.0.a.10"));
    QCOMPARE(desk.text("textEdit_device_info"), QString());
    QVERIFY(!desk.widget("tabWidget")->isEnabled());
}

void MainWindowConnectionTest::aPortThatCannotBeOpenedIsReported_data()
{
    QTest::addColumn<QString>("item");
    QTest::addColumn<QString>("text");

    // Opening a port locks its name for the whole machine. Only a name that nobody else tries gives
    // the same text every time.
    QTest::newRow("no such device")
        << QStringLiteral("/dev/no-port-%1 (test)").arg(QCoreApplication::applicationPid())
        << "No such file or directory";
    QTest::newRow("no name, as with an empty list") << "" << QString();
    QTest::newRow("not a terminal") << "/dev/null (test)" << QString();
}

void MainWindowConnectionTest::aPortThatCannotBeOpenedIsReported()
{
    QFETCH(QString, item);
    WindowOnLine desk;
    auto *const ports = desk.combo("comboBox_portlist");
    ports->addItem(item);
    ports->setCurrentIndex(ports->count() - 1);
    desk.child<QTextEdit>("textEdit_device_info")->setPlainText("typed by the operator");
    WidgetRecorder recorder(&desk.window);
    desk.log.clear();
    desk.click("pushButton_connect");

    QFETCH(QString, text);
    if (!text.isNull()) {
        QCOMPARE(desk.port()->errorString(), text);
    }
    QVERIFY(!desk.port()->errorString().isEmpty());
    QCOMPARE(desk.dialogs.texts(), QStringList{"Error: " + desk.port()->errorString()});
    QCOMPARE(desk.dialogs.seen().constFirst().icon, QMessageBox::Critical);
    QCOMPARE(desk.dialogs.seen().constFirst().buttons, QMessageBox::Ok);
    // No "Disconnected": nothing was connected.
    QCOMPARE(desk.log.statusTexts(), QStringList{"Open error"});
    QCOMPARE(recorder.changes(),
             QStringList({"pushButton_connect off", "comboBox_portlist off",
                          "comboBox_baudrate off", "pushButton_connect on", "comboBox_portlist on",
                          "comboBox_baudrate on", "textEdit_device_info = "}));
    QVERIFY(!desk.port()->isOpen());
}

void MainWindowConnectionTest::saysThatAPortDoesNotOpenBehindTheBox()
{
    WindowOnLine desk(false);
    auto *const ports = desk.combo("comboBox_portlist");
    ports->addItem("/dev/null (test)");
    ports->setCurrentIndex(ports->count() - 1);
    QStringList saidAtTheBox{"no box"};
    QTimer poll;
    connect(&poll, &QTimer::timeout, &poll, [&] {
        if (desk.dialogs.isOpen()) {
            saidAtTheBox = desk.log.statusTexts();
            desk.dialogs.answer();
        }
    });
    poll.start(0);
    desk.log.clear();
    desk.click("pushButton_connect");
    QCOMPARE(saidAtTheBox, QStringList());
    QCOMPARE(desk.log.statusTexts(), QStringList{"Open error"});
}

void MainWindowConnectionTest::saysThatAPortDoesNotOpenBeforeItReturnsToTheStart()
{
    QStringList said; // outlives the window, which clears its panes at its end
    WindowOnLine desk;
    auto *const ports = desk.combo("comboBox_portlist");
    ports->addItem("/dev/null (test)");
    ports->setCurrentIndex(ports->count() - 1);
    auto *const pane = desk.child<QTextEdit>("textEdit_device_info");
    pane->setPlainText("from before");
    connect(pane, &QTextEdit::textChanged, pane,
            [log = &desk.log, to = &said] { *to = log->statusTexts(); });
    desk.log.clear();
    desk.click("pushButton_connect");
    QCOMPARE(said, QStringList{"Open error"});
}

void MainWindowConnectionTest::disconnectReturnsToTheStart()
{
    WindowOnLine desk;
    QVERIFY(desk.connectCamera());
    desk.widget("pushButton_apply")->setEnabled(false);
    desk.child<QTextEdit>("textEdit_firmware_info")->setPlainText("stays");
    desk.click("pushButton_disconnect");
    QCOMPARE(desk.log.texts(), QStringList{"Disconnected"});
    QVERIFY(!desk.port()->isOpen());
    QVERIFY(desk.widget("pushButton_connect")->isEnabled());
    QVERIFY(!desk.widget("pushButton_disconnect")->isEnabled());
    QVERIFY(!desk.widget("tabWidget")->isEnabled());
    QCOMPARE(desk.text("textEdit_firmware_info"), QString("stays"));
    desk.widget("tabWidget")->setEnabled(true);
    QVERIFY(desk.widget("pushButton_default")->isEnabled());
    QVERIFY(!desk.widget("pushButton_apply")->isEnabled());
    desk.widget("tabWidget")->setEnabled(false);

    QVERIFY(desk.connectCamera());
}

void MainWindowConnectionTest::disconnectReturnsToTheStartBeforeItSaysSo()
{
    QStringList said{"nothing cleared"}; // outlives the window, which clears its panes at its end
    WindowOnLine desk;
    QVERIFY(desk.connectCamera());
    auto *const pane = desk.child<QTextEdit>("textEdit_device_info");
    connect(pane, &QTextEdit::textChanged, pane,
            [log = &desk.log, to = &said] { *to = log->statusTexts(); });
    desk.click("pushButton_disconnect");
    QCOMPARE(said, QStringList());
    QCOMPARE(desk.log.statusTexts(), QStringList{"Disconnected"});
}

void MainWindowConnectionTest::disconnectingWhileDisconnectedIsHarmless()
{
    WindowOnLine desk;
    WidgetRecorder recorder(&desk.window);
    QVERIFY(QMetaObject::invokeMethod(&desk.window, "on_pushButton_disconnect_clicked"));
    QCOMPARE(desk.log.texts(), QStringList{"Disconnected"});
    // The pane is cleared again.
    QCOMPARE(recorder.changes(), QStringList{"textEdit_device_info = "});
}

void MainWindowConnectionTest::everythingButTheSerialControlsIsLiveWhileConnecting()
{
    WindowOnLine desk;
    QStringList duringWait;
    connect(&desk.line, &PseudoTerminal::bytesReceived, this, [&] {
        for (const char *name : {"pushButton_connect", "pushButton_disconnect", "comboBox_portlist",
                                 "comboBox_baudrate", "tabWidget", "toolButton_about"}) {
            duringWait << name + QString(desk.widget(name)->isEnabled() ? " on" : " off");
        }
        duringWait << (desk.port()->isOpen() ? "port open" : "port closed");
        desk.click("toolButton_about");
    });
    QVERIFY(desk.connectCamera());
    QCOMPARE(duringWait,
             QStringList({"pushButton_connect off", "pushButton_disconnect off",
                          "comboBox_portlist off", "comboBox_baudrate off", "tabWidget off",
                          "toolButton_about on", "port open"}));
    QCOMPARE(desk.dialogs.texts(), QStringList{"about: Corvane: Version 1.0.0.5"});
}

void MainWindowConnectionTest::aPartialFrameSurvivesAReconnect()
{
    WindowOnLine desk;
    QVERIFY(desk.connectCamera());
    desk.line.send(QByteArray::fromHex("ffff0a4101060706"));
    QTRY_VERIFY(desk.log.texts().contains("data_step_head_ready: length = 10"));
    desk.click("pushButton_disconnect");

    // The rest of that frame, then the handshake's reply.
    desk.replyWith(QByteArray::fromHex("09051f008c") + WindowOnLine::helloReply());
    desk.log.clear();
    desk.click("pushButton_connect");
    const QStringList parserLines = desk.log.texts().filter("length = ");
    QCOMPARE(parserLines,
             QStringList({"Analyze Data: length = 10", "data_step_head_ready: length = 23",
                          "Analyze Data: length = 23"}));
    QVERIFY(desk.log.texts().contains("UART_CTRL_CMD_REBOOT Received"));
    QVERIFY(desk.widget("tabWidget")->isEnabled());
}

void MainWindowConnectionTest::aHungUpLineDisconnects()
{
    WindowOnLine desk;
    QVERIFY(desk.connectCamera());
    desk.line.hangUp();
    QTRY_VERIFY(!desk.port()->isOpen());
    QCOMPARE(desk.log.texts(), QStringList{"Disconnected"});
    QVERIFY(desk.widget("pushButton_connect")->isEnabled());
    QVERIFY(!desk.widget("tabWidget")->isEnabled());
    QCOMPARE(desk.dialogs.texts(), QStringList());
}

void MainWindowConnectionTest::onlyAReadErrorMakesALineShowThatItIsGone_data()
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
void MainWindowConnectionTest::onlyAReadErrorMakesALineShowThatItIsGone()
{
    QFETCH(QSerialPort::SerialPortError, error);
    WindowOnLine desk;
    QVERIFY(desk.connectCamera());
    desk.line.hangUp();
    QVERIFY(desk.port()->isOpen());
    QVERIFY(QMetaObject::invokeMethod(desk.port(), "error",
                                      Q_ARG(QSerialPort::SerialPortError, error)));
    QTEST(!desk.port()->isOpen(), "disconnects");
    QTEST(desk.log.statusTexts().contains("Disconnected"), "disconnects");
}

void MainWindowConnectionTest::aLineThatHangsUpDuringTheHandshakeDisconnectsTwice()
{
    WindowOnLine desk;
    connect(&desk.line, &PseudoTerminal::bytesReceived, &desk.line, &PseudoTerminal::hangUp);
    desk.letLimitPassAfter("Disconnected");
    desk.click("pushButton_connect");
    QCOMPARE(desk.dialogs.texts(), QStringList{kFail});
    QCOMPARE(desk.log.statusTexts(),
             QStringList({"Connected to " + desk.line.portName(), "Disconnected", "Disconnected"}));
    QVERIFY(desk.widget("pushButton_connect")->isEnabled());
}

void MainWindowConnectionTest::otherErrorsChangeNothing_data()
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

void MainWindowConnectionTest::otherErrorsChangeNothing()
{
    QFETCH(QSerialPort::SerialPortError, error);
    WindowOnLine desk;
    QVERIFY(desk.connectCamera());
    WidgetRecorder recorder(&desk.window);
    QVERIFY(QMetaObject::invokeMethod(desk.port(), "error",
                                      Q_ARG(QSerialPort::SerialPortError, error)));
    QVERIFY(desk.port()->isOpen());
    QCOMPARE(recorder.changes(), QStringList());
    QCOMPARE(desk.log.texts(), QStringList());
    QCOMPARE(desk.dialogs.texts(), QStringList());
}

void MainWindowConnectionTest::aResourceErrorDisconnects()
{
    WindowOnLine desk;
    QVERIFY(desk.connectCamera());
    QVERIFY(QMetaObject::invokeMethod(
        desk.port(), "error", Q_ARG(QSerialPort::SerialPortError, QSerialPort::ResourceError)));
    QVERIFY(!desk.port()->isOpen());
    QVERIFY(!desk.widget("tabWidget")->isEnabled());
    QCOMPARE(desk.log.texts(), QStringList{"Disconnected"});
}

void MainWindowConnectionTest::closingTheWindowWhileConnectingEndsTheProgram()
{
    WindowOnLine desk;
    desk.window.show();
    QTimer::singleShot(0, &desk.window, [&desk] { desk.click("pushButton_connect"); });
    connect(&desk.line, &PseudoTerminal::bytesReceived, &desk.window, &QWidget::close);
    QApplication::exec();
    QCOMPARE(desk.dialogs.texts(), QStringList());
    QCOMPARE(desk.log.statusTexts(), QStringList{"Connected to " + desk.line.portName()});
    QVERIFY(!desk.widget("tabWidget")->isEnabled());
    QVERIFY(!desk.widget("pushButton_disconnect")->isEnabled());
}

QTEST_MAIN(MainWindowConnectionTest)
#include "tst_mainwindowconnection.moc"
