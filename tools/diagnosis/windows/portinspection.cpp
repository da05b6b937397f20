// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "portinspection.h"

#include "portholders.h"

#include <QSerialPortInfo>

using Kind = PortFinding::Kind;

namespace {

const QString kDevicePrefix = QStringLiteral("\\\\.\\");

QString systemTextOf(const QSerialPort &serial)
{
    switch (serial.error()) {
    case QSerialPort::DeviceNotFoundError:
        return QStringLiteral("there is no such port");
    case QSerialPort::PermissionError:
        // Windows opens a port for one program at a time, and does not say for which.
        return QStringLiteral("it is in use by another program");
    default:
        QString text = serial.errorString();
        if (text.endsWith(QLatin1Char('.'))) {
            text.chop(1); // it becomes a part of a sentence
        }
        return text;
    }
}

} // namespace

QString devicePathOf(const QString &port)
{
    return port.startsWith(kDevicePrefix) ? port : kDevicePrefix + port;
}

PortFinding inspectPort(const QString &port)
{
    PortFinding finding;
    finding.port = port;
    finding.devicePath = devicePathOf(port);
    finding.ports = listedPorts();
    return finding;
}

// The remedies for the other kinds are commands of another system.
void explainFailure(PortFinding *finding, const QSerialPort &serial)
{
    finding->kind = Kind::CannotOpen;
    finding->systemText = systemTextOf(serial);
}

void explainHangUp(PortFinding *finding)
{
    finding->kind = Kind::HungUp;
}

QVector<PortHolder> holdersOfDevice(const QString & /*devicePath*/)
{
    return {};
}

QVector<QVector<PortHolder>> holdersOfDevices(const QStringList &devicePaths)
{
    return QVector<QVector<PortHolder>>(devicePaths.size());
}

QString identityOfDevice(const QString &devicePath)
{
    return devicePath.toUpper(); // com5 is COM5
}

bool readPortLock(const QString & /*devicePath*/, PortLock * /*lock*/)
{
    return false;
}
