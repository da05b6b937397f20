// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "imagefault.h"

#include "firmwareimage.h"
#include "firmwarepacket.h"

#include <algorithm>

namespace {

constexpr int kBodyOffset = FirmwareImage::kHeaderSize + FirmwareImage::kRawPrefixSize;
// Four characters encode three bytes; a last group of one byte takes two of them, of two bytes
// three.
constexpr int kGroupSize = 4;
constexpr int kGroupBytes = 3;
constexpr int kMaximumBodyBytes =
    FirmwarePacket::kMaximumFirmwareSize - FirmwareImage::kRawPrefixSize;
constexpr int kMaximumGroups = (kMaximumBodyBytes + kGroupBytes - 1) / kGroupBytes;
constexpr int kMaximumBodyCharacters = kMaximumBodyBytes / kGroupBytes * kGroupSize
    + (kMaximumBodyBytes % kGroupBytes == 0 ? 0 : kMaximumBodyBytes % kGroupBytes + 1);

/// The character's six bits, or -1 when it is not of the alphabet.
int sixBits(char character)
{
    if (character >= 'A' && character <= 'Z') {
        return character - 'A';
    }
    if (character >= 'a' && character <= 'z') {
        return character - 'a' + 26;
    }
    if (character >= '0' && character <= '9') {
        return character - '0' + 52;
    }
    if (character == '+') {
        return 62;
    }
    return character == '/' ? 63 : -1;
}

/// Whether the last character of a group that is not full has bits of a byte that is not there.
bool hasBitsToSpare(char last, int charactersOfGroup)
{
    switch (charactersOfGroup) {
    case 2:
        return (sixBits(last) & 0xF) != 0;
    case 3:
        return (sixBits(last) & 0x3) != 0;
    default:
        return false;
    }
}

/// Bytes as text in quotes, with a dot for each that cannot be printed, and in hexadecimal.
QString shown(const QByteArray &bytes)
{
    QString text;
    for (const char byte : bytes) {
        const bool isPrintable = byte >= ' ' && byte <= '~';
        text += QLatin1Char(isPrintable ? byte : '.');
    }
    return QStringLiteral("\"%1\" (%2)").arg(text, QString::fromLatin1(bytes.toHex(' ')));
}

QString tooLarge()
{
    return QStringLiteral("too large: a firmware has at most %1 bytes")
        .arg(FirmwarePacket::kMaximumFirmwareSize);
}

QString empty()
{
    return QStringLiteral("the firmware is empty");
}

ImageFault foreignCharacter(const QByteArray &image, int offset)
{
    if (image.at(offset) == '=') {
        return {offset, QStringLiteral("a \"=\" that is not at the end of the encoded body")};
    }
    return {
        offset,
        QStringLiteral("%1 is not a base64 character").arg(shown(QByteArray(1, image.at(offset))))};
}

std::optional<ImageFault> bodyFault(const QByteArray &image)
{
    int end = image.size();
    while (end > kBodyOffset && image.at(end - 1) == '=') {
        --end;
    }
    for (int offset = kBodyOffset; offset < end; ++offset) {
        if (sixBits(image.at(offset)) < 0) {
            return foreignCharacter(image, offset);
        }
    }
    if (end - kBodyOffset > kMaximumBodyCharacters) {
        return ImageFault{kBodyOffset + kMaximumBodyCharacters, tooLarge()};
    }

    const int charactersOfLastGroup = (end - kBodyOffset) % kGroupSize;
    if (charactersOfLastGroup == 1) {
        return ImageFault{end - 1,
                          QStringLiteral("the encoded body ends with a single character, which is "
                                         "no whole byte")};
    }
    const int padding = image.size() - end;
    const int rightPadding = (kGroupSize - charactersOfLastGroup) % kGroupSize;
    if (padding != 0 && padding != rightPadding) {
        return ImageFault{
            end,
            QStringLiteral("wrong padding: the encoded body takes %1 \"=\" at its end or none, "
                           "not %2")
                .arg(rightPadding)
                .arg(padding)};
    }
    if (end > kBodyOffset && hasBitsToSpare(image.at(end - 1), charactersOfLastGroup)) {
        return ImageFault{end - 1,
                          QStringLiteral("the last character holds bits of a further byte: the "
                                         "encoded body is cut short or damaged")};
    }
    return std::nullopt;
}

} // namespace

const int kMaximumImageSize = kBodyOffset + kMaximumGroups * kGroupSize;

std::optional<ImageFault> imageFault(const QByteArray &image)
{
    // For a file that is no image at all, this says more than that it is too short.
    const QByteArray wanted = FirmwareImage::kMagic;
    const QByteArray magic = image.left(wanted.size());
    if (!wanted.startsWith(magic)) {
        return ImageFault{0, QStringLiteral("the magic is %1, not \"KVEL\"").arg(shown(magic))};
    }
    if (image.size() < FirmwareImage::kHeaderSize) {
        return ImageFault{static_cast<int>(image.size()),
                          QStringLiteral("the file ends here, shorter than the header of %1 bytes")
                              .arg(FirmwareImage::kHeaderSize)};
    }
    if (image.size() == FirmwareImage::kHeaderSize) {
        return ImageFault{static_cast<int>(image.size()), empty()};
    }
    if (image.size() <= kBodyOffset) {
        return std::nullopt;
    }
    return bodyFault(image);
}

std::optional<ImageFault> firmwareFault(const QByteArray &firmware)
{
    if (firmware.size() > FirmwarePacket::kMaximumFirmwareSize) {
        return ImageFault{FirmwarePacket::kMaximumFirmwareSize, tooLarge()};
    }
    if (firmware.isEmpty()) {
        return ImageFault{0, empty()};
    }
    return std::nullopt;
}
