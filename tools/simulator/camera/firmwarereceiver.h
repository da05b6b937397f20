// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "answer.h"

#include <QByteArray>

#include <optional>

/// Puts a firmware together from its announced size and its packets, and says what is wrong with
/// those that do not fit.
///
/// Packets are numbered 1, 2 and so on, with 0 following on 255, and carry 128 bytes each; only the
/// one that completes the announced size may carry fewer. One that does not fit is refused and
/// changes nothing, so that the right one may still follow. That includes a repetition of the
/// packet before: the host never sends one twice, and it would hide that a packet was lost.
class FirmwareReceiver {
public:
    /// Reads the payload of UART_CTRL_CMD_RECEIVE_FW_INFO: 02, then the size in 24 bits, high byte
    /// first.
    /// @return bytes, 0 to 16777215; nothing when @p payload is not of that form
    static std::optional<int> announcedSize(const QByteArray &payload);

    /// Starts over, with the payload of UART_CTRL_CMD_RECEIVE_FW_INFO. If that is refused, what is
    /// under way goes on.
    Answer announce(const QByteArray &payload);
    /// Takes the next packet.
    /// @param number  the parameter byte of UART_CTRL_CMD_UPLOAD_FIRMWARE
    /// @param bytes   its payload
    Answer takePacket(unsigned char number, const QByteArray &bytes);

    /// Whether all that was announced is there; true at once for a size of 0, and false before the
    /// first announcement.
    bool isComplete() const;
    /// What has come since the last announcement.
    const QByteArray &firmware() const;

private:
    std::optional<int> m_size; ///< bytes, as announced
    QByteArray m_firmware;
    unsigned char m_nextNumber = 1;
};
