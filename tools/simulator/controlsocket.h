// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QLocalServer>
#include <QObject>
#include <QString>

#include <functional>

class QLocalSocket;

/// What came of a command.
struct ControlAnswer {
    QString fault;       ///< why it was not obeyed; empty when it was
    QString information; ///< lines to give before the "ok"; mostly empty
};

/// Takes commands from other programs on a local socket: one a line, each answered by the line "ok"
/// or "error: " and the reason. Any number of clients, only of the same user.
class ControlSocket : public QObject {
    Q_OBJECT

public:
    using Handler = std::function<ControlAnswer(const QString &command)>;

    explicit ControlSocket(Handler handler, QObject *parent = nullptr);
    /// Removes the socket, unless another one has been made at its path.
    ~ControlSocket() override;

    /// Makes the socket. One that is left from a process that was killed is replaced; anything else
    /// at that path is left alone.
    /// @param error  set to the reason when the result is false; not null
    bool listen(const QString &path, QString *error);
    /// Whether listen() has replaced one.
    bool hasReplacedAnother() const;

    static constexpr int kLongestCommand = 4096; ///< bytes, with its line feed

private:
    void accept();
    void answer(QLocalSocket *client, const QByteArray &line) const;

    Handler m_handler;
    QLocalServer m_server;
    QString m_path;
    quint64 m_fileId = 0; ///< which file of its file system the socket is
    bool m_hasReplacedAnother = false;
};
