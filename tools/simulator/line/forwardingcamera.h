// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "cameraend.h"
#include "exchangelog.h"
#include "linemonitor.h"

#include <QByteArray>
#include <QSerialPort>
#include <QString>
#include <QTimer>

#include <memory>

class CameraLine;

/// Stands for a camera at a real serial port: passes on what comes from either side.
///
/// When the port fails, because its adapter has been pulled out, the line is unplugged. The port is
/// then tried again and again, and the line is plugged once it can be opened.
class ForwardingCamera : public CameraEnd {
    Q_OBJECT

public:
    /// Opens a serial port as the camera has it: 115200 baud, 8N1, no flow control.
    /// @param name   such as ttyUSB0, or the path of a device
    /// @param error  set to the reason when the result is null; not null
    static std::unique_ptr<QSerialPort> openPort(const QString &name, QString *error);

    /// @param port  open, as openPort() delivers it
    /// @param line  not owned, must outlive this object
    ForwardingCamera(std::unique_ptr<QSerialPort> port, const ExchangeLog &log, CameraLine &line,
                     QObject *parent = nullptr);

    void lineLost() override;

private:
    void toCamera(const QByteArray &bytes);
    void toHost();
    void portFailed(QSerialPort::SerialPortError error);
    void openAgain();

    std::unique_ptr<QSerialPort> m_port;
    LineMonitor m_monitor;
    CameraLine &m_line;
    QTimer m_openTimer; ///< runs while the port is closed
};
