// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>

#include <array>
#include <optional>

/// Byte 9 of a frame: who speaks. Of a fixed type, so that a value without a name is one too.
enum UARTCommunicationType_t : int {
    UART_COMM_TYPE_REQUEST = 1,  ///< from the host; every frame it sends
    UART_COMM_TYPE_RESERVED = 2, ///< received and ignored
    UART_COMM_TYPE_ACK = 5,      ///< from the camera, in reply to a request
};

/// Byte 10 of a frame: what is asked for, and repeated in the reply.
enum UARTControlCommand : unsigned char {
    UART_CTRL_CMD_UPLOAD_FIRMWARE = 1,  ///< one firmware packet; the parameter byte numbers it
    UART_CTRL_CMD_RECEIVE_FW_INFO = 16, ///< announces the size of a firmware
    UART_CTRL_CMD_HELLO = 22,           ///< asks for version and settings
    UART_CTRL_CMD_REBOOT = 31,          ///< reported by the camera, never sent by the host
    UART_CTRL_CMD_SET_CUSTOM_ZOOM = 58, ///< sets one of the two zoom presets
    UART_CTRL_CMD_CUSTOM_SETTING = 85,  ///< changes the five camera settings
};

/// The frame in which everything travels, in both directions. With a payload of n bytes (0 to 128)
/// it is 13 + n bytes long:
///
///     offset  width  field
///     0       2      header, FF FF
///     2       1      length: bytes that follow this one, 10 + n
///     3       6      signature, 41 01 06 07 06 09
///     9       1      communication type, a UARTCommunicationType_t
///     10      1      command, a UARTControlCommand
///     11      1      parameter byte
///     12      n      payload
///     12 + n  1      checksum: low 8 bits of the sum of bytes 2 to 11 + n
namespace UARTFrame {

constexpr unsigned char kHeaderByte = 0xFF;
constexpr std::array<unsigned char, 6> kSignature{0x41, 0x01, 0x06, 0x07, 0x06, 0x09};

constexpr int kLengthOffset = 2;
constexpr int kSignatureOffset = 3;
constexpr int kTypeOffset = 9;
constexpr int kCommandOffset = 10;
constexpr int kParameterOffset = 11;
constexpr int kPayloadOffset = 12;

constexpr int kMaximumPayloadSize = 128;
/// Header, length byte and everything else around the payload, the checksum included.
constexpr int kSizeWithoutPayload = 13;
constexpr int kMaximumSize = kSizeWithoutPayload + kMaximumPayloadSize;
/// The length byte counts what follows it, so it is this much smaller than the frame.
constexpr int kBytesBeforeCounted = 3;
constexpr int kMaximumLength = kMaximumSize - kBytesBeforeCounted;

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
