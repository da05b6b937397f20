// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "portfinding.h"

#include <QString>
#include <QStringList>
#include <QVector>

/// The other programs that have a device open, as far as this user may see them: all of them for
/// root, otherwise those of the same user.
/// @param devicePath  may be a symbolic link
QVector<PortHolder> holdersOfDevice(const QString &devicePath);
/// The same for several devices, in one look at all processes.
QVector<QVector<PortHolder>> holdersOfDevices(const QStringList &devicePaths);

/// A text that two names of the same device have in common, and no others. Empty when there is no
/// device.
QString identityOfDevice(const QString &devicePath);

/// The program that has locked a port by its name, as QSerialPort and other serial programs do.
struct PortLock {
    QString filePath;
    PortHolder holder; ///< its pid is 0 when that program has ended
};

/// @param devicePath  as opened: two names of the same device have two locks
/// @param[out] lock   set when the result is true
/// @return false when there is no lock file that can be read
bool readPortLock(const QString &devicePath, PortLock *lock);
