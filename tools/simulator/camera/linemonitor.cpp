// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "linemonitor.h"

#include "request.h"

#include <QTime>

LineMonitor::LineMonitor(const ExchangeLog &log, QObject *parent)
    : QObject(parent)
    , m_log(log)
{
    for (Stream *const stream : {&m_host, &m_camera}) {
        stream->stallTimer.setSingleShot(true);
        stream->stallTimer.setInterval(FrameReader::kStall);
        connect(&stream->stallTimer, &QTimer::timeout, this,
                [this, stream] { dropPartial(*stream); });
    }
}

void LineMonitor::fromHost(const QByteArray &bytes)
{
    take(m_host, bytes);
}

void LineMonitor::fromCamera(const QByteArray &bytes)
{
    take(m_camera, bytes);
}

void LineMonitor::lineLost()
{
    dropPartial(m_host);
    dropPartial(m_camera);
}

void LineMonitor::take(Stream &stream, const QByteArray &bytes)
{
    handle(stream, stream.reader.take(bytes));
    if (stream.reader.hasPartial()) {
        stream.stallTimer.start();
    } else {
        stream.stallTimer.stop();
    }
}

void LineMonitor::dropPartial(Stream &stream)
{
    stream.stallTimer.stop();
    handle(stream, stream.reader.dropPartial());
}

void LineMonitor::handle(const Stream &stream, const QVector<FrameReader::Piece> &pieces)
{
    for (const FrameReader::Piece &piece : pieces) {
        emit logged(lineFor(stream, piece));
    }
}

QString LineMonitor::lineFor(const Stream &stream, const FrameReader::Piece &piece) const
{
    const QTime time = QTime::currentTime();
    const bool isFromHost = &stream == &m_host;
    QString fault = piece.fault();
    if (piece.kind == FrameReader::Frame) {
        if (const auto request = Request::fromFrame(piece.bytes)) {
            return isFromHost ? m_log.received(time, piece.bytes, *request, {})
                              : m_log.sent(time, piece.bytes);
        }
        fault = QStringLiteral("wrong signature");
    }
    return isFromHost ? m_log.receivedFaulty(time, piece.bytes, fault)
                      : m_log.sentFaulty(time, piece.bytes, fault);
}
