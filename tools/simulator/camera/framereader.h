// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QString>
#include <QVector>

#include <chrono>

/// Cuts a stream of bytes into frames, by their length byte.
///
/// A frame is FF FF, a length byte L of 10 to 138 and L more bytes, the last of which is the
/// checksum. What is inside does not matter, so that a payload may hold FF FF, which the host's own
/// receiver does not allow. Signature, type and command are not looked at.
///
/// Finding the way back after an error: when the checksum of a frame is wrong, or its end does not
/// come, only its two header bytes are sure not to start a frame. The search for the next FF FF
/// goes on after them, so that a good frame inside the bad one's announced length is still found.
/// An FF FF with another length byte is no header, but its second FF may be the first of one.
///
/// Every byte that comes in goes out in exactly one piece, in its order.
class FrameReader {
public:
    enum Kind {
        Frame,       ///< a whole frame with the right checksum
        BadChecksum, ///< what starts like a frame, up to where the next one may start
        Incomplete,  ///< the same, but less came than its length byte announced
        Noise,       ///< bytes outside of frames
    };
    struct Piece {
        Kind kind;
        QByteArray bytes;

        /// What is wrong with it, for the log; empty for a frame.
        QString fault() const;
    };
    /// A frame whose bytes stop coming for this long is not going to be completed.
    static constexpr std::chrono::milliseconds kStall{100};

    /// Takes received bytes, any number of them.
    /// @return what is complete now
    QVector<Piece> take(const QByteArray &bytes);
    /// Gives up waiting for the rest of a frame. To be called when nothing more has come for a
    /// while.
    /// @return what the bytes amount to that were kept; none are kept afterwards
    QVector<Piece> dropPartial();
    /// Whether bytes are kept that may be the start of a frame.
    bool hasPartial() const;

private:
    QVector<Piece> cut();
    Piece cutFaulty(Kind kind, int size, bool moreMayCome);

    QByteArray m_pending; ///< empty, or starts with FF after cut()
};
