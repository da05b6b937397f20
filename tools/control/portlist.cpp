// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "portlist.h"

#include "portholders.h"

#include <QDir>
#include <QHash>
#include <QSerialPortInfo>

#include <algorithm>
#include <tuple>

namespace {

/// The names in /dev/serial/by-id, by the identity of the device that each leads to.
QHash<QString, QString> namesById()
{
    QHash<QString, QString> names;
    const QFileInfoList links =
        QDir(QStringLiteral("/dev/serial/by-id")).entryInfoList(QDir::System | QDir::Files);
    for (const QFileInfo &link : links) {
        names[identityOfDevice(link.filePath())] = link.filePath();
    }
    return names;
}

QString fourDigits(bool isKnown, quint16 number)
{
    constexpr int kHexadecimal = 16;
    return isKnown ? QStringLiteral("%1").arg(number, 4, kHexadecimal, QLatin1Char('0'))
                   : QString();
}

} // namespace

QVector<PortDescription> portList()
{
    const QHash<QString, QString> byId = namesById();
    QVector<PortDescription> ports;
    const QList<QSerialPortInfo> found = QSerialPortInfo::availablePorts();
    for (const QSerialPortInfo &info : found) {
        const QString path = info.systemLocation();
        ports += PortDescription{
            info.portName(),
            path,
            info.description(),
            fourDigits(info.hasVendorIdentifier(), info.vendorIdentifier()),
            fourDigits(info.hasProductIdentifier(), info.productIdentifier()),
            info.serialNumber(),
            byId.value(identityOfDevice(path)),
        };
    }
    // ttyUSB10 comes after ttyUSB9.
    std::sort(ports.begin(), ports.end(), [](const auto &one, const auto &other) {
        return std::make_tuple(one.name.size(), one.name)
            < std::make_tuple(other.name.size(), other.name);
    });
    return ports;
}
