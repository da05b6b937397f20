// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "jsonreport.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>

namespace {

constexpr int kSchemaVersion = 1;

QString name(const char *text)
{
    return QString::fromLatin1(text);
}

QByteArray line(const char *event, QJsonObject object)
{
    object[name("schema")] = kSchemaVersion;
    object[name("event")] = name(event);
    return QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n';
}

void addUnlessEmpty(QJsonObject &object, const char *key, const QString &text)
{
    if (!text.isEmpty()) {
        object[name(key)] = text;
    }
}

QJsonObject objectOf(const CameraSettings &settings)
{
    QJsonObject object;
    const QStringList keys = SettingsWords::keys();
    for (const QString &key : keys) {
        object[key] = SettingsWords::word(settings, key);
    }
    return object;
}

QString outcomeName(CameraResult::Outcome outcome)
{
    switch (outcome) {
    case CameraResult::Outcome::Done:
        return name("done");
    case CameraResult::Outcome::Skipped:
        return name("skipped");
    case CameraResult::Outcome::Failed:
        return name("failed");
    }
    Q_UNREACHABLE();
}

} // namespace

QByteArray JsonReport::start(const ControlCommand &command, const QStringList &ports)
{
    return line("start",
                {{name("command"), command.word},
                 {name("dryRun"), command.dryRun},
                 {name("ports"), QJsonArray::fromStringList(ports)}});
}

QByteArray JsonReport::port(const PortDescription &port)
{
    QJsonObject object{{name("port"), port.name}, {name("path"), port.path}};
    addUnlessEmpty(object, "description", port.description);
    addUnlessEmpty(object, "vendorId", port.vendorId);
    addUnlessEmpty(object, "productId", port.productId);
    addUnlessEmpty(object, "serialNumber", port.serialNumber);
    addUnlessEmpty(object, "byId", port.byId);
    return line("port", object);
}

QByteArray JsonReport::state(const CameraStatus &status)
{
    return line("state",
                {{name("port"), status.port},
                 {name("state"), stateName(status.state)},
                 {name("attempt"), status.attempt}});
}

QByteArray JsonReport::progress(const CameraStatus &status)
{
    constexpr double kTenths = 10.0;
    QJsonObject object{
        {name("port"), status.port},
        {name("packets"), status.packets},
        {name("packetCount"), status.packetCount},
        {name("packetsPerSecond"), std::round(status.packetsPerSecond * kTenths) / kTenths}};
    if (const auto left = secondsLeft(status)) {
        object[name("secondsLeft")] = *left;
    }
    return line("progress", object);
}

QByteArray JsonReport::note(const QString &text)
{
    return line("note", {{name("text"), text}});
}

QByteArray JsonReport::result(const CameraResult &result)
{
    QJsonObject object{{name("port"), result.port}, {name("outcome"), outcomeName(result.outcome)}};
    if (result.outcome != CameraResult::Outcome::Done) {
        object[name("reason")] = result.reason.id;
        object[name("sentence")] = result.reason.sentence;
        object[name("remedy")] = result.reason.remedy;
    }
    addUnlessEmpty(object, "version", result.version);
    if (result.settings) {
        object[name("settings")] = objectOf(*result.settings);
    }
    if (!result.differences.isEmpty()) {
        QJsonArray differences;
        for (const SettingsWords::Difference &difference : result.differences) {
            differences += QJsonObject{{name("key"), difference.key},
                                       {name("wanted"), difference.wanted},
                                       {name("found"), difference.found}};
        }
        object[name("differences")] = differences;
    }
    if (result.zoom) {
        object[name("zoom")] = *result.zoom;
    }
    addUnlessEmpty(object, "versionAfter", result.versionAfter);
    addUnlessEmpty(object, "imageVersion", result.imageVersion);
    if (result.attempts > 0) {
        object[name("attempts")] = result.attempts;
    }
    if (result.uploadTime) {
        object[name("uploadMilliseconds")] = static_cast<qint64>(result.uploadTime->count());
    }
    if (!result.wouldSend.isEmpty()) {
        object[name("wouldSend")] = QJsonArray::fromStringList(result.wouldSend);
    }
    return line("result", object);
}

QByteArray JsonReport::end(const RunSummary &summary)
{
    return line("end",
                {{name("done"), summary.done},
                 {name("skipped"), summary.skipped},
                 {name("failed"), summary.failed},
                 {name("exitCode"), summary.exitCode}});
}
