// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "serialline.h"

#include "hangupdetector.h"
#include "portinspection.h"

SerialLine::SerialLine(const QString &port, QObject *parent)
    : Line(parent)
    , m_name(port)
{
    m_port.setPortName(port);
    m_alarm.setSingleShot(true);
    m_alarm.setTimerType(Qt::PreciseTimer);
    connect(&m_alarm, &QTimer::timeout, this, &Line::alarm);
    connect(&m_port, &QSerialPort::readyRead, this, [this] { emit received(m_port.readAll()); });
    connect(&m_port, &QSerialPort::errorOccurred, this, &SerialLine::fail);
}

PortFinding SerialLine::open()
{
    m_port.setBaudRate(QSerialPort::Baud115200, QSerialPort::AllDirections);
    m_port.setDataBits(QSerialPort::Data8);
    m_port.setParity(QSerialPort::NoParity);
    m_port.setStopBits(QSerialPort::OneStop);
    m_port.setFlowControl(QSerialPort::NoFlowControl);
    PortFinding finding;
    {
        const QSignalBlocker blocker(m_port);
        if (m_port.open(QIODevice::ReadWrite)) {
            new HangUpDetector(&m_port);
            finding.port = m_name;
            finding.devicePath = devicePathOf(m_name);
            return finding;
        }
    }
    finding = inspectPort(m_name);
    if (finding.kind == PortFinding::Kind::Open) {
        explainFailure(&finding, m_port);
    }
    return finding;
}

void SerialLine::write(const QByteArray &bytes)
{
    m_port.write(bytes);
}

void SerialLine::setAlarm(std::chrono::milliseconds time)
{
    m_alarm.start(time);
}

void SerialLine::stopAlarm()
{
    m_alarm.stop();
}

void SerialLine::fail(QSerialPort::SerialPortError error)
{
    // ReadError has no reason; the detector makes it a ResourceError, which has.
    if (error == QSerialPort::ReadError || !m_port.isOpen()) {
        return;
    }
    const QString reason = m_port.errorString();
    m_port.close();
    emit lost(reason);
}
