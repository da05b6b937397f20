// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "camerareport.h"
#include "controlcommand.h"
#include "conversation.h"
#include "observation.h"
#include "portfinding.h"
#include "upgrade.h"

#include <QElapsedTimer>
#include <QObject>

#include <memory>

class Line;

/// What the command wants of each camera.
struct CameraOrder {
    ControlCommand command;
    CameraSettings settings; ///< of diff and apply
    UpgradePlan upgrade;
};

/// Does with one camera what the command says.
class CameraJob : public QObject {
    Q_OBJECT

public:
    /// @param line     open; not owned, must outlive this object
    /// @param order    not owned, must outlive this object
    /// @param finding  of the port, for what is said about it
    CameraJob(Line &line, const CameraOrder &order, PortFinding finding, QObject *parent = nullptr);

    void start();
    /// Ends it now, whatever that does to the camera.
    void abandon();
    /// Lets an upload that is going on be the last one.
    void makeNoMoreAttempts();

    CameraStatus status() const;
    bool isUploading() const;
    bool hasEnded() const { return m_hasEnded; }
    /// Whether a camera has answered, and if nothing was asked, whether one should be there.
    bool isCamera() const { return m_isCamera; }
    /// Only once it has ended.
    const CameraResult &result() const { return m_result; }

signals:
    void stateChanged();
    void progressed();
    void ended();

private:
    void take(const QByteArray &frame);
    void takeHello(const QByteArray &frame);
    void act();
    void actOnReport();
    void sendSettings(const CameraSettings &settings);
    void setZoom();
    void upgrade();
    void followUpgrade();
    void compare(const QByteArray &frame);
    void handleTimeOut();
    void handleLoss(const QString &reason);
    void wouldSend(const QString &command, const QByteArray &payload, const QString &meaning);
    void end(CameraResult::Outcome outcome, const Verdict &reason = {});

    enum class Step { Hello, Settings, SettingsCheck, Zoom }; ///< before an upgrade

    const CameraOrder &m_order;
    PortFinding m_finding;
    Observation m_observation; ///< of what comes before an upgrade
    Conversation m_conversation;
    std::unique_ptr<Upgrade> m_upgrade;
    QElapsedTimer m_uploadClock;
    Step m_step = Step::Hello;
    CameraSettings m_wanted; ///< what the camera is to have
    bool m_hasEnded = false;
    bool m_isCamera = true;
    CameraResult m_result;
};
