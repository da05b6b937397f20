// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>

#include <deque>
#include <mutex>

/// A queue of bytes between one thread that appends and one that takes.
///
/// The lock is a std::mutex because the thread sanitizer understands it, which it does not with the
/// parts of QMutex that are in Qt's own library.
class RingBuffer {
public:
    /// Appends the bytes, in order.
    void append(const QByteArray &bytes);
    void clear();
    bool isEmpty() const;
    /// Takes the oldest byte, 0 to 255; -1 if there is none.
    int getChar();

private:
    mutable std::mutex m_mutex;
    std::deque<unsigned char> m_bytes;
};
