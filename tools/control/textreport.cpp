// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "textreport.h"

#include "printabletext.h"

#include <QStringList>

namespace {

using Kind = ControlCommand::Kind;

QString settingsLines(const CameraSettings &settings)
{
    QString lines;
    const QStringList keys = SettingsWords::keys();
    for (const QString &key : keys) {
        lines += QStringLiteral("  %1 %2\n").arg(key, -15).arg(SettingsWords::word(settings, key));
    }
    return lines;
}

QString upgradeText(const CameraResult &result)
{
    constexpr double kMillisecondsPerSecond = 1000.0;
    const double seconds = static_cast<double>(result.uploadTime->count()) / kMillisecondsPerSecond;
    return QStringLiteral("upgraded from version %1 to %2, as the image has it, in %3 s")
        .arg(result.version, result.versionAfter, QString::number(seconds, 'f', 1));
}

/// What was done, after the port's name and a colon.
QString doneText(const ControlCommand &command, const CameraResult &result)
{
    switch (command.kind) {
    case Kind::Info:
        return QStringLiteral("version ") + result.version;
    case Kind::Save:
        return QStringLiteral("saved as ") + command.file;
    case Kind::Diff:
        return QStringLiteral("as in ") + command.file;
    case Kind::Apply:
    case Kind::Set:
        return QStringLiteral("set");
    case Kind::Zoom:
        return QStringLiteral("zoom %1 is %2").arg(command.preset + 1).arg(*result.zoom);
    case Kind::Upgrade:
        return upgradeText(result);
    case Kind::List:
        break; // see probe()
    }
    Q_UNREACHABLE();
}

} // namespace

QString TextReport::port(const PortDescription &port)
{
    QStringList parts;
    if (!port.description.isEmpty()) {
        parts += port.description;
    }
    if (!port.vendorId.isEmpty()) {
        parts += QStringLiteral("USB %1:%2").arg(port.vendorId, port.productId);
    }
    if (!port.serialNumber.isEmpty()) {
        parts += QStringLiteral("serial number ") + port.serialNumber;
    }
    if (!port.byId.isEmpty()) {
        parts += port.byId;
    }
    return printableText(parts.isEmpty() ? port.name
                                         : QStringLiteral("%1: %2").arg(
                                             port.name, parts.join(QStringLiteral(", "))))
        + QLatin1Char('\n');
}

QString TextReport::state(const CameraStatus &status)
{
    QString text = QStringLiteral("%1: %2").arg(status.port, stateName(status.state));
    if (status.attempt > 1) {
        text += QStringLiteral(", attempt %1").arg(status.attempt);
    }
    return printableText(text) + QLatin1Char('\n');
}

QString TextReport::progress(const CameraStatus &status)
{
    const QString text =
        QStringLiteral("%1: %2 of %3 packets, %4 a second")
            .arg(status.port, QString::number(status.packets), QString::number(status.packetCount),
                 QString::number(status.packetsPerSecond, 'f', 1));
    return printableText(text) + QLatin1Char('\n');
}

QString TextReport::probe(const CameraResult &result)
{
    const QString text = result.outcome == CameraResult::Outcome::Done
        ? QStringLiteral("a camera of version ") + result.version
        : QStringLiteral("no camera: ") + result.reason.sentence;
    return QStringLiteral("  ") + printableText(text) + QLatin1Char('\n');
}

QString TextReport::result(const ControlCommand &command, const CameraResult &result)
{
    if (result.outcome == CameraResult::Outcome::Skipped) {
        return printableText(
                   QStringLiteral("%1: skipped. %2").arg(result.port, result.reason.sentence))
            + QLatin1Char('\n');
    }
    if (!result.wouldSend.isEmpty()) {
        QString text;
        for (const QString &line : result.wouldSend) {
            text += printableText(QStringLiteral("%1: would send %2").arg(result.port, line))
                + QLatin1Char('\n');
        }
        return text;
    }
    const QString text =
        printableText(QStringLiteral("%1: %2").arg(result.port, doneText(command, result)))
        + QLatin1Char('\n');
    return command.kind == Kind::Info ? text + settingsLines(*result.settings) : text;
}

QString TextReport::failure(const CameraResult &result)
{
    QString text = QStringLiteral("%1: %2").arg(result.port, result.reason.sentence);
    if (!result.reason.remedy.isEmpty()) {
        text += QLatin1Char(' ') + result.reason.remedy;
    }
    return text;
}

QString TextReport::summary(const RunSummary &summary)
{
    if (summary.done + summary.skipped + summary.failed < 2) {
        return {};
    }
    QStringList parts{QStringLiteral("%1 done").arg(summary.done)};
    if (summary.skipped > 0) {
        parts += QStringLiteral("%1 skipped").arg(summary.skipped);
    }
    if (summary.failed > 0) {
        parts += QStringLiteral("%1 failed").arg(summary.failed);
    }
    return parts.join(QStringLiteral(", ")) + QLatin1Char('\n');
}
