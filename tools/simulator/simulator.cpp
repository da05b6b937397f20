// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "simulator.h"

#include "fileio.h"
#include "forwardingcamera.h"
#include "pseudoterminalline.h"
#include "recordingline.h"
#include "replayingcamera.h"
#include "testbedmark.h"

#include <QTime>

#include <csignal>

namespace {

constexpr int kNotStartedStatus = 127; // as shells have it

/// @param error  set to the reason when the result is nothing, and to what was left out otherwise
std::optional<QVector<LineEvent>> readRecording(const QString &path, QString *error)
{
    // An upload of the largest firmware takes less than half of that.
    constexpr int kMaximumSize = 256 * 1024 * 1024;
    const auto text = readFile(path, kMaximumSize, error);
    std::optional<QVector<LineEvent>> events;
    if (text && text->size() > kMaximumSize) {
        *error = QStringLiteral("it is larger than 256 MiB");
    } else if (text) {
        events = Recording::parse(*text, error);
    }
    if (!events) {
        *error = QStringLiteral("cannot replay %1: %2").arg(path, *error);
    }
    return events;
}

} // namespace

Simulator::Simulator(const SimulatorOptions &options, QObject *parent)
    : QObject(parent)
    , m_options(options)
    , m_log(options.withHex)
    , m_wire(makeWire(options, 1))
    , m_control([this](const QString &command) {
        return command == QLatin1String("help") ? ControlAnswer{{}, controlHelp()}
                                                : ControlAnswer{obey(command), {}};
    })
{
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
    if (!m_options.firmwarePath.isEmpty() && !canWriteFile(m_options.firmwarePath, error)) {
        *error = cannotSave(*error);
        return false;
    }
    if (!m_options.controlPath.isEmpty() && !m_control.listen(m_options.controlPath, error)) {
        return false;
    }
    if (m_control.hasReplacedAnother()) {
        emit complained(QStringLiteral("replaced the control socket %1, which a program that has "
                                       "crashed has left")
                            .arg(m_options.controlPath));
    }
    const QStringList leftovers =
        m_options.program.isEmpty() ? QStringList() : TestbedMark::removeLeftovers();
    for (const QString &folder : leftovers) {
        emit complained(
            QStringLiteral("removed %1, which a simulator that has crashed has left").arg(folder));
    }
    if (!makeCamera(error) || !plug(error) || !makeFurtherCameras(error)) {
        return false;
    }
    m_camera->start();
    if (!m_options.program.isEmpty()) {
        m_program.start(m_options.program, m_options.arguments);
    }
    return true;
}

bool Simulator::makeCamera(QString *error)
{
    const bool isMade = !m_options.replayPath.isEmpty() ? makeReplayingCamera(error)
        : !m_options.throughPort.isEmpty()              ? makeForwardingCamera(error)
                                                        : makeAnsweringCamera(error);
    if (!isMade) {
        return false;
    }
    if (!m_options.quiet) {
        connect(m_camera.get(), &CameraEnd::logged, this, &Simulator::printed);
    }
    connect(m_camera.get(), &CameraEnd::plugDue, this, &Simulator::plugIfNot);
    connect(m_camera.get(), &CameraEnd::unplugDue, this, &Simulator::unplugIfPlugged);
    return true;
}

bool Simulator::makeFurtherCameras(QString *error)
{
    for (int number = 2; number <= m_options.cameras; ++number) {
        auto camera = std::make_unique<FurtherCamera>(m_options, number);
        if (!m_options.quiet) {
            // The first camera's log has no number.
            connect(camera.get(), &FurtherCamera::printed, this,
                    [this, number](const QString &text) {
                        emit printed(QStringLiteral("%1  %2").arg(number).arg(text));
                    });
        }
        connect(camera.get(), &FurtherCamera::complained, this, &Simulator::complained);
        if (!camera->plug(error)) {
            return false;
        }
        if (!camera->terminalName().isEmpty()) {
            emit printed(QStringLiteral("Port: ") + camera->terminalName());
        }
        m_furtherCameras.push_back(std::move(camera));
    }
    return true;
}

bool Simulator::makeAnsweringCamera(QString *error)
{
    if (!makeLine(error)) {
        return false;
    }
    auto camera = std::make_unique<AnsweringCamera>(m_options.camera, m_options.behaviour, m_log,
                                                    *m_faultyLine);
    if (!m_options.firmwarePath.isEmpty()) {
        connect(camera.get(), &AnsweringCamera::firmwareReceived, this, &Simulator::saveFirmware);
    }
    m_camera = std::move(camera);
    return true;
}

bool Simulator::makeReplayingCamera(QString *error)
{
    // Before a new recording is made, of which nothing would come.
    const auto recording = readRecording(m_options.replayPath, error);
    if (!recording || !makeLine(error)) {
        return false;
    }
    if (!error->isEmpty()) {
        emit complained(QStringLiteral("%1: %2").arg(m_options.replayPath, *error));
    }
    m_camera = std::make_unique<ReplayingCamera>(*recording, m_log, *m_faultyLine);
    return true;
}

bool Simulator::makeForwardingCamera(QString *error)
{
    auto port = ForwardingCamera::openPort(m_options.throughPort, error);
    if (port == nullptr || !makeLine(error)) {
        return false;
    }
    m_camera = std::make_unique<ForwardingCamera>(std::move(port), m_log, *m_faultyLine);
    return true;
}

bool Simulator::makeLine(QString *error)
{
    if (!m_options.recordingPath.isEmpty()) {
        m_recordingLine = RecordingLine::create(*m_wire, m_options.recordingPath, error);
        if (m_recordingLine == nullptr) {
            return false;
        }
        connect(m_recordingLine.get(), &RecordingLine::failed, this, &Simulator::noteFailure);
    }
    CameraLine &line = m_recordingLine != nullptr ? *m_recordingLine : *m_wire;
    m_faultyLine = std::make_unique<FaultyLine>(line);
    m_faultyLine->setFaults(m_options.faults, m_options.seed);
    connect(m_faultyLine.get(), &FaultyLine::faultApplied, this, &Simulator::note);
    connect(m_faultyLine.get(), &FaultyLine::hungUp, this, &Simulator::lineLost);
    return true;
}

bool Simulator::plug(QString *error)
{
    if (!m_faultyLine->plug(error)) {
        return false;
    }
    if (const auto *terminal = qobject_cast<PseudoTerminalLine *>(m_wire.get())) {
        emit printed(QStringLiteral("Port: ") + terminal->portName());
    }
    return true;
}

void Simulator::plugIfNot()
{
    QString error;
    if (m_wire->isPlugged()) {
        return;
    }
    if (plug(&error)) {
        note(QStringLiteral("plugged"));
    } else {
        noteFailure(error);
    }
}

void Simulator::unplugIfPlugged()
{
    if (m_wire->isPlugged()) {
        m_faultyLine->unplug();
        lineLost();
    }
}

void Simulator::lineLost()
{
    m_camera->lineLost();
    note(QStringLiteral("unplugged"));
}

void Simulator::saveFirmware(const QByteArray &firmware)
{
    QString error;
    if (!writeFile(m_options.firmwarePath, firmware, &error)) {
        noteFailure(cannotSave(error));
    }
}

QString Simulator::cannotSave(const QString &reason) const
{
    return QStringLiteral("cannot save the firmware as %1: %2").arg(m_options.firmwarePath, reason);
}

// Returns why it could not, or an empty text.
QString Simulator::obey(const QString &command)
{
    if (command == QLatin1String("unplug")) {
        if (!m_wire->isPlugged()) {
            return QStringLiteral("not plugged");
        }
        unplugIfPlugged();
    } else if (command == QLatin1String("plug")) {
        if (m_wire->isPlugged()) {
            return QStringLiteral("already plugged");
        }
        QString error;
        if (!plug(&error)) {
            return error;
        }
        note(QStringLiteral("plugged"));
    } else if (command == QLatin1String("silent on")) {
        return setSilent(true);
    } else if (command == QLatin1String("silent off")) {
        return setSilent(false);
    } else if (command.startsWith(QLatin1String("faults "))) {
        return setFaults(command.section(QLatin1Char(' '), 1));
    } else if (command == QLatin1String("quit")) {
        end(SIGTERM);
    } else {
        constexpr int kShown = 40;
        return QStringLiteral("unknown command '%1', see help").arg(command.left(kShown));
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
    m_faultyLine->setFaults(*plan, *seed);
    note(QStringLiteral("faults %1, seed %2").arg(plan->toString(), QString::number(*seed)));
    return {};
}

// Returns why it could not, or an empty text.
QString Simulator::setSilent(bool silent)
{
    auto *const camera = qobject_cast<AnsweringCamera *>(m_camera.get());
    if (camera == nullptr) {
        return QStringLiteral("there is no simulated camera");
    }
    camera->setSilent(silent);
    note(silent ? QStringLiteral("silent on") : QStringLiteral("silent off"));
    return {};
}

void Simulator::note(const QString &text)
{
    if (!m_options.quiet) {
        emit printed(m_log.notice(QTime::currentTime(), text));
    }
}

void Simulator::noteFailure(const QString &reason)
{
    note(reason);
    emit complained(reason);
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
