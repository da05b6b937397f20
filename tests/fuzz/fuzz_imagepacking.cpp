// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

// Whatever firmware is packed: the image has no fault, and what is uploaded from it is that
// firmware. Whatever a file holds: an image without a fault is one that packing gives.
//
// The first byte of an input says which of the two, and in the second case whether the rest is a
// whole file or what follows a header.

#include "firmwareimage.h"
#include "fuzztarget.h"
#include "imagefault.h"
#include "imagepacking.h"
#include "require.h"

#include <cstring>

namespace {

constexpr int kHeaderSize = 128;
constexpr int kBodyOffset = 160;

QByteArray withoutPadding(QByteArray image)
{
    while (image.size() > kBodyOffset && image.endsWith('=')) {
        image.chop(1);
    }
    return image;
}

void checkPacking(const std::uint8_t *data, std::size_t size)
{
    constexpr std::size_t kVersionBytes = 8;
    if (size < kVersionBytes) {
        return;
    }
    const ImageVersion protocolVersion{data[0], data[1], data[2], data[3]};
    const ImageVersion imageVersion{data[4], data[5], data[6], data[7]};
    const QByteArray firmware(reinterpret_cast<const char *>(data + kVersionBytes),
                              static_cast<int>(size - kVersionBytes));
    const QByteArray image = packedImage(protocolVersion, imageVersion, firmware);
    if (firmware.isEmpty()) {
        require(firmwareFault(firmware) && imageFault(image), "an empty firmware is refused");
        return;
    }
    require(!firmwareFault(firmware), "a firmware of that size can be packed");
    require(image.startsWith("KVEL"), "an image starts with the magic");
    require(std::memcmp(image.constData() + 4, data, kVersionBytes) == 0, "the versions follow");
    require(image.size() <= kBodyOffset || image.size() % 4 == 0, "the padding is complete");
    require(!imageFault(image), "what was packed has no fault");
    require(FirmwareImage(image).firmware() == firmware, "what was packed is what is uploaded");

    const QByteArray bare = withoutPadding(image);
    if (bare.size() != image.size()) {
        require(!imageFault(bare), "what was packed has no fault without its padding");
        require(FirmwareImage(bare).firmware() == firmware,
                "what was packed is what is uploaded without its padding");
    }
}

void checkFault(const QByteArray &image)
{
    const std::optional<ImageFault> fault = imageFault(image);
    if (fault) {
        require(fault->offset >= 0 && fault->offset <= image.size(), "a fault is in the file");
        require(!fault->reason.isEmpty(), "a fault has a reason");
        return;
    }
    require(image.size() >= kHeaderSize && image.startsWith("KVEL"),
            "an image without a fault has a whole header");
    const QByteArray packed = packedImage({}, {}, FirmwareImage(image).firmware());
    const QByteArray payload = image.mid(kHeaderSize);
    require(payload == packed.mid(kHeaderSize)
                || payload == withoutPadding(packed).mid(kHeaderSize),
            "an image without a fault is packed from what is uploaded, with all padding or none");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const QByteArray header = QByteArray("KVEL").leftJustified(kHeaderSize, '\x11');
    if (size == 0) {
        return 0;
    }
    const QByteArray rest = QByteArray::fromRawData(reinterpret_cast<const char *>(data + 1),
                                                    static_cast<int>(size) - 1);
    switch (data[0] % 4) {
    case 0:
        checkFault(rest);
        break;
    case 1:
        checkFault(header + rest);
        break;
    default:
        checkPacking(data + 1, size - 1);
        break;
    }
    return 0;
}
