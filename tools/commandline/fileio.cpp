// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "fileio.h"

#include "terminationsignals.h"

#include <QFile>
#include <QSaveFile>

#include <algorithm>
#include <cerrno>
#include <cstdio>

#include <sys/stat.h>

namespace {

/// Why there is no file to read or to replace by that name; empty when there is one, or nothing.
QString obstacle(const QString &name)
{
    struct stat status = {};
    if (::stat(QFile::encodeName(name).constData(), &status) != 0) {
        return errno == ENOENT ? QString() : qt_error_string(errno);
    }
    switch (status.st_mode & S_IFMT) {
    case S_IFREG:
        return {};
    case S_IFDIR:
        return QStringLiteral("is a folder, not a file");
    case S_IFIFO:
        return QStringLiteral("is a pipe, not a file");
    case S_IFSOCK:
        return QStringLiteral("is a socket, not a file");
    default:
        return QStringLiteral("is a device, not a file");
    }
}

/// A write that comes to the end of the disk is only short; the reason is known to the next one.
bool writeAll(QSaveFile &file, const QByteArray &contents)
{
    int size = 0;
    while (size < contents.size()) {
        const qint64 written = file.write(contents.constData() + size, contents.size() - size);
        if (written <= 0) {
            return false;
        }
        size += static_cast<int>(written);
    }
    // commit() does not notice when only a part of the buffer fits.
    if (!file.flush()) {
        file.flush();
        return false;
    }
    return true;
}

bool open(QSaveFile *file, QString *error)
{
    *error = obstacle(file->fileName());
    if (error->isEmpty() && !file->open(QIODevice::WriteOnly)) {
        *error = file->errorString();
    }
    return error->isEmpty();
}

} // namespace

const QString kStandardStreamName = QStringLiteral("-");

std::optional<QByteArray> readFile(const QString &name, int maximum, QString *error)
{
    const bool isStandardInput = name == kStandardStreamName;
    *error = isStandardInput ? QString() : obstacle(name);
    if (!error->isEmpty()) {
        return std::nullopt;
    }
    QFile file(name);
    const bool isOpen =
        isStandardInput ? file.open(stdin, QIODevice::ReadOnly) : file.open(QIODevice::ReadOnly);
    QByteArray contents;
    if (isOpen) {
        constexpr int kChunkSize = 1 << 16;
        QByteArray chunk;
        do {
            chunk = file.read(std::min(kChunkSize, maximum + 1 - contents.size()));
            contents += chunk;
        } while (!chunk.isEmpty());
    }
    if (file.error() != QFileDevice::NoError) {
        *error = file.errorString();
        return std::nullopt;
    }
    return contents;
}

bool writeFile(const QString &name, const QByteArray &contents, QString *error)
{
    // Until the new file is in its place, or gone.
    const TerminationDelay delay;
    QSaveFile file(name);
    if (!open(&file, error)) {
        return false;
    }
    if (!writeAll(file, contents) || !file.commit()) {
        *error = file.errorString();
        return false;
    }
    return true;
}

bool canWriteFile(const QString &name, QString *error)
{
    const TerminationDelay delay;
    QSaveFile file(name);
    return open(&file, error);
}
