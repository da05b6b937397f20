// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "mainwindow.h"

#include "devicereply.h"
#include "firmwareimage.h"
#include "firmwarepacket.h"
#include "hangupdetector.h"
#include "readablelook.h"
#include "requestpayload.h"
#include "resultannouncer.h"
#include "ui_mainwindow.h"
#include "version.h"

#include <QCloseEvent>
#include <QDebug>
#include <QFileDialog>
#include <QLabel>
#include <QMessageBox>
#include <QScopedValueRollback>

using namespace std::chrono_literals;

constexpr unsigned long kRepeatPauseMs = 200;
constexpr auto kReplyLimit = 5000ms;
constexpr auto kCustomZoomLimit = 2000ms;
constexpr auto kPacketLimit = 2000ms;

MainWindow::MainWindow(QWidget *parent)
    : QMainWindow(parent)
    , ui(new Ui::MainWindow)
{
    ui->setupUi(this);
    ui->toolButton_language->hide();
    ui->pushButton_cancel_upgrade->hide();
    ui->comboBox_baudrate->addItem(QStringLiteral("115200"), 115200);
    updateSettings();
    announceResults(this);
    markFocusAndChoice(this);
    fitButtons(this);

    m_statusLabel = new QLabel;
    // Otherwise each status text would be an event to screen readers, which drown in them.
    m_statusLabel->setAccessibleName(QStringLiteral("Status"));
    m_ringBuffer.clear();
    connect(&m_parser, SIGNAL(command(QByteArray)), this, SLOT(AnalyzeReceiveData(QByteArray)));
    m_parser.startParser(&m_ringBuffer);

    m_serial = new QSerialPort(this);
    connect(m_serial, serialPortErrorSignal(), this,
            SLOT(handleError(QSerialPort::SerialPortError)));
    connect(m_serial, SIGNAL(readyRead()), this, SLOT(readData()));
    on_pushButton_disconnect_clicked();
}

MainWindow::~MainWindow()
{
    on_pushButton_disconnect_clicked();
    delete ui;
}

void MainWindow::updateSettings()
{
    Settings settings;
    settings.portName = ui->comboBox_portlist->currentText();
    // Without " (" the position is -1, which leaves an empty name.
    settings.portName.truncate(settings.portName.indexOf(QLatin1String(" (")));
    settings.baudRate = ui->comboBox_baudrate->currentData(Qt::UserRole).toInt();
    m_settings = settings;
}

void MainWindow::on_comboBox_portlist_currentIndexChanged(int /*index*/)
{
    updateSettings();
}

void MainWindow::sendRequest(UARTControlCommand command, const QByteArray &payload,
                             unsigned char parameter)
{
    // SendUARTCommand() only reads the payload, although it does not promise to.
    auto *const bytes = reinterpret_cast<unsigned char *>(const_cast<char *>(payload.constData()));
    // The result is ignored: what was not sent is not acknowledged, and the wait times out.
    SendUARTCommand(UART_COMM_TYPE_REQUEST, command, parameter, bytes,
                    static_cast<unsigned char>(payload.size()), 1);
}

AcknowledgementWait::Outcome MainWindow::showTimeOut(AcknowledgementWait::Outcome outcome,
                                                     const QString &text)
{
    if (outcome == AcknowledgementWait::TimedOut) {
        QMessageBox::critical(this, tr("Error"), text);
    }
    return outcome;
}

void MainWindow::on_pushButton_connect_clicked()
{
    setConnectingEnabled(false);
    if (!openPort()) {
        QMessageBox::critical(this, tr("Error"), m_serial->errorString());
        showStatusMessage(tr("Open error"));
        enterDisconnectedState();
        return;
    }
    // Before the camera has answered: it is the port that is connected to.
    showStatusMessage(QStringLiteral("Connected to %1").arg(m_settings.portName));
    AcknowledgementWait hello(this, SIGNAL(receive_hello_ack()));
    sendRequest(UART_CTRL_CMD_HELLO);
    const auto outcome = showTimeOut(hello.waitFor(kReplyLimit), tr("Connection fail!"));
    if (outcome == AcknowledgementWait::Acknowledged) {
        ui->textEdit_firmware_info->clear();
        ui->pushButton_disconnect->setEnabled(true);
        ui->tabWidget->setEnabled(true);
        ui->pushButton_default->setEnabled(true);
        ui->pushButton_apply->setEnabled(true);
    } else if (outcome == AcknowledgementWait::TimedOut) {
        on_pushButton_disconnect_clicked();
    }
}

bool MainWindow::openPort()
{
    m_serial->setPortName(m_settings.portName);
    m_serial->setBaudRate(m_settings.baudRate, QSerialPort::AllDirections);
    m_serial->setDataBits(m_settings.dataBits);
    m_serial->setParity(m_settings.parity);
    m_serial->setStopBits(m_settings.stopBits);
    m_serial->setFlowControl(m_settings.flowControl);
    if (!m_serial->open(QIODevice::ReadWrite)) {
        return false;
    }
    new HangUpDetector(m_serial);
    return true;
}

void MainWindow::on_pushButton_disconnect_clicked()
{
    enterDisconnectedState();
    showStatusMessage(QStringLiteral("Disconnected"));
}

void MainWindow::enterDisconnectedState()
{
    if (m_serial->isOpen()) {
        m_serial->close();
    }
    setConnectingEnabled(true);
    ui->textEdit_device_info->clear();
}

void MainWindow::setConnectingEnabled(bool isEnabled)
{
    ui->pushButton_connect->setEnabled(isEnabled);
    ui->pushButton_disconnect->setEnabled(false);
    ui->comboBox_portlist->setEnabled(isEnabled);
    ui->comboBox_baudrate->setEnabled(isEnabled);
    ui->tabWidget->setEnabled(false);
}

void MainWindow::handleError(QSerialPort::SerialPortError error)
{
    if (error == QSerialPort::ResourceError) {
        on_pushButton_disconnect_clicked();
    }
}

int MainWindow::SendUARTCommand(UARTCommunicationType_t type, unsigned char command,
                                unsigned char parameter, unsigned char *payload,
                                unsigned char length, unsigned char repeat)
{
    const auto frame = UARTFrame::build(type, command, parameter, payload, length);
    if (!m_serial->isOpen() || !frame) {
        return -1;
    }
    writeData(*frame);
    // Counted down after the write and in 8 bits: 0 wraps to 255, which makes 256 writes.
    while (--repeat != 0) {
        QThread::msleep(kRepeatPauseMs);
        writeData(*frame);
    }
    return 0;
}

void MainWindow::readData()
{
    m_ringBuffer.append(m_serial->readAll());
}

void MainWindow::AnalyzeReceiveData(const QByteArray &receive)
{
    const DeviceReply reply(receive);
    showStatusMessage(QStringLiteral("AnalyzeReceiveData %1").arg(reply.size()));
    if (reply.communicationType() != UART_COMM_TYPE_ACK) {
        return;
    }
    showStatusMessage(QStringLiteral("UART_COMM_TYPE_ACK Received"));
    switch (reply.command()) {
    case UART_CTRL_CMD_UPLOAD_FIRMWARE:
    case UART_CTRL_CMD_RECEIVE_FW_INFO:
        showStatusMessage(QStringLiteral("UART_CTRL_CMD_RECEIVE_FW_INFO Received"));
        emit receive_fw_info_ack();
        break;
    case UART_CTRL_CMD_HELLO:
        emit receive_hello_ack();
        showStatusMessage(QStringLiteral("UART_CTRL_CMD_HELLO Received"));
        showSettingsReport(reply.settings());
        break;
    case UART_CTRL_CMD_REBOOT:
        showStatusMessage(QStringLiteral("UART_CTRL_CMD_REBOOT Received"));
        emit receive_reboot_ack();
        break;
    case UART_CTRL_CMD_SET_CUSTOM_ZOOM:
        emit receive_custom_zoom_ack();
        showCustomZoom(reply.customZoom());
        break;
    case UART_CTRL_CMD_CUSTOM_SETTING:
        emit receive_setting_ack();
        showStatusMessage(QStringLiteral("UART_CTRL_CMD_CUSTOM_SETTING Received"));
        if (reply.hasSettings()) {
            showSettingsReport(reply.settings());
        } else {
            showDeviceVersion();
        }
        break;
    }
}

void MainWindow::showSettingsReport(const SettingsReport &report)
{
    m_deviceVersion = report.version;
    showStatusMessage(QLatin1String("ClientVersion: ") + m_deviceVersion);
    showDeviceVersion();
    showStatusMessage(report.summary());
    ui->comboBox_targetmissing->setCurrentIndex(report.targetMissing);
    (report.isUpsideDown() ? ui->radioButton_upside_down : ui->radioButton_upright)
        ->setChecked(true);
    ui->comboBox_autotracking->setCurrentIndex(report.autoTracking());
    if (report.autoTracking() == 0) {
        // The index may already have been 0, and then the combo box does not signal a change.
        on_comboBox_autotracking_currentIndexChanged(0);
    }
    ui->comboBox_autozoom->setCurrentIndex(report.autoZoom != 0 ? 1 : 0);
    ui->comboBox_zoomoffset->setCurrentIndex(report.zoomOffset);
}

void MainWindow::showCustomZoom(int zoom)
{
    m_customZoom = QString::number(zoom);
    showStatusMessage(QLatin1String("UART_CTRL_CMD_SET_CUSTOM_ZOOM Received ") + m_customZoom);
    showDeviceVersion();
    ui->textEdit_device_info->append(tr("Setting custom zoom: ") + m_customZoom);
}

void MainWindow::showDeviceVersion()
{
    ui->textEdit_device_info->clear();
    ui->textEdit_device_info->append(tr("Device Version: ") + m_deviceVersion);
}

void MainWindow::on_comboBox_autotracking_currentIndexChanged(int index)
{
    const bool isTracking = index != 0;
    ui->comboBox_targetmissing->setEnabled(isTracking);
    ui->comboBox_autozoom->setEnabled(isTracking);
}

void MainWindow::on_comboBox_zoomoffset_currentIndexChanged(int index)
{
    if (index == 3) {
        // "Custom". Nothing else on the page depends on it.
    }
}

void MainWindow::on_pushButton_default_clicked()
{
    ui->comboBox_autotracking->setCurrentIndex(1);
    ui->comboBox_targetmissing->setCurrentIndex(1);
    ui->radioButton_upright->setChecked(true);
    ui->comboBox_autozoom->setCurrentIndex(1);
    ui->comboBox_zoomoffset->setCurrentIndex(1);
}

void MainWindow::on_pushButton_apply_clicked()
{
    const CameraSettings settings{
        ui->comboBox_autotracking->currentIndex(), ui->comboBox_targetmissing->currentIndex(),
        ui->radioButton_upside_down->isChecked(), ui->comboBox_autozoom->currentIndex(),
        ui->comboBox_zoomoffset->currentIndex()};
    sendRequest(UART_CTRL_CMD_CUSTOM_SETTING, cameraSettingsPayload(settings));
    AcknowledgementWait setting(this, SIGNAL(receive_setting_ack()));
    const auto outcome = showTimeOut(setting.waitFor(kReplyLimit), tr("Apply fail!"));
    if (outcome == AcknowledgementWait::Acknowledged) {
        QMessageBox::information(this, tr("Information"), tr("Apply Success."));
    }
}

void MainWindow::on_pushButton_custom_zoom_1_clicked()
{
    setCustomZoom(0, tr("Setting custom zoom 1 failed!"));
}

void MainWindow::on_pushButton_custom_zoom_2_clicked()
{
    setCustomZoom(1, tr("Setting custom zoom 2 failed!"));
}

void MainWindow::setCustomZoom(unsigned char preset, const QString &failureText)
{
    sendRequest(UART_CTRL_CMD_SET_CUSTOM_ZOOM, customZoomPayload(preset));
    AcknowledgementWait customZoom(this, SIGNAL(receive_custom_zoom_ack()));
    if (customZoom.waitFor(kCustomZoomLimit) == AcknowledgementWait::TimedOut) {
        showDeviceVersion();
        ui->textEdit_device_info->append(failureText);
    }
}

void MainWindow::on_pushButton_choose_file_clicked()
{
    const QString path = QFileDialog::getOpenFileName(this, tr("Open File"), QStringLiteral("/"),
                                                      QStringLiteral("firmware files(*.img)"));
    if (!path.isEmpty()) {
        ui->lineEdit_firmware->setText(path);
        // Setting the text does not emit the signal.
        on_lineEdit_firmware_editingFinished();
    }
}

void MainWindow::on_lineEdit_firmware_editingFinished()
{
    const auto image = FirmwareImage::read(ui->lineEdit_firmware->text());
    if (image && image->hasMagic()) {
        showVersions(*image);
        ui->pushButton_start_upgrade->setEnabled(true);
    } else {
        refuseFirmware(image ? tr("Firmware file error.") : QString());
    }
}

void MainWindow::refuseFirmware(const QString &reason)
{
    ui->textEdit_firmware_info->setText(reason);
    ui->pushButton_start_upgrade->setEnabled(false);
}

void MainWindow::showVersions(const FirmwareImage &image)
{
    ui->textEdit_firmware_info->clear();
    ui->textEdit_firmware_info->append(QLatin1String("Protocol version: ")
                                       + image.protocolVersion());
    ui->textEdit_firmware_info->append(QLatin1String("Image version: ") + image.imageVersion());
}

void MainWindow::on_pushButton_start_upgrade_clicked()
{
    if (m_isUpgrading) {
        return;
    }
    // Read again: the file is uploaded as it is now, not as it was when it was chosen.
    const auto image = FirmwareImage::read(ui->lineEdit_firmware->text());
    if (!image) {
        refuseFirmware(QString());
        return;
    }
    const QScopedValueRollback<bool> upgrading(m_isUpgrading, true);
    setConnectingEnabled(false);
    if (!image->hasMagic()) {
        // The file has changed since it was chosen. The controls stay disabled.
        refuseFirmware(tr("Firmware file error."));
        return;
    }
    showVersions(*image);
    ui->textEdit_firmware_info->append(QLatin1String("Current version: ") + m_deviceVersion);
    ui->pushButton_start_upgrade->setEnabled(true);
    const QByteArray firmware = image->firmware();
    showStatusMessage(QStringLiteral("firmware size = %1").arg(firmware.size()));
    if (firmware.size() > FirmwarePacket::kMaximumFirmwareSize) {
        // Addition of our own: 16 MiB and more are refused. The announcement cannot hold the size.
        refuseFirmware(tr("Firmware file error."));
    } else if (uploadFirmware(firmware) == AcknowledgementWait::ProgramEnding) {
        return;
    }
    on_pushButton_disconnect_clicked();
}

AcknowledgementWait::Outcome MainWindow::uploadFirmware(const QByteArray &firmware)
{
    sendRequest(UART_CTRL_CMD_RECEIVE_FW_INFO, firmwareSizePayload(firmware.size()));
    AcknowledgementWait acknowledgement(this, SIGNAL(receive_fw_info_ack()));
    auto outcome = showTimeOut(acknowledgement.waitFor(kReplyLimit), tr("Connection timeout!"));
    if (outcome != AcknowledgementWait::Acknowledged) {
        return outcome;
    }
    outcome = showTimeOut(sendPackets(firmware, acknowledgement), tr("Transmission stop!"));
    if (outcome == AcknowledgementWait::Acknowledged) {
        ui->progressBar_updating->setValue(firmware.size());
        QCoreApplication::processEvents();
        ui->textEdit_firmware_info->clear();
        ui->textEdit_firmware_info->setText(tr("Update is complete. Device auto-rebooting."));
    }
    return outcome;
}

AcknowledgementWait::Outcome MainWindow::sendPackets(const QByteArray &firmware,
                                                     AcknowledgementWait &acknowledgement)
{
    ui->progressBar_updating->setRange(0, firmware.size());
    const int count = FirmwarePacket::count(firmware.size());
    auto outcome = AcknowledgementWait::Acknowledged;
    for (int index = 0; index < count && outcome == AcknowledgementWait::Acknowledged; ++index) {
        showStatusMessage(QStringLiteral("UART_CTRL_CMD_UPLOAD_FIRMWARE %1").arg(index));
        const FirmwarePacket packet = FirmwarePacket::at(index, firmware.size());
        sendRequest(UART_CTRL_CMD_UPLOAD_FIRMWARE,
                    QByteArray::fromRawData(firmware.constData() + packet.offset, packet.length),
                    packet.number);
        ui->progressBar_updating->setValue(packet.offset);
        QCoreApplication::processEvents();
        outcome = acknowledgement.waitFor(kPacketLimit);
    }
    return outcome;
}

void MainWindow::closeEvent(QCloseEvent *event)
{
    event->setAccepted(!m_isUpgrading);
}

// The form binds these by name, and nothing has to happen in them.
void MainWindow::on_comboBox_baudrate_currentIndexChanged(int /*index*/) {}
void MainWindow::on_comboBox_targetmissing_currentIndexChanged(int /*index*/) {}
void MainWindow::on_radioButton_upright_clicked() {}
void MainWindow::on_radioButton_upside_down_clicked() {}
void MainWindow::on_comboBox_autozoom_currentIndexChanged(int /*index*/) {}
void MainWindow::on_pushButton_cancel_upgrade_clicked() {}
void MainWindow::on_toolButton_language_clicked() {}

void MainWindow::on_toolButton_about_clicked()
{
    QMessageBox::about(this, tr("about"),
                       QString::asprintf("Corvane: Version %d.%d.%d.%d", kVersionMajor,
                                         kVersionMinor, kVersionPatch, kVersionTweak));
}

void MainWindow::showStatusMessage(const QString &message)
{
    m_statusLabel->setText(message);
    // Log filters and log readers know status lines by this source location, so it is fixed.
    QMessageLogger("mainwindow", 473, "void MainWindow::showStatusMessage(const QString &)").debug()
        << message;
}
