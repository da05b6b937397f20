// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "settingstext.h"

#include "uartframe.h"

#include <QStringList>

namespace {

constexpr int kVersionSize = 4;
constexpr int kSettingsBlockSize = 13;

QString named(int number, const QStringList &names)
{
    return number >= 0 && number < names.size() ? names.at(number)
                                                : QStringLiteral("unknown (%1)").arg(number);
}

} // namespace

bool isWholeReport(const QByteArray &frame)
{
    return frame.size() >= UARTFrame::kPayloadOffset + kSettingsBlockSize;
}

bool hasWholeVersion(const QByteArray &frame)
{
    return frame.size() >= UARTFrame::kPayloadOffset + kVersionSize;
}

QVector<NamedSetting> namedSettings(const SettingsReport &report)
{
    static const QStringList kTracking{QStringLiteral("OFF"), QStringLiteral("Auto Tracking"),
                                       QStringLiteral("Pan Tracking"),
                                       QStringLiteral("Tilt Tracking")};
    static const QStringList kMissing{QStringLiteral("OFF"),      QStringLiteral("ON (Home)"),
                                      QStringLiteral("Preset 0"), QStringLiteral("Preset 1"),
                                      QStringLiteral("Preset 2"), QStringLiteral("Preset 3"),
                                      QStringLiteral("Preset 4"), QStringLiteral("Preset 5"),
                                      QStringLiteral("Preset 6"), QStringLiteral("Preset 7")};
    static const QStringList kZoomOffset{QStringLiteral("0"), QStringLiteral("1"),
                                         QStringLiteral("2"), QStringLiteral("Custom")};
    return {
        {QStringLiteral("Auto Tracking"), named(report.autoTracking(), kTracking)},
        {QStringLiteral("Target Missing Compensation"), named(report.targetMissing, kMissing)},
        {QStringLiteral("Camera Installed direction"),
         report.isUpsideDown() ? QStringLiteral("Upside down") : QStringLiteral("Upright")},
        {QStringLiteral("Auto Zoom"),
         report.autoZoom != 0 ? QStringLiteral("ON") : QStringLiteral("OFF")},
        {QStringLiteral("Zoom Offset"), named(report.zoomOffset, kZoomOffset)},
    };
}
