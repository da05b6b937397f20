// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "portfinding.h"

#include <QSerialPort>
#include <QString>
#include <QStringList>

/// The serial ports of this computer that Corvane lists, such as "ttyUSB0 (USB Serial)".
QStringList listedPorts();

/// Where a port's name leads, by QSerialPort's rules: "ttyUSB0" to /dev/ttyUSB0, a path to itself.
QString devicePathOf(const QString &port);

/// What can be said about a port before it is opened.
/// @return of the kind NoDevice, NotSerial, CannotOpen, Console or Held; Open when it should be
///         tried
PortFinding inspectPort(const QString &port);

/// Finds out why a port could not be opened. It opens the device itself for a moment.
/// @param[in,out] finding  what inspectPort() has found
/// @param serial           after an open() that failed
void explainFailure(PortFinding *finding, const QSerialPort &serial);

/// Finds out whether the line of a port failed with its device or without. It opens the device
/// itself for a moment.
/// @param[in,out] finding  of a port that is still open: otherwise another device could get its
/// name
void explainHangUp(PortFinding *finding);
