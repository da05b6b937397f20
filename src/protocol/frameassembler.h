// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "uartframe.h"

#include <array>
#include <string_view>

/// Finds frames in a stream of received bytes, one byte at a time.
///
/// A frame starts after two consecutive FF bytes; the byte behind them is its length byte L, and L
/// bytes follow, of which the last is the checksum. Two FF bytes start a new frame wherever they
/// stand, inside the body of another one too: that one is then abandoned without a word. The byte
/// behind such a pair still counts as a body byte of the abandoned frame first (it may even
/// complete it) and is then the length byte of the new one. Three FF in a row are thus a pair and a
/// length byte of 255, and that length byte is at the same time the first FF of another pair.
/// A checksum of FF makes such a pair with the header behind it, so the frame that follows at once
/// is lost.
///
/// Signature, type and command are not looked at here. There is no time-out inside a frame, and no
/// reset: a frame that was cut short stays in collection until more bytes or an FF pair come.
///
/// Not thread-safe; belongs to the thread that feeds it.
class FrameAssembler {
public:
    /// Is told what the bytes amounted to, in the order in which it happened.
    class Listener {
    public:
        Listener() = default;
        Listener(const Listener &) = delete;
        Listener &operator=(const Listener &) = delete;
        virtual ~Listener() = default;

        /// An FF pair and the length byte behind it were seen. A length above
        /// UARTFrame::kMaximumLength cannot be a frame: nothing is collected for it.
        virtual void lengthReceived(quint32 length) = 0;
        /// A frame arrived whole and its checksum is right. @p frame is the frame from its first
        /// header byte on, without the checksum byte: length + 2 bytes, to be copied by whoever
        /// needs them for longer than this call.
        virtual void frameAccepted(std::string_view frame, quint32 length) = 0;
        /// A frame was dropped. @p sum is the sum that its checksum byte should have been the low 8
        /// bits of.
        virtual void checksumFailed(qint32 sum) = 0;
        /// A frame was dropped because it announced no bytes at all, not even a checksum.
        virtual void lengthRejected(quint32 length) = 0;
    };

    /// Takes the next received byte and tells @p listener what follows from it, at once. Here for
    /// the compiler to put it into the loop of whoever has the bytes, which doubles the speed.
    void take(unsigned char byte, Listener &listener)
    {
        // The order matters: a byte behind an FF pair inside a body is first the last byte of the
        // abandoned frame and then the length byte of the new one.
        if (data_step_get_data) {
            collect(byte, listener);
        }
        if (data_step_head_ready) {
            begin(byte, listener);
        }

        if (byte != UARTFrame::kHeaderByte) {
            head_byte_count = 0;
        } else if (++head_byte_count == 2) {
            data_step_head_ready = true;
            head_byte_count = 0;
        }
    }

private:
    void collect(unsigned char byte, Listener &listener)
    {
        command_buf[data_offest] = byte;
        ++data_offest;
        if (data_offest - UARTFrame::kBytesBeforeCounted < data_length) {
            checksum += byte;
        } else {
            finish(byte, listener);
        }
    }
    void finish(unsigned char lastByte, Listener &listener);
    void begin(unsigned char length, Listener &listener);

    std::array<unsigned char, UARTFrame::kMaximumSize> command_buf{};
    bool data_step_head_ready = false; ///< an FF pair was seen, the next byte is a length byte
    bool data_step_get_data = false;   ///< a frame body is being collected
    quint8 head_byte_count = 0;        ///< consecutive FF bytes seen, back to 0 after each pair
    quint32 data_offest = 0;           ///< where in command_buf the next byte goes
    quint32 data_length = 0;           ///< the length byte of the frame being collected
    qint32 checksum = 0;               ///< sum from the length byte on, not reduced to 8 bits
};
