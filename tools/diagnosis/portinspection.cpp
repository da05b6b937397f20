// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "portinspection.h"

#include "portholders.h"

#include <QFile>
#include <QThread>
#include <QVector>

#include <algorithm>
#include <cerrno>
#include <vector>

#include <fcntl.h>
#include <grp.h>
#include <pwd.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace {

using Kind = PortFinding::Kind;

QString userName(uid_t user)
{
    const passwd *const entry = ::getpwuid(user);
    return entry != nullptr ? QString::fromLocal8Bit(entry->pw_name)
                            : QStringLiteral("user %1").arg(user);
}

QString groupName(gid_t group)
{
    const ::group *const entry = ::getgrgid(group);
    return entry != nullptr ? QString::fromLocal8Bit(entry->gr_name)
                            : QStringLiteral("%1").arg(group);
}

/// Whether this process has the rights of a group.
bool isInGroup(gid_t group)
{
    const int count = ::getgroups(0, nullptr);
    std::vector<gid_t> groups(static_cast<std::size_t>(std::max(count, 0)));
    return ::getegid() == group
        || (::getgroups(count, groups.data()) >= 0
            && std::find(groups.begin(), groups.end(), group) != groups.end());
}

/// Whether a user would have the rights of a group after logging in.
bool belongsToGroup(uid_t user, gid_t group)
{
    const passwd *const entry = ::getpwuid(user);
    if (entry == nullptr) {
        return false;
    }
    int count = 0;
    ::getgrouplist(entry->pw_name, entry->pw_gid, nullptr, &count);
    std::vector<gid_t> groups(static_cast<std::size_t>(std::max(count, 0)));
    return ::getgrouplist(entry->pw_name, entry->pw_gid, groups.data(), &count) >= 0
        && std::find(groups.begin(), groups.end(), group) != groups.end();
}

void explainDenial(PortFinding *finding, const struct stat &status)
{
    finding->user = userName(::geteuid());
    finding->owner = userName(status.st_uid);
    finding->group = groupName(status.st_gid);
    constexpr mode_t kGroupMayUse = S_IRGRP | S_IWGRP;
    // For the owner, only the rights of the owner count.
    if ((status.st_mode & kGroupMayUse) != kGroupMayUse || status.st_uid == ::geteuid()
        || isInGroup(status.st_gid)) {
        finding->kind = Kind::NotPermitted;
    } else if (belongsToGroup(::geteuid(), status.st_gid)) {
        finding->kind = Kind::LoginMissing;
    } else {
        finding->kind = Kind::NotInGroup;
    }
}

/// The port could have been opened, had it not been for its lock.
void explainLock(PortFinding *finding, const PortLock &lock)
{
    if (lock.holder.pid == 0) {
        finding->kind = Kind::StaleLock;
        finding->lockFile = lock.filePath;
        return;
    }
    finding->kind = Kind::Held;
    finding->holders = {lock.holder};
}

QString thingAt(mode_t mode)
{
    if (S_ISDIR(mode)) {
        return QStringLiteral("a folder");
    }
    return S_ISREG(mode) ? QStringLiteral("a file") : QStringLiteral("another kind of device");
}

/// Why the device cannot be opened for reading and writing; 0 if it can.
int openError(const QString &devicePath)
{
    const int descriptor = ::open(QFile::encodeName(devicePath).constData(),
                                  O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0) {
        return errno;
    }
    const int error = ::isatty(descriptor) == 1 ? 0 : errno;
    ::close(descriptor);
    return error;
}

/// Whether the kernel writes its messages there; systemd offers a login wherever it does.
bool isKernelConsole(dev_t device)
{
    QFile file(QStringLiteral("/proc/consoles"));
    const QByteArray consoles = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    const QByteArray number =
        QByteArray::number(major(device)) + ':' + QByteArray::number(minor(device));
    return consoles.simplified().split(' ').contains(number);
}

bool offersLogin(const PortHolder &holder)
{
    return holder.name == QLatin1String("agetty") || holder.name == QLatin1String("getty")
        || holder.name == QLatin1String("login");
}

} // namespace

QString devicePathOf(const QString &port)
{
    const bool isPath = port.startsWith(QLatin1Char('/')) || port.startsWith(QLatin1String("./"))
        || port.startsWith(QLatin1String("../"));
    return isPath ? port : QStringLiteral("/dev/") + port;
}

PortFinding inspectPort(const QString &port)
{
    PortFinding finding;
    finding.port = port;
    finding.devicePath = devicePathOf(port);
    finding.ports = listedPorts();
    struct stat status = {};
    if (::stat(QFile::encodeName(finding.devicePath).constData(), &status) != 0) {
        const bool isAbsent = errno == ENOENT || errno == ENOTDIR;
        finding.kind = isAbsent ? Kind::NoDevice : Kind::CannotOpen;
        finding.systemText = isAbsent ? QString() : qt_error_string(errno);
    } else if (!S_ISCHR(status.st_mode)) {
        finding.kind = Kind::NotSerial;
        finding.thing = thingAt(status.st_mode);
    } else {
        finding.seesEveryHolder = ::geteuid() == 0;
        finding.holders = holdersOfDevice(finding.devicePath);
        // A port that another program has open does not notice that it is opened once more.
        const bool isInUse = !finding.holders.isEmpty() && openError(finding.devicePath) != ENOTTY;
        if (isKernelConsole(status.st_rdev)
            || (isInUse
                && std::any_of(finding.holders.begin(), finding.holders.end(), offersLogin))) {
            finding.kind = Kind::Console;
        } else if (isInUse && finding.seesEveryHolder) {
            // Root would get past the exclusive use of another program, and ask in its session.
            finding.kind = Kind::Held;
        }
    }
    return finding;
}

void explainFailure(PortFinding *finding, const QSerialPort &serial)
{
    finding->kind = Kind::CannotOpen;
    finding->systemText = serial.errorString();
    const int error = openError(finding->devicePath);
    PortLock lock;
    const bool isLocked = readPortLock(finding->devicePath, &lock);
    struct stat status = {};
    switch (error) {
    case 0:
        // The library says the same of a lock as of missing rights.
        if (serial.error() == QSerialPort::PermissionError && isLocked) {
            explainLock(finding, lock);
        }
        break;
    case EACCES:
    case EPERM:
        if (::stat(QFile::encodeName(finding->devicePath).constData(), &status) == 0) {
            explainDenial(finding, status);
        }
        break;
    case EBUSY:
        finding->kind = Kind::Held;
        finding->holders = holdersOfDevice(finding->devicePath);
        // Whose lock it is can be seen also where what the program has open cannot.
        if (finding->holders.isEmpty() && isLocked && lock.holder.pid != 0) {
            finding->holders = {lock.holder};
        }
        break;
    case ENOENT:
        finding->kind = Kind::NoDevice;
        break;
    case ENOTTY:
        finding->kind = Kind::NotSerial;
        finding->thing = thingAt(S_IFCHR);
        break;
    default:
        break;
    }
}

void explainHangUp(PortFinding *finding)
{
    // The device of an adapter that is pulled out goes a moment after its line.
    constexpr int kLooks = 10;
    constexpr unsigned long kPauseMs = 100;
    finding->kind = Kind::LineHungUp;
    for (int look = 0; look < kLooks && finding->kind == Kind::LineHungUp; ++look) {
        QThread::msleep(kPauseMs);
        const int error = openError(finding->devicePath);
        if (error != 0 && error != EBUSY) {
            finding->kind = Kind::HungUp;
        }
    }
}
