// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "tally.h"

#include <algorithm>

void Tally::count(const QString &name, qint64 number)
{
    m_numbers[name] += number;
}

void Tally::highest(const QString &name, qint64 value)
{
    const auto known = m_highest.constFind(name);
    m_highest[name] = known == m_highest.constEnd() ? value : std::max(*known, value);
}

void Tally::fail(const QString &what, const QString &command)
{
    m_failures << QStringLiteral("FAILED  %1\n        again: script/stress %2").arg(what, command);
}

void Tally::add(const Tally &other)
{
    for (auto it = other.m_numbers.begin(); it != other.m_numbers.end(); ++it) {
        count(it.key(), it.value());
    }
    for (auto it = other.m_highest.begin(); it != other.m_highest.end(); ++it) {
        highest(it.key(), it.value());
    }
    m_remarks += other.m_remarks;
    m_failures += other.m_failures;
}

QString Tally::text() const
{
    constexpr int kNumberWidth = 10;
    QStringList lines = m_remarks;
    for (auto it = m_numbers.begin(); it != m_numbers.end(); ++it) {
        lines << QStringLiteral("%1  %2").arg(it.value(), kNumberWidth).arg(it.key());
    }
    for (auto it = m_highest.begin(); it != m_highest.end(); ++it) {
        lines << QStringLiteral("%1  highest %2").arg(it.value(), kNumberWidth).arg(it.key());
    }
    lines += m_failures;
    lines << QStringLiteral("%1  failures").arg(m_failures.size(), kNumberWidth);
    return lines.join(QLatin1Char('\n'));
}
