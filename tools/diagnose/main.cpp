// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "diagnoseoptions.h"
#include "diagnosisreport.h"
#include "fileio.h"
#include "portidentity.h"
#include "portinspection.h"
#include "portjudgement.h"
#include "portwatch.h"
#include "printabletext.h"
#include "standardstreams.h"
#include "supportreport.h"

#include <QCoreApplication>
#include <QJsonArray>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <variant>

namespace {

constexpr int kOutputErrorStatus = 5;

using Task = DiagnoseOptions::Task;

QString noPorts()
{
    return QStringLiteral("This computer has no serial port at all.\n");
}

/// Says what goes on, which is not a result.
void mention(const QString &text)
{
    std::fputs(text.toLocal8Bit().constData(), stderr);
}

bool printPorts(bool asJson)
{
    const QVector<PortIdentity> identities = portIdentities();
    if (asJson) {
        QJsonArray objects;
        for (const PortIdentity &identity : identities) {
            objects += jsonObject(identity);
        }
        return print(jsonText({{QStringLiteral("ports"), QJsonArray::fromStringList(listedPorts())},
                               {QStringLiteral("identities"), objects}}));
    }
    QString lines;
    for (const PortIdentity &identity : identities) {
        lines += printableText(identityText(identity)) + QLatin1Char('\n');
    }
    return print(lines.isEmpty() ? noPorts() : lines);
}

QStringList portsToJudge(const DiagnoseOptions &options)
{
    if (options.task == Task::OnePort) {
        return {options.port};
    }
    if (options.task == Task::NextPort) {
        mention(QStringLiteral("Waiting for an adapter ...\n"));
        return {portThatAppears()};
    }
    QStringList ports;
    const QVector<PortIdentity> identities = portIdentities();
    for (const PortIdentity &identity : identities) {
        ports += identity.port;
    }
    return ports;
}

PortJudgement judge(const QString &port, const DiagnoseOptions &options)
{
    return judgePort(port, options.wait, [&] {
        if (!options.asJson) {
            mention(QStringLiteral("Asking the camera at %1, for up to %2 seconds ...\n")
                        .arg(printableText(port),
                             QString::number(static_cast<double>(options.wait.count()) / 1000.0)));
        }
    });
}

ReportedPort reported(const PortJudgement &judgement, const DiagnoseOptions &options)
{
    const PortIdentity identity = identityOf(judgement.finding.port);
    const PortFinding finding = withoutNames(judgement.finding);
    return {jsonReport(diagnose(finding, judgement.line, options.wait), finding, judgement.line),
            identity, kernelLinesAbout({identity.port, identity.usbPath})};
}

bool writeReport(const QVector<ReportedPort> &ports, const QString &path)
{
    QString error;
    if (!writeFile(path, supportReport(ports), &error)) {
        complain(QStringLiteral("%1: %2").arg(path, error));
        return false;
    }
    mention(QStringLiteral("%1 holds %2\n").arg(printableText(path), reportContents()));
    return true;
}

/// @return the exit code
int judgePorts(const DiagnoseOptions &options)
{
    QString error;
    if (!options.reportPath.isEmpty() && !canWriteFile(options.reportPath, &error)) {
        complain(QStringLiteral("%1: %2").arg(options.reportPath, error));
        return kOutputErrorStatus;
    }
    const QStringList ports = portsToJudge(options);
    int status =
        static_cast<int>(ports.isEmpty() ? DiagnosisStatus::BadPort : DiagnosisStatus::NoAnswer);
    bool isPrinted = !ports.isEmpty() || options.asJson || print(noPorts());
    QJsonArray objects;
    QVector<ReportedPort> reports;
    for (const QString &port : ports) {
        const PortJudgement judgement = judge(port, options);
        status = std::min(status, static_cast<int>(judgement.diagnosis.status));
        if (options.asJson) {
            objects += jsonReport(judgement.diagnosis, judgement.finding, judgement.line);
        } else {
            const QString text = textReport(judgement.diagnosis, judgement.finding, judgement.line);
            isPrinted = isPrinted && print(port == ports.first() ? text : QLatin1Char('\n') + text);
        }
        if (!options.reportPath.isEmpty()) {
            reports += reported(judgement, options);
        }
    }
    if (options.asJson) {
        isPrinted = print(jsonText(options.task == Task::AllPorts
                                       ? QJsonObject{{QStringLiteral("diagnoses"), objects},
                                                     {QStringLiteral("status"), status}}
                                       : objects.first().toObject()));
    }
    const bool isReported =
        options.reportPath.isEmpty() || writeReport(reports, options.reportPath);
    return isPrinted && isReported ? status : kOutputErrorStatus;
}

} // namespace

int main(int argc, char *argv[])
{
    setUpProgram(QStringLiteral("corvane-diagnose"));
    const QCoreApplication application(argc, argv);

    const QStringList arguments = QCoreApplication::arguments();
    const auto commandLine = parseDiagnoseCommandLine(arguments);
    if (const auto *information = std::get_if<Information>(&commandLine)) {
        return report(*information, kOutputErrorStatus);
    }
    if (const auto *error = std::get_if<UsageError>(&commandLine)) {
        // A program that reads the result finds one on the standard output.
        if (arguments.contains(QStringLiteral("--json"))) {
            print(jsonText(jsonReport(*error)));
        }
        return report(*error);
    }
    const auto &options = *std::get_if<DiagnoseOptions>(&commandLine);
    if (options.task == Task::List) {
        return printPorts(options.asJson) ? EXIT_SUCCESS : kOutputErrorStatus;
    }
    return judgePorts(options);
}
