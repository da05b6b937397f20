// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "serialdevice.h"

#include <QDir>
#include <QFileInfo>

bool serialDeviceIsGone(const QString &portName)
{
#ifdef Q_OS_UNIX
    return !QFileInfo::exists(QDir(QStringLiteral("/dev")).filePath(portName));
#else
    Q_UNUSED(portName)
    return false;
#endif
}
