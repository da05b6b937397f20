// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "ringbuffer.h"

RingBuffer::RingBuffer(int blockSize)
    : m_bytes(blockSize)
{
}

void RingBuffer::append(const QByteArray &bytes)
{
    if (bytes.isEmpty()) {
        return;
    }
    const std::lock_guard lock(m_mutex);
    m_bytes.append(bytes);
}

void RingBuffer::clear()
{
    const std::lock_guard lock(m_mutex);
    m_bytes.clear();
}

bool RingBuffer::isEmpty() const
{
    const std::lock_guard lock(m_mutex);
    return m_bytes.isEmpty();
}

int RingBuffer::getChar()
{
    const std::lock_guard lock(m_mutex);
    return m_bytes.getChar();
}
