// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "line.h"
#include "portfinding.h"

#include <QSerialPort>
#include <QTimer>

/// A line on a serial port: 115200 baud, 8 data bits, no parity, one stop bit, no flow control.
class SerialLine : public Line {
    Q_OBJECT

public:
    explicit SerialLine(const QString &port, QObject *parent = nullptr);

    /// @return what came of it; of the kind Open when it is open
    PortFinding open();

    void write(const QByteArray &bytes) override;
    void setAlarm(std::chrono::milliseconds time) override;
    void stopAlarm() override;

private:
    void fail(QSerialPort::SerialPortError error);

    QString m_name; ///< as given
    QSerialPort m_port;
    QTimer m_alarm;
};
