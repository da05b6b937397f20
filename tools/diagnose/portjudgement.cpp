// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "portjudgement.h"

#include "linelistener.h"
#include "portholders.h"
#include "portinspection.h"
#include "terminationsignals.h"

#include <QCoreApplication>
#include <QSerialPort>

namespace {

/// @param[in,out] finding  what is known about the port
LineRecord talk(PortFinding *finding, std::chrono::milliseconds wait,
                const std::function<void()> &asks, const TerminationSignals &endings)
{
    QSerialPort serial;
    serial.setPortName(finding->port);
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
    QObject::connect(&endings, &TerminationSignals::received, &listener, &LineListener::stop);
    asks();
    listener.askAndListen(wait);
    finding->isReadByOthers = listener.isReadByOthers();
    if (!listener.failure().isEmpty()) {
        finding->systemText = listener.failure();
        explainHangUp(finding);
    }
    return listener.record();
}

} // namespace

PortJudgement judgePort(const QString &port, std::chrono::milliseconds wait,
                        const std::function<void()> &asks)
{
    const TerminationSignals endings;
    int endingSignal = 0;
    QObject::connect(&endings, &TerminationSignals::received,
                     [&endingSignal](int number) { endingSignal = number; });
    PortJudgement judgement;
    judgement.finding = inspectPort(port);
    if (judgement.finding.kind == PortFinding::Kind::Open) {
        judgement.line = talk(&judgement.finding, wait, asks, endings);
    }
    // Delivers a signal that has come while nothing was waited for.
    QCoreApplication::processEvents();
    if (endingSignal != 0) {
        TerminationSignals::endBy(endingSignal);
    }
    judgement.diagnosis = diagnose(judgement.finding, judgement.line, wait);
    return judgement;
}
