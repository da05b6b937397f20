// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "frameassembler.h"

void FrameAssembler::take(unsigned char byte, Listener &listener)
{
    // In this order: a byte after an FF pair inside a body is first a body byte of the abandoned
    // frame and then the length byte of the new one.
    if (data_step_get_data) {
        collect(byte, listener);
    }
    if (data_step_head_ready) {
        begin(byte, listener);
    }

    if (byte != UARTFrame::kHeaderByte) {
        head_byte_count = 0;
    } else if (++head_byte_count == 2) {
        data_step_head_ready = true;
        head_byte_count = 0;
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

void FrameAssembler::collect(unsigned char byte, Listener &listener)
{
    command_buf[data_offest] = byte;
    ++data_offest;
    if (data_offest - UARTFrame::kBytesBeforeCounted < data_length) {
        checksum += byte;
    } else {
        finish(byte, listener);
    }
}

void FrameAssembler::finish(unsigned char lastByte, Listener &listener)
{
    data_step_get_data = false;
    if (data_length != data_offest - UARTFrame::kBytesBeforeCounted) {
        listener.lengthRejected(data_length);
    } else if (lastByte == checksum % 256) {
        listener.frameAccepted(
            {reinterpret_cast<const char *>(command_buf.data()), data_offest - 1}, data_length);
    } else {
        listener.checksumFailed(checksum);
    }
}
