// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QMap>
#include <QString>
#include <QStringList>

/// What a stress test has counted, and what went wrong in it.
class Tally {
public:
    /// @param name  what is counted, such as "uploads"
    void count(const QString &name, qint64 number = 1);
    /// Keeps the highest @p value that there was.
    void highest(const QString &name, qint64 value);
    /// A line of text before the figures.
    void remark(const QString &text) { m_remarks << text; }
    /// Something that must not happen.
    /// @param command  the arguments that show it again
    void fail(const QString &what, const QString &command);
    /// Adds what another one has.
    void add(const Tally &other);

    bool hasFailed() const { return !m_failures.isEmpty(); }
    qint64 number(const QString &name) const { return m_numbers.value(name); }
    /// One line for each remark and figure, then one or two for each failure.
    QString text() const;

private:
    QMap<QString, qint64> m_numbers;
    QMap<QString, qint64> m_highest;
    QStringList m_remarks;
    QStringList m_failures;
};
