// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QString>

/// Version and settings as the camera reports them, in the reply to UART_CTRL_CMD_HELLO and in the
/// long reply to UART_CTRL_CMD_CUSTOM_SETTING. They are in the order of the report, which differs
/// from the request's (see CameraSettings). Every byte counts as signed.
struct SettingsReport {
    QString version;               ///< as versionText() gives it
    signed char targetMissing = 0; ///< numbered like CameraSettings::targetMissing
    signed char firstDirectionFlag = 0;
    signed char secondDirectionFlag = 0;
    signed char panTracking = 0;
    signed char tiltTracking = 0;
    signed char autoZoom = 0;
    signed char zoomOffset = 0; ///< numbered like CameraSettings::zoomOffset

    /// Only both flags together mean upside down.
    bool isUpsideDown() const;
    /// The mode, numbered like CameraSettings::autoTracking: both flags mean auto, one alone pan or
    /// tilt.
    int autoTracking() const;
    /// The seven bytes from targetMissing on, each as signedHexadecimal() gives it, joined by dots.
    QString summary() const;
};

/// Reads a received frame, as the assembler delivers it (without its checksum byte), field by
/// field. A byte that a short frame does not have reads as 0.
class DeviceReply {
public:
    explicit DeviceReply(QByteArray frame);

    /// Bytes of the frame, the checksum byte not counted.
    int size() const;
    /// A UARTCommunicationType_t, or a value that has no name there.
    unsigned char communicationType() const;
    /// A UARTControlCommand, or a value that has no name there.
    unsigned char command() const;
    /// Whether the frame is longer than the short acknowledgement of UART_CTRL_CMD_CUSTOM_SETTING,
    /// which has at most one byte of payload.
    bool hasSettings() const;
    SettingsReport settings() const;
    /// The zoom value in a reply to UART_CTRL_CMD_SET_CUSTOM_ZOOM, high byte first. Both bytes
    /// count as signed before they are combined, so a low byte of 80 or more lowers the value by
    /// 256: 01 90 is 256 - 112 = 144, not 400.
    int customZoom() const;

private:
    signed char byteAt(int offset) const;

    QByteArray m_frame;
};
