// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "hangupdetector.h"

#include <QSocketNotifier>

#include <type_traits>

HangUpDetector::HangUpDetector(QSerialPort *port)
    : QObject(port)
    , m_port(port)
{
    connect(port, serialPortErrorSignal(), SLOT(checkLine(QSerialPort::SerialPortError)));
    connect(port, &QSerialPort::aboutToClose, this, &QObject::deleteLater);
    // The handles of Windows are no descriptors, and cannot be watched.
    if constexpr (std::is_same_v<decltype(port->handle()), int>) {
        // A terminal's only exception is that it has hung up.
        auto *const notifier =
            new QSocketNotifier(qintptr(port->handle()), QSocketNotifier::Exception, this);
        connect(notifier, &QSocketNotifier::activated, this,
                [this] { checkLine(QSerialPort::ReadError); });
        connect(port, &QSerialPort::aboutToClose, notifier,
                [notifier] { notifier->setEnabled(false); });
    }
}

void HangUpDetector::checkLine(QSerialPort::SerialPortError error)
{
    if (error == QSerialPort::ReadError) {
        // A line that has hung up answers any change of its parameters with ResourceError, even a
        // change to what they are. One that has not does not notice.
        m_port->setDataBits(m_port->dataBits());
    }
}
