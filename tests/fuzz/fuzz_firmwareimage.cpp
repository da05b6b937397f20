// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

// Whatever an image file holds, and however short it is: FirmwareImage reads from it what a plain
// decoding reads, and the packets of the firmware cover it without a gap.

#include "firmwareimage.h"
#include "firmwarepacket.h"
#include "fuzztarget.h"
#include "require.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <string_view>
#include <vector>

namespace {

constexpr std::size_t kPrefixOffset = 128;
constexpr std::size_t kBodyOffset = 160;

/// Decodes base64 by looking up, for each byte that comes out, the two characters it is spread
/// over.
void decode(const std::uint8_t *text, std::size_t size, std::vector<unsigned char> &bytes)
{
    constexpr std::string_view kAlphabet =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    static std::vector<unsigned int> values;
    values.clear();
    for (std::size_t i = 0; i < size; ++i) {
        const std::size_t value = kAlphabet.find(static_cast<char>(text[i]));
        if (value != std::string_view::npos) {
            values.push_back(static_cast<unsigned int>(value));
        }
    }
    const std::size_t count = values.size() * 6 / 8;
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t first = i * 8 / 6;
        const unsigned int both = values[first] * 64 + values[first + 1];
        bytes.push_back(static_cast<unsigned char>(both >> (4 - i * 8 % 6)));
    }
}

bool isVersion(const QString &text, const std::uint8_t *data, std::size_t size, std::size_t offset)
{
    std::array<char, 4 * sizeof ".-80"> expected{};
    int length = 0;
    for (std::size_t i = offset; i < offset + 4; ++i) {
        const int byte = i < size ? data[i] : 0;
        length += std::snprintf(
            expected.data() + length, expected.size() - static_cast<size_t>(length),
            byte < 128 ? ".%x" : ".-%x", static_cast<unsigned>(byte < 128 ? byte : 256 - byte));
    }
    return text == QLatin1String(expected.data() + 1, length - 1);
}

void checkFirmware(const QByteArray &firmware, const std::uint8_t *data, std::size_t size)
{
    static std::vector<unsigned char> expected;
    expected.assign(data + std::min(size, kPrefixOffset), data + std::min(size, kBodyOffset));
    if (size > kBodyOffset) {
        decode(data + kBodyOffset, size - kBodyOffset, expected);
    }
    require(std::equal(firmware.begin(), firmware.end(), expected.begin(), expected.end(),
                       [](char left, unsigned char right) {
                           return static_cast<unsigned char>(left) == right;
                       }),
            "the firmware is the raw prefix and the decoded body");
}

void checkPackets(int firmwareSize)
{
    const int count = FirmwarePacket::count(firmwareSize);
    int end = 0;
    for (int i = 0; i < count; ++i) {
        const FirmwarePacket packet = FirmwarePacket::at(i, firmwareSize);
        require(packet.offset == end, "a packet starts where the one before it ends");
        require(packet.length >= 1 && packet.length <= 128, "a packet has 1 to 128 bytes");
        require(packet.length == 128 || i == count - 1, "only the last packet is not full");
        require(packet.number == (i + 1) % 256, "packets are numbered from 1, and 0 follows 255");
        end += packet.length;
    }
    require(end == firmwareSize, "the packets cover the firmware");
}

/// The last packets of a firmware that is as large as three bytes of the header say.
void checkLastPackets(const std::uint8_t *bytes)
{
    const int size = bytes[0] << 16 | bytes[1] << 8 | bytes[2];
    const int count = FirmwarePacket::count(size);
    int end = size;
    for (int i = count - 1; i >= 0 && i >= count - 2; --i) {
        const FirmwarePacket packet = FirmwarePacket::at(i, size);
        require(packet.offset + packet.length == end, "a packet ends where the next one starts");
        require(packet.offset % 128 == 0 && packet.offset / 128 == i, "packets are of 128 bytes");
        require(packet.number == (i + 1) % 256, "packets are numbered from 1, and 0 follows 255");
        end = packet.offset;
    }
    require(count > 1 || end == 0, "a firmware of one packet is covered by it");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const FirmwareImage image(
        QByteArray::fromRawData(reinterpret_cast<const char *>(data), static_cast<int>(size)));
    require(image.hasMagic() == (size >= 4 && std::memcmp(data, "KVEL", 4) == 0),
            "the magic is the first four bytes");
    require(isVersion(image.protocolVersion(), data, size, 4),
            "the protocol version is bytes 4 to 7 in signed hexadecimal");
    require(isVersion(image.imageVersion(), data, size, 8),
            "the image version is bytes 8 to 11 in signed hexadecimal");

    const QByteArray firmware = image.firmware();
    checkFirmware(firmware, data, size);
    checkPackets(firmware.size());
    if (size >= 15) {
        checkLastPackets(data + 12);
    }
    return 0;
}
