// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "faultinjector.h"

#include "faultyframe.h"

#include <utility>

FaultInjector::FaultInjector(FaultPlan plan, quint32 seed)
    : m_plan(std::move(plan))
    , m_lanes{Lane{SeededRandom(seed, Fault::Request), 0, {}, false},
              Lane{SeededRandom(seed, Fault::Reply), 0, {}, false}}
{
}

QVector<Delivery> FaultInjector::pass(Fault::Direction direction, const QByteArray &frame,
                                      QStringList *notes)
{
    Lane &lane = m_lanes.at(direction);
    if (lane.isSilent) {
        return {};
    }
    ++lane.count;
    FaultyFrame faulty(frame, lane.previous, lane.random);
    for (const Fault &fault : m_plan.faults()) {
        if (fault.direction == direction && isHit(fault.place, lane)) {
            notes->append(QStringLiteral("%1 %2: %3")
                              .arg(faultDirectionName(direction), QString::number(lane.count),
                                   faulty.apply(fault)));
        }
    }
    lane.previous = frame;
    lane.isSilent = faulty.isSilent();
    return faulty.deliveries();
}

QVector<Delivery> FaultInjector::passOther(Fault::Direction direction,
                                           const QByteArray &bytes) const
{
    if (m_lanes.at(direction).isSilent) {
        return {};
    }
    Delivery delivery;
    delivery.bytes = bytes;
    return {delivery};
}

bool FaultInjector::isHit(const Fault::Place &place, Lane &lane)
{
    switch (place.form) {
    case Fault::Place::Once:
        return lane.count == place.frame;
    case Fault::Place::From:
        return lane.count >= place.frame;
    case Fault::Place::Chance:
        break;
    }
    return lane.random.below(Fault::Place::kCertain) < place.chance;
}
