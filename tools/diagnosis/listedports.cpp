// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "portinspection.h"

#include <QSerialPortInfo>

QStringList listedPorts()
{
    QStringList texts;
    const QList<QSerialPortInfo> ports = QSerialPortInfo::availablePorts();
    for (const QSerialPortInfo &port : ports) {
        texts += port.description().isEmpty()
            ? port.portName()
            : QStringLiteral("%1 (%2)").arg(port.portName(), port.description());
    }
    return texts;
}
