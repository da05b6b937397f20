// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "delivery.h"
#include "faultplan.h"
#include "seededrandom.h"

#include <QByteArray>
#include <QStringList>
#include <QVector>

#include <array>

/// Puts the faults of a plan on the frames that pass.
///
/// The same plan, seed and frames give the same bytes. The two directions have nothing to do with
/// each other: neither counts the other's frames or uses its random numbers.
class FaultInjector {
public:
    explicit FaultInjector(FaultPlan plan = {}, quint32 seed = 0);

    /// @param frame  whole and with the right checksum; it counts as the next one of its direction
    /// @param notes  gets one line for each fault applied, such as "reply 7: corrupted byte 3, 41
    ///               became 43"; not null
    /// @return what arrives in its place, in that order
    QVector<Delivery> pass(Fault::Direction direction, const QByteArray &frame, QStringList *notes);
    /// Bytes that are no frame: they do not count, and arrive as they are unless there is silence.
    QVector<Delivery> passOther(Fault::Direction direction, const QByteArray &bytes) const;

private:
    struct Lane {
        SeededRandom random;
        int count = 0; ///< frames so far
        QByteArray previous;
        bool isSilent = false;
    };

    static bool isHit(const Fault::Place &place, Lane &lane);

    FaultPlan m_plan;
    std::array<Lane, 2> m_lanes; ///< by direction
};
