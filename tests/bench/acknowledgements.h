// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>

/// Acknowledgements of firmware packets, the replies that a camera sends most, written by hand.
namespace Acknowledgements {

/// FF FF 0A 41 01 06 07 06 09 05 01 00 6E: the shortest frame there is.
inline QByteArray one()
{
    return QByteArray::fromHex("ffff0a410106070609050100 6e");
}

inline QByteArray many(int count)
{
    return one().repeated(count);
}

} // namespace Acknowledgements
