// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QObject>
#include <QSocketNotifier>
#include <QString>
#include <QTimer>

#include <memory>

/// The master end of a pseudo-terminal that behaves like the far end of a serial adapter: what is
/// sent while no host has the other end open is lost, and what a host left unread is gone when it
/// is opened the next time.
class CameraTerminal : public QObject {
    Q_OBJECT

public:
    /// Makes a new one, without echo and other terminal habits.
    /// @param error  set to the reason when the result is null; not null
    static std::unique_ptr<CameraTerminal> create(QString *error);
    /// Hangs up on the host.
    ~CameraTerminal() override;

    /// The device that the host opens, such as /dev/pts/3.
    QString hostPath() const;
    /// Never blocks; bytes that cannot leave at once are lost.
    void write(const QByteArray &bytes);

signals:
    void bytesReceived(const QByteArray &bytes);

private:
    CameraTerminal(int descriptor, QString hostPath);

    short events() const;
    void read();
    void lookForHost();
    void waitForHost();

    int m_descriptor; ///< owned
    QString m_hostPath;
    QSocketNotifier m_notifier;
    QTimer m_hostTimer;
};
