// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "imagepacking.h"

#include "firmwareimage.h"

namespace {

QByteArray bytesOf(const ImageVersion &version)
{
    QByteArray bytes;
    for (const unsigned char number : version) {
        bytes += static_cast<char>(number);
    }
    return bytes;
}

} // namespace

QByteArray packedImage(const ImageVersion &protocolVersion, const ImageVersion &imageVersion,
                       const QByteArray &firmware)
{
    const QByteArray header =
        FirmwareImage::kMagic + bytesOf(protocolVersion) + bytesOf(imageVersion);
    return header.leftJustified(FirmwareImage::kHeaderSize, '\0')
        + firmware.left(FirmwareImage::kRawPrefixSize)
        + firmware.mid(FirmwareImage::kRawPrefixSize).toBase64();
}
