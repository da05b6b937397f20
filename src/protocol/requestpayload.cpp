// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "requestpayload.h"

std::array<unsigned char, 5> cameraSettingsPayload(const CameraSettings &settings)
{
    return {static_cast<unsigned char>(settings.autoTracking),
            static_cast<unsigned char>(settings.targetMissing),
            static_cast<unsigned char>(settings.upsideDown ? 1 : 0),
            static_cast<unsigned char>(settings.autoZoom),
            static_cast<unsigned char>(settings.zoomOffset)};
}

std::array<unsigned char, 2> customZoomPayload(unsigned char preset)
{
    return {preset, 0};
}

std::array<unsigned char, 4> firmwareSizePayload(int size)
{
    return {2, static_cast<unsigned char>(size >> 16), static_cast<unsigned char>(size >> 8),
            static_cast<unsigned char>(size)};
}
