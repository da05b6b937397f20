// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QLocalServer>
#include <QObject>
#include <QString>

#include <functional>

/// Takes commands from other programs on a local socket: one a line, each answered by the line "ok"
/// or "error: " and the reason. Any number of clients, only of the same user.
class ControlSocket : public QObject {
    Q_OBJECT

public:
    /// Obeys a command and returns why it could not; an empty text is success.
    using Handler = std::function<QString(const QString &command)>;

    explicit ControlSocket(Handler handler, QObject *parent = nullptr);

    /// Makes the socket, which is removed again with this object. One that is left from a process
    /// that was killed is replaced; anything else at that path is left alone.
    /// @param error  set to the reason when the result is false; not null
    bool listen(const QString &path, QString *error);

private:
    void accept();

    Handler m_handler;
    QLocalServer m_server;
};
