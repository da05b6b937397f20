// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "deliveryqueue.h"

#include <algorithm>

void DeliveryQueue::add(const QVector<Delivery> &deliveries, Time now)
{
    bool isFirst = true;
    for (const Delivery &delivery : deliveries) {
        Entry entry{delivery, now + delivery.pause, isFirst ? Time::zero() : Time(delivery.pause)};
        if (!m_entries.empty() && m_entries.back().delivery.awaitsNext) {
            entry.delivery.bytes.prepend(m_entries.back().delivery.bytes);
            m_entries.pop_back();
        }
        m_entries.push_back(entry);
        isFirst = false;
    }
}

void DeliveryQueue::holdUntil(Time end)
{
    m_holdEnd = std::max(m_holdEnd, end);
}

std::optional<Delivery> DeliveryQueue::take(Time now)
{
    const auto due = nextDue();
    if (!due || *due > now) {
        return std::nullopt;
    }
    const Delivery delivery = m_entries.front().delivery;
    m_entries.pop_front();
    m_lastTaken = now;
    return delivery;
}

std::optional<DeliveryQueue::Time> DeliveryQueue::nextDue() const
{
    if (m_entries.empty()) {
        return std::nullopt;
    }
    const Entry &next = m_entries.front();
    return std::max({next.earliest, m_lastTaken + next.pause, m_holdEnd});
}

void DeliveryQueue::clear()
{
    *this = DeliveryQueue();
}
