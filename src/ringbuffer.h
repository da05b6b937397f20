// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <private/qringbuffer_p.h>

#include <mutex>

/// Qt's byte ring buffer, made safe between one thread that appends and one that takes.
///
/// QRingBuffer has no locking of its own. The lock is a std::mutex because the thread sanitizer
/// understands it, which it does not with the parts of QMutex that live in Qt's own library.
class RingBuffer {
public:
    /// @param blockSize  bytes by which the buffer grows
    explicit RingBuffer(int blockSize);

    /// Appends the bytes, in order. An empty array appends nothing: QRingBuffer would keep it as an
    /// empty block, from which getChar() later reads a 0 that nobody sent.
    void append(const QByteArray &bytes);
    void clear();
    bool isEmpty() const;
    /// Takes the oldest byte out, 0 to 255; -1 if there is none.
    int getChar();

private:
    mutable std::mutex m_mutex;
    QRingBuffer m_bytes;
};
