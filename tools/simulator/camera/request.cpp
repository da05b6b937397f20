// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "request.h"

#include "uartframe.h"

#include <algorithm>

std::optional<Request> Request::fromFrame(const QByteArray &frame)
{
    Q_ASSERT(frame.size() >= UARTFrame::kSizeWithoutPayload);
    const bool isSigned = std::equal(
        UARTFrame::kSignature.begin(), UARTFrame::kSignature.end(),
        frame.begin() + UARTFrame::kSignatureOffset,
        [](unsigned char wanted, char byte) { return static_cast<unsigned char>(byte) == wanted; });
    if (!isSigned) {
        return std::nullopt;
    }
    const auto byteAt = [&frame](int offset) {
        return static_cast<unsigned char>(frame.at(offset));
    };
    return Request{
        byteAt(UARTFrame::kTypeOffset), byteAt(UARTFrame::kCommandOffset),
        byteAt(UARTFrame::kParameterOffset),
        frame.mid(UARTFrame::kPayloadOffset, frame.size() - UARTFrame::kSizeWithoutPayload)};
}
