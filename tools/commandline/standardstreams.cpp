// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "standardstreams.h"

#include "printabletext.h"

#include <QCoreApplication>

#include <cerrno>
#include <cstdio>

#include <fcntl.h>
#include <unistd.h>

void keepStandardStreamsOpen()
{
    // A file gets the lowest number that is free. Opened the wrong way round, it cannot be used.
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (::fcntl(stream, F_GETFD) < 0) {
            ::open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
        }
    }
}

bool print(const QByteArray &bytes)
{
    const auto size = static_cast<std::size_t>(bytes.size());
    if (std::fwrite(bytes.constData(), 1, size, stdout) == size && std::fflush(stdout) == 0) {
        return true;
    }
    complain(QStringLiteral("standard output: ") + qt_error_string(errno));
    return false;
}

bool print(const QString &text)
{
    return print(text.toLocal8Bit());
}

void complain(const QString &reason)
{
    const QString line =
        QStringLiteral("%1: %2\n").arg(QCoreApplication::applicationName(), printableText(reason));
    std::fputs(line.toLocal8Bit().constData(), stderr);
}
