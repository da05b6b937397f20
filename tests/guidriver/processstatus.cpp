// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "processstatus.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>

#include <unistd.h>

namespace {

QByteArray read(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// Adds up Private_Clean, Private_Dirty and so on.
qint64 privateKiBOf(const QByteArray &memoryMap)
{
    qint64 sum = 0;
    const QList<QByteArray> lines = memoryMap.split('\n');
    for (const QByteArray &line : lines) {
        if (line.startsWith("Private_")) {
            sum += line.simplified().split(' ').value(1).toLongLong();
        }
    }
    return sum;
}

} // namespace

ProcessStatus ProcessStatus::of(qint64 processId)
{
    const QString folder = QStringLiteral("/proc/%1/").arg(processId);
    const QByteArray status = read(folder + "stat");
    // Counted from after the name, which is in brackets and may hold blanks.
    const QList<QByteArray> fields = status.mid(status.lastIndexOf(')') + 2).split(' ');
    constexpr int kUserTime = 11;
    constexpr int kSystemTime = 12;
    constexpr int kThreads = 17;
    constexpr int kResidentPages = 21;

    const qint64 ticks =
        fields.value(kUserTime).toLongLong() + fields.value(kSystemTime).toLongLong();
    ProcessStatus process;
    process.isAsleep = fields.value(0) == "S";
    process.processorTimeMs = ticks * 1000 / ::sysconf(_SC_CLK_TCK);
    process.residentKiB =
        fields.value(kResidentPages).toLongLong() * ::sysconf(_SC_PAGESIZE) / 1024;
    process.privateKiB = privateKiBOf(read(folder + "smaps_rollup"));
    process.threads = fields.value(kThreads).toInt();
    const QFileInfoList descriptors =
        QDir(folder + "fd").entryInfoList(QDir::Files | QDir::System | QDir::NoDotAndDotDot);
    process.descriptors = descriptors.size();
    process.terminals = static_cast<int>(
        std::count_if(descriptors.begin(), descriptors.end(), [](const QFileInfo &descriptor) {
            const QString path = descriptor.symLinkTarget();
            return path.startsWith("/dev/pts/") || path.startsWith("/dev/tty");
        }));
    return process;
}
