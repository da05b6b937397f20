// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

/// What the kernel has said about a port.
struct KernelLines {
    QStringList lines;
    QString systemText; ///< why the kernel's log may not be read; empty when it may
};

/// The last lines that name one of these, such as ttyUSB0 or, for a USB device, 1-1.2.
/// @param log  as /dev/kmsg gives it
QStringList linesAbout(const QByteArray &log, const QStringList &names);

/// The same of the kernel's log as it is now.
KernelLines kernelLinesAbout(const QStringList &names);
