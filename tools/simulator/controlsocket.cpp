// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "controlsocket.h"

#include <QFile>
#include <QLocalSocket>

#include <utility>

#include <sys/stat.h>

namespace {

bool isLeftover(const QString &path)
{
    struct stat status = {};
    if (::lstat(QFile::encodeName(path).constData(), &status) != 0 || !S_ISSOCK(status.st_mode)) {
        return false;
    }
    QLocalSocket probe;
    probe.connectToServer(path);
    return probe.error() == QLocalSocket::ConnectionRefusedError;
}

} // namespace

ControlSocket::ControlSocket(Handler handler, QObject *parent)
    : QObject(parent)
    , m_handler(std::move(handler))
{
    connect(&m_server, &QLocalServer::newConnection, this, &ControlSocket::accept);
}

bool ControlSocket::listen(const QString &path, QString *error)
{
    if (isLeftover(path)) {
        QFile::remove(path);
    }
    const auto refuse = [&](const QString &reason) {
        *error = QStringLiteral("cannot make the control socket %1: %2").arg(path, reason);
        return false;
    };
    // Checked here because the server would silently replace what is there.
    if (QFile::exists(path)) {
        return refuse(QStringLiteral("it exists"));
    }
    m_server.setSocketOptions(QLocalServer::UserAccessOption);
    return m_server.listen(path) || refuse(m_server.errorString());
}

void ControlSocket::accept()
{
    QLocalSocket *const client = m_server.nextPendingConnection();
    connect(client, &QLocalSocket::disconnected, client, &QObject::deleteLater);
    connect(client, &QLocalSocket::readyRead, this, [this, client] {
        while (client->canReadLine()) {
            const QString fault = m_handler(QString::fromUtf8(client->readLine()).simplified());
            client->write(fault.isEmpty() ? QByteArray("ok\n") : "error: " + fault.toUtf8() + '\n');
            client->flush();
        }
    });
}
