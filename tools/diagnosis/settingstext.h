// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "devicereply.h"

#include <QByteArray>
#include <QString>
#include <QVector>

/// One of the camera's settings in the words of Corvane's settings page.
struct NamedSetting {
    QString name;
    QString value;
};

/// Whether an answer to HELLO is long enough for everything that Corvane reads in it.
/// @param frame  without its checksum byte, likewise below
bool isWholeReport(const QByteArray &frame);
/// Whether it is long enough for the version.
bool hasWholeVersion(const QByteArray &frame);

/// All settings, in the order of the settings page. A number that the page has no word for is
/// "unknown".
QVector<NamedSetting> namedSettings(const SettingsReport &report);
