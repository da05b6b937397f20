// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "frameassembler.h"

void FrameAssembler::take(unsigned char byte, Listener &listener)
{
    // The order matters: a byte behind an FF pair inside a body is first the last byte of the
    // abandoned frame and then the length byte of the new one.
    if (data_step_get_data) {
        collect(byte, listener);
    }
    if (data_step_head_ready) {
        begin(byte, listener);
    }

    head_byte_count = byte == UARTFrame::kHeaderByte ? static_cast<quint8>(head_byte_count + 1) : 0;
    if (head_byte_count == 2) {
        data_step_head_ready = true;
        head_byte_count = 0;
    }
}

void FrameAssembler::collect(unsigned char byte, Listener &listener)
{
    command_buf[data_offest] = byte;
    ++data_offest;

    const quint32 collected = data_offest - UARTFrame::kBytesBeforeCounted;
    if (data_length > collected) {
        checksum += byte;
        return;
    }

    data_step_get_data = false;
    if (data_length != collected) {
        listener.lengthRejected(data_length);
    } else if (byte == checksum % 256) {
        const QByteArray frame(reinterpret_cast<const char *>(command_buf.data()),
                               static_cast<int>(data_length) + UARTFrame::kBytesBeforeCounted - 1);
        listener.frameAccepted(frame, data_length);
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
