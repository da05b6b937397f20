// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>

#include <array>
#include <optional>

/// Who sends a frame. The underlying type is fixed, so that a value without a name is valid too.
enum UARTCommunicationType_t : int {
    UART_COMM_TYPE_REQUEST = 1,  ///< from the host; every frame it sends
    UART_COMM_TYPE_RESERVED = 2, ///< received and ignored
    UART_COMM_TYPE_ACK = 5,      ///< from the camera, in reply to a request
};

/// What a request asks for. Its reply repeats it.
enum UARTControlCommand : unsigned char {
    UART_CTRL_CMD_UPLOAD_FIRMWARE = 1,  ///< one firmware packet; the parameter byte numbers it
    UART_CTRL_CMD_RECEIVE_FW_INFO = 16, ///< announces the size of a firmware
    UART_CTRL_CMD_HELLO = 22,           ///< asks for version and settings
    UART_CTRL_CMD_REBOOT = 31,          ///< reported by the camera, never requested
    UART_CTRL_CMD_SET_CUSTOM_ZOOM = 58, ///< sets one of the two zoom presets
    UART_CTRL_CMD_CUSTOM_SETTING = 85,  ///< changes the five camera settings
};

/// The frame in which everything travels, in both directions: two header bytes, the fields at the
/// offsets below, 0 to 128 bytes of payload and, last, the checksum.
namespace UARTFrame {

constexpr unsigned char kHeaderByte = 0xFF;
constexpr std::array<unsigned char, 6> kSignature{0x41, 0x01, 0x06, 0x07, 0x06, 0x09};

constexpr int kLengthOffset = 2;     ///< how many bytes follow this one, the checksum included
constexpr int kSignatureOffset = 3;  ///< six bytes
constexpr int kTypeOffset = 9;       ///< a UARTCommunicationType_t
constexpr int kCommandOffset = 10;   ///< a UARTControlCommand
constexpr int kParameterOffset = 11; ///< the packet number in UART_CTRL_CMD_UPLOAD_FIRMWARE, else 0
constexpr int kPayloadOffset = 12;

constexpr int kMaximumPayloadSize = 128;
/// Everything around the payload, the checksum included.
constexpr int kSizeWithoutPayload = kPayloadOffset + 1;
constexpr int kMaximumSize = kSizeWithoutPayload + kMaximumPayloadSize;
/// The length byte counts what follows it, so it is this much smaller than the frame.
constexpr int kBytesBeforeCounted = kLengthOffset + 1;
constexpr int kMaximumLength = kMaximumSize - kBytesBeforeCounted;

/// The low 8 bits of the sum of all bytes from the length byte on.
/// @param frame  without its checksum byte
unsigned char checksum(const QByteArray &frame);

/// Builds one frame.
/// @param type       only its low 8 bits are sent
/// @param command    a UARTControlCommand
/// @param parameter  the packet number for UART_CTRL_CMD_UPLOAD_FIRMWARE, otherwise 0
/// @param data       the payload, copied; may be null only when @p length is 0
/// @param length     bytes of payload, 0 to 128
/// @return the 13 + @p length bytes to write, or nothing when the payload is too long or missing
std::optional<QByteArray> build(UARTCommunicationType_t type, unsigned char command,
                                unsigned char parameter, const unsigned char *data,
                                unsigned char length);

} // namespace UARTFrame
