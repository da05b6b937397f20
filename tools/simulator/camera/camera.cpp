// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "camera.h"

#include "request.h"
#include "uartframe.h"

#include <QtEndian>

std::optional<CameraSettings> cameraSettingsFrom(const std::array<int, 5> &values, QString *fault)
{
    struct Range {
        const char *name;
        int maximum;
    };
    static constexpr std::array<Range, 5> kRanges{{
        {"auto tracking", 3},
        {"target missing", 9},
        {"upside down", 1},
        {"auto zoom", 1},
        {"zoom offset", 3},
    }};
    for (std::size_t i = 0; i < kRanges.size(); ++i) {
        if (values[i] < 0 || values[i] > kRanges[i].maximum) {
            if (fault != nullptr) {
                *fault = QStringLiteral("%1 is %2, not 0 to %3")
                             .arg(QLatin1String(kRanges[i].name))
                             .arg(values[i])
                             .arg(kRanges[i].maximum);
            }
            return std::nullopt;
        }
    }
    return CameraSettings{values[0], values[1], values[2] != 0, values[3], values[4]};
}

Camera::Camera(const CameraState &state)
    : m_state(state)
{
}

const CameraState &Camera::state() const
{
    return m_state;
}

Answer Camera::answer(const Request &request)
{
    if (isRebooting()) {
        return Answer::refuse(QStringLiteral("rebooting"));
    }
    if (request.type != UART_COMM_TYPE_REQUEST) {
        return Answer::refuse(QStringLiteral("type %1 is not a request").arg(request.type));
    }
    switch (request.command) {
    case UART_CTRL_CMD_UPLOAD_FIRMWARE:
        return m_firmwareReceiver.takePacket(request.parameter, request.payload);
    case UART_CTRL_CMD_RECEIVE_FW_INFO:
        return m_firmwareReceiver.announce(request.payload);
    case UART_CTRL_CMD_HELLO:
        if (!request.payload.isEmpty()) {
            return Answer::refuseSize(request.payload.size(), 0);
        }
        return Answer::acknowledge(UART_CTRL_CMD_HELLO, settingsBlock());
    case UART_CTRL_CMD_CUSTOM_SETTING:
        return changeSettings(request.payload);
    case UART_CTRL_CMD_SET_CUSTOM_ZOOM:
        return setZoomPreset(request.payload);
    default:
        return Answer::refuse(QStringLiteral("unknown command"));
    }
}

bool Camera::isRebooting() const
{
    return m_firmwareReceiver.isComplete();
}

const QByteArray &Camera::firmware() const
{
    return m_firmwareReceiver.firmware();
}

void Camera::finishReboot()
{
    m_firmwareReceiver = {};
    raiseVersion();
}

// What is in the firmware is not looked at: any firmware is the next version.
void Camera::raiseVersion()
{
    for (auto part = m_state.version.rbegin(); part != m_state.version.rend(); ++part) {
        ++*part;
        if (*part != 0) {
            return;
        }
    }
}

Answer Camera::changeSettings(const QByteArray &payload)
{
    std::array<int, 5> values{};
    if (payload.size() != static_cast<int>(values.size())) {
        return Answer::refuseSize(payload.size(), static_cast<int>(values.size()));
    }
    for (std::size_t i = 0; i < values.size(); ++i) {
        values[i] = static_cast<unsigned char>(payload.at(static_cast<int>(i)));
    }
    QString fault;
    const auto settings = cameraSettingsFrom(values, &fault);
    if (!settings) {
        return Answer::refuse(fault);
    }
    m_state.settings = *settings;
    return Answer::acknowledge(UART_CTRL_CMD_CUSTOM_SETTING, settingsBlock());
}

Answer Camera::setZoomPreset(const QByteArray &payload)
{
    // The second byte is reserved and not looked at.
    constexpr int kSize = 2;
    if (payload.size() != kSize) {
        return Answer::refuseSize(payload.size(), kSize);
    }
    const auto preset = static_cast<std::size_t>(static_cast<unsigned char>(payload.at(0)));
    if (preset >= m_state.zoomPresets.size()) {
        return Answer::refuse(QStringLiteral("there is no such zoom preset"));
    }
    const qint16 zoom = currentZoom(preset);
    m_state.zoomPresets[preset] = zoom;

    QByteArray reply(kSize, '\0');
    qToBigEndian(zoom, reply.data());
    return Answer::acknowledge(UART_CTRL_CMD_SET_CUSTOM_ZOOM, reply);
}

// A real camera would look at its lens, which somebody has moved meanwhile. Here it has always just
// been moved to where the preset is wanted.
qint16 Camera::currentZoom(std::size_t preset) const
{
    return m_state.lensZoom[preset];
}

// Payload offsets are 12 less than the frame offsets that SettingsReport lists.
QByteArray Camera::settingsBlock() const
{
    const CameraSettings &settings = m_state.settings;
    const bool pan = settings.autoTracking == 1 || settings.autoTracking == 2;
    const bool tilt = settings.autoTracking == 1 || settings.autoTracking == 3;

    QByteArray block;
    for (const unsigned char part : m_state.version) {
        block.append(static_cast<char>(part));
    }
    block.append(static_cast<char>(settings.targetMissing));
    block.append(2, '\0');
    block.append(2, settings.upsideDown ? '\1' : '\0');
    block.append(pan ? '\1' : '\0');
    block.append(tilt ? '\1' : '\0');
    block.append(static_cast<char>(settings.autoZoom));
    block.append(static_cast<char>(settings.zoomOffset));
    return block;
}
