// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

// Whatever a frame holds, and however short it is: DeviceReply reads from it what a plain decoding
// of the bytes reads.

#include "devicereply.h"
#include "fuzztarget.h"
#include "require.h"
#include "signedbytes.h"

#include <array>
#include <cstdlib>
#include <string_view>

namespace {

/// Numbers as the window shows them: hexadecimal after a minus sign, with dots between.
template <typename... Numbers> bool isDotted(const QString &text, Numbers... numbers)
{
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::array<char, sizeof...(numbers) * sizeof ".-80"> expected{};
    std::size_t length = 0;
    for (const int number : {numbers...}) {
        const auto magnitude = static_cast<std::size_t>(std::abs(number));
        if (length != 0) {
            expected[length++] = '.';
        }
        if (number < 0) {
            expected[length++] = '-';
        }
        if (magnitude > 15) {
            expected[length++] = kDigits[magnitude / 16];
        }
        expected[length++] = kDigits[magnitude % 16];
    }
    return text == QLatin1String(expected.data(), static_cast<int>(length));
}

int trackingMode(bool pan, bool tilt)
{
    constexpr std::array<int, 4> kModes{0, 3, 2, 1};
    return kModes.at((pan ? 2U : 0U) + (tilt ? 1U : 0U));
}

void checkSettings(const SettingsReport &report, const SignedBytes &byte)
{
    require(isDotted(report.version, byte[12], byte[13], byte[14], byte[15]),
            "the version is bytes 12 to 15 in signed hexadecimal");
    require(report.targetMissing == byte[16], "target missing is byte 16");
    require(report.isUpsideDown() == (byte[19] != 0 && byte[20] != 0),
            "upside down is what bytes 19 and 20 say together");
    require(report.autoTracking() == trackingMode(byte[21] != 0, byte[22] != 0),
            "the tracking mode follows from bytes 21 and 22");
    require(report.autoZoom == byte[23], "auto zoom is byte 23");
    require(report.zoomOffset == byte[24], "the zoom offset is byte 24");
    require(isDotted(report.summary(), byte[16], byte[19], byte[20], byte[21], byte[22], byte[23],
                     byte[24]),
            "the summary is bytes 16 and 19 to 24 in signed hexadecimal");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const SignedBytes byte(data, size);
    const DeviceReply reply(
        QByteArray(reinterpret_cast<const char *>(data), static_cast<int>(size)));

    require(static_cast<std::size_t>(reply.size()) == size, "the size is the frame's");
    require(reply.communicationType() == (size > 9 ? data[9] : 0), "the type is byte 9");
    require(reply.command() == (size > 10 ? data[10] : 0), "the command is byte 10");
    require(reply.hasSettings() == (size > 13), "settings take 14 bytes at least");
    require(reply.customZoom() == 256 * byte[12] + byte[13],
            "the zoom is bytes 12 and 13, both of them signed");
    checkSettings(reply.settings(), byte);
    return 0;
}
