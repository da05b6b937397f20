// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>

/// Frames between window and camera, written by hand. Each is
///
///   FF FF, length, 41 01 06 07 06 09, type, command, parameter, payload, checksum
///
/// The length counts from itself up to the payload's end, the checksum is the low byte of their
/// sum. Types: 01 request, 05 acknowledgement. Commands: 01 packet, 10 firmware size, 16 HELLO, 1F
/// reboot, 3A custom zoom, 55 settings.
struct Frames {
    static QByteArray helloRequest() { return hex("ffff0a410106070609 01 16 00 7f"); }
    /// Of a camera of version 1.0.a.10 that tracks by panning, with target missing on preset 1,
    /// upside down, without auto zoom, and with a custom zoom offset.
    static QByteArray helloReply()
    {
        return hex("ffff17410106070609 05 16 00 01000a10 03 0000 0101 0100 00 03 b4");
    }
    static QByteArray settingsAcknowledgement() { return hex("ffff0a410106070609 05 55 00 c2"); }
    static QByteArray firstZoomRequest() { return hex("ffff0c410106070609 01 3a 00 0000 a5"); }
    static QByteArray secondZoomRequest() { return hex("ffff0c410106070609 01 3a 00 0100 a6"); }
    static QByteArray rebootAcknowledgement() { return hex("ffff0a410106070609 05 1f 00 8c"); }
    static QByteArray sizeAcknowledgement() { return hex("ffff0a410106070609 05 10 00 7d"); }
    static QByteArray packetAcknowledgement() { return hex("ffff0a410106070609 05 01 00 6e"); }

    static QByteArray hex(const char *digits) { return QByteArray::fromHex(digits); }
};
