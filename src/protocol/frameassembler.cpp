// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "frameassembler.h"

void FrameAssembler::finish(unsigned char lastByte, Listener &listener)
{
    data_step_get_data = false;
    if (data_length != data_offest - UARTFrame::kBytesBeforeCounted) {
        listener.lengthRejected(data_length);
    } else if (lastByte == checksum % 256) {
        constexpr int kUncounted = UARTFrame::kBytesBeforeCounted - 1; // without the checksum
        listener.frameAccepted(
            {reinterpret_cast<const char *>(command_buf.data()), data_length + kUncounted},
            data_length);
    } else {
        listener.checksumFailed(checksum);
    }
}

void FrameAssembler::begin(unsigned char length, Listener &listener)
{
    data_step_head_ready = false;
    // A longer frame would not fit command_buf, and no sender makes one.
    data_step_get_data = length <= UARTFrame::kMaximumLength;
    data_offest = UARTFrame::kBytesBeforeCounted;
    data_length = length;
    command_buf[0] = UARTFrame::kHeaderByte;
    command_buf[1] = UARTFrame::kHeaderByte;
    command_buf[2] = length;
    checksum = length;
    listener.lengthReceived(data_length);
}
