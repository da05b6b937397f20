// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "simulator.h"

#include "fileio.h"
#include "forwardingcamera.h"
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
    if (!makeCamera(error) || !m_cameraControl->plug(error) || !makeFurtherCameras(error)) {
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
    m_cameraControl =
        std::make_unique<CameraControl>(*m_wire, *m_faultyLine, *m_camera, m_options.seed);
    connect(m_cameraControl.get(), &CameraControl::terminalPlugged, this, &Simulator::printPort);
    connect(m_cameraControl.get(), &CameraControl::noted, this, &Simulator::note);
    connect(m_cameraControl.get(), &CameraControl::failed, this, &Simulator::noteFailure);
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
        connect(camera.get(), &FurtherCamera::terminalPlugged, this, &Simulator::printPort);
        connect(camera.get(), &FurtherCamera::complained, this, &Simulator::complained);
        if (!camera->plug(error)) {
            return false;
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
    return true;
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
    if (command == QLatin1String("quit")) {
        end(SIGTERM);
        return {};
    }
    bool isNumber = false;
    const int number = command.section(QLatin1Char(' '), 0, 0).toInt(&isNumber);
    if (!isNumber) {
        return m_cameraControl->obey(command);
    }
    const QString rest = command.section(QLatin1Char(' '), 1);
    if (number < 1 || number > m_options.cameras) {
        return QStringLiteral("there is no camera %1").arg(number);
    }
    return number == 1 ? m_cameraControl->obey(rest)
                       : m_furtherCameras[static_cast<std::size_t>(number) - 2]->obey(rest);
}

void Simulator::printPort(const QString &name)
{
    emit printed(QStringLiteral("Port: ") + name);
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
