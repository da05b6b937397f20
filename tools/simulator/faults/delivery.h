// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>

#include <chrono>

/// Bytes that arrive in one piece, and what else happens to the line at that moment.
struct Delivery {
    QByteArray bytes; ///< may be none
    /// Since the delivery before it out of the same frame, or else since the frame came.
    std::chrono::milliseconds pause{0};
    bool hangUp = false; ///< the line is hung up after the bytes
    /// Goes earlier, in one piece with what comes next in that direction.
    bool awaitsNext = false;
    /// For so long since the frame came, nothing arrives in either direction.
    std::chrono::milliseconds standstill{0};
};
