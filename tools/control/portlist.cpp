// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "portlist.h"

#include "portidentity.h"
#include "portinspection.h"

#include <algorithm>
#include <tuple>

QVector<PortDescription> portList()
{
    QVector<PortDescription> ports;
    const QVector<PortIdentity> identities = portIdentities();
    for (const PortIdentity &identity : identities) {
        ports += PortDescription{
            identity.port,
            devicePathOf(identity.port),
            identity.description,
            identity.usbNumbers.section(QLatin1Char(':'), 0, 0),
            identity.usbNumbers.section(QLatin1Char(':'), 1),
            identity.serialNumber,
            identity.byIdName.isEmpty() ? QString()
                                        : QStringLiteral("/dev/serial/by-id/") + identity.byIdName,
        };
    }
    // ttyUSB10 comes after ttyUSB9.
    std::sort(ports.begin(), ports.end(), [](const auto &one, const auto &other) {
        return std::make_tuple(one.name.size(), one.name)
            < std::make_tuple(other.name.size(), other.name);
    });
    return ports;
}
