// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "observation.h"
#include "portfinding.h"

#include <QString>
#include <QStringList>
#include <QVector>

#include <chrono>

/// What the program's exit code says.
enum class DiagnosisStatus {
    Answer = 0,   ///< Corvane will work
    Warning = 1,  ///< Corvane will work, but for what the verdict says
    BadPort = 3,  ///< the port cannot be used
    NoAnswer = 4, ///< nothing came back that Corvane could use
};

/// One thing that was found out.
struct Verdict {
    QString id; ///< such as "wrong-sums"; never changes, so that other programs can rely on it
    QString sentence;
    QString remedy; ///< what to do about it; empty when there is nothing to do
};

/// All that was found out about a port.
struct Diagnosis {
    DiagnosisStatus status = DiagnosisStatus::Answer;
    Verdict verdict;
    QVector<Verdict> furtherWarnings; ///< when the camera answers, and there is more to say
};

/// @param finding  what came of opening the port
/// @param line     what came back; without meaning unless the port could be opened
/// @param wait     how long that was waited for
Diagnosis diagnose(const PortFinding &finding, const LineRecord &line,
                   std::chrono::milliseconds wait);

/// The identifiers of all verdicts with that status, the more important ones first.
QStringList verdictsOf(DiagnosisStatus status);
