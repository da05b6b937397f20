// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "parserthread.h"

#include "ringbuffer.h"

#include <QDebug>
#include <QMutexLocker>

namespace {

constexpr unsigned long kWithoutBufferPollMs = 500;
constexpr unsigned long kEmptyBufferPollMs = 50;

} // namespace

ParserThread::ParserThread(QObject *parent)
    : QThread(parent)
{
}

ParserThread::~ParserThread()
{
    {
        const QMutexLocker lock(&m_mutex);
        m_stop = true;
    }
    wait();
}

void ParserThread::startParser(RingBuffer *buffer)
{
    showDebugMessage(QStringLiteral("startParser"));
    if (buffer == nullptr) {
        return;
    }
    const QMutexLocker lock(&m_mutex);
    m_buffer = buffer;
    if (!isRunning()) {
        start(QThread::InheritPriority);
    }
}

void ParserThread::showDebugMessage(const QString &message)
{
    qDebug() << message;
}

void ParserThread::run()
{
    while (!m_stop) {
        RingBuffer *const buffer = m_buffer;
        if (buffer == nullptr) {
            msleep(kWithoutBufferPollMs);
        } else if (buffer->isEmpty()) {
            msleep(kEmptyBufferPollMs);
        } else {
            m_assembler.take(static_cast<unsigned char>(buffer->getChar()), *this);
        }
    }
}

void ParserThread::lengthReceived(quint32 length)
{
    showDebugMessage(QStringLiteral("data_step_head_ready: length = %1").arg(length));
}

void ParserThread::frameAccepted(std::string_view frame, quint32 length)
{
    showDebugMessage(QStringLiteral("Analyze Data: length = %1").arg(length));
    emit command(QByteArray(frame.data(), static_cast<int>(frame.size())));
}

void ParserThread::checksumFailed(qint32 sum)
{
    showDebugMessage(QStringLiteral("Checksum Error %1").arg(sum));
}

void ParserThread::lengthRejected(quint32 length)
{
    showDebugMessage(QStringLiteral("Error %1").arg(length));
}
