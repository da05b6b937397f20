// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "requestpayload.h"

#include <initializer_list>

namespace {

/// The low 8 bits of each value.
QByteArray bytesOf(std::initializer_list<int> values)
{
    QByteArray bytes;
    for (const int value : values) {
        bytes.append(static_cast<char>(value));
    }
    return bytes;
}

} // namespace

QByteArray cameraSettingsPayload(const CameraSettings &settings)
{
    return bytesOf({settings.autoTracking, settings.targetMissing, settings.upsideDown ? 1 : 0,
                    settings.autoZoom, settings.zoomOffset});
}

QByteArray customZoomPayload(unsigned char preset)
{
    return bytesOf({preset, 0});
}

QByteArray firmwareSizePayload(int size)
{
    return bytesOf({2, size >> 16, size >> 8, size});
}
