// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "diagnosis.h"
#include "observation.h"
#include "portfinding.h"

#include <QByteArray>
#include <QString>

/// What was found out, for people: several lines, the verdict in the first and its identifier in
/// the last.
QString textReport(const Diagnosis &diagnosis, const PortFinding &finding, const LineRecord &line);

/// The same as one JSON object in UTF-8, with a line feed at its end. What does not apply, such as
/// the version without an answer, is left out.
QByteArray jsonReport(const Diagnosis &diagnosis, const PortFinding &finding,
                      const LineRecord &line);
