// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

// Whatever the host sends, and however it arrives: FrameReader hands out every byte once and in
// order, its frames are frames, and the pieces do not depend on how the bytes were split.
//
// The first two bytes of an input say how many bytes arrive at a time, in turns.

#include "framereader.h"
#include "fuzztarget.h"
#include "require.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

namespace {

constexpr std::size_t kFields = 2;

/// Where a piece is in the stream.
struct Stretch {
    FrameReader::Kind kind;
    std::size_t begin;
    std::size_t end;
};

bool isFrame(const std::uint8_t *bytes, std::size_t size)
{
    if (size < 13 || size > 141 || bytes[0] != 0xFF || bytes[1] != 0xFF || bytes[2] + 3U != size) {
        return false;
    }
    unsigned int sum = 0;
    for (std::size_t i = 2; i + 1 < size; ++i) {
        sum += bytes[i];
    }
    return bytes[size - 1] == sum % 256;
}

/// Finds the pieces again in the stream that they are of.
class Pieces {
public:
    Pieces(const std::uint8_t *stream, std::size_t size, std::vector<Stretch> &stretches)
        : m_stream(stream)
        , m_size(size)
        , m_stretches(stretches)
    {
        m_stretches.clear();
    }

    void add(const QVector<FrameReader::Piece> &pieces)
    {
        for (const FrameReader::Piece &piece : pieces) {
            add(piece);
        }
    }
    std::size_t end() const { return m_end; }

private:
    void add(const FrameReader::Piece &piece)
    {
        const auto size = static_cast<std::size_t>(piece.bytes.size());
        const std::uint8_t *const bytes = m_stream + m_end;
        require(size > 0, "no piece is empty");
        require(size <= m_size - m_end && std::memcmp(piece.bytes.constData(), bytes, size) == 0,
                "what comes out is what came in, in its order");
        if (piece.kind == FrameReader::Frame) {
            require(isFrame(bytes, size), "a frame has a header, its length and its checksum");
        } else {
            require(!isFrame(bytes, size), "a whole frame is no error");
        }

        // Noise is handed out as it comes.
        const bool continues = piece.kind == FrameReader::Noise && !m_stretches.empty()
            && m_stretches.back().kind == FrameReader::Noise;
        if (continues) {
            m_stretches.back().end += size;
        } else {
            m_stretches.push_back({piece.kind, m_end, m_end + size});
        }
        m_end += size;
    }

    const std::uint8_t *const m_stream;
    const std::size_t m_size;
    std::vector<Stretch> &m_stretches;
    std::size_t m_end = 0;
};

/// @param portions  bytes that arrive at a time, in turns
void read(const std::uint8_t *stream, std::size_t size, std::array<std::size_t, kFields> portions,
          std::vector<Stretch> &stretches)
{
    FrameReader reader;
    Pieces pieces(stream, size, stretches);
    std::size_t turn = 0;
    for (std::size_t begin = 0; begin < size;) {
        const std::size_t count = std::min(portions.at(turn), size - begin);
        pieces.add(reader.take(QByteArray::fromRawData(
            reinterpret_cast<const char *>(stream + begin), static_cast<int>(count))));
        begin += count;
        turn = (turn + 1) % portions.size();
        require(reader.hasPartial() == (pieces.end() < begin), "what is not out yet is kept");
    }
    pieces.add(reader.dropPartial());
    require(!reader.hasPartial(), "nothing is kept in the end");
    require(pieces.end() == size, "every byte comes out");
}

bool areSame(const std::vector<Stretch> &one, const std::vector<Stretch> &other)
{
    return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                      [](const Stretch &left, const Stretch &right) {
                          return left.kind == right.kind && left.begin == right.begin
                              && left.end == right.end;
                      });
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    if (size <= kFields) {
        return 0;
    }
    static std::vector<Stretch> atOnce;
    static std::vector<Stretch> inPortions;
    const std::uint8_t *const stream = data + kFields;
    const std::size_t streamSize = size - kFields;
    read(stream, streamSize, {streamSize, streamSize}, atOnce);
    read(stream, streamSize, {data[0] + 1U, data[1] + 1U}, inPortions);
    require(areSame(atOnce, inPortions), "the pieces do not depend on how the bytes arrive");
    return 0;
}
