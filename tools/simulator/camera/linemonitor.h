// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "exchangelog.h"
#include "framereader.h"

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QTimer>

/// Makes a line of the log of each frame that passes, in either direction, without being one of
/// those who understand it.
class LineMonitor : public QObject {
    Q_OBJECT

public:
    explicit LineMonitor(const ExchangeLog &log, QObject *parent = nullptr);

    void fromHost(const QByteArray &bytes);
    void fromCamera(const QByteArray &bytes);
    /// The line is gone: what has begun is not going to be completed.
    void lineLost();

signals:
    /// One line of the log, without a line feed.
    void logged(const QString &text);

private:
    /// One direction.
    struct Stream {
        FrameReader reader;
        QTimer stallTimer; ///< runs while part of a frame is there
    };

    void take(Stream &stream, const QByteArray &bytes);
    void dropPartial(Stream &stream);
    void handle(const Stream &stream, const QVector<FrameReader::Piece> &pieces);
    QString lineFor(const Stream &stream, const FrameReader::Piece &piece) const;

    ExchangeLog m_log;
    Stream m_host;
    Stream m_camera;
};
