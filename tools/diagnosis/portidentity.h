// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>
#include <QVector>

/// What a port and its adapter say of themselves. Empty is what is not known.
struct PortIdentity {
    QString port;         ///< such as ttyUSB0
    QString description;  ///< as in Corvane's list
    QString usbNumbers;   ///< of the vendor and the product, such as 0403:6001
    QString serialNumber; ///< of the adapter
    QString manufacturer; ///< likewise
    QString driver;       ///< in the kernel
    QString byIdName;     ///< its link in /dev/serial/by-id, which stays the same
    QString usbPath;      ///< where it is plugged in, such as 1-1.2
};

/// Of all ports that Corvane lists.
QVector<PortIdentity> portIdentities();

/// Of the port that is opened by that name or path; if it is not listed, no more than its name in
/// /dev.
PortIdentity identityOf(const QString &port);

/// In one line, such as "ttyUSB0 (USB Serial): USB 0403:6001, driver ftdi_sio".
QString identityText(const PortIdentity &identity);
