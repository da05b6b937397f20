// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QSerialPort>

/// QSerialPort's signal of an error, for a connection by name. Qt 6 has renamed it.
inline const char *serialPortErrorSignal()
{
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
    return SIGNAL(error(QSerialPort::SerialPortError));
#else
    return SIGNAL(errorOccurred(QSerialPort::SerialPortError));
#endif
}

/// Makes a port notice that its line has hung up although its device is back. Addition of our own.
///
/// QSerialPort asks whether the device file still exists. When an adapter was unplugged and plugged
/// in again, it does, so the port repeats ReadError for ever, at full processor load, instead of
/// raising ResourceError. GUI thread only.
class HangUpDetector : public QObject {
    Q_OBJECT

public:
    /// @param port  watched; becomes the parent
    explicit HangUpDetector(QSerialPort *port);

private slots:
    void checkLine(QSerialPort::SerialPortError error);

private:
    QSerialPort *const m_port;
};
