// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "conversation.h"
#include "diagnosis.h"

#include <QByteArray>
#include <QObject>
#include <QString>

#include <chrono>

/// What to upload, and how.
struct UpgradePlan {
    QByteArray firmware;  ///< 1 to FirmwarePacket::kMaximumFirmwareSize bytes
    QString imageVersion; ///< as versionText() gives it
    int attempts = 1;     ///< uploads, each from its announcement on
    std::chrono::milliseconds rebootLimit{60'000}; ///< from the last packet to the next answer
};

/// The upgrade of one camera, from the announcement until it runs the new version.
///
/// Nothing is repeated within an upload: an acknowledgement that is late would be taken for that of
/// the repeated packet. A new attempt therefore begins with a pause, in which such a one is
/// ignored.
class Upgrade : public QObject {
    Q_OBJECT

public:
    enum class State { Announcing, Uploading, Pausing, Rebooting, Done, Failed };

    /// @param conversation   not owned, must outlive this object
    /// @param versionBefore  what the camera runs now
    Upgrade(Conversation &conversation, UpgradePlan plan, QString versionBefore,
            QObject *parent = nullptr);

    void start();
    /// Lets the attempt that is going on be the last one.
    void makeNoMoreAttempts();

    State state() const { return m_state; }
    /// Whether the camera has a part of the firmware, or waits for it.
    bool isUploading() const;
    int attempt() const { return m_attempt; }
    int packetsAcknowledged() const { return m_packetsAcknowledged; }
    int packetCount() const;
    /// Empty until the camera has answered after its restart.
    const QString &versionAfter() const { return m_versionAfter; }
    /// Only after it has failed.
    const Verdict &failure() const { return m_failure; }

signals:
    void stateChanged();
    void progressed(); ///< one more packet is acknowledged

private:
    void enter(State state);
    void announce();
    void goOn();
    void take(const QByteArray &frame);
    void handleTimeOut();
    void handleLoss(const QString &reason);
    void askAfterReboot();
    void judge(const QByteArray &frame);
    void failUpload(const Verdict &failure);
    void fail(const Verdict &failure);

    Conversation &m_conversation;
    UpgradePlan m_plan;
    QString m_versionBefore;
    QString m_versionAfter;
    State m_state = State::Announcing;
    int m_attempt = 1;
    int m_packetsAcknowledged = 0;
    std::chrono::milliseconds m_rebootTime{0}; ///< what has passed since the last packet
    bool m_wasAway = false;                    ///< did not answer in that time
    Verdict m_failure;
};
