// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "ringbuffer.h"

void RingBuffer::append(const QByteArray &bytes)
{
    const std::lock_guard lock(m_mutex);
    m_bytes.insert(m_bytes.end(), bytes.begin(), bytes.end());
}

void RingBuffer::clear()
{
    const std::lock_guard lock(m_mutex);
    m_bytes.clear();
}

bool RingBuffer::isEmpty() const
{
    const std::lock_guard lock(m_mutex);
    return m_bytes.empty();
}

int RingBuffer::getChar()
{
    const std::lock_guard lock(m_mutex);
    if (m_bytes.empty()) {
        return -1;
    }
    const int byte = m_bytes.front();
    m_bytes.pop_front();
    return byte;
}
