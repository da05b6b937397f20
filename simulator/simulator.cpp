// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "simulator.h"

#include "mockedadapterline.h"
#include "pseudoterminalline.h"

#include <QSaveFile>
#include <QTime>

#include <csignal>

namespace {

constexpr int kNotStartedStatus = 127; // as shells have it

std::unique_ptr<CameraLine> makeLine(const SimulatorOptions &options)
{
    if (options.program.isEmpty()) {
        return std::make_unique<PseudoTerminalLine>();
    }
    return std::make_unique<MockedAdapterLine>(options.portName);
}

} // namespace

Simulator::Simulator(const SimulatorOptions &options, QObject *parent)
    : QObject(parent)
    , m_options(options)
    , m_log(options.withHex)
    , m_line(makeLine(options))
    , m_faultyLine(*m_line)
    , m_camera(options.camera, options.manner, m_log, m_faultyLine)
    , m_control([this](const QString &command) { return obey(command); })
{
    m_faultyLine.setFaults(options.faults, options.seed);
    connect(&m_faultyLine, &FaultyLine::faultApplied, this, &Simulator::note);
    connect(&m_faultyLine, &FaultyLine::hungUp, this, &Simulator::lineLost);
    if (!options.quiet) {
        connect(&m_camera, &AnsweringCamera::logged, this, &Simulator::printed);
    }
    if (!options.firmwarePath.isEmpty()) {
        connect(&m_camera, &AnsweringCamera::firmwareReceived, this, &Simulator::saveFirmware);
    }
    connect(&m_program, &ChildProgram::finished, this,
            [this](int status) { emit finished(status, {}); });
    connect(&m_program, &ChildProgram::failedToStart, this, [this](const QString &reason) {
        emit finished(kNotStartedStatus,
                      QStringLiteral("cannot start %1: %2").arg(m_options.program, reason));
    });
    connect(&m_signals, &TerminationSignals::received, this,
            [this](int number, bool isFromTerminal) {
                if (!isFromTerminal || m_options.program.isEmpty()) {
                    end(number);
                }
            });
}

Simulator::~Simulator() = default;

bool Simulator::start(QString *error)
{
    if (!m_options.controlPath.isEmpty() && !m_control.listen(m_options.controlPath, error)) {
        return false;
    }
    if (!plug(error)) {
        return false;
    }
    if (!m_options.program.isEmpty()) {
        m_program.start(m_options.program, m_options.arguments);
    }
    return true;
}

bool Simulator::plug(QString *error)
{
    if (!m_line->plug(error)) {
        return false;
    }
    if (const auto *terminal = qobject_cast<PseudoTerminalLine *>(m_line.get())) {
        emit printed(QStringLiteral("Port: ") + terminal->portName());
    }
    return true;
}

void Simulator::saveFirmware(const QByteArray &firmware)
{
    QSaveFile file(m_options.firmwarePath);
    if (file.open(QIODevice::WriteOnly) && file.write(firmware) == firmware.size()
        && file.commit()) {
        return;
    }
    const QString reason = QStringLiteral("cannot save the firmware as %1: %2")
                               .arg(m_options.firmwarePath, file.errorString());
    note(reason);
    emit complained(reason);
}

// Returns why it could not, or an empty text.
QString Simulator::obey(const QString &command)
{
    if (command == QLatin1String("unplug")) {
        if (!m_line->isPlugged()) {
            return QStringLiteral("not plugged");
        }
        m_faultyLine.unplug();
        lineLost();
    } else if (command == QLatin1String("plug")) {
        if (m_line->isPlugged()) {
            return QStringLiteral("already plugged");
        }
        QString error;
        if (!plug(&error)) {
            return error;
        }
        note(QStringLiteral("plugged"));
    } else if (command == QLatin1String("silent on")) {
        m_camera.setSilent(true);
    } else if (command == QLatin1String("silent off")) {
        m_camera.setSilent(false);
    } else if (command.startsWith(QLatin1String("faults "))) {
        return setFaults(command.section(QLatin1Char(' '), 1));
    } else if (command == QLatin1String("quit")) {
        end(SIGTERM);
    } else {
        return QStringLiteral("unknown command '%1'").arg(command);
    }
    return {};
}

// Returns why it could not, or an empty text.
QString Simulator::setFaults(const QString &planAndSeed)
{
    QString error;
    const auto plan = FaultPlan::parse(planAndSeed.section(QLatin1Char(' '), 0, 0), &error);
    if (!plan) {
        return error;
    }
    const QString seedText = planAndSeed.section(QLatin1Char(' '), 1);
    const auto seed = seedText.isEmpty() ? m_options.seed : faultSeedFrom(seedText);
    if (!seed) {
        return QStringLiteral("the seed is a number from 0 to 4294967295, not '%1'").arg(seedText);
    }
    m_faultyLine.setFaults(*plan, *seed);
    return {};
}

void Simulator::lineLost()
{
    m_camera.lineLost();
    note(QStringLiteral("unplugged"));
}

void Simulator::note(const QString &text)
{
    if (!m_options.quiet) {
        emit printed(m_log.notice(QTime::currentTime(), text));
    }
}

// With a program, it is the program's end that ends the run.
void Simulator::end(int signalNumber)
{
    if (m_options.program.isEmpty()) {
        emit finished(0, {});
    } else {
        m_program.sendSignal(signalNumber);
    }
}
