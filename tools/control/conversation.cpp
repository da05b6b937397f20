// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "conversation.h"

#include "devicereply.h"
#include "line.h"

#include <utility>

Conversation::Conversation(Line &line, QObject *parent)
    : QObject(parent)
    , m_line(line)
{
    connect(&m_line, &Line::received, this, &Conversation::take);
    connect(&m_line, &Line::alarm, this, [this] {
        m_asked.reset();
        emit timedOut();
    });
    connect(&m_line, &Line::lost, this, [this](const QString &reason) {
        stop();
        emit lost(reason);
    });
}

std::chrono::milliseconds Conversation::limitOf(UARTControlCommand command)
{
    constexpr std::chrono::milliseconds kLong(5000);
    constexpr std::chrono::milliseconds kShort(2000);
    return command == UART_CTRL_CMD_UPLOAD_FIRMWARE || command == UART_CTRL_CMD_SET_CUSTOM_ZOOM
        ? kShort
        : kLong;
}

void Conversation::ask(UARTControlCommand command, const QByteArray &payload,
                       unsigned char parameter, std::chrono::milliseconds limit)
{
    // What an earlier reply has left there would spoil this one: a checksum of FF, for example,
    // makes a pair with the header that follows.
    m_assembler = FrameAssembler();
    m_asked = command;
    const auto frame =
        UARTFrame::build(UART_COMM_TYPE_REQUEST, command, parameter,
                         reinterpret_cast<const unsigned char *>(payload.constData()),
                         static_cast<unsigned char>(payload.size()));
    m_line.setAlarm(limit);
    m_line.write(*frame);
}

void Conversation::ask(UARTControlCommand command, const QByteArray &payload,
                       unsigned char parameter)
{
    ask(command, payload, parameter, limitOf(command));
}

void Conversation::pause(std::chrono::milliseconds time)
{
    stop();
    m_line.setAlarm(time);
}

void Conversation::stop()
{
    m_asked.reset();
    m_line.stopAlarm();
}

void Conversation::take(const QByteArray &bytes)
{
    for (const char byte : bytes) {
        m_assembler.take(static_cast<unsigned char>(byte), *this);
    }
    // Not before the assembler has finished, as the next request resets it.
    if (!m_answer.isEmpty()) {
        stop();
        emit answered(std::exchange(m_answer, {}));
    }
}

void Conversation::lengthReceived(quint32 /*length*/) {}

void Conversation::frameAccepted(std::string_view frame, quint32 /*length*/)
{
    const QByteArray bytes(frame.data(), static_cast<int>(frame.size()));
    const DeviceReply reply(bytes);
    if (m_asked && m_answer.isEmpty() && reply.communicationType() == UART_COMM_TYPE_ACK
        && reply.command() == *m_asked) {
        m_answer = bytes;
    }
}

void Conversation::checksumFailed(qint32 /*sum*/) {}

void Conversation::lengthRejected(quint32 /*length*/) {}
