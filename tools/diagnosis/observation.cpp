// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "observation.h"

#include "devicereply.h"
#include "uartframe.h"

#include <algorithm>

namespace {

/// Whether the start of a frame, whatever became of the rest, was most probably meant as a frame
/// of this protocol. Two bytes of the signature may have been damaged as well.
bool bearsSignature(const QByteArray &start)
{
    constexpr int kDamageAllowed = 2;
    const auto size = static_cast<int>(UARTFrame::kSignature.size());
    const int present =
        std::clamp(static_cast<int>(start.size()) - UARTFrame::kSignatureOffset, 0, size);
    int right = 0;
    for (int i = 0; i < present; ++i) {
        const auto byte = static_cast<unsigned char>(start.at(UARTFrame::kSignatureOffset + i));
        right += byte == UARTFrame::kSignature[static_cast<std::size_t>(i)] ? 1 : 0;
    }
    return right > 0 && right >= present - kDamageAllowed;
}

/// As it is delivered, without its checksum byte.
QByteArray helloRequest()
{
    const auto frame = UARTFrame::build(UART_COMM_TYPE_REQUEST, UART_CTRL_CMD_HELLO, 0, nullptr, 0);
    return frame->chopped(1);
}

} // namespace

void Observation::take(const QByteArray &bytes, std::chrono::milliseconds time)
{
    m_time = time;
    m_record.bytes += bytes.size();
    m_record.firstBytes += bytes.left(LineRecord::kFirstBytesKept - m_record.firstBytes.size());
    for (const char byte : bytes) {
        if (!m_pending.isEmpty()) {
            m_pending += byte;
        }
        m_assembler.take(static_cast<unsigned char>(byte), *this);
    }
}

bool Observation::hasAnswer() const
{
    return m_record.answers > 0;
}

LineRecord Observation::record() const
{
    LineRecord record = m_record;
    if (!m_pending.isEmpty() && bearsSignature(m_pending)) {
        ++record.brokenOff;
    }
    // A byte can belong to two frames, when a header is at the end of another frame.
    record.strayBytes = std::max<qint64>(0, record.bytes - m_bytesInFrames);
    return record;
}

void Observation::lengthReceived(quint32 length)
{
    abandon();
    if (length <= UARTFrame::kMaximumLength) {
        m_pending = QByteArray(2, static_cast<char>(UARTFrame::kHeaderByte));
        m_pending += static_cast<char>(length);
    }
}

void Observation::frameAccepted(std::string_view frame, quint32 /*length*/)
{
    const QByteArray bytes(frame.data(), static_cast<int>(frame.size()));
    m_pending.clear();
    m_bytesInFrames += bytes.size() + 1;
    ++m_record.frames;
    sort(bytes);
}

void Observation::checksumFailed(qint32 /*sum*/)
{
    if (bearsSignature(m_pending)) {
        ++m_record.wrongSums;
    }
    m_pending.clear();
}

void Observation::lengthRejected(quint32 /*length*/)
{
    m_pending.clear();
}

void Observation::sort(const QByteArray &frame)
{
    const DeviceReply reply(frame);
    if (reply.communicationType() == UART_COMM_TYPE_ACK) {
        if (reply.command() != UART_CTRL_CMD_HELLO) {
            ++m_record.otherAcknowledgements;
            m_record.otherCommands += reply.command();
            return;
        }
        ++m_record.answers;
        if (!m_record.answer) {
            m_record.answer = LineRecord::Answer{
                frame, m_time, UARTFrame::checksum(frame) == UARTFrame::kHeaderByte};
        }
    } else if (frame == helloRequest()) {
        ++m_record.ownRequests;
    } else {
        ++m_record.foreignFrames;
        m_record.foreignTypes += reply.communicationType();
    }
}

/// The header and length byte of the next frame, which have been taken for a part of this one, show
/// that it goes no further.
void Observation::abandon()
{
    if (m_pending.isEmpty()) {
        return;
    }
    m_pending.chop(UARTFrame::kBytesBeforeCounted);
    if (bearsSignature(m_pending)) {
        ++m_record.brokenOff;
    }
    m_pending.clear();
}
