// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "upgrade.h"

#include "devicereply.h"
#include "firmwarepacket.h"
#include "requestpayload.h"

#include <algorithm>
#include <utility>

using std::chrono::milliseconds;

namespace {

/// Longer than a camera is known to take for a late acknowledgement.
constexpr milliseconds kPauseBetweenAttempts(3000);
/// How often a camera that restarts is asked. The first time it is given this long to begin.
constexpr milliseconds kRebootPoll(1000);

const QString kIncomplete = QStringLiteral(
    "The camera may have an incomplete firmware: leave it on, look at the plugs and the cable, and "
    "upgrade it again. --attempts 3 does so by itself.");

QString secondsText(milliseconds time)
{
    return QString::number(static_cast<double>(time.count()) / 1000.0);
}

} // namespace

Upgrade::Upgrade(Conversation &conversation, UpgradePlan plan, QString versionBefore,
                 QObject *parent)
    : QObject(parent)
    , m_conversation(conversation)
    , m_plan(std::move(plan))
    , m_versionBefore(std::move(versionBefore))
{
    connect(&m_conversation, &Conversation::answered, this, &Upgrade::take);
    connect(&m_conversation, &Conversation::timedOut, this, &Upgrade::handleTimeOut);
    connect(&m_conversation, &Conversation::lost, this, &Upgrade::handleLoss);
}

void Upgrade::start()
{
    announce();
}

void Upgrade::makeNoMoreAttempts()
{
    m_plan.attempts = m_attempt;
    if (m_state == State::Pausing) {
        fail(m_failure);
    }
}

bool Upgrade::isUploading() const
{
    return m_state == State::Announcing || m_state == State::Uploading || m_state == State::Pausing;
}

int Upgrade::packetCount() const
{
    return FirmwarePacket::count(m_plan.firmware.size());
}

void Upgrade::enter(State state)
{
    m_state = state;
    emit stateChanged();
}

void Upgrade::announce()
{
    m_packetsAcknowledged = 0;
    m_conversation.ask(UART_CTRL_CMD_RECEIVE_FW_INFO, firmwareSizePayload(m_plan.firmware.size()));
    enter(State::Announcing);
}

/// Sends the next packet, or waits for the reboot after the last one.
void Upgrade::goOn()
{
    if (m_packetsAcknowledged == packetCount()) {
        m_rebootTime = kRebootPoll;
        m_conversation.pause(kRebootPoll);
        enter(State::Rebooting);
        return;
    }
    const auto packet = FirmwarePacket::at(m_packetsAcknowledged, m_plan.firmware.size());
    m_conversation.ask(
        UART_CTRL_CMD_UPLOAD_FIRMWARE,
        QByteArray::fromRawData(m_plan.firmware.constData() + packet.offset, packet.length),
        packet.number);
}

void Upgrade::take(const QByteArray &frame)
{
    switch (m_state) {
    case State::Announcing:
        goOn();
        enter(State::Uploading);
        break;
    case State::Uploading:
        ++m_packetsAcknowledged;
        emit progressed();
        goOn();
        break;
    case State::Rebooting:
        judge(frame);
        break;
    case State::Pausing:
    case State::Done:
    case State::Failed:
        break;
    }
}

void Upgrade::handleTimeOut()
{
    switch (m_state) {
    case State::Announcing:
        failUpload({QStringLiteral("not-announced"),
                    QStringLiteral("The camera has not acknowledged the announcement of the "
                                   "firmware within 5 s."),
                    kIncomplete});
        break;
    case State::Uploading:
        failUpload({QStringLiteral("packet-lost"),
                    QStringLiteral("The camera has not acknowledged packet %1 of %2 within 2 s.")
                        .arg(m_packetsAcknowledged + 1)
                        .arg(packetCount()),
                    kIncomplete});
        break;
    case State::Pausing:
        ++m_attempt;
        announce();
        break;
    case State::Rebooting:
        askAfterReboot();
        break;
    case State::Done:
    case State::Failed:
        break;
    }
}

void Upgrade::handleLoss(const QString &reason)
{
    if (m_state == State::Done || m_state == State::Failed) {
        return;
    }
    const bool isComplete = m_state == State::Rebooting;
    fail({QStringLiteral("hung-up"),
          isComplete ? QStringLiteral("The port failed after the last packet: %1.").arg(reason)
                     : QStringLiteral("The port failed after %1 of %2 packets: %3.")
                           .arg(m_packetsAcknowledged)
                           .arg(packetCount())
                           .arg(reason),
          isComplete
              ? QStringLiteral("The camera has the whole firmware. Plug the adapter in again "
                               "and see with \"corvanectl info\" which version it runs.")
              : kIncomplete});
}

void Upgrade::askAfterReboot()
{
    if (m_rebootTime >= m_plan.rebootLimit) {
        fail({QStringLiteral("not-back"),
              QStringLiteral("The camera has all packets, but has not answered within %1 s after "
                             "the last one.")
                  .arg(secondsText(m_plan.rebootLimit)),
              QStringLiteral("See with \"corvanectl info\" whether it answers by now, and which "
                             "version it runs. If it never does, switch it off and on again. "
                             "--reboot-limit waits for longer.")});
        return;
    }
    // The first of these time-outs is that of the pause.
    m_wasAway = m_rebootTime > kRebootPoll;
    const milliseconds limit = std::min(kRebootPoll, m_plan.rebootLimit - m_rebootTime);
    m_rebootTime += limit;
    m_conversation.ask(UART_CTRL_CMD_HELLO, {}, 0, limit);
}

void Upgrade::judge(const QByteArray &frame)
{
    m_versionAfter = DeviceReply(frame).settings().version;
    if (m_versionAfter != m_plan.imageVersion) {
        fail(
            {QStringLiteral("other-version"),
             QStringLiteral("The camera runs version %1 after the upgrade, and not %2 as the image "
                            "says.")
                 .arg(m_versionAfter, m_plan.imageVersion),
             QStringLiteral("Is the image for this camera? If so, upgrade it again: a packet may "
                            "have been damaged on the line.")});
    } else if (m_versionAfter == m_versionBefore && !m_wasAway) {
        fail({QStringLiteral("not-restarted"),
              QStringLiteral("The camera ran version %1 before, and has not been seen to restart "
                             "after the last packet.")
                  .arg(m_versionAfter),
              QStringLiteral("Upgrade it again: it may not have taken the last packet.")});
    } else {
        enter(State::Done);
    }
}

/// Tries again if that is wanted.
void Upgrade::failUpload(const Verdict &failure)
{
    if (m_attempt == m_plan.attempts) {
        fail(failure);
        return;
    }
    m_failure = failure;
    m_conversation.pause(kPauseBetweenAttempts);
    enter(State::Pausing);
}

void Upgrade::fail(const Verdict &failure)
{
    m_failure = failure;
    m_conversation.stop();
    enter(State::Failed);
}
