// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "linelistener.h"

#include "hangupdetector.h"
#include "uartframe.h"

#include <QTimer>

#include <cerrno>

#include <termios.h>

using std::chrono::milliseconds;

namespace {

/// Long enough for whatever else is on its way with an answer, such as noise or a second answer.
constexpr milliseconds kSettlingTime(300);

} // namespace

LineListener::LineListener(QSerialPort &serial, QObject *parent)
    : QObject(parent)
    , m_serial(serial)
{
    connect(&m_serial, &QSerialPort::readyRead, this, &LineListener::take);
    connect(&m_serial, &QSerialPort::errorOccurred, this, &LineListener::fail);
    new HangUpDetector(&m_serial);
}

void LineListener::askAndListen(milliseconds wait)
{
    QTimer::singleShot(wait, Qt::PreciseTimer, &m_loop, &QEventLoop::quit);
    m_clock.start();
    m_serial.write(*UARTFrame::build(UART_COMM_TYPE_REQUEST, UART_CTRL_CMD_HELLO, 0, nullptr, 0));
    if (m_failure.isEmpty()) {
        m_loop.exec();
    }
}

void LineListener::stop()
{
    m_loop.quit();
}

LineRecord LineListener::record() const
{
    return m_observation.record();
}

const QString &LineListener::failure() const
{
    return m_failure;
}

void LineListener::take()
{
    m_observation.take(m_serial.readAll(), milliseconds(m_clock.elapsed()));
    if (m_observation.hasAnswer() && !m_isSettling) {
        m_isSettling = true;
        QTimer::singleShot(kSettlingTime, Qt::PreciseTimer, &m_loop, &QEventLoop::quit);
    }
}

void LineListener::fail(QSerialPort::SerialPortError error)
{
    // ReadError has no reason; the detector makes it a ResourceError, which has.
    if (error == QSerialPort::NoError || error == QSerialPort::ReadError) {
        return;
    }
    termios settings{};
    const bool isHungUp = ::tcgetattr(m_serial.handle(), &settings) != 0;
    if (error == QSerialPort::ResourceError && !isHungUp) {
        m_isReadByOthers = true;
        take(); // which also makes the port listen again
        return;
    }
    // The port's own reason may be that of an earlier call.
    m_failure = isHungUp ? qt_error_string(errno) : m_serial.errorString();
    m_serial.disconnect(this);
    m_loop.quit();
}
