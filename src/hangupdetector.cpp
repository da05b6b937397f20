// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "hangupdetector.h"

HangUpDetector::HangUpDetector(QSerialPort *port)
    : QObject(port)
    , m_port(port)
{
    connect(port, serialPortErrorSignal(), SLOT(checkLine(QSerialPort::SerialPortError)));
}

void HangUpDetector::checkLine(QSerialPort::SerialPortError error)
{
    if (error == QSerialPort::ReadError) {
        // A line that has hung up answers any change of its parameters with ResourceError, even a
        // change to what they are. One that has not does not notice.
        m_port->setDataBits(m_port->dataBits());
    }
}
