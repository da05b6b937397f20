// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <vector>

/// The receiver's rules once more, to check FrameAssembler against. It shares no code with it and
/// is written another way on purpose, with the whole stream at hand instead of byte by byte, so
/// that the same mistake in both is unlikely.
///
/// A length above 138 is announced and then dropped at once: no frame has it, nothing is collected
/// for it, and its bytes are looked at only for the next header.
namespace ReferenceParser {

enum class Kind {
    LengthAnnounced, ///< value is the length byte
    FrameAccepted,   ///< value is the length byte
    ChecksumWrong,   ///< value is the sum, not reduced to 8 bits
    LengthRejected,  ///< value is the length byte, which is 0
};

/// One thing that the receiver is to report.
struct Event {
    Kind kind;
    int value;
    std::size_t position; ///< index of the byte with which it is reported
    /// Of FrameAccepted: the frame without its checksum byte. A frame is always a stretch of the
    /// stream, so this points into it.
    const unsigned char *frame;
    std::size_t frameSize; ///< bytes
};

/// @param stream  everything that was received, from the first byte on; must outlive the events
/// @param size    bytes of it
/// @param events  what is to be reported, in order; what it held before is dropped
void parse(const unsigned char *stream, std::size_t size, std::vector<Event> &events);

} // namespace ReferenceParser
