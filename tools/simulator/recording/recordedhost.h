// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "recording.h"

#include <QByteArray>
#include <QStringList>
#include <QVector>

/// Compares what the host sends with what it sent in a recording, byte by byte and by their number
/// alone: neither times nor the pieces in which bytes come matter.
class RecordedHost {
public:
    explicit RecordedHost(const QVector<LineEvent> &recording);

    /// Takes bytes from the host.
    /// @return a text for each recorded event in which a difference is found first. Bytes after
    ///         the last one recorded count as one such event.
    QStringList take(const QByteArray &bytes);

private:
    QString difference(const QByteArray &sent, const QByteArray &recorded) const;

    QVector<LineEvent> m_events; ///< only those of the host
    int m_event = 0;             ///< the one that the next byte belongs to
    int m_offset = 0;            ///< of that byte in the event
    qint64 m_position = 0;       ///< of that byte among all
    bool m_isSaid = false;       ///< that this event differs
};
