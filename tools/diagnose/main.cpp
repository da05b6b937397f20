// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "diagnoseoptions.h"
#include "diagnosis.h"
#include "diagnosisreport.h"
#include "linelistener.h"
#include "portholders.h"
#include "portinspection.h"
#include "printabletext.h"
#include "standardstreams.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSerialPort>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <variant>

namespace {

constexpr int kOutputErrorStatus = 5;

bool printPorts(bool asJson)
{
    QStringList ports = listedPorts();
    if (asJson) {
        const QJsonObject object{{QStringLiteral("ports"), QJsonArray::fromStringList(ports)}};
        return print(QJsonDocument(object).toJson());
    }
    std::transform(ports.begin(), ports.end(), ports.begin(), printableText);
    return print((ports.isEmpty() ? QStringLiteral("This computer has no serial port at all.")
                                  : ports.join(QLatin1Char('\n')))
                 + QLatin1Char('\n'));
}

/// Opens the port as Corvane does, and listens on it.
/// @param[in,out] finding  what is known about the port
LineRecord talk(PortFinding *finding, const DiagnoseOptions &options)
{
    QSerialPort serial;
    serial.setPortName(options.port);
    serial.setBaudRate(QSerialPort::Baud115200, QSerialPort::AllDirections);
    serial.setDataBits(QSerialPort::Data8);
    serial.setParity(QSerialPort::NoParity);
    serial.setStopBits(QSerialPort::OneStop);
    serial.setFlowControl(QSerialPort::NoFlowControl);
    if (!serial.open(QIODevice::ReadWrite)) {
        explainFailure(finding, serial);
        return {};
    }
    finding->holders = holdersOfDevice(finding->devicePath);
    LineListener listener(serial);
    listener.askAndListen(options.wait);
    finding->isReadByOthers = listener.isReadByOthers();
    if (!listener.failure().isEmpty()) {
        finding->systemText = listener.failure();
        explainHangUp(finding);
    }
    return listener.record();
}

int diagnosePort(const DiagnoseOptions &options)
{
    PortFinding finding = inspectPort(options.port);
    LineRecord line;
    if (finding.kind == PortFinding::Kind::Open) {
        if (!options.asJson) {
            const QString text =
                QStringLiteral("Asking the camera at %1, for up to %2 seconds ...\n")
                    .arg(printableText(options.port),
                         QString::number(static_cast<double>(options.wait.count()) / 1000.0));
            std::fputs(text.toLocal8Bit().constData(), stderr);
        }
        line = talk(&finding, options);
    }
    const Diagnosis diagnosis = diagnose(finding, line, options.wait);
    const bool isPrinted =
        print(options.asJson ? jsonReport(diagnosis, finding, line)
                             : textReport(diagnosis, finding, line).toLocal8Bit());
    return isPrinted ? static_cast<int>(diagnosis.status) : kOutputErrorStatus;
}

} // namespace

int main(int argc, char *argv[])
{
    setUpProgram(QStringLiteral("corvane-diagnose"));
    const QCoreApplication application(argc, argv);

    const auto commandLine = parseDiagnoseCommandLine(QCoreApplication::arguments());
    if (const auto *information = std::get_if<Information>(&commandLine)) {
        return report(*information, kOutputErrorStatus);
    }
    if (const auto *error = std::get_if<UsageError>(&commandLine)) {
        return report(*error);
    }
    const auto &options = *std::get_if<DiagnoseOptions>(&commandLine);
    if (options.port.isEmpty()) {
        return printPorts(options.asJson) ? EXIT_SUCCESS : kOutputErrorStatus;
    }
    return diagnosePort(options);
}
