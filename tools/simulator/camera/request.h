// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>

#include <optional>

/// A frame from the host whose length and checksum are right, taken apart.
struct Request {
    unsigned char type = 0;    ///< UART_COMM_TYPE_REQUEST, if the host keeps to it
    unsigned char command = 0; ///< a UARTControlCommand, if the host keeps to them
    unsigned char parameter = 0;
    QByteArray payload; ///< 0 to 128 bytes

    /// Takes @p frame apart.
    /// @param frame  a whole frame as FrameReader delivers it, header and checksum included
    /// @return nothing when the signature is wrong
    static std::optional<Request> fromFrame(const QByteArray &frame);
};
