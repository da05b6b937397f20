// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "answer.h"
#include "firmwarereceiver.h"
#include "requestpayload.h"

#include <QByteArray>
#include <QString>

#include <array>
#include <optional>

struct Request;

/// What the simulated camera knows.
struct CameraState {
    /// Of its software. Bytes count as signed where the host shows them.
    std::array<unsigned char, 4> version{1, 0, 0, 6};
    CameraSettings settings{1, 1, false, 1, 1};
    /// Where the lens is when the first or second zoom preset is set. The defaults have a low
    /// byte below 80, so that the host shows them as they are.
    std::array<qint16, 2> lensZoom{100, 25};
    /// The zoom presets; nothing until the host has them set.
    std::array<std::optional<qint16>, 2> zoomPresets;
};

/// Reads five settings in the order of the request that sets them.
/// @param values  auto tracking 0 to 3, target missing 0 to 9, upside down 0 or 1, auto zoom 0 or
///                1, zoom offset 0 to 3
/// @param fault   if not null, says which value is out of its range when the result is nothing
std::optional<CameraSettings> cameraSettingsFrom(const std::array<int, 5> &values, QString *fault);

/// The camera: answers requests out of its state, and changes that as they ask.
///
/// It knows frames, not lines, and keeps no time. Requests it does not understand leave the state
/// as it is and are refused.
///
/// Once a firmware has come in completely it reboots, and answers nothing until finishReboot().
/// Settings and zoom presets outlive that.
class Camera {
public:
    explicit Camera(const CameraState &state = {});

    const CameraState &state() const;
    /// Does what @p request asks, at once.
    Answer answer(const Request &request);
    /// Whether it is busy with starting a new firmware.
    bool isRebooting() const;
    /// What has come of a firmware so far; all of it while the camera reboots, nothing afterwards.
    const QByteArray &firmware() const;
    /// Lets it run the new firmware, which makes its version one higher: the last part counts up to
    /// 255, and then the one before it. To be called while it reboots.
    void finishReboot();

private:
    void raiseVersion();
    Answer changeSettings(const QByteArray &payload);
    Answer setZoomPreset(const QByteArray &payload);
    qint16 currentZoom(std::size_t preset) const;
    QByteArray settingsBlock() const;

    CameraState m_state;
    FirmwareReceiver m_firmwareReceiver;
};
