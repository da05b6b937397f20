// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "diagnosis.h"
#include "settingswords.h"

#include <QString>
#include <QStringList>
#include <QVector>

#include <chrono>
#include <optional>

/// Where a camera is at this moment.
struct CameraStatus {
    enum class State { Asking, Announcing, Uploading, Pausing, Rebooting, Done, Skipped, Failed };

    QString port;
    State state = State::Asking;
    int attempt = 1;
    int packets = 0; ///< acknowledged
    int packetCount = 0;
    double packetsPerSecond = 0.0; ///< 0 when not known yet
};

/// The state's name, such as "uploading".
QString stateName(CameraStatus::State state);

/// What is left of an upload at its pace; nothing when that is not known.
std::optional<int> secondsLeft(const CameraStatus &status);

/// What came of one camera. What does not apply is empty.
struct CameraResult {
    enum class Outcome { Done, Skipped, Failed };

    QString port;
    Outcome outcome = Outcome::Done;
    Verdict reason;                         ///< of Skipped and Failed
    QString version;                        ///< before anything was done
    std::optional<CameraSettings> settings; ///< as the camera reports them at the end
    QVector<SettingsWords::Difference> differences;
    std::optional<int> zoom;
    QString versionAfter; ///< of an upgrade, likewise the rest
    QString imageVersion;
    int attempts = 0;
    std::optional<std::chrono::milliseconds> uploadTime; ///< of an attempt that came to its end
    QStringList wouldSend;                               ///< with --dry-run
};
