// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "uartframe.h"

#include <QByteArray>
#include <QString>
#include <QVector>

/// What a part of the camera makes of a request: frames to send back, or a reason for sending none.
struct Answer {
    QVector<QByteArray> frames; ///< whole frames in the order in which they are sent
    QString refusal;            ///< why the request is not answered, for the log; empty when it is

    /// One acknowledgement of @p command with @p payload, which is at most 128 bytes long.
    static Answer acknowledge(UARTControlCommand command, const QByteArray &payload);
    /// No frame, for the @p reason.
    static Answer refuse(const QString &reason);
    /// The same for a payload of @p size bytes where it has to be @p expected.
    static Answer refuseSize(int size, int expected);
};
