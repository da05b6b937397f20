// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "portholders.h"

#include <QByteArray>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QLockFile>
#include <QStringList>

#include <array>
#include <cerrno>
#include <climits>
#include <csignal>

#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace {

const QString kProcesses = QStringLiteral("/proc");

bool statusOfDevice(const QByteArray &path, struct stat *status)
{
    return ::stat(path.constData(), status) == 0 && S_ISCHR(status->st_mode);
}

bool isPseudoTerminal(const struct stat &device)
{
    constexpr unsigned int kFirstPseudoTerminal = 136;
    constexpr unsigned int kLastPseudoTerminal = 143;
    const unsigned int kind = major(device.st_rdev);
    return kind >= kFirstPseudoTerminal && kind <= kLastPseudoTerminal;
}

bool isSameDevice(const struct stat &one, const struct stat &other)
{
    // Each container numbers its pseudo-terminals from 0, in a file system of its own.
    return one.st_rdev == other.st_rdev && (!isPseudoTerminal(one) || one.st_dev == other.st_dev);
}

QString nameOf(qint64 pid)
{
    QFile file(QStringLiteral("%1/%2/comm").arg(kProcesses).arg(pid));
    const QString name = file.open(QIODevice::ReadOnly)
        ? QString::fromLocal8Bit(file.readAll()).trimmed()
        : QString();
    return name.isEmpty() ? QStringLiteral("unknown program") : name;
}

/// Which of the devices a process has open, by their places.
QVector<bool> hasOpen(const QString &process, const QVector<struct stat> &devices)
{
    QVector<bool> result(devices.size(), false);
    const QDir folder(QStringLiteral("%1/%2/fd").arg(kProcesses, process));
    const QStringList descriptors = folder.entryList(QDir::Files | QDir::System | QDir::Hidden);
    for (const QString &descriptor : descriptors) {
        const QByteArray link = QFile::encodeName(folder.filePath(descriptor));
        // Only what is in /dev is looked at closer: a file on a network drive can take for ever.
        std::array<char, PATH_MAX> target{};
        struct stat status = {};
        if (::readlink(link.constData(), target.data(), target.size() - 1) > 0
            && QByteArray(target.data()).startsWith("/dev/") && statusOfDevice(link, &status)) {
            for (int i = 0; i < devices.size(); ++i) {
                result[i] = result.at(i) || isSameDevice(status, devices.at(i));
            }
        }
    }
    return result;
}

} // namespace

QVector<PortHolder> holdersOfDevice(const QString &devicePath)
{
    return holdersOfDevices({devicePath}).constFirst();
}

QVector<QVector<PortHolder>> holdersOfDevices(const QStringList &devicePaths)
{
    QVector<QVector<PortHolder>> holders(devicePaths.size());
    // One that is none is like no device that a process could have open.
    QVector<struct stat> devices(devicePaths.size());
    for (int i = 0; i < devicePaths.size(); ++i) {
        if (!statusOfDevice(QFile::encodeName(devicePaths.at(i)), &devices[i])) {
            devices[i] = {};
        }
    }
    const QStringList processes = QDir(kProcesses).entryList(QDir::Dirs);
    for (const QString &process : processes) {
        bool isProcess = false;
        const qint64 pid = process.toLongLong(&isProcess);
        if (!isProcess || pid == QCoreApplication::applicationPid()) {
            continue;
        }
        const QVector<bool> isOpen = hasOpen(process, devices);
        for (int i = 0; i < isOpen.size(); ++i) {
            if (isOpen.at(i)) {
                holders[i] += PortHolder{pid, nameOf(pid)};
            }
        }
    }
    return holders;
}

QString identityOfDevice(const QString &devicePath)
{
    struct stat status = {};
    if (!statusOfDevice(QFile::encodeName(devicePath), &status)) {
        return {};
    }
    const QString number = QString::number(status.st_rdev);
    return isPseudoTerminal(status) ? QStringLiteral("%1 on %2").arg(number).arg(status.st_dev)
                                    : number;
}

bool readPortLock(const QString &devicePath, PortLock *lock)
{
    QString name = devicePath;
    if (name.startsWith(QLatin1String("/dev/"))) {
        name.remove(0, 5);
    }
    name.replace(QLatin1Char('/'), QLatin1Char('_'));
    lock->filePath = QStringLiteral("/var/lock/LCK..") + name;

    qint64 pid = 0;
    QString host;
    QString program;
    if (!QLockFile(lock->filePath).getLockInfo(&pid, &host, &program) || pid <= 0) {
        return false;
    }
    // A process of another user is there as well.
    const bool isRunning = ::kill(static_cast<pid_t>(pid), 0) == 0 || errno == EPERM;
    lock->holder = isRunning ? PortHolder{pid, nameOf(pid)} : PortHolder{};
    return true;
}
