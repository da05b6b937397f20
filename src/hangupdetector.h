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

/// Makes an open port raise ResourceError when its line has hung up. Addition of our own.
///
/// From such a line, QSerialPort reads nothing, again and again at full processor load. In Qt 5 and
/// 6.4 it repeats ReadError meanwhile, in 6.8 it says nothing at all. GUI thread only.
class HangUpDetector : public QObject {
    Q_OBJECT

public:
    /// @param port  open; becomes the parent. The detector deletes itself when the port closes.
    explicit HangUpDetector(QSerialPort *port);

private slots:
    void checkLine(QSerialPort::SerialPortError error);

private:
    QSerialPort *const m_port;
};
