// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "camerareport.h"
#include "controlcommand.h"

#include <QByteArray>
#include <QString>

/// A serial port of this computer, as the program lists it.
struct PortDescription {
    QString name;        ///< such as ttyUSB0
    QString path;        ///< such as /dev/ttyUSB0
    QString description; ///< as in the window's list; what is not known is empty, likewise below
    QString vendorId;    ///< four digits in hexadecimal
    QString productId;
    QString serialNumber;
    QString byId; ///< the path in /dev/serial/by-id
};

/// The counts at the end.
struct RunSummary {
    int done = 0;
    int skipped = 0;
    int failed = 0;
    int exitCode = 0;
};

/// What --json prints: each function gives one object as one line in UTF-8, with a line feed at its
/// end. docs/corvanectl.schema.json describes them; "schema" is its version.
namespace JsonReport {

QByteArray start(const ControlCommand &command, const QStringList &ports);
QByteArray port(const PortDescription &port);
QByteArray state(const CameraStatus &status);
QByteArray progress(const CameraStatus &status);
QByteArray note(const QString &text);
QByteArray result(const CameraResult &result);
QByteArray end(const RunSummary &summary);

} // namespace JsonReport
