// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "settingswords.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <array>

namespace {

const QString kFormatKey = QStringLiteral("corvane-settings");
constexpr int kFormatVersion = 1;

struct Setting {
    const char *key = nullptr;
    QStringList words;
    int (*get)(const CameraSettings &settings) = nullptr;
    void (*set)(CameraSettings *settings, int number) = nullptr;
};

const std::array<Setting, 5> &table()
{
    static const std::array<Setting, 5> kTable{{
        {"auto-tracking",
         {QStringLiteral("off"), QStringLiteral("auto"), QStringLiteral("pan"),
          QStringLiteral("tilt")},
         [](const CameraSettings &settings) { return settings.autoTracking; },
         [](CameraSettings *settings, int number) { settings->autoTracking = number; }},
        {"target-missing",
         {QStringLiteral("off"), QStringLiteral("home"), QStringLiteral("preset-0"),
          QStringLiteral("preset-1"), QStringLiteral("preset-2"), QStringLiteral("preset-3"),
          QStringLiteral("preset-4"), QStringLiteral("preset-5"), QStringLiteral("preset-6"),
          QStringLiteral("preset-7")},
         [](const CameraSettings &settings) { return settings.targetMissing; },
         [](CameraSettings *settings, int number) { settings->targetMissing = number; }},
        {"direction",
         {QStringLiteral("upright"), QStringLiteral("upside-down")},
         [](const CameraSettings &settings) { return settings.upsideDown ? 1 : 0; },
         [](CameraSettings *settings, int number) { settings->upsideDown = number == 1; }},
        {"auto-zoom",
         {QStringLiteral("off"), QStringLiteral("on")},
         [](const CameraSettings &settings) { return settings.autoZoom; },
         [](CameraSettings *settings, int number) { settings->autoZoom = number; }},
        {"zoom-offset",
         {QStringLiteral("0"), QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("custom")},
         [](const CameraSettings &settings) { return settings.zoomOffset; },
         [](CameraSettings *settings, int number) { settings->zoomOffset = number; }},
    }};
    return kTable;
}

const Setting *settingOf(const QString &key)
{
    for (const Setting &setting : table()) {
        if (key == QLatin1String(setting.key)) {
            return &setting;
        }
    }
    return nullptr;
}

bool hasWord(const Setting &setting, const CameraSettings &settings)
{
    const int number = setting.get(settings);
    return number >= 0 && number < setting.words.size();
}

QString wordOf(const Setting &setting, const CameraSettings &settings)
{
    const int number = setting.get(settings);
    return hasWord(setting, settings) ? setting.words.at(number)
                                      : QStringLiteral("unknown (%1)").arg(number);
}

} // namespace

QStringList SettingsWords::keys()
{
    QStringList keys;
    for (const Setting &setting : table()) {
        keys += QString::fromLatin1(setting.key);
    }
    return keys;
}

QStringList SettingsWords::wordsOf(const QString &key)
{
    const Setting *const setting = settingOf(key);
    return setting != nullptr ? setting->words : QStringList();
}

bool SettingsWords::set(CameraSettings *settings, const QString &key, const QString &word,
                        QString *fault)
{
    const Setting *const setting = settingOf(key);
    if (setting == nullptr) {
        *fault = QStringLiteral("'%1' is no setting; they are %2")
                     .arg(key, keys().join(QStringLiteral(", ")));
        return false;
    }
    const int number = setting->words.indexOf(word);
    if (number < 0) {
        *fault = QStringLiteral("%1 is %2, not '%3'")
                     .arg(key, setting->words.join(QStringLiteral(" or ")), word);
        return false;
    }
    setting->set(settings, number);
    return true;
}

QString SettingsWords::word(const CameraSettings &settings, const QString &key)
{
    const Setting *const setting = settingOf(key);
    return setting != nullptr ? wordOf(*setting, settings) : QString();
}

std::optional<QString> SettingsWords::unknownKey(const CameraSettings &settings)
{
    for (const Setting &setting : table()) {
        if (!hasWord(setting, settings)) {
            return QString::fromLatin1(setting.key);
        }
    }
    return std::nullopt;
}

CameraSettings SettingsWords::reported(const SettingsReport &report)
{
    return {report.autoTracking(), report.targetMissing, report.isUpsideDown(),
            report.autoZoom != 0 ? 1 : 0, report.zoomOffset};
}

QVector<SettingsWords::Difference> SettingsWords::differences(const CameraSettings &wanted,
                                                              const CameraSettings &found)
{
    QVector<Difference> differences;
    for (const Setting &setting : table()) {
        if (setting.get(wanted) != setting.get(found)) {
            differences += Difference{QString::fromLatin1(setting.key), wordOf(setting, wanted),
                                      wordOf(setting, found)};
        }
    }
    return differences;
}

QByteArray SettingsWords::toFile(const CameraSettings &settings)
{
    // By hand, as QJsonDocument puts the keys in the order of the alphabet.
    QByteArray text =
        QStringLiteral("{\n    \"%1\": %2").arg(kFormatKey).arg(kFormatVersion).toUtf8();
    for (const Setting &setting : table()) {
        text += QStringLiteral(",\n    \"%1\": \"%2\"")
                    .arg(QString::fromLatin1(setting.key), wordOf(setting, settings))
                    .toUtf8();
    }
    return text + "\n}\n";
}

std::optional<CameraSettings> SettingsWords::fromFile(const QByteArray &contents, QString *fault)
{
    if (contents.size() > kMaximumFileSize) {
        *fault = QStringLiteral("too large for a file of settings");
        return std::nullopt;
    }
    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(contents, &error);
    if (error.error != QJsonParseError::NoError) {
        *fault = QStringLiteral("offset %1: %2").arg(error.offset).arg(error.errorString());
        return std::nullopt;
    }
    QJsonObject object = document.object();
    if (object.take(kFormatKey) != QJsonValue(kFormatVersion)) {
        *fault = QStringLiteral("is no file of settings: one has \"%1\": %2")
                     .arg(kFormatKey)
                     .arg(kFormatVersion);
        return std::nullopt;
    }
    CameraSettings settings;
    for (const Setting &setting : table()) {
        const QString key = QString::fromLatin1(setting.key);
        if (!object.contains(key)) {
            *fault = QStringLiteral("%1 is missing").arg(key);
            return std::nullopt;
        }
        if (!set(&settings, key, object.take(key).toString(), fault)) {
            return std::nullopt;
        }
    }
    if (!object.isEmpty()) {
        set(&settings, object.begin().key(), {}, fault);
        return std::nullopt;
    }
    return settings;
}
