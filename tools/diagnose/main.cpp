// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "diagnoseoptions.h"
#include "diagnosis.h"
#include "diagnosisreport.h"
#include "linelistener.h"
#include "portholders.h"
#include "portinspection.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSerialPort>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <variant>

namespace {

constexpr int kOutputErrorStatus = 5;

void say(const QString &text)
{
    std::fputs(text.toLocal8Bit().constData(), stderr);
}

void complain(const QString &text)
{
    say(QStringLiteral("%1: %2\n").arg(QCoreApplication::applicationName(), text));
}

/// @return the exit code: @p status if that was possible
int print(const QByteArray &text, int status)
{
    if (std::fputs(text.constData(), stdout) < 0 || std::fflush(stdout) != 0) {
        complain(QStringLiteral("cannot write the result: ") + qt_error_string(errno));
        return kOutputErrorStatus;
    }
    return status;
}

int printPorts(bool asJson)
{
    const QStringList ports = listedPorts();
    if (asJson) {
        const QJsonObject object{{QStringLiteral("ports"), QJsonArray::fromStringList(ports)}};
        return print(QJsonDocument(object).toJson(), EXIT_SUCCESS);
    }
    const QString text = ports.isEmpty()
        ? QStringLiteral("This computer has no serial port at all.")
        : ports.join(QLatin1Char('\n'));
    return print(text.toLocal8Bit() + '\n', EXIT_SUCCESS);
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
    if (!listener.failure().isEmpty()) {
        finding->kind = PortFinding::Kind::HungUp;
        finding->systemText = listener.failure();
    }
    return listener.record();
}

int diagnosePort(const DiagnoseOptions &options)
{
    PortFinding finding = inspectPort(options.port);
    LineRecord line;
    if (finding.kind == PortFinding::Kind::Open) {
        if (!options.asJson) {
            say(QStringLiteral("Asking the camera at %1, for up to %2 seconds ...\n")
                    .arg(options.port,
                         QString::number(static_cast<double>(options.wait.count()) / 1000.0)));
        }
        line = talk(&finding, options);
    }
    const Diagnosis diagnosis = diagnose(finding, line, options.wait);
    return print(options.asJson ? jsonReport(diagnosis, finding, line)
                                : textReport(diagnosis, finding, line).toLocal8Bit(),
                 static_cast<int>(diagnosis.status));
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("corvane-diagnose"));
    QCoreApplication::setApplicationVersion(QStringLiteral(CORVANE_VERSION));

    const auto commandLine = parseDiagnoseCommandLine(QCoreApplication::arguments());
    if (const auto *information = std::get_if<Information>(&commandLine)) {
        return print(information->text.toLocal8Bit(), EXIT_SUCCESS);
    }
    if (const auto *badUsage = std::get_if<BadUsage>(&commandLine)) {
        complain(badUsage->reason);
        say(QStringLiteral("Try --help.\n"));
        return static_cast<int>(DiagnosisStatus::BadUsage);
    }
    const auto &options = *std::get_if<DiagnoseOptions>(&commandLine);
    return options.port.isEmpty() ? printPorts(options.asJson) : diagnosePort(options);
}
