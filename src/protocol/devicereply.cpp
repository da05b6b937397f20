// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "devicereply.h"

#include "uartframe.h"
#include "versiontext.h"

#include <QStringList>

#include <utility>

namespace {

// In the settings report; the bytes at 17 and 18 are not used.
constexpr int kVersionOffset = UARTFrame::kPayloadOffset;
constexpr int kTargetMissingOffset = 16;
constexpr int kFirstDirectionOffset = 19;
constexpr int kSecondDirectionOffset = 20;
constexpr int kPanTrackingOffset = 21;
constexpr int kTiltTrackingOffset = 22;
constexpr int kAutoZoomOffset = 23;
constexpr int kZoomOffsetOffset = 24;
constexpr int kSmallestSizeWithSettings = 14;

// In the reply to UART_CTRL_CMD_SET_CUSTOM_ZOOM; the low byte follows.
constexpr int kCustomZoomOffset = UARTFrame::kPayloadOffset;

} // namespace

bool SettingsReport::isUpsideDown() const
{
    return firstDirectionFlag != 0 && secondDirectionFlag != 0;
}

int SettingsReport::autoTracking() const
{
    if (panTracking != 0 && tiltTracking != 0) {
        return 1;
    }
    if (panTracking != 0) {
        return 2;
    }
    return tiltTracking != 0 ? 3 : 0;
}

QString SettingsReport::summary() const
{
    QStringList numbers;
    for (const signed char byte : {targetMissing, firstDirectionFlag, secondDirectionFlag,
                                   panTracking, tiltTracking, autoZoom, zoomOffset}) {
        numbers << signedHexadecimal(byte);
    }
    return numbers.join(QLatin1Char('.'));
}

DeviceReply::DeviceReply(QByteArray frame)
    : m_frame(std::move(frame))
{
}

int DeviceReply::size() const
{
    return m_frame.size();
}

unsigned char DeviceReply::communicationType() const
{
    return static_cast<unsigned char>(byteAt(UARTFrame::kTypeOffset));
}

unsigned char DeviceReply::command() const
{
    return static_cast<unsigned char>(byteAt(UARTFrame::kCommandOffset));
}

bool DeviceReply::hasSettings() const
{
    return size() >= kSmallestSizeWithSettings;
}

SettingsReport DeviceReply::settings() const
{
    SettingsReport report;
    report.version = versionText(m_frame, kVersionOffset);
    report.targetMissing = byteAt(kTargetMissingOffset);
    report.firstDirectionFlag = byteAt(kFirstDirectionOffset);
    report.secondDirectionFlag = byteAt(kSecondDirectionOffset);
    report.panTracking = byteAt(kPanTrackingOffset);
    report.tiltTracking = byteAt(kTiltTrackingOffset);
    report.autoZoom = byteAt(kAutoZoomOffset);
    report.zoomOffset = byteAt(kZoomOffsetOffset);
    return report;
}

int DeviceReply::customZoom() const
{
    return byteAt(kCustomZoomOffset) * 256 + byteAt(kCustomZoomOffset + 1);
}

signed char DeviceReply::byteAt(int offset) const
{
    return static_cast<signed char>(offset < m_frame.size() ? m_frame.at(offset) : '\0');
}
