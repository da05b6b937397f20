// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "uartframe.h"

#include <array>
#include <string_view>

/// Finds frames in a stream of received bytes, one byte at a time.
///
/// A frame starts after two consecutive FF bytes. The next byte is its length byte L, and L bytes
/// follow, of which the last is the checksum. Two FF bytes start a new frame wherever they occur,
/// also inside the body of another one, which is then abandoned without a report. The byte after
/// such a pair first counts as a body byte of the abandoned frame (and may even complete it) and
/// then as the length byte of the new one. So three FF in a row are a pair and a length byte of
/// 255, and that length byte is also the first FF of another pair. A checksum of FF makes a pair
/// with the first header byte of a frame that follows at once, so that frame is lost.
///
/// Signature, type and command are not checked here. There is no time-out inside a frame, and no
/// reset: a frame that was cut short stays in collection until more bytes or an FF pair arrive.
///
/// Not thread-safe; belongs to the thread that feeds it.
class FrameAssembler {
public:
    /// Receives the assembler's events, in the order in which they happen.
    class Listener {
    public:
        Listener() = default;
        Listener(const Listener &) = delete;
        Listener &operator=(const Listener &) = delete;
        virtual ~Listener() = default;

        /// An FF pair and the length byte after it arrived. A length above
        /// UARTFrame::kMaximumLength cannot be a frame: nothing is collected for it.
        virtual void lengthReceived(quint32 length) = 0;
        /// A whole frame with the right checksum arrived. @p frame is the frame from its first
        /// header byte on, without the checksum byte: length + 2 bytes, valid during this call.
        virtual void frameAccepted(std::string_view frame, quint32 length) = 0;
        /// A frame was dropped: its checksum byte is not the low 8 bits of @p sum.
        virtual void checksumFailed(qint32 sum) = 0;
        /// A frame was dropped: its length byte announced nothing, not even a checksum.
        virtual void lengthRejected(quint32 length) = 0;
    };

    /// Takes the next received byte and reports at once what follows from it.
    void take(unsigned char byte, Listener &listener);

private:
    friend class FrameAssemblerState; // a test's, which visits every state

    void begin(unsigned char length, Listener &listener);
    void collect(unsigned char byte, Listener &listener);
    void finish(unsigned char lastByte, Listener &listener);

    std::array<unsigned char, UARTFrame::kMaximumSize> command_buf{};
    bool data_step_head_ready = false; ///< an FF pair arrived, the next byte is a length byte
    bool data_step_get_data = false;   ///< a frame body is being collected
    quint8 head_byte_count = 0;        ///< consecutive FF bytes seen, back to 0 after each pair
    quint32 data_offest = 0;           ///< where in command_buf the next byte goes
    quint32 data_length = 0;           ///< the length byte of the frame being collected
    qint32 checksum = 0;               ///< sum from the length byte on, not reduced to 8 bits
};
