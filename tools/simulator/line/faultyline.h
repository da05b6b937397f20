// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "cameraline.h"
#include "deliveryqueue.h"
#include "faultinjector.h"
#include "framereader.h"

#include <QElapsedTimer>
#include <QTimer>

#include <array>

/// Puts faults on another line, in both directions.
///
/// While there are any, a frame goes on when it is whole, and bytes that are no frame go on as they
/// are. Without faults, bytes go through at once.
class FaultyLine : public CameraLine {
    Q_OBJECT

public:
    /// @param line  the line that the host has; not owned, must outlive this object
    explicit FaultyLine(CameraLine &line, QObject *parent = nullptr);

    /// Replaces the faults, and loses what is on its way. Frames count from 1 again.
    void setFaults(const FaultPlan &plan, quint32 seed);

    bool plug(QString *error) override;
    /// Loses what is on its way. The count of frames goes on with the next plug().
    void unplug() override;
    bool isPlugged() const override;
    void write(const QByteArray &bytes) override;

signals:
    /// A fault was put on the line, described by @p text.
    void faultApplied(const QString &text);
    /// A fault has unplugged the line.
    void hungUp();

private:
    /// One direction.
    struct Lane {
        FrameReader reader;
        QTimer stallTimer; ///< runs while part of a request is there
        DeliveryQueue queue;
        QTimer deliveryTimer; ///< runs while something is on its way
    };

    void take(Fault::Direction direction, const QByteArray &bytes);
    void handle(Fault::Direction direction, const QVector<FrameReader::Piece> &pieces);
    void deliver(Fault::Direction direction);
    void schedule(Lane &lane);
    void loseEverything();
    DeliveryQueue::Time now() const;

    CameraLine &m_line;
    FaultInjector m_injector;
    bool m_hasFaults = false;
    std::array<Lane, 2> m_lanes; ///< by direction
    QElapsedTimer m_clock;
};
