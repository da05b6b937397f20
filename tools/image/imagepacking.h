// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>

#include <array>

/// A version's four numbers in the order they are written.
using ImageVersion = std::array<unsigned char, 4>;

/// The image file of a firmware, the reverse of FirmwareImage::firmware().
/// @param firmware  at most FirmwarePacket::kMaximumFirmwareSize bytes
/// @return header, raw prefix and encoded body, with padding; a firmware shorter than the raw
///         prefix ends the file early
QByteArray packedImage(const ImageVersion &protocolVersion, const ImageVersion &imageVersion,
                       const QByteArray &firmware);
