// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "portidentity.h"

#include "portinspection.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSerialPortInfo>
#include <QStringList>

#include <sys/stat.h>

namespace {

QString fourDigits(quint16 number)
{
    return QStringLiteral("%1").arg(number, 4, 16, QLatin1Char('0'));
}

/// Whether both are there, and lead to the same.
bool isSameFile(const QString &one, const QString &other)
{
    struct stat first = {};
    struct stat second = {};
    return ::stat(QFile::encodeName(one).constData(), &first) == 0
        && ::stat(QFile::encodeName(other).constData(), &second) == 0
        && first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

/// The name of the link to a device in a folder.
QString linkTo(const QString &device, const QString &folder)
{
    const QFileInfoList links = QDir(folder).entryInfoList(QDir::Files | QDir::System);
    for (const QFileInfo &link : links) {
        if (isSameFile(link.filePath(), device)) {
            return link.fileName();
        }
    }
    return {};
}

/// Goes from the port's folder in /sys out to the USB device that it belongs to.
void lookAround(PortIdentity *identity)
{
    QString folder =
        QFileInfo(QStringLiteral("/sys/class/tty/") + identity->port).canonicalFilePath();
    for (; !folder.isEmpty(); folder.truncate(folder.lastIndexOf(QLatin1Char('/')))) {
        const QFileInfo driver(folder + QStringLiteral("/driver"));
        // The core of the serial drivers has one of its own, which every port has.
        if (identity->driver.isEmpty() && driver.isSymLink()
            && !driver.symLinkTarget().contains(QLatin1String("/serial-base/"))) {
            identity->driver = QFileInfo(driver.symLinkTarget()).fileName();
        }
        if (QFileInfo::exists(folder + QStringLiteral("/idVendor"))) {
            identity->usbPath = QFileInfo(folder).fileName();
            return;
        }
    }
}

PortIdentity identityFrom(const QSerialPortInfo &info)
{
    PortIdentity identity;
    identity.port = info.portName();
    identity.description = info.description();
    if (info.hasVendorIdentifier() && info.hasProductIdentifier()) {
        identity.usbNumbers = fourDigits(info.vendorIdentifier()) + QLatin1Char(':')
            + fourDigits(info.productIdentifier());
    }
    identity.serialNumber = info.serialNumber();
    identity.manufacturer = info.manufacturer();
    identity.byIdName = linkTo(info.systemLocation(), QStringLiteral("/dev/serial/by-id"));
    lookAround(&identity);
    return identity;
}

} // namespace

QVector<PortIdentity> portIdentities()
{
    QVector<PortIdentity> identities;
    const QList<QSerialPortInfo> ports = QSerialPortInfo::availablePorts();
    for (const QSerialPortInfo &port : ports) {
        identities += identityFrom(port);
    }
    return identities;
}

PortIdentity identityOf(const QString &port)
{
    const QList<QSerialPortInfo> ports = QSerialPortInfo::availablePorts();
    for (const QSerialPortInfo &info : ports) {
        if (isSameFile(info.systemLocation(), devicePathOf(port))) {
            return identityFrom(info);
        }
    }
    PortIdentity identity;
    // Not of a path that may be anywhere.
    const QString name = devicePathOf(port).mid(static_cast<int>(qstrlen("/dev/")));
    if (devicePathOf(port).startsWith(QLatin1String("/dev/")) && !name.contains(QLatin1Char('/'))) {
        identity.port = name;
    }
    return identity;
}

QString identityText(const PortIdentity &identity)
{
    QStringList facts;
    const auto add = [&facts](const char *name, const QString &value) {
        if (!value.isEmpty()) {
            facts += QString::fromLatin1(name) + value;
        }
    };
    add("USB ", identity.usbNumbers);
    add("serial number ", identity.serialNumber);
    add("driver ", identity.driver);
    add("/dev/serial/by-id/", identity.byIdName);
    const QString name = identity.description.isEmpty()
        ? identity.port
        : QStringLiteral("%1 (%2)").arg(identity.port, identity.description);
    return facts.isEmpty() ? name : name + QStringLiteral(": ") + facts.join(QStringLiteral(", "));
}
