// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "uartframe.h"

#include <numeric>

unsigned char UARTFrame::checksum(const QByteArray &frame)
{
    return static_cast<unsigned char>(
        std::accumulate(frame.begin() + kLengthOffset, frame.end(), 0));
}

std::optional<QByteArray> UARTFrame::build(UARTCommunicationType_t type, unsigned char command,
                                           unsigned char parameter, const unsigned char *data,
                                           unsigned char length)
{
    if (length > kMaximumPayloadSize || (length != 0 && data == nullptr)) {
        return std::nullopt;
    }

    QByteArray frame(2, static_cast<char>(kHeaderByte));
    frame.append(static_cast<char>(kSizeWithoutPayload + length - kBytesBeforeCounted));
    frame.append(reinterpret_cast<const char *>(kSignature.data()), kSignature.size());
    frame.append(static_cast<char>(type));
    frame.append(static_cast<char>(command));
    frame.append(static_cast<char>(parameter));
    frame.append(reinterpret_cast<const char *>(data), length);
    frame.append(static_cast<char>(checksum(frame)));
    return frame;
}
