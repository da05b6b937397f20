// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "standardstreams.h"

#include "printabletext.h"

#include <QCoreApplication>

#include <cerrno>
#include <cstdio>
#include <system_error>

QString lastErrorText()
{
    return QString::fromLocal8Bit(std::generic_category().message(errno).c_str());
}

bool print(const QByteArray &bytes)
{
    const auto size = static_cast<std::size_t>(bytes.size());
    if (std::fwrite(bytes.constData(), 1, size, stdout) == size && std::fflush(stdout) == 0) {
        return true;
    }
    complain(QStringLiteral("standard output: ") + lastErrorText());
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
