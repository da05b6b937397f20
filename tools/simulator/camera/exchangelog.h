// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QString>
#include <QTime>

struct Request;

/// Puts what passes on the line into readable lines, one per frame:
///
///     12:00:01.234  <- SET_CUSTOM_ZOOM      zoom 1
///     12:00:01.239  -> SET_CUSTOM_ZOOM ack  value 100
///
/// Only text: it neither reads the clock nor writes anything.
class ExchangeLog {
public:
    /// @param withHex  whether each line ends with the frame's bytes, after " | "
    explicit ExchangeLog(bool withHex);

    /// A frame from the host.
    /// @param refusal  why it is not answered; empty when it is
    QString received(const QTime &time, const QByteArray &frame, const Request &request,
                     const QString &refusal) const;
    /// Bytes from the host that are no frame that could be understood, always with their bytes.
    /// @param fault  such as "bad checksum"
    QString receivedFaulty(const QTime &time, const QByteArray &bytes, const QString &fault) const;
    /// A frame to the host, as built by the camera.
    QString sent(const QTime &time, const QByteArray &frame) const;
    /// Bytes to the host that are no frame that the camera can have meant, always with their bytes.
    QString sentFaulty(const QTime &time, const QByteArray &bytes, const QString &fault) const;
    /// Something else that happened, such as "unplugged".
    QString notice(const QTime &time, const QString &text) const;

private:
    QString line(const QTime &time, const QString &direction, const QString &name,
                 const QString &details, const QByteArray &frame) const;

    bool m_withHex;
};
