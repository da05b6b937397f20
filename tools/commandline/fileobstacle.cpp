// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "fileobstacle.h"

#include <QFile>

#include <cerrno>

#include <sys/stat.h>

QString fileObstacle(const QString &name)
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
