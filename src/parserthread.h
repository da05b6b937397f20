// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "frameassembler.h"

#include <QMutex>
#include <QThread>

#include <atomic>

class RingBuffer;

/// The thread that turns received bytes into checked frames.
///
/// It polls the ring buffer: every 50 ms while that is empty, every 500 ms while there is none.
/// While bytes are waiting it takes one after the other without a pause. It runs from startParser()
/// until it is destroyed, whether or not a port is open.
class ParserThread : public QThread, private FrameAssembler::Listener {
    Q_OBJECT

public:
    explicit ParserThread(QObject *parent = nullptr);
    /// Stops the thread and waits until it has ended, at most for one poll.
    ~ParserThread() override;

    /// Gives the thread the buffer to read, and starts it unless it is running. Any thread.
    /// @param buffer  not owned, must outlive this object; null changes nothing
    void startParser(RingBuffer *buffer);
    /// Writes one line to the debug log. Any thread.
    void showDebugMessage(const QString &message);

signals:
    /// One accepted frame without its checksum byte. Emitted on the parser thread, so that a
    /// receiver that lives on another one gets it queued.
    void command(const QByteArray &frame);

protected:
    void run() override;

private:
    void lengthReceived(quint32 length) override;
    void frameAccepted(std::string_view frame, quint32 length) override;
    void checksumFailed(qint32 sum) override;
    void lengthRejected(quint32 length) override;

    QMutex m_mutex; ///< for writing the next two members; run() reads them without it
    std::atomic<RingBuffer *> m_buffer{nullptr};
    std::atomic<bool> m_stop{false};
    FrameAssembler m_assembler; ///< parser thread only; its state survives reconnects
};
