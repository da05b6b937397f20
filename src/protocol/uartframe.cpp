// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "uartframe.h"

#include <algorithm>
#include <numeric>

std::optional<QByteArray> UARTFrame::build(UARTCommunicationType_t type, unsigned char command,
                                           unsigned char parameter, const unsigned char *data,
                                           unsigned char length)
{
    if (length > kMaximumPayloadSize || (length != 0 && data == nullptr)) {
        return std::nullopt;
    }

    std::array<unsigned char, kMaximumSize> frame{};
    frame[0] = kHeaderByte;
    frame[1] = kHeaderByte;
    std::copy(kSignature.begin(), kSignature.end(), frame.begin() + kSignatureOffset);
    frame[kTypeOffset] = static_cast<unsigned char>(type);
    frame[kCommandOffset] = command;
    frame[kParameterOffset] = parameter;
    std::copy_n(data, length, frame.begin() + kPayloadOffset);

    const int checksumOffset = kPayloadOffset + length;
    frame[kLengthOffset] = static_cast<unsigned char>(checksumOffset + 1 - kBytesBeforeCounted);
    const int sum =
        std::accumulate(frame.begin() + kLengthOffset, frame.begin() + checksumOffset, 0);
    frame[static_cast<size_t>(checksumOffset)] = static_cast<unsigned char>(sum);

    return QByteArray(reinterpret_cast<const char *>(frame.data()), checksumOffset + 1);
}
