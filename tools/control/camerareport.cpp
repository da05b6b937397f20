// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "camerareport.h"

#include <cmath>

QString stateName(CameraStatus::State state)
{
    switch (state) {
    case CameraStatus::State::Asking:
        return QStringLiteral("asking");
    case CameraStatus::State::Announcing:
        return QStringLiteral("announcing");
    case CameraStatus::State::Uploading:
        return QStringLiteral("uploading");
    case CameraStatus::State::Pausing:
        return QStringLiteral("pausing");
    case CameraStatus::State::Rebooting:
        return QStringLiteral("rebooting");
    case CameraStatus::State::Done:
        return QStringLiteral("done");
    case CameraStatus::State::Skipped:
        return QStringLiteral("skipped");
    case CameraStatus::State::Failed:
        return QStringLiteral("failed");
    }
    Q_UNREACHABLE();
}

std::optional<int> secondsLeft(const CameraStatus &status)
{
    if (status.state != CameraStatus::State::Uploading || status.packetsPerSecond <= 0.0) {
        return std::nullopt;
    }
    return static_cast<int>(
        std::ceil((status.packetCount - status.packets) / status.packetsPerSecond));
}
