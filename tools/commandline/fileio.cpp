// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "fileio.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <algorithm>
#include <cstdio>

namespace {

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

} // namespace

const QString kStandardStreamName = QStringLiteral("-");

std::optional<QByteArray> readFile(const QString &name, int maximum, QString *error)
{
    QFile file(name);
    const bool isOpen = name == kStandardStreamName ? file.open(stdin, QIODevice::ReadOnly)
                                                    : file.open(QIODevice::ReadOnly);
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
    const QFileInfo existing(name);
    if (existing.exists() && !existing.isFile()) {
        *error = QStringLiteral("is no regular file");
        return false;
    }
    QSaveFile file(name);
    if (!file.open(QIODevice::WriteOnly) || !writeAll(file, contents) || !file.commit()) {
        *error = file.errorString();
        return false;
    }
    return true;
}
