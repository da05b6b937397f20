// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "devicereply.h"
#include "requestpayload.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QVector>

#include <optional>

/// The camera's settings as words, on the command line and in files:
///
///   auto-tracking   off, auto, pan, tilt
///   target-missing  off, home, preset-0 to preset-7
///   direction       upright, upside-down
///   auto-zoom       off, on
///   zoom-offset     0, 1, 2, custom
namespace SettingsWords {

/// In the order of the request, and of CameraSettings.
QStringList keys();
/// What a key can be, in the order of the numbers on the wire.
QStringList wordsOf(const QString &key);

/// Changes one setting.
/// @param[out] fault  set when the result is false, as there is no such key or word
bool set(CameraSettings *settings, const QString &key, const QString &word, QString *fault);
/// The word for what a setting is, or "unknown (12)" for a number without one.
QString word(const CameraSettings &settings, const QString &key);
/// The first key whose number has no word, or nothing.
std::optional<QString> unknownKey(const CameraSettings &settings);

/// What a camera reports, in the numbers of a request. Those without a word stay as they are.
CameraSettings reported(const SettingsReport &report);

/// A setting that two have different.
struct Difference {
    QString key;
    QString wanted; ///< the word, likewise the next
    QString found;
};
QVector<Difference> differences(const CameraSettings &wanted, const CameraSettings &found);

/// A file of the settings: one JSON object, with all keys and the version of the format.
QByteArray toFile(const CameraSettings &settings);
/// @param contents    at most kMaximumFileSize + 1 bytes
/// @param[out] fault  set when the result is nothing
std::optional<CameraSettings> fromFile(const QByteArray &contents, QString *fault);
constexpr int kMaximumFileSize = 1 << 16; ///< bytes; far more than anyone writes

} // namespace SettingsWords
