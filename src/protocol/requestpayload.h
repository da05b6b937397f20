// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>

/// What UART_CTRL_CMD_CUSTOM_SETTING sets. The numbers are those on the wire, and the items on the
/// settings page are in the same order.
struct CameraSettings {
    int autoTracking = 0;    ///< 0 off, 1 auto, 2 pan, 3 tilt
    int targetMissing = 0;   ///< 0 off, 1 home, 2 to 9 presets 0 to 7
    bool upsideDown = false; ///< installed direction
    int autoZoom = 0;        ///< 0 off, 1 on
    int zoomOffset = 0;      ///< 0, 1, 2; 3 custom
};

/// The payload of UART_CTRL_CMD_CUSTOM_SETTING: the low 8 bits of each setting, in the order of the
/// record. The camera reports its settings in another order, see SettingsReport.
QByteArray cameraSettingsPayload(const CameraSettings &settings);

/// The payload of UART_CTRL_CMD_SET_CUSTOM_ZOOM: the preset, then a reserved 0.
/// @param preset  0 for the first, 1 for the second
QByteArray customZoomPayload(unsigned char preset);

/// The payload of UART_CTRL_CMD_RECEIVE_FW_INFO: 02, then the low 24 bits of the firmware's size,
/// high byte first.
/// @param size  bytes
QByteArray firmwareSizePayload(int size);
