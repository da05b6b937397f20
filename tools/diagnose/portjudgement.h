// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "diagnosis.h"
#include "observation.h"
#include "portfinding.h"

#include <QString>

#include <chrono>
#include <functional>

/// A port's verdict and what it follows from.
struct PortJudgement {
    PortFinding finding;
    LineRecord line;
    Diagnosis diagnosis;
};

/// Looks at a port, opens it as Corvane does, and asks the camera.
///
/// A signal ends the program once the port is closed; otherwise its lock would be taken for another
/// program's.
/// @param asks  called once the port is open
PortJudgement judgePort(const QString &port, std::chrono::milliseconds wait,
                        const std::function<void()> &asks);
