// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "frameassembler.h"

#include <QByteArray>
#include <QSet>

#include <chrono>
#include <optional>

/// What came back on the line after one HELLO, in numbers.
struct LineRecord {
    /// The first acknowledgement of HELLO.
    struct Answer {
        QByteArray frame;                  ///< without its checksum byte
        std::chrono::milliseconds time{0}; ///< since the HELLO was sent
        bool sumIsHeaderByte = false;      ///< its checksum byte is FF
    };

    qint64 bytes = 0;
    QByteArray firstBytes;            ///< at most kFirstBytesKept
    qint64 frames = 0;                ///< whole and with the right checksum, of any kind
    qint64 answers = 0;               ///< acknowledgements of HELLO
    std::optional<Answer> answer;     ///< there when answers is not 0
    qint64 ownRequests = 0;           ///< the HELLO itself, come back
    qint64 otherAcknowledgements = 0; ///< acknowledgements of other commands
    QSet<int> otherCommands;          ///< the commands of those
    qint64 foreignFrames = 0;         ///< of another type than acknowledgement, but for ownRequests
    QSet<int> foreignTypes;           ///< the types of those
    qint64 wrongSums = 0;             ///< bear the frame signature, but not the right checksum
    qint64 brokenOff = 0;             ///< bear it as far as they go, but are not whole
    qint64 strayBytes = 0;            ///< not part of any of the frames

    static constexpr int kFirstBytesKept = 32;
};

/// Collects what comes back on the line after one HELLO, and sorts it as Corvane would.
///
/// Corvane takes any two bytes of FF for the start of a frame. On a line with nothing but noise
/// that gives frames with wrong sums, which say nothing about a camera; so what is damaged counts
/// as a frame here only if most of the signature can be made out.
///
/// Takes any number of bytes without growing.
class Observation : private FrameAssembler::Listener {
public:
    /// @param bytes  as they came
    /// @param time   since the HELLO was sent
    void take(const QByteArray &bytes, std::chrono::milliseconds time);
    /// Whether the camera has answered.
    bool hasAnswer() const;
    /// All that has come so far; a frame that is not complete now counts as broken off.
    LineRecord record() const;

private:
    void lengthReceived(quint32 length) override;
    void frameAccepted(std::string_view frame, quint32 length) override;
    void checksumFailed(qint32 sum) override;
    void lengthRejected(quint32 length) override;

    void sort(const QByteArray &frame);
    void abandon();

    FrameAssembler m_assembler;
    LineRecord m_record;
    qint64 m_bytesInFrames = 0;
    QByteArray m_pending; ///< the frame being collected, from its header on; empty when none is
    std::chrono::milliseconds m_time{0};
};
