// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

/// Which bytes of a firmware one UART_CTRL_CMD_UPLOAD_FIRMWARE carries.
struct FirmwarePacket {
    static constexpr int kSize = 128; ///< bytes of every packet but a last one that is not full
    /// Bytes; what the 24 bits of the announced size can say.
    static constexpr int kMaximumFirmwareSize = 0xFFFFFF;

    /// @param firmwareSize  bytes, not negative
    /// @return how many packets that takes; 0 for an empty firmware
    static int count(int firmwareSize);
    /// @param index         from 0 to count(firmwareSize) - 1
    static FirmwarePacket at(int index, int firmwareSize);

    int offset;           ///< of its first byte in the firmware
    unsigned char length; ///< bytes, 1 to kSize
    unsigned char number; ///< 1 for the first, then up; 0 follows on 255
};
