// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "cameraline.h"

#include <QStringList>

/// A line in memory: a test is its host. All bytes in hexadecimal.
class MemoryLine : public CameraLine {
public:
    bool plug(QString *error) override
    {
        if (m_isBroken) {
            *error = "broken";
        }
        m_isPlugged = !m_isBroken;
        return m_isPlugged;
    }
    void unplug() override { m_isPlugged = false; }
    bool isPlugged() const override { return m_isPlugged; }
    void write(const QByteArray &bytes) override { m_pieces << bytes.toHex(' ').toUpper(); }

    /// It cannot be plugged any more.
    void breakDown() { m_isBroken = true; }
    void receive(const QByteArray &hexadecimal)
    {
        emit bytesReceived(QByteArray::fromHex(hexadecimal));
    }
    /// What the host got, as it was written.
    const QStringList &pieces() const { return m_pieces; }
    QByteArray written() const { return m_pieces.join(' ').toLatin1(); }

private:
    bool m_isPlugged = false;
    bool m_isBroken = false;
    QStringList m_pieces;
};
