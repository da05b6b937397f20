// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "control.h"

#include "commandline.h"
#include "fileio.h"
#include "firmwareimage.h"
#include "firmwarepacket.h"
#include "portholders.h"
#include "portinspection.h"
#include "portlist.h"
#include "printabletext.h"
#include "standardstreams.h"
#include "textreport.h"

#include <QHash>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <utility>

namespace {

using Kind = ControlCommand::Kind;
using Outcome = CameraResult::Outcome;

constexpr int kFailedStatus = 1;
constexpr int kNoCameraStatus = 3;
constexpr int kOutputStatus = 4;
constexpr int kSignalStatus = 128;

constexpr std::chrono::milliseconds kRedrawPause(100);
constexpr std::chrono::seconds kJsonPause(1);
constexpr std::chrono::seconds kTextPause(10);
constexpr std::chrono::seconds kSecondChance(3);

TerminalDisplay::Screen screen()
{
    TerminalDisplay::Screen screen = Output::screen().value_or(TerminalDisplay::Screen());
    // As https://no-color.org/ has it.
    screen.withColours = qEnvironmentVariableIsEmpty("NO_COLOR");
    return screen;
}

} // namespace

Control::Control(const ControlCommand &command, QObject *parent)
    : QObject(parent)
    , m_order{command, {}, {}}
    , m_command(m_order.command)
    , m_isTerminal(command.kind == Kind::Upgrade && !command.asJson && !command.dryRun
                   && Output::screen().has_value())
{
    connect(&m_signals, &TerminationSignals::received, this, &Control::handleSignal);
    connect(&m_output, &Output::failed, this, [this] { endWhenNothingIsUploading(kOutputStatus); });
    connect(&m_displayTimer, &QTimer::timeout, this, &Control::showProgress);
}

void Control::start()
{
    if (!readFile() || !findPorts()) {
        return;
    }
    if (m_command.asJson) {
        QStringList ports;
        for (const Camera &camera : m_cameras) {
            ports += camera.port.name;
        }
        m_output.write(JsonReport::start(m_command, ports));
    }
    if (m_isFinished) {
        return; // as that could not be written
    }
    if (m_command.kind == Kind::List && !m_command.probe) {
        finish();
        return;
    }
    openPorts();
    if (m_command.kind == Kind::Upgrade && !m_command.dryRun) {
        m_displayTimer.start(m_command.asJson   ? std::chrono::milliseconds(kJsonPause)
                                 : m_isTerminal ? kRedrawPause
                                                : std::chrono::milliseconds(kTextPause));
    }
    endIfDue();
}

/// @return false when the run is over
bool Control::readFile()
{
    switch (m_command.kind) {
    case Kind::Upgrade:
        return readImage();
    case Kind::Diff:
    case Kind::Apply:
        return readSettings();
    case Kind::Save:
        return canSave();
    default:
        return true;
    }
}

bool Control::readImage()
{
    constexpr int kMaximumSize = static_cast<int>(FirmwareImage::kMaximumFileSize);
    QString error;
    const auto contents = ::readFile(m_command.file, kMaximumSize, &error);
    if (!contents) {
        refuse(kFailedStatus, QStringLiteral("%1: %2").arg(m_command.file, error));
        return false;
    }
    if (contents->size() > kMaximumSize) {
        refuse(kFailedStatus, QStringLiteral("%1: is larger than 256 MiB").arg(m_command.file));
        return false;
    }
    const FirmwareImage image(*contents);
    if (!image.hasMagic()) {
        refuse(
            kFailedStatus,
            QStringLiteral("%1: is no firmware image: the magic is missing").arg(m_command.file));
        return false;
    }
    m_order.upgrade = {image.firmware(), image.imageVersion(), m_command.attempts,
                       m_command.rebootLimit};
    const int size = m_order.upgrade.firmware.size();
    if (size == 0) {
        refuse(kFailedStatus, QStringLiteral("%1: the firmware is empty").arg(m_command.file));
        return false;
    }
    if (size > FirmwarePacket::kMaximumFirmwareSize) {
        refuse(kFailedStatus,
               QStringLiteral("%1: the firmware has 16 MiB or more, which cannot be announced")
                   .arg(m_command.file));
        return false;
    }
    return true;
}

bool Control::readSettings()
{
    QString error;
    const auto contents = ::readFile(m_command.file, SettingsWords::kMaximumFileSize, &error);
    const auto settings = contents ? SettingsWords::fromFile(*contents, &error) : std::nullopt;
    if (!settings) {
        refuse(kFailedStatus, QStringLiteral("%1: %2").arg(m_command.file, error));
        return false;
    }
    m_order.settings = *settings;
    return true;
}

/// So that it does not fail only once the camera has answered.
bool Control::canSave()
{
    QString error;
    if (m_command.file != kStandardStreamName && !canWriteFile(m_command.file, &error)) {
        refuse(kFailedStatus, QStringLiteral("%1: %2").arg(m_command.file, error));
        return false;
    }
    return true;
}

/// @return false when the run is over
bool Control::findPorts()
{
    if (m_command.toAll || m_command.kind == Kind::List) {
        const QVector<PortDescription> ports = portList();
        for (const PortDescription &port : ports) {
            m_cameras.push_back({port, nullptr, nullptr, {}});
        }
        return true;
    }
    QHash<QString, QString> names;
    for (const QString &name : m_command.ports) {
        const QString path = devicePathOf(name);
        const QString device = identityOfDevice(path);
        const QString identity = device.isEmpty() ? path : device;
        if (names.contains(identity)) {
            refuse(kUsageErrorStatus,
                   QStringLiteral("%1 and %2 are the same port").arg(names[identity], name));
            return false;
        }
        names[identity] = name;
        PortDescription port;
        port.name = name;
        m_cameras.push_back({port, nullptr, nullptr, {}});
    }
    return true;
}

/// Opens all before the first byte goes out, so that what cannot be done is known by then.
void Control::openPorts()
{
    const QStringList ports = listedPorts();
    QVector<PortFinding> findings;
    for (Camera &camera : m_cameras) {
        camera.line = std::make_unique<SerialLine>(camera.port.name);
        findings += camera.line->open();
        findings.last().ports = ports;
    }
    if (m_command.kind == Kind::Upgrade) {
        refuseSharedPorts(&findings);
    }
    startJobs(findings);
}

/// What another program has open as well would get only a part of the acknowledgements.
void Control::refuseSharedPorts(QVector<PortFinding> *findings)
{
    QStringList paths;
    for (const PortFinding &finding : std::as_const(*findings)) {
        paths += finding.devicePath;
    }
    const QVector<QVector<PortHolder>> holders = holdersOfDevices(paths);
    for (int i = 0; i < holders.size(); ++i) {
        PortFinding &finding = (*findings)[i];
        if (finding.kind == PortFinding::Kind::Open && !holders.at(i).isEmpty()) {
            finding.kind = PortFinding::Kind::Held;
            finding.holders = holders.at(i);
        }
    }
}

void Control::startJobs(const QVector<PortFinding> &findings)
{
    for (std::size_t i = 0; i < m_cameras.size(); ++i) {
        Camera &camera = m_cameras[i];
        const PortFinding &finding = findings.at(static_cast<int>(i));
        if (finding.kind != PortFinding::Kind::Open) {
            camera.line.reset();
            camera.result.port = camera.port.name;
            camera.result.outcome = Outcome::Failed;
            camera.result.reason =
                diagnose(finding, {}, Conversation::limitOf(UART_CTRL_CMD_HELLO)).verdict;
            continue;
        }
        camera.job = std::make_unique<CameraJob>(*camera.line, m_order, finding);
        follow(camera);
    }
    for (Camera &camera : m_cameras) {
        if (camera.job != nullptr) {
            ++m_running;
        }
    }
    for (Camera &camera : m_cameras) {
        if (camera.job != nullptr) {
            camera.job->start();
        }
    }
}

void Control::follow(Camera &camera)
{
    CameraJob *const job = camera.job.get();
    connect(job, &CameraJob::stateChanged, this, [this, job] {
        m_isDirty = true;
        if (m_command.asJson) {
            m_output.write(JsonReport::state(job->status()));
        } else if (!m_isTerminal) {
            m_output.write(TextReport::state(job->status()).toLocal8Bit());
        }
        endIfDue();
    });
    connect(job, &CameraJob::progressed, this, [this] { m_isDirty = true; });
    connect(job, &CameraJob::ended, this, [this, &camera, job] {
        m_isDirty = true;
        camera.result = job->result();
        if (m_command.kind == Kind::Save && camera.result.outcome == Outcome::Done) {
            save(camera);
        }
        --m_running;
        endIfDue();
    });
}

void Control::save(Camera &camera)
{
    const QByteArray contents = SettingsWords::toFile(*camera.result.settings);
    if (m_command.file == kStandardStreamName) {
        // As JSON, the result has the settings.
        m_output.write(m_command.asJson ? QByteArray() : contents);
        return;
    }
    QString error;
    if (!writeFile(m_command.file, contents, &error)) {
        camera.result.outcome = Outcome::Failed;
        camera.result.reason = {
            QStringLiteral("not-written"),
            QStringLiteral("%1 cannot be written: %2.").arg(m_command.file, error),
            {}};
    }
}

void Control::handleSignal(int number)
{
    if (number != SIGINT || !isUploading()) {
        endWhenNothingIsUploading(kSignalStatus + number);
        return;
    }
    if (m_interrupted.isValid()
        && !m_interrupted.hasExpired(std::chrono::milliseconds(kSecondChance).count())) {
        m_endCode = kSignalStatus + SIGINT;
        abandon();
        return;
    }
    m_interrupted.start();
    note(
        QStringLiteral(
            "Uploads that are going on: %1. Each camera would be left with an incomplete firmware. "
            "Press Ctrl+C again within 3 seconds to abandon them; they go on.")
            .arg(uploadCount()));
}

void Control::endWhenNothingIsUploading(int exitCode)
{
    if (m_endCode == 0) {
        m_endCode = exitCode;
    }
    if (isUploading()) {
        note(QStringLiteral("Ends once the uploads that are going on have ended: %1.")
                 .arg(uploadCount()));
        for (Camera &camera : m_cameras) {
            if (camera.job != nullptr) {
                camera.job->makeNoMoreAttempts();
            }
        }
    }
    endIfDue();
}

void Control::endIfDue()
{
    if (m_endCode != 0 && m_running > 0 && !isUploading()) {
        abandon();
    } else if (m_running == 0) {
        finish();
    }
}

void Control::abandon()
{
    for (Camera &camera : m_cameras) {
        if (camera.job != nullptr) {
            camera.job->abandon();
        }
    }
}

bool Control::isUploading() const
{
    return uploadCount() > 0;
}

int Control::uploadCount() const
{
    return static_cast<int>(
        std::count_if(m_cameras.begin(), m_cameras.end(), [](const Camera &camera) {
            return camera.job != nullptr && camera.job->isUploading();
        }));
}

void Control::showProgress()
{
    if (m_isTerminal) {
        redraw();
        return;
    }
    for (const Camera &camera : m_cameras) {
        if (camera.job == nullptr || camera.job->hasEnded()
            || camera.job->status().state != CameraStatus::State::Uploading) {
            continue;
        }
        const CameraStatus status = camera.job->status();
        m_output.write(m_command.asJson ? JsonReport::progress(status)
                                        : TextReport::progress(status).toLocal8Bit());
    }
}

void Control::redraw()
{
    // A slow terminal gets the latest state, not each of them.
    if (m_isDirty && !m_output.isBehind()) {
        draw();
    }
}

void Control::draw()
{
    m_isDirty = false;
    QVector<CameraStatus> statuses;
    for (const Camera &camera : m_cameras) {
        if (isShown(camera)) {
            CameraStatus status;
            status.port = camera.port.name;
            status.state = CameraStatus::State::Failed;
            statuses += camera.job != nullptr ? camera.job->status() : status;
        }
    }
    m_output.write(m_display.redraw(statuses, screen()));
}

/// Says something that is no result.
void Control::note(const QString &text)
{
    if (m_command.asJson) {
        m_output.write(JsonReport::note(text));
        return;
    }
    complainAbout(text);
}

void Control::complainAbout(const QString &text)
{
    m_output.write(m_display.erase());
    m_isDirty = true;
    complain(text);
}

/// Whether a port counts: with --all, only one with a camera does.
bool Control::isShown(const Camera &camera) const
{
    return !m_command.toAll || (camera.job != nullptr && camera.job->isCamera());
}

void Control::finish()
{
    if (m_isFinished) {
        return;
    }
    m_isFinished = true;
    if (m_isTerminal) {
        draw();
        m_display = TerminalDisplay(); // what it shows now stays
    }
    for (const Camera &camera : m_cameras) {
        report(camera);
    }
    RunSummary counts = summary();
    if (counts.exitCode == kNoCameraStatus && !m_command.asJson) {
        complainAbout(QStringLiteral("no camera answers on any port"));
    }
    m_output.write(m_command.asJson                   ? JsonReport::end(counts)
                       : m_command.kind == Kind::List ? QByteArray()
                                                      : TextReport::summary(counts).toLocal8Bit());
    const bool isWritten = m_output.finish();
    emit finished(counts.exitCode == EXIT_SUCCESS && !isWritten ? kOutputStatus : counts.exitCode);
}

RunSummary Control::summary() const
{
    RunSummary counts;
    for (const Camera &camera : m_cameras) {
        if (!isShown(camera) || (m_command.kind == Kind::List && !m_command.probe)) {
            continue;
        }
        ++(camera.result.outcome == Outcome::Done          ? counts.done
               : camera.result.outcome == Outcome::Skipped ? counts.skipped
                                                           : counts.failed);
    }
    const bool isProbe = m_command.kind == Kind::List && m_command.probe;
    const auto shown = std::count_if(m_cameras.begin(), m_cameras.end(),
                                     [this](const Camera &camera) { return isShown(camera); });
    const bool isNoCamera = isProbe ? counts.done == 0 : m_command.toAll && shown == 0;
    if (m_endCode != 0) {
        counts.exitCode = m_endCode;
    } else if (isNoCamera) {
        counts.exitCode = kNoCameraStatus;
    } else if (counts.failed > 0 && !isProbe) {
        counts.exitCode = kFailedStatus;
    }
    return counts;
}

void Control::report(const Camera &camera)
{
    if (m_command.kind == Kind::List) {
        m_output.write(m_command.asJson ? JsonReport::port(camera.port)
                                        : TextReport::port(camera.port).toLocal8Bit());
        if (m_command.probe) {
            m_output.write(m_command.asJson ? JsonReport::result(camera.result)
                                            : TextReport::probe(camera.result).toLocal8Bit());
        }
        return;
    }
    if (!isShown(camera)) {
        note(QStringLiteral("%1: no camera: %2")
                 .arg(camera.port.name, camera.result.reason.sentence));
    } else if (m_command.asJson) {
        m_output.write(JsonReport::result(camera.result));
    } else if (camera.result.outcome == Outcome::Failed) {
        complainAbout(TextReport::failure(camera.result));
    } else if (m_command.kind != Kind::Save || m_command.file != kStandardStreamName) {
        m_output.write(TextReport::result(m_command, camera.result).toLocal8Bit());
    }
}

void Control::refuse(int exitCode, const QString &reason)
{
    m_isFinished = true;
    complain(reason);
    if (m_command.asJson) {
        RunSummary counts;
        counts.exitCode = exitCode;
        m_output.write(JsonReport::note(reason));
        m_output.write(JsonReport::end(counts));
    }
    m_output.finish();
    emit finished(exitCode);
}
