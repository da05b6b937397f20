// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>

/// Whether the device behind a serial port has gone, as when its adapter was pulled out.
///
/// Needed because QSerialPort reports a line that hung up with changing error codes, and goes on
/// reporting it for as long as the port is open.
/// @param portName  as QSerialPort::setPortName() takes it: "ttyUSB0" or an absolute path
/// @return false also where ports are not files, as the library then names the error itself
bool serialDeviceIsGone(const QString &portName);
