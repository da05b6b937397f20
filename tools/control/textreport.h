// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "camerareport.h"
#include "controlcommand.h"
#include "jsonreport.h"

#include <QByteArray>
#include <QString>
#include <QVector>

/// What people read. Every text ends with a line feed and has nothing in it that could operate a
/// terminal, unless said otherwise.
namespace TextReport {

QString port(const PortDescription &port);
/// A camera's state, one line each time it changes.
QString state(const CameraStatus &status);
/// How far an upload is.
QString progress(const CameraStatus &status);
/// Whether a camera answers, below its port.
QString probe(const CameraResult &result);
/// What came of a camera that is done or skipped.
QString result(const ControlCommand &command, const CameraResult &result);
/// Which camera has failed, why, and what to do; as it is, for complain().
QString failure(const CameraResult &result);
/// How many did what; empty for a single camera, whose result says it all.
QString summary(const RunSummary &summary);

} // namespace TextReport
