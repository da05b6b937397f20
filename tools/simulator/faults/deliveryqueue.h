// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "delivery.h"

#include <QVector>

#include <chrono>
#include <deque>
#include <optional>

/// Says when deliveries in one direction are due, always in the order in which they were added.
///
/// A pure function of the times it is given, which count from any fixed moment and never run
/// backwards.
class DeliveryQueue {
public:
    using Time = std::chrono::nanoseconds;

    /// @param deliveries  all that comes of one frame
    void add(const QVector<Delivery> &deliveries, Time now);
    /// Nothing is due before @p end.
    void holdUntil(Time end);
    /// Takes the next delivery if it is due. A pause after it starts now.
    std::optional<Delivery> take(Time now);
    /// When the next delivery is due; nothing when there is none.
    std::optional<Time> nextDue() const;
    /// Forgets all that was added or held.
    void clear();

private:
    struct Entry {
        Delivery delivery;
        Time earliest; ///< counted from when its frame came
        Time pause;    ///< since the delivery before it out of that frame
    };

    std::deque<Entry> m_entries;
    Time m_lastTaken = Time::zero();
    Time m_holdEnd = Time::zero();
};
