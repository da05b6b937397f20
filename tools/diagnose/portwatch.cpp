// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "portwatch.h"

#include <QSerialPortInfo>
#include <QStringList>
#include <QThread>

#include <utility>

namespace {

QStringList portNames()
{
    QStringList names;
    const QList<QSerialPortInfo> ports = QSerialPortInfo::availablePorts();
    for (const QSerialPortInfo &port : ports) {
        names += port.portName();
    }
    return names;
}

} // namespace

QString portThatAppears()
{
    constexpr unsigned long kPause = 250; // milliseconds
    QStringList known = portNames();
    QStringList before = known;
    for (;;) {
        QThread::msleep(kPause);
        const QStringList now = portNames();
        for (const QString &name : now) {
            // When it is seen for the first time, its rights may not be set yet.
            if (!known.contains(name) && before.contains(name)) {
                return name;
            }
        }
        // One that is pulled out may come back.
        for (const QString &name : std::as_const(before)) {
            if (!now.contains(name)) {
                known.removeAll(name);
            }
        }
        before = now;
    }
}
