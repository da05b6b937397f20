// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "delivery.h"
#include "faultplan.h"

#include <QByteArray>
#include <QMap>
#include <QString>
#include <QVector>

#include <chrono>
#include <optional>

class SeededRandom;

/// One frame on its way through the faults that hit it.
///
/// Faults that act at a byte count in the frame as the faults before them left it, without what
/// comes before or after it. One that cannot be applied, as to a byte that the frame does not
/// have, leaves everything as it is.
class FaultyFrame {
public:
    /// @param frame     whole and with the right checksum
    /// @param previous  the frame before it in the same direction; empty for the first one
    /// @param random    not owned, must outlive this object
    FaultyFrame(QByteArray frame, QByteArray previous, SeededRandom &random);

    /// @return what was done, such as "corrupted byte 3, 41 became 43"
    QString apply(const Fault &fault);
    /// What arrives in the place of the frame. After a silence, nothing does.
    QVector<Delivery> deliveries() const;
    /// Whether nothing may arrive from here on.
    bool isSilent() const;

private:
    using Milliseconds = std::chrono::milliseconds;

    QString applyAtByte(Fault::Kind kind, int byte, std::optional<int> value);
    QString applyToFields(Fault::Kind kind, int value);
    QString applyAround(Fault::Kind kind, int value);
    QString applyToTime(Fault::Kind kind, int value);

    std::optional<int> chooseByte(const Fault &fault);
    QString dropByte(int byte);
    QString insertByte(int byte, int value);
    QString changeByte(const QString &what, int byte, int mask);
    QString burst(int byte, int count);
    QString swap(int byte);
    QString setField(const QString &name, int offset, int value, bool withChecksum);
    QString setLength(std::optional<int> value);
    QString duplicate(int pause);
    QByteArray noise(int count);
    int byteAt(int offset) const;
    void addBehind(const QByteArray &bytes, Milliseconds pause);

    QByteArray m_ahead; ///< arrives right before the frame
    QByteArray m_frame;
    QVector<Delivery> m_behind;       ///< arrives after it
    QMap<int, Milliseconds> m_pauses; ///< before the byte at that offset of the frame
    Milliseconds m_spacing{0};        ///< between the bytes of the frame
    Milliseconds m_delay{0};
    Milliseconds m_standstill{0};
    std::optional<Milliseconds> m_wait; ///< at most, for the next frame
    std::optional<int> m_hangUpByte;
    Milliseconds m_hangUpPause{0};
    bool m_isSilent = false;
    QByteArray m_previous;
    SeededRandom &m_random;
};
