// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "camerajob.h"

#include "devicereply.h"
#include "firmwarepacket.h"
#include "line.h"
#include "printabletext.h"
#include "requestpayload.h"
#include "settingstext.h"

#include <algorithm>
#include <utility>

namespace {

using Kind = ControlCommand::Kind;
using Outcome = CameraResult::Outcome;
using std::chrono::milliseconds;

/// Whether the command needs what the camera reports.
bool needsReport(const ControlCommand &command)
{
    return command.toAll || (command.kind != Kind::Apply && command.kind != Kind::Zoom);
}

/// Whether version "1.0.a.10" is not lower than another. Each part is one byte, shown as signed.
bool isAtLeast(const QString &version, const QString &other)
{
    const auto bytesOf = [](const QString &text) {
        QByteArray bytes;
        const QStringList parts = text.split(QLatin1Char('.'));
        for (const QString &part : parts) {
            constexpr int kBase = 16;
            bytes += static_cast<char>(part.toInt(nullptr, kBase));
        }
        return bytes;
    };
    const QByteArray one = bytesOf(version);
    const QByteArray two = bytesOf(other);
    return !std::lexicographical_compare(
        one.begin(), one.end(), two.begin(), two.end(), [](char left, char right) {
            return static_cast<unsigned char>(left) < static_cast<unsigned char>(right);
        });
}

/// Of an upgrade that goes on.
CameraStatus::State stateOf(Upgrade::State state)
{
    switch (state) {
    case Upgrade::State::Announcing:
        return CameraStatus::State::Announcing;
    case Upgrade::State::Uploading:
        return CameraStatus::State::Uploading;
    case Upgrade::State::Pausing:
        return CameraStatus::State::Pausing;
    case Upgrade::State::Rebooting:
        return CameraStatus::State::Rebooting;
    case Upgrade::State::Done:
    case Upgrade::State::Failed:
        break;
    }
    Q_UNREACHABLE();
}

CameraStatus::State stateOf(Outcome outcome)
{
    switch (outcome) {
    case Outcome::Done:
        return CameraStatus::State::Done;
    case Outcome::Skipped:
        return CameraStatus::State::Skipped;
    case Outcome::Failed:
        return CameraStatus::State::Failed;
    }
    Q_UNREACHABLE();
}

Verdict tooShort(const QByteArray &frame)
{
    return {QStringLiteral("answer-short"),
            QStringLiteral("The camera answered, but its answer is too short: %1 bytes instead of "
                           "26.")
                .arg(frame.size() + 1),
            QStringLiteral("Its firmware is older or newer than this program knows.")};
}

QString settingsInWords(const CameraSettings &settings)
{
    QStringList texts;
    const QStringList keys = SettingsWords::keys();
    for (const QString &key : keys) {
        texts += QStringLiteral("%1=%2").arg(key, SettingsWords::word(settings, key));
    }
    return texts.join(QLatin1Char(' '));
}

QString differencesText(const QVector<SettingsWords::Difference> &differences)
{
    QStringList texts;
    for (const SettingsWords::Difference &difference : differences) {
        texts += QStringLiteral("%1 is %2, not %3")
                     .arg(difference.key, difference.found, difference.wanted);
    }
    return texts.join(QStringLiteral("; "));
}

const QString kAskDiagnosis = QStringLiteral(
    "Is the camera on, and is this its port? \"corvane-diagnose %1\" finds out more.");

} // namespace

CameraJob::CameraJob(Line &line, const CameraOrder &order, PortFinding finding, QObject *parent)
    : QObject(parent)
    , m_order(order)
    , m_finding(std::move(finding))
    , m_conversation(line)
{
    m_result.port = m_finding.port;
    connect(&line, &Line::received, this, [this](const QByteArray &bytes) {
        if (m_upgrade == nullptr) {
            m_observation.take(bytes, {});
        }
    });
    connect(&m_conversation, &Conversation::answered, this, &CameraJob::take);
    connect(&m_conversation, &Conversation::timedOut, this, &CameraJob::handleTimeOut);
    connect(&m_conversation, &Conversation::lost, this, &CameraJob::handleLoss);
}

void CameraJob::start()
{
    if (needsReport(m_order.command)) {
        m_conversation.ask(UART_CTRL_CMD_HELLO);
    } else {
        act();
    }
}

void CameraJob::abandon()
{
    if (m_hasEnded) {
        return;
    }
    Verdict reason{QStringLiteral("abandoned"), QStringLiteral("Ended before it was done."),
                   QStringLiteral("Run the command again.")};
    if (isUploading()) {
        reason.sentence = QStringLiteral("The upload was abandoned after %1 of %2 packets.")
                              .arg(m_upgrade->packetsAcknowledged())
                              .arg(m_upgrade->packetCount());
        reason.remedy = QStringLiteral(
            "The camera has an incomplete firmware: leave it on, and upgrade it again.");
    } else if (m_upgrade != nullptr) {
        reason.sentence = QStringLiteral(
            "The camera has all packets, but has not been seen to run the new version.");
        reason.remedy = QStringLiteral("See with \"corvanectl info\" which version it runs.");
    }
    end(Outcome::Failed, reason);
}

void CameraJob::makeNoMoreAttempts()
{
    if (m_upgrade != nullptr) {
        m_upgrade->makeNoMoreAttempts();
    }
}

CameraStatus CameraJob::status() const
{
    CameraStatus status;
    status.port = m_finding.port;
    if (m_hasEnded) {
        status.state = stateOf(m_result.outcome);
    } else if (m_upgrade != nullptr) {
        status.state = stateOf(m_upgrade->state());
    }
    if (m_upgrade != nullptr) {
        status.attempt = m_upgrade->attempt();
        status.packets = m_upgrade->packetsAcknowledged();
        status.packetCount = m_upgrade->packetCount();
        const auto elapsed = static_cast<double>(m_uploadClock.elapsed());
        if (m_upgrade->state() == Upgrade::State::Uploading && elapsed > 0.0) {
            constexpr double kMillisecondsPerSecond = 1000.0;
            status.packetsPerSecond = status.packets * kMillisecondsPerSecond / elapsed;
        }
    }
    return status;
}

bool CameraJob::isUploading() const
{
    return !m_hasEnded && m_upgrade != nullptr && m_upgrade->isUploading();
}

void CameraJob::take(const QByteArray &frame)
{
    switch (m_step) {
    case Step::Hello:
        takeHello(frame);
        break;
    case Step::Settings:
        // A short acknowledgement does not say what the camera has now.
        if (isWholeReport(frame)) {
            compare(frame);
        } else {
            m_step = Step::SettingsCheck;
            m_conversation.ask(UART_CTRL_CMD_HELLO);
        }
        break;
    case Step::SettingsCheck:
        compare(frame);
        break;
    case Step::Zoom:
        m_result.zoom = DeviceReply(frame).customZoom();
        end(Outcome::Done);
        break;
    }
}

void CameraJob::takeHello(const QByteArray &frame)
{
    const SettingsReport report = DeviceReply(frame).settings();
    m_result.version = report.version;
    if (!isWholeReport(frame)) {
        end(Outcome::Failed, tooShort(frame));
        return;
    }
    m_result.settings = SettingsWords::reported(report);
    act();
}

void CameraJob::act()
{
    switch (m_order.command.kind) {
    case Kind::List:
    case Kind::Info:
        end(Outcome::Done);
        break;
    case Kind::Save:
    case Kind::Diff:
        actOnReport();
        break;
    case Kind::Apply:
        sendSettings(m_order.settings);
        break;
    case Kind::Set: {
        CameraSettings settings = *m_result.settings;
        QString fault;
        for (const auto &[key, word] : m_order.command.assignments) {
            SettingsWords::set(&settings, key, word, &fault);
        }
        sendSettings(settings);
        break;
    }
    case Kind::Zoom:
        setZoom();
        break;
    case Kind::Upgrade:
        upgrade();
        break;
    }
}

void CameraJob::actOnReport()
{
    if (m_order.command.kind == Kind::Save) {
        if (const auto key = SettingsWords::unknownKey(*m_result.settings)) {
            end(Outcome::Failed,
                {QStringLiteral("no-word"),
                 QStringLiteral(
                     "The camera reports a setting that a file has no word for: %1 is %2.")
                     .arg(*key, SettingsWords::word(*m_result.settings, *key)),
                 QStringLiteral("Set it with \"corvanectl set\" first.")});
            return;
        }
        end(Outcome::Done);
        return;
    }
    m_result.differences = SettingsWords::differences(m_order.settings, *m_result.settings);
    if (m_result.differences.isEmpty()) {
        end(Outcome::Done);
    } else {
        end(Outcome::Failed,
            {QStringLiteral("differs"),
             QStringLiteral("The camera's %1.").arg(differencesText(m_result.differences)),
             QStringLiteral("\"corvanectl apply\" gives it the settings of the file.")});
    }
}

void CameraJob::sendSettings(const CameraSettings &settings)
{
    const QByteArray payload = cameraSettingsPayload(settings);
    if (m_order.command.dryRun) {
        wouldSend(QStringLiteral("CUSTOM_SETTING"), payload, settingsInWords(settings));
        end(Outcome::Done);
        return;
    }
    m_wanted = settings;
    m_step = Step::Settings;
    m_conversation.ask(UART_CTRL_CMD_CUSTOM_SETTING, payload);
}

void CameraJob::setZoom()
{
    const unsigned char preset = m_order.command.preset;
    const QByteArray payload = customZoomPayload(preset);
    if (m_order.command.dryRun) {
        wouldSend(QStringLiteral("SET_CUSTOM_ZOOM"), payload,
                  QStringLiteral("zoom %1").arg(preset + 1));
        end(Outcome::Done);
        return;
    }
    m_step = Step::Zoom;
    m_conversation.ask(UART_CTRL_CMD_SET_CUSTOM_ZOOM, payload);
}

void CameraJob::upgrade()
{
    const UpgradePlan &plan = m_order.upgrade;
    m_result.imageVersion = plan.imageVersion;
    if (m_order.command.newerOnly && isAtLeast(m_result.version, plan.imageVersion)) {
        end(Outcome::Skipped,
            {QStringLiteral("not-newer"),
             QStringLiteral("The camera runs version %1, and the image has %2.")
                 .arg(m_result.version, plan.imageVersion),
             {}});
        return;
    }
    if (m_order.command.dryRun) {
        wouldSend(QStringLiteral("RECEIVE_FW_INFO"), firmwareSizePayload(plan.firmware.size()),
                  QStringLiteral("%1 bytes").arg(plan.firmware.size()));
        m_result.wouldSend += QStringLiteral("UPLOAD_FIRMWARE, %1 packets")
                                  .arg(FirmwarePacket::count(plan.firmware.size()));
        end(Outcome::Done);
        return;
    }
    // From here on, the upgrade listens to it.
    m_conversation.disconnect(this);
    m_upgrade = std::make_unique<Upgrade>(m_conversation, plan, m_result.version);
    connect(m_upgrade.get(), &Upgrade::stateChanged, this, &CameraJob::followUpgrade);
    connect(m_upgrade.get(), &Upgrade::progressed, this, &CameraJob::progressed);
    m_upgrade->start();
}

void CameraJob::followUpgrade()
{
    // One that was abandoned may still fail.
    if (m_hasEnded) {
        return;
    }
    m_result.attempts = m_upgrade->attempt();
    m_result.versionAfter = m_upgrade->versionAfter();
    switch (m_upgrade->state()) {
    case Upgrade::State::Done:
        end(Outcome::Done);
        break;
    case Upgrade::State::Failed:
        end(Outcome::Failed, m_upgrade->failure());
        break;
    case Upgrade::State::Uploading:
        m_uploadClock.start();
        emit stateChanged();
        break;
    case Upgrade::State::Rebooting:
        m_result.uploadTime = milliseconds(m_uploadClock.elapsed());
        emit stateChanged();
        break;
    case Upgrade::State::Announcing:
    case Upgrade::State::Pausing:
        emit stateChanged();
        break;
    }
}

/// Sees whether the camera has the settings that it was sent.
void CameraJob::compare(const QByteArray &frame)
{
    if (!isWholeReport(frame)) {
        end(Outcome::Failed, tooShort(frame));
        return;
    }
    m_result.settings = SettingsWords::reported(DeviceReply(frame).settings());
    m_result.differences = SettingsWords::differences(m_wanted, *m_result.settings);
    if (m_result.differences.isEmpty()) {
        end(Outcome::Done);
    } else {
        end(Outcome::Failed,
            {QStringLiteral("not-taken"),
             QStringLiteral("The camera acknowledged the settings, but has not taken all: %1.")
                 .arg(differencesText(m_result.differences)),
             QStringLiteral("Try again. If it stays so, the camera does not know that setting.")});
    }
}

void CameraJob::handleTimeOut()
{
    const QString diagnosis = kAskDiagnosis.arg(m_finding.port);
    switch (m_step) {
    case Step::Hello: {
        m_isCamera = false;
        const Diagnosis found =
            diagnose(m_finding, m_observation.record(), Conversation::limitOf(UART_CTRL_CMD_HELLO));
        end(Outcome::Failed, found.verdict);
        break;
    }
    case Step::Settings:
    case Step::SettingsCheck:
        end(Outcome::Failed,
            {QStringLiteral("not-acknowledged"),
             QStringLiteral("The camera has not acknowledged the settings within 5 s."),
             diagnosis});
        break;
    case Step::Zoom:
        end(Outcome::Failed,
            {QStringLiteral("not-acknowledged"),
             QStringLiteral("The camera has not acknowledged the zoom preset within 2 s."),
             diagnosis});
        break;
    }
}

void CameraJob::handleLoss(const QString &reason)
{
    if (m_hasEnded) {
        return;
    }
    m_isCamera = m_step != Step::Hello;
    m_finding.kind = PortFinding::Kind::HungUp;
    m_finding.systemText = reason;
    end(Outcome::Failed, diagnose(m_finding, {}, {}).verdict);
}

void CameraJob::wouldSend(const QString &command, const QByteArray &payload, const QString &meaning)
{
    m_result.wouldSend +=
        QStringLiteral("%1 %2 (%3)").arg(command, hexadecimalText(payload), meaning);
}

void CameraJob::end(Outcome outcome, const Verdict &reason)
{
    m_conversation.stop();
    m_hasEnded = true;
    m_result.outcome = outcome;
    m_result.reason = reason;
    emit ended();
}
