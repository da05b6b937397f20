// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

/// The first thing that cannot be right in a file, and where.
struct ImageFault {
    int offset; ///< bytes from the start of the file
    QString reason;
};

/// Bytes: the largest firmware that the upload can announce, with all of its padding.
extern const int kMaximumImageSize;

/// Examines an image more strictly than an upload does, which skips what it cannot decode. The
/// padding of the encoded body is there as a whole or not at all. As there is no checksum, a file
/// that was cut off after a whole group has no fault.
/// @param image  the whole file; of a larger one, the first kMaximumImageSize + 1 bytes suffice
/// @return nothing when all of it would be uploaded, and that is at least one byte
std::optional<ImageFault> imageFault(const QByteArray &image);

/// @param firmware  the whole file; of a larger one, one byte more than the upload can announce
///                  suffices
/// @return nothing when it can be packed
std::optional<ImageFault> firmwareFault(const QByteArray &firmware);
