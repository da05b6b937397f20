// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "mainwindow.h"

#include "acknowledgementwait.h"
#include "devicereply.h"
#include "firmwareimage.h"
#include "firmwarepacket.h"
#include "requestpayload.h"
#include "ui_mainwindow.h"
#include "version.h"

#include <QCloseEvent>
#include <QDebug>
#include <QFileDialog>
#include <QLabel>
#include <QMessageBox>
#include <QScopedValueRollback>
#include <QThread>

using namespace std::chrono_literals;

namespace {

constexpr int kBaudRate = 115200;
constexpr unsigned long kRepeatPauseMs = 200;

constexpr auto kReplyLimit = 5000ms;
constexpr auto kCustomZoomLimit = 2000ms;
constexpr auto kPacketLimit = 2000ms;

} // namespace

MainWindow::MainWindow(QWidget *parent)
    : QMainWindow(parent)
    , ui(new Ui::MainWindow)
{
    ui->setupUi(this);
    ui->toolButton_language->hide();
    ui->pushButton_cancel_upgrade->hide();
    ui->comboBox_baudrate->addItem(QStringLiteral("115200"), kBaudRate);
    updateSettings();

    m_statusLabel = new QLabel;

    m_ringBuffer.clear();
    connect(&m_parser, SIGNAL(command(QByteArray)), this, SLOT(AnalyzeReceiveData(QByteArray)));
    m_parser.startParser(&m_ringBuffer);

    m_serial = new QSerialPort(this);
    connect(m_serial, SIGNAL(error(QSerialPort::SerialPortError)), this,
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
    QString portName = ui->comboBox_portlist->currentText();
    // Without " (" the position is -1, which leaves an empty name.
    portName.truncate(portName.indexOf(QLatin1String(" (")));

    m_settings.portName = portName;
    m_settings.baudRate = ui->comboBox_baudrate->currentData(Qt::UserRole).toInt();
    m_settings.dataBits = QSerialPort::Data8;
    m_settings.parity = QSerialPort::NoParity;
    m_settings.stopBits = QSerialPort::OneStop;
    m_settings.flowControl = QSerialPort::NoFlowControl;
    m_settings.spareFlag = false;
}

void MainWindow::on_comboBox_portlist_currentIndexChanged(int index)
{
    Q_UNUSED(index)
    updateSettings();
}

void MainWindow::on_comboBox_baudrate_currentIndexChanged(int index)
{
    Q_UNUSED(index)
}

template <std::size_t Size>
void MainWindow::sendRequest(UARTControlCommand command, std::array<unsigned char, Size> payload)
{
    static_assert(Size <= UARTFrame::kMaximumPayloadSize);
    // Nobody looks at the result: the camera does not acknowledge what was not sent, and the wait
    // for that ends in its time-out.
    SendUARTCommand(UART_COMM_TYPE_REQUEST, command, 0, payload.data(), Size, 1);
}

void MainWindow::on_pushButton_connect_clicked()
{
    ui->pushButton_connect->setEnabled(false);
    ui->comboBox_portlist->setEnabled(false);
    ui->comboBox_baudrate->setEnabled(false);

    if (!openPort()) {
        QMessageBox::critical(this, tr("Error"), m_serial->errorString());
        showStatusMessage(tr("Open error"));
        closePort();
        return;
    }

    // Said before the camera has answered: the port is what was connected to.
    showStatusMessage(QStringLiteral("Connected to %1").arg(m_settings.portName));
    AcknowledgementWait hello(this, SIGNAL(receive_hello_ack()));
    sendRequest(UART_CTRL_CMD_HELLO, std::array<unsigned char, 0>{});
    switch (hello.waitFor(kReplyLimit)) {
    case AcknowledgementWait::Acknowledged:
        ui->textEdit_firmware_info->clear();
        ui->pushButton_disconnect->setEnabled(true);
        ui->tabWidget->setEnabled(true);
        ui->pushButton_default->setEnabled(true);
        ui->pushButton_apply->setEnabled(true);
        break;
    case AcknowledgementWait::TimedOut:
        QMessageBox::critical(this, tr("Error"), tr("Connection fail!"));
        on_pushButton_disconnect_clicked();
        break;
    case AcknowledgementWait::ProgramEnding:
        break;
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
    return m_serial->open(QIODevice::ReadWrite);
}

void MainWindow::on_pushButton_disconnect_clicked()
{
    closePort();
    showStatusMessage(QStringLiteral("Disconnected"));
}

void MainWindow::closePort()
{
    if (m_serial->isOpen()) {
        m_serial->close();
    }
    ui->pushButton_connect->setEnabled(true);
    ui->pushButton_disconnect->setEnabled(false);
    ui->comboBox_portlist->setEnabled(true);
    ui->comboBox_baudrate->setEnabled(true);
    ui->tabWidget->setEnabled(false);
    ui->textEdit_device_info->clear();
}

void MainWindow::handleError(QSerialPort::SerialPortError error)
{
    if (error == QSerialPort::ResourceError) {
        on_pushButton_disconnect_clicked();
    } else if (error == QSerialPort::ReadError && m_serial->isOpen()) {
        // A line that has hung up gives this error again and again, with the processor at full
        // load, and under its name there may be another device by now. It answers any change of
        // its parameters, even to what they are, with the ResourceError that it should have given.
        m_serial->setDataBits(m_settings.dataBits);
    }
}

int MainWindow::SendUARTCommand(UARTCommunicationType_t type, unsigned char command,
                                unsigned char parameter, unsigned char *payload,
                                unsigned char length, unsigned char repeat)
{
    if (!m_serial->isOpen()) {
        return -1;
    }
    const auto frame = UARTFrame::build(type, command, parameter, payload, length);
    if (!frame) {
        return -1;
    }

    writeData(*frame);
    // Counted down behind the write and in 8 bits: 0 wraps to 255 and means 256 writes.
    while (--repeat != 0) {
        QThread::msleep(kRepeatPauseMs);
        writeData(*frame);
    }
    return 0;
}

qint64 MainWindow::writeData(const QByteArray &bytes)
{
    return m_serial->write(bytes);
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

    // Whoever waits for the signal goes on only when this slot has returned, with the reply shown.
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
    default:
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
    QRadioButton *const direction =
        report.isUpsideDown() ? ui->radioButton_upside_down : ui->radioButton_upright;
    direction->setChecked(true);
    ui->comboBox_autotracking->setCurrentIndex(report.autoTracking());
    if (report.autoTracking() == 0) {
        // The index may have been 0 before, and then the combo box does not signal a change.
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

void MainWindow::on_comboBox_targetmissing_currentIndexChanged(int index)
{
    Q_UNUSED(index)
}

void MainWindow::on_radioButton_upright_clicked() {}

void MainWindow::on_radioButton_upside_down_clicked() {}

void MainWindow::on_comboBox_autozoom_currentIndexChanged(int index)
{
    Q_UNUSED(index)
}

void MainWindow::on_comboBox_zoomoffset_currentIndexChanged(int index)
{
    // The place for what "Custom", index 3, may one day need on the page.
    Q_UNUSED(index)
}

void MainWindow::on_pushButton_default_clicked()
{
    ui->comboBox_autotracking->setCurrentIndex(1);
    ui->comboBox_targetmissing->setCurrentIndex(1);
    ui->radioButton_upright->setChecked(true);
    ui->comboBox_autozoom->setCurrentIndex(1);
    ui->comboBox_zoomoffset->setCurrentIndex(1);
}

CameraSettings MainWindow::chosenSettings() const
{
    CameraSettings settings;
    settings.autoTracking = ui->comboBox_autotracking->currentIndex();
    settings.targetMissing = ui->comboBox_targetmissing->currentIndex();
    settings.upsideDown = ui->radioButton_upside_down->isChecked();
    settings.autoZoom = ui->comboBox_autozoom->currentIndex();
    settings.zoomOffset = ui->comboBox_zoomoffset->currentIndex();
    return settings;
}

void MainWindow::on_pushButton_apply_clicked()
{
    sendRequest(UART_CTRL_CMD_CUSTOM_SETTING, cameraSettingsPayload(chosenSettings()));
    AcknowledgementWait setting(this, SIGNAL(receive_setting_ack()));
    switch (setting.waitFor(kReplyLimit)) {
    case AcknowledgementWait::Acknowledged:
        QMessageBox::information(this, tr("Information"), tr("Apply Success."));
        break;
    case AcknowledgementWait::TimedOut:
        QMessageBox::critical(this, tr("Error"), tr("Apply fail!"));
        break;
    case AcknowledgementWait::ProgramEnding:
        break;
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
    if (path.isEmpty()) {
        return;
    }
    ui->lineEdit_firmware->setText(path);
    // Setting the text does not raise the signal.
    on_lineEdit_firmware_editingFinished();
}

void MainWindow::on_lineEdit_firmware_editingFinished()
{
    const auto image = FirmwareImage::read(ui->lineEdit_firmware->text());
    if (!image) {
        refuseFirmware(QString());
    } else if (!image->hasMagic()) {
        refuseFirmware(tr("Firmware file error."));
    } else {
        showVersions(*image);
        ui->pushButton_start_upgrade->setEnabled(true);
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
        // A line that hung up has given the window back, but the upgrade still waits for its end.
        return;
    }
    // Read again: what is uploaded is the file as it is now, not as it was when it was chosen.
    const auto image = FirmwareImage::read(ui->lineEdit_firmware->text());
    if (!image) {
        refuseFirmware(QString());
        return;
    }

    const QScopedValueRollback<bool> upgrading(m_isUpgrading, true);
    ui->pushButton_connect->setEnabled(false);
    ui->pushButton_disconnect->setEnabled(false);
    ui->comboBox_portlist->setEnabled(false);
    ui->comboBox_baudrate->setEnabled(false);
    ui->tabWidget->setEnabled(false);
    if (!image->hasMagic()) {
        // The file has changed under the operator's hands. Everything stays disabled.
        refuseFirmware(tr("Firmware file error."));
        return;
    }
    showVersions(*image);
    ui->textEdit_firmware_info->append(QLatin1String("Current version: ") + m_deviceVersion);
    ui->pushButton_start_upgrade->setEnabled(true);

    QByteArray firmware = image->firmware();
    showStatusMessage(QStringLiteral("firmware size = %1").arg(firmware.size()));
    if (firmware.size() > FirmwarePacket::kMaximumFirmwareSize) {
        refuseFirmware(tr("Firmware file error."));
    } else if (!uploadFirmware(firmware)) {
        return;
    }
    on_pushButton_disconnect_clicked();
}

bool MainWindow::uploadFirmware(QByteArray &firmware)
{
    sendRequest(UART_CTRL_CMD_RECEIVE_FW_INFO, firmwareSizePayload(firmware.size()));
    AcknowledgementWait acknowledgement(this, SIGNAL(receive_fw_info_ack()));
    switch (acknowledgement.waitFor(kReplyLimit)) {
    case AcknowledgementWait::Acknowledged:
        break;
    case AcknowledgementWait::TimedOut:
        QMessageBox::critical(this, tr("Error"), tr("Connection timeout!"));
        return true;
    case AcknowledgementWait::ProgramEnding:
        return false;
    }

    switch (sendPackets(firmware, acknowledgement)) {
    case AcknowledgementWait::Acknowledged:
        ui->progressBar_updating->setValue(firmware.size());
        QCoreApplication::processEvents();
        ui->textEdit_firmware_info->clear();
        ui->textEdit_firmware_info->setText(tr("Update is complete. Device auto-rebooting."));
        return true;
    case AcknowledgementWait::TimedOut:
        QMessageBox::critical(this, tr("Error"), tr("Transmission stop!"));
        return true;
    case AcknowledgementWait::ProgramEnding:
        break;
    }
    return false;
}

AcknowledgementWait::Outcome MainWindow::sendPackets(QByteArray &firmware,
                                                     AcknowledgementWait &acknowledgement)
{
    ui->progressBar_updating->setRange(0, firmware.size());
    auto *const bytes = reinterpret_cast<unsigned char *>(firmware.data());
    const int packetCount = FirmwarePacket::count(firmware.size());
    for (int index = 0; index < packetCount; ++index) {
        showStatusMessage(QStringLiteral("UART_CTRL_CMD_UPLOAD_FIRMWARE %1").arg(index));
        const FirmwarePacket packet = FirmwarePacket::at(index, firmware.size());
        SendUARTCommand(UART_COMM_TYPE_REQUEST, UART_CTRL_CMD_UPLOAD_FIRMWARE, packet.number,
                        bytes + packet.offset, packet.length, 1);
        ui->progressBar_updating->setValue(packet.offset);
        QCoreApplication::processEvents();
        const auto outcome = acknowledgement.waitFor(kPacketLimit);
        if (outcome != AcknowledgementWait::Acknowledged) {
            return outcome;
        }
    }
    return AcknowledgementWait::Acknowledged;
}

void MainWindow::closeEvent(QCloseEvent *event)
{
    // Nothing stops an upgrade that has begun: a camera with half a firmware is worse than a window
    // that stays a little longer.
    event->setAccepted(!m_isUpgrading);
}

void MainWindow::on_pushButton_cancel_upgrade_clicked() {}

void MainWindow::on_toolButton_about_clicked()
{
    QMessageBox::about(this, tr("about"),
                       QString::asprintf("Corvane: Version %d.%d.%d.%d", kVersionMajor,
                                         kVersionMinor, kVersionPatch, kVersionTweak));
}

void MainWindow::on_toolButton_language_clicked() {}

void MainWindow::showStatusMessage(const QString &message)
{
    m_statusLabel->setText(message);
    // Log filters and log readers know status lines by this source location, so it stays the same
    // wherever this function stands.
    QMessageLogger("mainwindow", 473, "void MainWindow::showStatusMessage(const QString &)").debug()
        << message;
}
