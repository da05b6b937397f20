// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "imagereport.h"

#include "firmwareimage.h"
#include "firmwarepacket.h"

#include <QCryptographicHash>
#include <QStringList>

namespace {

/// The version at an offset as plain decimal numbers.
QString decimalVersion(const QByteArray &image, int offset)
{
    QStringList numbers;
    for (int i = 0; i < 4; ++i) {
        numbers += QString::number(static_cast<unsigned char>(image.at(offset + i)));
    }
    return numbers.join(QLatin1Char('.'));
}

/// The window looks for replies every 50 ms, and sends the next packet once the last one is
/// acknowledged. The announcement of the size takes one such step as well.
QString uploadTime(int packetCount)
{
    constexpr int kStepHundredths = 5; // hundredths of a second
    const int hundredths = (packetCount + 1) * kStepHundredths;
    const int seconds = hundredths / 100;
    return QStringLiteral("%1 min %2.%3 s")
        .arg(seconds / 60)
        .arg(seconds % 60)
        .arg(hundredths % 100, 2, 10, QLatin1Char('0'));
}

} // namespace

QString imageReport(const QByteArray &image)
{
    const FirmwareImage fields(image);
    const QByteArray firmware = fields.firmware();
    const int packetCount = FirmwarePacket::count(firmware.size());
    const QByteArray hash = QCryptographicHash::hash(firmware, QCryptographicHash::Sha256);
    const QStringList lines{
        QStringLiteral("Magic: ") + QString::fromLatin1(image.left(4)),
        QStringLiteral("Protocol version: %1 (decimal %2)")
            .arg(fields.protocolVersion(),
                 decimalVersion(image, FirmwareImage::kProtocolVersionOffset)),
        QStringLiteral("Image version: %1 (decimal %2)")
            .arg(fields.imageVersion(), decimalVersion(image, FirmwareImage::kImageVersionOffset)),
        QStringLiteral("File size: %1 bytes").arg(image.size()),
        QStringLiteral("Firmware size: %1 bytes").arg(firmware.size()),
        QStringLiteral("Packets: %1").arg(packetCount),
        QStringLiteral("Upload time: ") + uploadTime(packetCount),
        QStringLiteral("SHA-256 of the firmware: ") + QString::fromLatin1(hash.toHex()),
    };
    return lines.join(QLatin1Char('\n')) + QLatin1Char('\n');
}
