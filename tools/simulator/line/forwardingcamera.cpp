// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "forwardingcamera.h"

#include "cameraline.h"
#include "hangupdetector.h"

#include <cerrno>
#include <chrono>
#include <utility>

namespace {

constexpr std::chrono::milliseconds kOpenPause(250);

bool openAndEmpty(QSerialPort &port)
{
    // What came before is not for the program that opens the line now.
    if (!port.open(QIODevice::ReadWrite) || !port.clear()) {
        return false;
    }
    new HangUpDetector(&port);
    return true;
}

} // namespace

std::unique_ptr<QSerialPort> ForwardingCamera::openPort(const QString &name, QString *error)
{
    // The other parameters of a QSerialPort are as wanted from the beginning.
    auto port = std::make_unique<QSerialPort>(name);
    port->setBaudRate(QSerialPort::Baud115200);
    if (!openAndEmpty(*port)) {
        const bool isSerial = port->errorString() != qt_error_string(ENOTTY);
        *error =
            QStringLiteral("cannot open %1: %2")
                .arg(name,
                     isSerial ? port->errorString() : QStringLiteral("it is not a serial port"));
        return nullptr;
    }
    return port;
}

ForwardingCamera::ForwardingCamera(std::unique_ptr<QSerialPort> port, const ExchangeLog &log,
                                   CameraLine &line, QObject *parent)
    : CameraEnd(parent)
    , m_port(std::move(port))
    , m_monitor(log)
    , m_line(line)
{
    m_openTimer.setInterval(kOpenPause);
    connect(&m_openTimer, &QTimer::timeout, this, &ForwardingCamera::openAgain);
    connect(&m_monitor, &LineMonitor::logged, this, &CameraEnd::logged);
    connect(&m_line, &CameraLine::bytesReceived, this, &ForwardingCamera::toCamera);
    connect(m_port.get(), &QSerialPort::readyRead, this, &ForwardingCamera::toHost);
    connect(m_port.get(), &QSerialPort::errorOccurred, this, &ForwardingCamera::portFailed);
}

void ForwardingCamera::lineLost()
{
    m_monitor.lineLost();
}

void ForwardingCamera::toCamera(const QByteArray &bytes)
{
    m_monitor.fromHost(bytes);
    if (m_port->isOpen()) {
        m_port->write(bytes);
    }
}

void ForwardingCamera::toHost()
{
    const QByteArray bytes = m_port->readAll();
    m_line.write(bytes);
    m_monitor.fromCamera(bytes);
}

void ForwardingCamera::portFailed(QSerialPort::SerialPortError error)
{
    if (error == QSerialPort::NoError || !m_port->isOpen()) {
        return;
    }
    m_port->close();
    m_openTimer.start();
    emit unplugDue();
}

void ForwardingCamera::openAgain()
{
    if (openAndEmpty(*m_port)) {
        m_openTimer.stop();
        emit plugDue();
    }
}
