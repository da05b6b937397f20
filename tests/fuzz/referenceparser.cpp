// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "referenceparser.h"

#include <algorithm>
#include <numeric>

namespace {

constexpr unsigned char kHeaderByte = 255;
constexpr std::size_t kHeaderSize = 2;
// 141 bytes in all, less the header and the length byte.
constexpr int kLargestLength = 138;

/// The index of the length byte after the first header from an index on, or size when there is
/// none. Headers do not overlap, so a search that goes on at the length byte finds the next.
std::size_t lengthByte(const unsigned char *stream, std::size_t size, std::size_t from)
{
    if (from >= size) {
        return size;
    }
    const unsigned char *const header =
        std::search_n(stream + from, stream + size, kHeaderSize, kHeaderByte);
    return std::min(size, static_cast<std::size_t>(header - stream) + kHeaderSize);
}

} // namespace

void ReferenceParser::parse(const unsigned char *stream, std::size_t size,
                            std::vector<Event> &events)
{
    events.clear();
    std::size_t next = lengthByte(stream, size, 0);
    while (next < size) {
        const std::size_t start = next;
        const int length = stream[start];
        next = lengthByte(stream, size, start);
        events.push_back({Kind::LengthAnnounced, length, start, nullptr, 0});

        if (length > kLargestLength) {
            continue;
        }
        if (length == 0) {
            // Noticed only when one more byte is there.
            if (start + 1 < size) {
                events.push_back({Kind::LengthRejected, length, start + 1, nullptr, 0});
            }
            continue;
        }
        // The length byte of the next frame still counts as a byte of this one, and may be its
        // checksum.
        const std::size_t checksum = start + static_cast<std::size_t>(length);
        if (checksum > next || checksum >= size) {
            continue;
        }
        const int sum = std::accumulate(stream + start, stream + checksum, 0);
        if (sum % 256 == stream[checksum]) {
            events.push_back({Kind::FrameAccepted, length, checksum, stream + start - kHeaderSize,
                              checksum - start + kHeaderSize});
        } else {
            events.push_back({Kind::ChecksumWrong, sum, checksum, nullptr, 0});
        }
    }
}
