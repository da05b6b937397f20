// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "exchangelog.h"

#include "devicereply.h"
#include "firmwarereceiver.h"
#include "printabletext.h"
#include "request.h"
#include "uartframe.h"

#include <QStringList>
#include <QtEndian>

namespace {

constexpr int kNameWidth = 19; // "SET_CUSTOM_ZOOM ack"

QString commandName(unsigned char command)
{
    switch (command) {
    case UART_CTRL_CMD_UPLOAD_FIRMWARE:
        return QStringLiteral("UPLOAD_FIRMWARE");
    case UART_CTRL_CMD_RECEIVE_FW_INFO:
        return QStringLiteral("RECEIVE_FW_INFO");
    case UART_CTRL_CMD_HELLO:
        return QStringLiteral("HELLO");
    case UART_CTRL_CMD_REBOOT:
        return QStringLiteral("REBOOT");
    case UART_CTRL_CMD_SET_CUSTOM_ZOOM:
        return QStringLiteral("SET_CUSTOM_ZOOM");
    case UART_CTRL_CMD_CUSTOM_SETTING:
        return QStringLiteral("CUSTOM_SETTING");
    default:
        return QStringLiteral("command %1").arg(command);
    }
}

// The name of a value, or the number of one that has no name.
QString named(int value, const QStringList &names)
{
    return value >= 0 && value < names.size() ? names.at(value) : QString::number(value);
}

QString settingsText(int autoTracking, int targetMissing, bool upsideDown, int autoZoom,
                     int zoomOffset)
{
    static const QStringList kTrackingNames{QStringLiteral("off"), QStringLiteral("auto"),
                                            QStringLiteral("pan"), QStringLiteral("tilt")};
    static const QStringList kMissingNames{QStringLiteral("off"),      QStringLiteral("home"),
                                           QStringLiteral("preset 0"), QStringLiteral("preset 1"),
                                           QStringLiteral("preset 2"), QStringLiteral("preset 3"),
                                           QStringLiteral("preset 4"), QStringLiteral("preset 5"),
                                           QStringLiteral("preset 6"), QStringLiteral("preset 7")};
    static const QStringList kSwitchNames{QStringLiteral("off"), QStringLiteral("on")};
    static const QStringList kZoomOffsetNames{QStringLiteral("0"), QStringLiteral("1"),
                                              QStringLiteral("2"), QStringLiteral("custom")};
    return QStringLiteral("auto tracking %1, target missing %2, %3, auto zoom %4, zoom offset %5")
        .arg(named(autoTracking, kTrackingNames), named(targetMissing, kMissingNames),
             upsideDown ? QStringLiteral("upside down") : QStringLiteral("upright"),
             named(autoZoom, kSwitchNames), named(zoomOffset, kZoomOffsetNames));
}

QString bytesText(unsigned char parameter, const QByteArray &payload)
{
    QStringList parts;
    if (parameter != 0) {
        parts << QStringLiteral("parameter %1").arg(parameter);
    }
    if (!payload.isEmpty()) {
        constexpr int kBytesShown = 8;
        parts << (payload.size() <= kBytesShown
                      ? QStringLiteral("payload ") + hexadecimalText(payload)
                      : QStringLiteral("payload of %1 bytes").arg(payload.size()));
    }
    return parts.join(QLatin1String(", "));
}

QString requestText(const Request &request)
{
    const QByteArray &payload = request.payload;
    const auto byteAt = [&payload](int offset) {
        return static_cast<unsigned char>(payload.at(offset));
    };
    if (request.command == UART_CTRL_CMD_CUSTOM_SETTING && payload.size() == 5) {
        return settingsText(byteAt(0), byteAt(1), byteAt(2) != 0, byteAt(3), byteAt(4));
    }
    if (request.command == UART_CTRL_CMD_SET_CUSTOM_ZOOM && payload.size() == 2) {
        return QStringLiteral("zoom %1").arg(byteAt(0) + 1);
    }
    if (request.command == UART_CTRL_CMD_UPLOAD_FIRMWARE) {
        return QStringLiteral("packet %1, %2 bytes").arg(request.parameter).arg(payload.size());
    }
    if (request.command == UART_CTRL_CMD_RECEIVE_FW_INFO) {
        if (const auto size = FirmwareReceiver::announcedSize(payload)) {
            return QStringLiteral("firmware of %1 bytes").arg(*size);
        }
    }
    return bytesText(request.parameter, payload);
}

QString replyText(const QByteArray &frame)
{
    constexpr int kSettingsBlockSize = 13;
    const int payloadSize = frame.size() - UARTFrame::kSizeWithoutPayload;
    const DeviceReply reply(frame.chopped(1));
    if ((reply.command() == UART_CTRL_CMD_HELLO || reply.command() == UART_CTRL_CMD_CUSTOM_SETTING)
        && payloadSize == kSettingsBlockSize) {
        const SettingsReport report = reply.settings();
        return QStringLiteral("version %1, ").arg(report.version)
            + settingsText(report.autoTracking(), report.targetMissing, report.isUpsideDown(),
                           report.autoZoom, report.zoomOffset);
    }
    if (reply.command() == UART_CTRL_CMD_SET_CUSTOM_ZOOM && payloadSize == 2) {
        // The value the camera means; the host may make another one of it.
        return QStringLiteral("value %1")
            .arg(qFromBigEndian<qint16>(frame.constData() + UARTFrame::kPayloadOffset));
    }
    return bytesText(static_cast<unsigned char>(frame.at(UARTFrame::kParameterOffset)),
                     frame.mid(UARTFrame::kPayloadOffset, payloadSize));
}

} // namespace

ExchangeLog::ExchangeLog(bool withHex)
    : m_withHex(withHex)
{
}

QString ExchangeLog::received(const QTime &time, const QByteArray &frame, const Request &request,
                              const QString &refusal) const
{
    QStringList details;
    const QString fields = requestText(request);
    if (!fields.isEmpty()) {
        details << fields;
    }
    if (!refusal.isEmpty()) {
        details << QStringLiteral("(not answered: %1)").arg(refusal);
    }
    return line(time, QStringLiteral("<-"), commandName(request.command),
                details.join(QLatin1String("  ")), frame);
}

QString ExchangeLog::receivedFaulty(const QTime &time, const QByteArray &bytes,
                                    const QString &fault) const
{
    // The bytes are the text here, so that they are not repeated.
    return line(time, QStringLiteral("<-"), QStringLiteral("(%1)").arg(fault),
                hexadecimalText(bytes), {});
}

QString ExchangeLog::sent(const QTime &time, const QByteArray &frame) const
{
    const auto command = static_cast<unsigned char>(frame.at(UARTFrame::kCommandOffset));
    return line(time, QStringLiteral("->"), commandName(command) + QStringLiteral(" ack"),
                replyText(frame), frame);
}

QString ExchangeLog::sentFaulty(const QTime &time, const QByteArray &bytes,
                                const QString &fault) const
{
    return line(time, QStringLiteral("->"), QStringLiteral("(%1)").arg(fault),
                hexadecimalText(bytes), {});
}

QString ExchangeLog::notice(const QTime &time, const QString &text) const
{
    return line(time, QStringLiteral("--"), text, {}, {});
}

QString ExchangeLog::line(const QTime &time, const QString &direction, const QString &name,
                          const QString &details, const QByteArray &frame) const
{
    QString text = time.toString(QStringLiteral("HH:mm:ss.zzz")) + QLatin1String("  ") + direction
        + QLatin1Char(' ');
    text +=
        details.isEmpty() ? name : name.leftJustified(kNameWidth) + QLatin1String("  ") + details;
    if (m_withHex && !frame.isEmpty()) {
        text += QLatin1String(" | ") + hexadecimalText(frame);
    }
    return text;
}
