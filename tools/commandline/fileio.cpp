// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "fileio.h"

#include "fileobstacle.h"
#include "standardstreams.h"
#include "terminationsignals.h"

#include <QFile>
#include <QSaveFile>

#include <algorithm>
#include <cstdio>
#include <functional>

namespace {

/// Reads in portions, so that a small input takes little memory whatever the maximum is.
/// @param read  puts at most that many bytes there, and returns how many; 0 or less at the end
QByteArray readPortions(int maximum, const std::function<qint64(char *, int)> &read)
{
    constexpr int kPortionSize = 1 << 16;
    QByteArray contents;
    qint64 count = 0;
    do {
        const int size = contents.size();
        const int room = std::min(kPortionSize, maximum + 1 - size);
        contents.resize(size + room);
        count = read(contents.data() + size, room);
        contents.truncate(size + static_cast<int>(std::max(count, qint64(0))));
    } while (count > 0);
    return contents;
}

// Without QFile, which cannot read a pipe of Windows that is opened already.
std::optional<QByteArray> readStandardInput(int maximum, QString *error)
{
    QByteArray contents = readPortions(maximum, [](char *data, int size) {
        return static_cast<qint64>(std::fread(data, 1, static_cast<std::size_t>(size), stdin));
    });
    if (std::ferror(stdin) != 0) {
        *error = lastErrorText();
        return std::nullopt;
    }
    return contents;
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
    *error = fileObstacle(file->fileName());
    if (error->isEmpty() && !file->open(QIODevice::WriteOnly)) {
        *error = file->errorString();
    }
    return error->isEmpty();
}

} // namespace

const QString kStandardStreamName = QStringLiteral("-");

std::optional<QByteArray> readFile(const QString &name, int maximum, QString *error)
{
    if (name == kStandardStreamName) {
        return readStandardInput(maximum, error);
    }
    *error = fileObstacle(name);
    if (!error->isEmpty()) {
        return std::nullopt;
    }
    QFile file(name);
    QByteArray contents;
    if (file.open(QIODevice::ReadOnly)) {
        contents =
            readPortions(maximum, [&file](char *data, int size) { return file.read(data, size); });
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
