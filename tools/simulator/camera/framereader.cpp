// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "framereader.h"

#include "uartframe.h"

namespace {

constexpr int kHeaderSize = 2;
constexpr int kMinimumLength = UARTFrame::kSizeWithoutPayload - UARTFrame::kBytesBeforeCounted;

bool isHeaderByte(char byte)
{
    return static_cast<unsigned char>(byte) == UARTFrame::kHeaderByte;
}

// Where the next header starts in bytes, from the given offset on. A header byte that ends them
// counts too as long as more may come.
int headerIn(const QByteArray &bytes, int from, bool moreMayCome)
{
    for (int i = from; i < bytes.size(); ++i) {
        const bool isLast = i + 1 == bytes.size();
        if (isHeaderByte(bytes.at(i)) && (isLast ? moreMayCome : isHeaderByte(bytes.at(i + 1)))) {
            return i;
        }
    }
    return bytes.size();
}

bool hasRightChecksum(const QByteArray &frame)
{
    return static_cast<unsigned char>(frame.back()) == UARTFrame::checksum(frame.chopped(1));
}

void addNoise(QVector<FrameReader::Piece> &pieces, const QByteArray &bytes)
{
    if (bytes.isEmpty()) {
        return;
    }
    if (!pieces.isEmpty() && pieces.last().kind == FrameReader::Noise) {
        pieces.last().bytes += bytes;
    } else {
        pieces.append({FrameReader::Noise, bytes});
    }
}

} // namespace

QString FrameReader::Piece::fault() const
{
    switch (kind) {
    case Frame:
        break;
    case BadChecksum:
        return QStringLiteral("bad checksum");
    case Incomplete:
        return QStringLiteral("incomplete");
    case Noise:
        return QStringLiteral("no frame");
    }
    return {};
}

QVector<FrameReader::Piece> FrameReader::take(const QByteArray &bytes)
{
    m_pending += bytes;
    return cut();
}

QVector<FrameReader::Piece> FrameReader::dropPartial()
{
    QVector<Piece> pieces;
    while (!m_pending.isEmpty()) {
        pieces.append(cutFaulty(Incomplete, m_pending.size(), false));
        pieces += cut();
    }
    return pieces;
}

bool FrameReader::hasPartial() const
{
    return !m_pending.isEmpty();
}

QVector<FrameReader::Piece> FrameReader::cut()
{
    QVector<Piece> pieces;
    for (;;) {
        const int header = headerIn(m_pending, 0, true);
        addNoise(pieces, m_pending.left(header));
        m_pending.remove(0, header);
        if (m_pending.size() <= UARTFrame::kLengthOffset) {
            return pieces;
        }
        const int length = static_cast<unsigned char>(m_pending.at(UARTFrame::kLengthOffset));
        if (length < kMinimumLength || length > UARTFrame::kMaximumLength) {
            addNoise(pieces, m_pending.left(1));
            m_pending.remove(0, 1);
            continue;
        }
        const int size = UARTFrame::kBytesBeforeCounted + length;
        if (m_pending.size() < size) {
            return pieces;
        }
        const QByteArray frame = m_pending.left(size);
        if (hasRightChecksum(frame)) {
            pieces.append({Frame, frame});
            m_pending.remove(0, size);
        } else {
            pieces.append(cutFaulty(BadChecksum, size, true));
        }
    }
}

FrameReader::Piece FrameReader::cutFaulty(Kind kind, int size, bool moreMayCome)
{
    // What follows the piece must not count: whether it is there already depends on how the bytes
    // arrive.
    const int end = headerIn(m_pending.left(size), kHeaderSize, moreMayCome);
    Piece piece{kind, m_pending.left(end)};
    m_pending.remove(0, end);
    return piece;
}
