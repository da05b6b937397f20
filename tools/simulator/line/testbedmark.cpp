// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "testbedmark.h"

#include <QDir>
#include <QFileInfo>

#include <unistd.h>

namespace {

QString markOf(const QString &folder)
{
    return folder + QStringLiteral("/corvane-simulator.lock");
}

} // namespace

TestbedMark::TestbedMark(const QString &folder)
    : m_lock(markOf(folder))
{
    // It ages only with its process.
    m_lock.setStaleLockTime(0);
    m_lock.tryLock();
}

QStringList TestbedMark::removeLeftovers()
{
    QStringList removed;
    // As libumockdev calls them.
    const QFileInfoList folders =
        QDir::temp().entryInfoList({QStringLiteral("umockdev.*")}, QDir::Dirs | QDir::NoSymLinks);
    for (const QFileInfo &folder : folders) {
        const QString path = folder.filePath();
        if (folder.ownerId() != ::geteuid() || !QFileInfo::exists(markOf(path))) {
            continue;
        }
        QLockFile lock(markOf(path));
        lock.setStaleLockTime(0);
        if (lock.tryLock()) {
            lock.unlock();
            QDir(path).removeRecursively();
            removed += path;
        }
    }
    return removed;
}
