// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

/// Which bytes of a firmware one UART_CTRL_CMD_UPLOAD_FIRMWARE carries.
struct FirmwarePacket {
    static constexpr int kSize = 128; ///< bytes of every packet except a last one that is not full
    /// Bytes; the largest number that the 24 bits of the announced size can hold.
    static constexpr int kMaximumFirmwareSize = 0xFFFFFF;

    /// @param firmwareSize  bytes, not negative
    /// @return how many packets that takes; 0 for an empty firmware
    static int count(int firmwareSize);
    /// @param index         0 to count(firmwareSize) - 1
    static FirmwarePacket at(int index, int firmwareSize);

    int offset;           ///< of its first byte in the firmware
    unsigned char length; ///< bytes, 1 to kSize
    unsigned char number; ///< 1 for the first packet; 0 follows 255
};
