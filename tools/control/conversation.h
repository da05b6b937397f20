// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "frameassembler.h"
#include "uartframe.h"

#include <QByteArray>
#include <QObject>
#include <QString>

#include <chrono>
#include <optional>

class Line;

/// One request after the other to one camera, each with its acknowledgement.
///
/// An acknowledgement belongs to a request if it has its command; it carries no number. What comes
/// while nothing is asked is ignored.
class Conversation : public QObject, private FrameAssembler::Listener {
    Q_OBJECT

public:
    /// @param line  not owned, must outlive this object, which alone uses its alarm
    explicit Conversation(Line &line, QObject *parent = nullptr);

    /// How long a camera has for its acknowledgement.
    static std::chrono::milliseconds limitOf(UARTControlCommand command);

    /// Sends a request. One of the signals follows, unless another call comes first.
    /// @param payload  at most UARTFrame::kMaximumPayloadSize bytes
    void ask(UARTControlCommand command, const QByteArray &payload, unsigned char parameter,
             std::chrono::milliseconds limit);
    /// The same with the command's own limit.
    void ask(UARTControlCommand command, const QByteArray &payload = {},
             unsigned char parameter = 0);
    /// Ignores everything for that time, and then emits timedOut().
    void pause(std::chrono::milliseconds time);
    /// Emits nothing more.
    void stop();

signals:
    /// @param frame  as the assembler delivers it, without its checksum byte
    void answered(const QByteArray &frame);
    void timedOut();
    /// The line has failed; likewise while nothing is asked.
    void lost(const QString &reason);

private:
    void take(const QByteArray &bytes);
    void lengthReceived(quint32 length) override;
    void frameAccepted(std::string_view frame, quint32 length) override;
    void checksumFailed(qint32 sum) override;
    void lengthRejected(quint32 length) override;

    Line &m_line;
    FrameAssembler m_assembler;
    std::optional<UARTControlCommand> m_asked; ///< nothing while nothing is
    QByteArray m_answer;                       ///< empty until it has come
};
