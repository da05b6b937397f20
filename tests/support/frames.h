// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>

/// Frames between window and camera in hexadecimal, written by hand. Each is
///
///   FF FF, length, 41 01 06 07 06 09, type, command, parameter, payload, checksum
///
/// The length counts from itself up to the payload's end, the checksum is the low byte of their
/// sum. Types: 01 request, 05 acknowledgement. Commands: 01 packet, 10 firmware size, 16 HELLO, 1F
/// reboot, 3A custom zoom, 55 settings.
struct Hex {
    static QByteArray hello() { return "FF FF 0A 41 01 06 07 06 09 01 16 00 7F"; }
    /// Of a camera as it comes, of version 1.0.0.6.
    static QByteArray helloReply()
    {
        return "FF FF 17 41 01 06 07 06 09 05 16 00 01 00 00 06 01 00 00 00 00 01 01 01 01 9C";
    }
    /// Of the same camera after an upgrade, which has raised its version to 1.0.0.7.
    static QByteArray raisedHelloReply()
    {
        return "FF FF 17 41 01 06 07 06 09 05 16 00 01 00 00 07 01 00 00 00 00 01 01 01 01 9D";
    }
    /// Pan tracking, preset 7, upside down, no automatic zoom, custom offset.
    static QByteArray settings() { return "FF FF 0F 41 01 06 07 06 09 01 55 00 02 09 01 00 03 D2"; }
    static QByteArray zoom1() { return "FF FF 0C 41 01 06 07 06 09 01 3A 00 00 00 A5"; }
    static QByteArray zoom2() { return "FF FF 0C 41 01 06 07 06 09 01 3A 00 01 00 A6"; }
    /// With the value 100.
    static QByteArray zoomReply() { return "FF FF 0C 41 01 06 07 06 09 05 3A 00 00 64 0D"; }

    /// A firmware of 300 bytes in three packets.
    static QByteArray announcement()
    {
        return "FF FF 0E 41 01 06 07 06 09 01 10 00 02 00 01 2C AC";
    }
    static QByteArray firmware()
    {
        return QByteArray(128, 'A') + QByteArray(128, 'B') + QByteArray(44, 'C');
    }
    static QByteArray firstPacket()
    {
        return "FF FF 8A 41 01 06 07 06 09 01 01 01 " + QByteArray(128, 'A').toHex() + " 6B";
    }
    static QByteArray secondPacket()
    {
        return "FF FF 8A 41 01 06 07 06 09 01 01 02 " + QByteArray(128, 'B').toHex() + " EC";
    }
    static QByteArray thirdPacket()
    {
        return "FF FF 36 41 01 06 07 06 09 01 01 03 " + QByteArray(44, 'C').toHex() + " 1D";
    }
    /// A firmware of the bytes 1, 2 and 3 in one packet.
    static QByteArray smallAnnouncement()
    {
        return "FF FF 0E 41 01 06 07 06 09 01 10 00 02 00 00 03 82";
    }
    static QByteArray smallPacket() { return "FF FF 0D 41 01 06 07 06 09 01 01 01 01 02 03 74"; }
    static QByteArray emptyAnnouncement()
    {
        return "FF FF 0E 41 01 06 07 06 09 01 10 00 02 00 00 00 7F";
    }
    static QByteArray announcementReply() { return "FF FF 0A 41 01 06 07 06 09 05 10 00 7D"; }
    static QByteArray packetReply() { return "FF FF 0A 41 01 06 07 06 09 05 01 00 6E"; }
};

/// The bytes of such frames.
struct Frames {
    static QByteArray helloRequest() { return QByteArray::fromHex(Hex::hello()); }
    /// Of a camera of version 1.0.a.10 that tracks by panning, with target missing on preset 1,
    /// upside down, without auto zoom, and with a custom zoom offset.
    static QByteArray helloReply()
    {
        return hex("ffff17410106070609 05 16 00 01000a10 03 0000 0101 0100 00 03 b4");
    }
    static QByteArray settingsAcknowledgement() { return hex("ffff0a410106070609 05 55 00 c2"); }
    static QByteArray firstZoomRequest() { return QByteArray::fromHex(Hex::zoom1()); }
    static QByteArray secondZoomRequest() { return QByteArray::fromHex(Hex::zoom2()); }
    static QByteArray rebootAcknowledgement() { return hex("ffff0a410106070609 05 1f 00 8c"); }
    static QByteArray sizeAcknowledgement()
    {
        return QByteArray::fromHex(Hex::announcementReply());
    }
    static QByteArray packetAcknowledgement() { return QByteArray::fromHex(Hex::packetReply()); }

    static QByteArray hex(const char *digits) { return QByteArray::fromHex(digits); }
};
