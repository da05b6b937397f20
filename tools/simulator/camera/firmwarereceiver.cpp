// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "firmwarereceiver.h"

#include <QtEndian>

#include <algorithm>

namespace {

constexpr int kAnnouncementSize = 4;
constexpr char kAnnouncementStart = 2;
constexpr int kPacketSize = 128;

} // namespace

std::optional<int> FirmwareReceiver::announcedSize(const QByteArray &payload)
{
    if (payload.size() != kAnnouncementSize || payload.at(0) != kAnnouncementStart) {
        return std::nullopt;
    }
    constexpr quint32 kSizeBits = 0xFFFFFF;
    return static_cast<int>(qFromBigEndian<quint32>(payload.constData()) & kSizeBits);
}

Answer FirmwareReceiver::announce(const QByteArray &payload)
{
    if (payload.size() != kAnnouncementSize) {
        return Answer::refuseSize(payload.size(), kAnnouncementSize);
    }
    const auto size = announcedSize(payload);
    if (!size) {
        return Answer::refuse(QStringLiteral("payload starts with %1, 2 expected")
                                  .arg(static_cast<unsigned char>(payload.at(0))));
    }
    *this = {};
    m_size = size;
    return Answer::acknowledge(UART_CTRL_CMD_RECEIVE_FW_INFO, {});
}

Answer FirmwareReceiver::takePacket(unsigned char number, const QByteArray &bytes)
{
    if (!m_size) {
        return Answer::refuse(QStringLiteral("no firmware was announced"));
    }
    const int missing = *m_size - m_firmware.size();
    if (missing == 0) {
        return Answer::refuse(QStringLiteral("the firmware is complete"));
    }
    if (number != m_nextNumber) {
        return Answer::refuse(
            QStringLiteral("packet %1 instead of %2").arg(number).arg(m_nextNumber));
    }
    if (bytes.size() > missing) {
        return Answer::refuse(QStringLiteral("payload of %1 bytes, only %2 of %3 are missing")
                                  .arg(bytes.size())
                                  .arg(missing)
                                  .arg(*m_size));
    }
    const int expected = std::min(missing, kPacketSize);
    if (bytes.size() != expected) {
        return Answer::refuseSize(bytes.size(), expected);
    }
    m_firmware += bytes;
    ++m_nextNumber;
    return Answer::acknowledge(UART_CTRL_CMD_UPLOAD_FIRMWARE, {});
}

bool FirmwareReceiver::isComplete() const
{
    return m_size && m_firmware.size() == *m_size;
}

const QByteArray &FirmwareReceiver::firmware() const
{
    return m_firmware;
}
