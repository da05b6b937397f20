// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "acknowledgementwait.h"
#include "parserthread.h"
#include "ringbuffer.h"
#include "uartframe.h"

#include <QMainWindow>
#include <QSerialPort>

class FirmwareImage;
class QLabel;
struct SettingsReport;

namespace Ui {
class MainWindow;
}

/// The one window, and all that an operator can do in it.
///
/// Its slots run on the GUI thread, as does all serial input and output. A slot that needs an
/// answer sends its request, waits in a nested event loop and shows the outcome. Inside that loop,
/// AnalyzeReceiveData() interprets the reply.
class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    /// How the port is opened. Only the name and the baud rate are chosen; the rest is fixed.
    struct Settings {
        QString portName;
        qint32 baudRate = 0; ///< bits per second
        QSerialPort::DataBits dataBits = QSerialPort::Data8;
        QSerialPort::Parity parity = QSerialPort::NoParity;
        QSerialPort::StopBits stopBits = QSerialPort::OneStop;
        QSerialPort::FlowControl flowControl = QSerialPort::NoFlowControl;
        bool spareFlag = false; ///< never read
    };

    explicit MainWindow(QWidget *parent = nullptr);
    ~MainWindow() override;

    /// Builds a frame and queues it on the port; the bytes leave when the event loop runs.
    /// @param type       only its low 8 bits are sent
    /// @param command    a UARTControlCommand
    /// @param parameter  the packet number for UART_CTRL_CMD_UPLOAD_FIRMWARE, otherwise 0
    /// @param payload    copied; may be null only when @p length is 0
    /// @param length     bytes of payload, 0 to 128
    /// @param repeat     how many times the frame is written, 200 ms apart, which blocks the GUI
    ///                   thread; 0 counts as 256
    /// @return 0, or -1 when nothing was written: port closed, payload too long or missing
    int SendUARTCommand(UARTCommunicationType_t type, unsigned char command,
                        unsigned char parameter, unsigned char *payload, unsigned char length,
                        unsigned char repeat);

    /// The one channel for status texts; it ends in the debug log.
    void showStatusMessage(const QString &message);

signals:
    // Each is emitted when the camera acknowledges the request of that name.
    void receive_hello_ack();
    void receive_fw_info_ack(); ///< for a firmware's size and for each of its packets
    void receive_custom_zoom_ack();
    void receive_setting_ack();
    void receive_reboot_ack(); ///< the camera's own report; no slot waits for it

private slots:
    // The form binds its signals to these by name, also to those that do nothing.
    void on_comboBox_portlist_currentIndexChanged(int index);
    void on_comboBox_baudrate_currentIndexChanged(int index);
    void on_pushButton_connect_clicked();
    /// Also the way back to the disconnected state from everywhere else.
    void on_pushButton_disconnect_clicked();
    void on_comboBox_autotracking_currentIndexChanged(int index);
    void on_comboBox_targetmissing_currentIndexChanged(int index);
    void on_radioButton_upright_clicked();
    void on_radioButton_upside_down_clicked();
    void on_comboBox_autozoom_currentIndexChanged(int index);
    void on_comboBox_zoomoffset_currentIndexChanged(int index);
    void on_pushButton_default_clicked();
    void on_pushButton_apply_clicked();
    void on_pushButton_choose_file_clicked();
    void on_lineEdit_firmware_editingFinished();
    void on_pushButton_start_upgrade_clicked();
    void on_pushButton_cancel_upgrade_clicked();
    void on_toolButton_about_clicked();
    void on_toolButton_language_clicked();

    /// Rebuilds the port settings from the two combo boxes.
    void updateSettings();
    /// Disconnects when the device has gone. Any other error is ignored; it ends in a time-out.
    void handleError(QSerialPort::SerialPortError error);
    /// Moves what the port has received into the ring buffer.
    void readData();
    /// Interprets one frame, as ParserThread delivers it. A slot that waits for the signal
    /// continues only after this one has returned, so the reply is shown by then.
    void AnalyzeReceiveData(const QByteArray &receive);

    void on_pushButton_custom_zoom_1_clicked();
    void on_pushButton_custom_zoom_2_clicked();

protected:
    /// Declines while an upgrade is running, which is an addition of our own: a camera with half a
    /// firmware is worse than a window that stays a little longer.
    void closeEvent(QCloseEvent *event) override;

private:
    bool openPort();
    /// Closes the port and puts the widgets into the disconnected state.
    void enterDisconnectedState();
    /// Enables what leads to a connection, or nothing. What needs one is disabled in both cases.
    void setConnectingEnabled(bool isEnabled);
    /// Sends a request once.
    /// @param payload  at most UARTFrame::kMaximumPayloadSize bytes
    void sendRequest(UARTControlCommand command, const QByteArray &payload = {},
                     unsigned char parameter = 0);
    /// Shows @p text in an error box if the wait timed out. @return the outcome
    AcknowledgementWait::Outcome showTimeOut(AcknowledgementWait::Outcome outcome,
                                             const QString &text);
    qint64 writeData(const QByteArray &bytes) { return m_serial->write(bytes); }

    void setCustomZoom(unsigned char preset, const QString &failureText);

    void showSettingsReport(const SettingsReport &report);
    void showCustomZoom(int zoom);
    /// Replaces the firmware pane's text with @p reason and disables the upgrade button.
    void refuseFirmware(const QString &reason);
    void showVersions(const FirmwareImage &image);
    /// Announces the firmware, sends it and shows the outcome.
    /// @param firmware  at most FirmwarePacket::kMaximumFirmwareSize bytes
    /// @return the outcome of the last wait
    AcknowledgementWait::Outcome uploadFirmware(const QByteArray &firmware);
    /// @return the outcome of the last packet's wait
    AcknowledgementWait::Outcome sendPackets(const QByteArray &firmware,
                                             AcknowledgementWait &acknowledgement);

    /// Makes the version the only line in the device information pane.
    void showDeviceVersion();

    Ui::MainWindow *const ui;
    /// Holds the last status message. Never shown, and never deleted, since it has no parent.
    QLabel *m_statusLabel = nullptr;
    Settings m_settings;
    QSerialPort *m_serial = nullptr; ///< child of this window
    RingBuffer m_ringBuffer;         ///< from readData() to the parser thread
    ParserThread m_parser;           ///< destroyed before the ring buffer that it reads
    QString m_deviceVersion;         ///< the last that the camera reported
    QString m_customZoom;            ///< decimal
    /// Guards against a second start, which is an addition of our own: a line that hung up enables
    /// the button again while the first upgrade still waits for its time-out.
    bool m_isUpgrading = false;
};
