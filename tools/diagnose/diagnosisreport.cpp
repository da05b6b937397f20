// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "diagnosisreport.h"

#include "devicereply.h"
#include "printabletext.h"
#include "settingstext.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QStringList>

#include <algorithm>

namespace {

bool wasAsked(const PortFinding &finding)
{
    return finding.kind == PortFinding::Kind::Open || finding.kind == PortFinding::Kind::HungUp
        || finding.kind == PortFinding::Kind::LineHungUp;
}

QStringList cameraLines(const LineRecord &line)
{
    QStringList lines;
    if (!line.answer || !hasWholeVersion(line.answer->frame)) {
        return lines;
    }
    const SettingsReport report = DeviceReply(line.answer->frame).settings();
    lines += QStringLiteral("Device Version: ") + report.version;
    if (isWholeReport(line.answer->frame)) {
        const QVector<NamedSetting> settings = namedSettings(report);
        for (const NamedSetting &setting : settings) {
            lines += QStringLiteral("%1: %2").arg(setting.name, setting.value);
        }
    }
    return lines;
}

QStringList lineLines(const LineRecord &line)
{
    QStringList lines{
        QStringLiteral("Received: bytes %1, whole frames %2, wrong sums %3, broken off %4, bytes "
                       "outside whole frames %5")
            .arg(line.bytes)
            .arg(line.frames)
            .arg(line.wrongSums)
            .arg(line.brokenOff)
            .arg(line.strayBytes)};
    if (!line.firstBytes.isEmpty()) {
        lines += QStringLiteral("First bytes: ") + hexadecimalText(line.firstBytes);
    }
    return lines;
}

QJsonObject object(const Verdict &verdict)
{
    return {{QStringLiteral("verdict"), verdict.id},
            {QStringLiteral("sentence"), verdict.sentence},
            {QStringLiteral("remedy"), verdict.remedy}};
}

QJsonArray array(const QSet<int> &numbers)
{
    QJsonArray result;
    for (int number = 0; number <= 0xFF; ++number) {
        if (numbers.contains(number)) {
            result += number;
        }
    }
    return result;
}

QJsonObject lineObject(const LineRecord &line)
{
    return {{QStringLiteral("bytes"), line.bytes},
            {QStringLiteral("frames"), line.frames},
            {QStringLiteral("answers"), line.answers},
            {QStringLiteral("ownRequests"), line.ownRequests},
            {QStringLiteral("otherAcknowledgements"), line.otherAcknowledgements},
            {QStringLiteral("otherCommands"), array(line.otherCommands)},
            {QStringLiteral("foreignFrames"), line.foreignFrames},
            {QStringLiteral("foreignTypes"), array(line.foreignTypes)},
            {QStringLiteral("wrongSums"), line.wrongSums},
            {QStringLiteral("brokenOff"), line.brokenOff},
            {QStringLiteral("strayBytes"), line.strayBytes},
            {QStringLiteral("firstBytes"), hexadecimalText(line.firstBytes)}};
}

void addCamera(QJsonObject &report, const LineRecord::Answer &answer)
{
    report[QStringLiteral("answerMilliseconds")] = static_cast<qint64>(answer.time.count());
    if (!hasWholeVersion(answer.frame)) {
        return;
    }
    const SettingsReport settings = DeviceReply(answer.frame).settings();
    report[QStringLiteral("version")] = settings.version;
    if (isWholeReport(answer.frame)) {
        QJsonObject words;
        const QVector<NamedSetting> named = namedSettings(settings);
        for (const NamedSetting &setting : named) {
            words[setting.name] = setting.value;
        }
        report[QStringLiteral("settings")] = words;
    }
}

} // namespace

QString textReport(const Diagnosis &diagnosis, const PortFinding &finding, const LineRecord &line)
{
    QStringList lines{diagnosis.verdict.sentence};
    if (!diagnosis.verdict.remedy.isEmpty()) {
        lines += diagnosis.verdict.remedy;
    }
    for (const Verdict &warning : diagnosis.furtherWarnings) {
        lines += QString();
        lines += warning.sentence;
        lines += warning.remedy;
    }
    lines += QString();
    if (wasAsked(finding)) {
        lines += cameraLines(line);
        lines += lineLines(line);
    }
    QStringList ids{diagnosis.verdict.id};
    for (const Verdict &warning : diagnosis.furtherWarnings) {
        ids += warning.id;
    }
    lines += QStringLiteral("Verdict on %1: %2").arg(finding.port, ids.join(QStringLiteral(", ")));
    std::transform(lines.begin(), lines.end(), lines.begin(), printableText);
    return lines.join(QLatin1Char('\n')) + QLatin1Char('\n');
}

QJsonObject jsonReport(const Diagnosis &diagnosis, const PortFinding &finding,
                       const LineRecord &line)
{
    QJsonObject report = object(diagnosis.verdict);
    report[QStringLiteral("status")] = static_cast<int>(diagnosis.status);
    report[QStringLiteral("port")] = finding.port;
    report[QStringLiteral("device")] = finding.devicePath;
    report[QStringLiteral("ports")] = QJsonArray::fromStringList(finding.ports);
    QJsonArray warnings;
    for (const Verdict &warning : diagnosis.furtherWarnings) {
        warnings += object(warning);
    }
    report[QStringLiteral("furtherWarnings")] = warnings;
    QJsonArray holders;
    for (const PortHolder &holder : finding.holders) {
        holders +=
            QJsonObject{{QStringLiteral("pid"), holder.pid}, {QStringLiteral("name"), holder.name}};
    }
    report[QStringLiteral("holders")] = holders;
    if (!finding.systemText.isEmpty()) {
        report[QStringLiteral("systemError")] = finding.systemText;
    }
    if (wasAsked(finding)) {
        report[QStringLiteral("received")] = lineObject(line);
        if (line.answer) {
            addCamera(report, *line.answer);
        }
    }
    return report;
}

QJsonObject jsonReport(const UsageError &error)
{
    QJsonObject report = object(Verdict{QStringLiteral("bad-command-line"), error.reason,
                                        QStringLiteral("See corvane-diagnose --help.")});
    report[QStringLiteral("status")] = kUsageErrorStatus;
    return report;
}

QByteArray jsonText(const QJsonObject &object)
{
    return QJsonDocument(object).toJson();
}
