// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "answer.h"

#include <QVarLengthArray>

#include <algorithm>

Answer Answer::acknowledge(UARTControlCommand command, const QByteArray &payload)
{
    Q_ASSERT(payload.size() <= UARTFrame::kMaximumPayloadSize);
    QVarLengthArray<unsigned char, UARTFrame::kMaximumPayloadSize> bytes(payload.size());
    std::transform(payload.begin(), payload.end(), bytes.begin(),
                   [](char byte) { return static_cast<unsigned char>(byte); });
    const auto frame = UARTFrame::build(UART_COMM_TYPE_ACK, command, 0, bytes.constData(),
                                        static_cast<unsigned char>(bytes.size()));
    return {{frame.value_or(QByteArray())}, {}};
}

Answer Answer::refuse(const QString &reason)
{
    return {{}, reason};
}

Answer Answer::refuseSize(int size, int expected)
{
    return refuse(QStringLiteral("payload of %1 bytes, %2 expected").arg(size).arg(expected));
}
