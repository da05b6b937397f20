// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QObject>
#include <QSocketNotifier>

#include <memory>

/// The far end of a serial line: a pseudo-terminal whose name can be opened as a port.
class PseudoTerminal : public QObject {
    Q_OBJECT

public:
    explicit PseudoTerminal(QObject *parent = nullptr);
    ~PseudoTerminal() override;

    /// The name to open, an absolute path.
    QString portName() const { return m_portName; }

    /// Writes at once.
    void send(const QByteArray &bytes);
    /// Writes as fast as the other end reads, and returns when all is written. For a thread of its
    /// own.
    void sendAll(const QByteArray &bytes) const;
    /// Everything that has arrived so far, read without the help of an event loop.
    QByteArray received();
    void forgetReceived();
    /// Ends the line: the port's device node is gone afterwards.
    void hangUp();

signals:
    /// Bytes arrived; needs a running event loop.
    void bytesReceived(const QByteArray &bytes);

private:
    void readAvailable();

    int m_master = -1;
    /// Held open, so that the line outlives each opening of the port, and another test is not given
    /// its name while the port still has the name locked.
    int m_slave = -1;
    QString m_portName;
    QByteArray m_received;
    std::unique_ptr<QSocketNotifier> m_notifier;
};
