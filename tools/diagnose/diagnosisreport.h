// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "commandline.h"
#include "diagnosis.h"
#include "observation.h"
#include "portfinding.h"

#include <QByteArray>
#include <QJsonObject>
#include <QString>

/// What was found out, for people: several lines, the verdict in the first and its identifier in
/// the last.
QString textReport(const Diagnosis &diagnosis, const PortFinding &finding, const LineRecord &line);

/// The same as a JSON object. What does not apply, such as the version without an answer, is left
/// out.
QJsonObject jsonReport(const Diagnosis &diagnosis, const PortFinding &finding,
                       const LineRecord &line);

/// For a program that has made a bad command line, with the verdict "bad-command-line".
QJsonObject jsonReport(const UsageError &error);

/// In UTF-8, with a line feed at its end.
QByteArray jsonText(const QJsonObject &object);
