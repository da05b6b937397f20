// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "controlsocket.h"

#include "printabletext.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QLocalSocket>

#include <algorithm>
#include <cerrno>
#include <utility>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

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

/// 0 when there is none.
quint64 fileIdOf(const QByteArray &path)
{
    struct stat status = {};
    return ::lstat(path.constData(), &status) == 0 ? status.st_ino : 0;
}

/// Makes a socket that takes connections of this user.
/// @return -1 with errno when it cannot be made
int listeningSocket(const QByteArray &path)
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    if (path.size() >= static_cast<int>(sizeof address.sun_path)) {
        errno = ENAMETOOLONG;
        return -1;
    }
    std::copy(path.begin(), path.end(), std::begin(address.sun_path));
    const int descriptor = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    const auto *const generic = reinterpret_cast<const sockaddr *>(&address);
    // A connection is possible only once it listens.
    if (descriptor < 0 || ::bind(descriptor, generic, sizeof address) != 0
        || ::chmod(path.constData(), S_IRUSR | S_IWUSR) != 0
        || ::listen(descriptor, SOMAXCONN) != 0) {
        const int error = errno;
        ::close(descriptor);
        errno = error;
        return -1;
    }
    return descriptor;
}

} // namespace

ControlSocket::ControlSocket(Handler handler, QObject *parent)
    : QObject(parent)
    , m_handler(std::move(handler))
{
    connect(&m_server, &QLocalServer::newConnection, this, &ControlSocket::accept);
}

ControlSocket::~ControlSocket()
{
    const QByteArray path = QFile::encodeName(m_path);
    if (m_server.isListening() && fileIdOf(path) == m_fileId) {
        ::unlink(path.constData());
    }
}

bool ControlSocket::listen(const QString &path, QString *error)
{
    // The server would look for a relative path in the folder for temporary files.
    m_path = QFileInfo(path).absoluteFilePath();
    m_hasReplacedAnother = isLeftover(m_path);
    if (m_hasReplacedAnother) {
        QFile::remove(m_path);
    }
    // Made under another name, since the server removes in the end whatever is there by the name
    // that it was made under.
    const QByteArray finalName = QFile::encodeName(m_path);
    const QByteArray name =
        finalName + '.' + QByteArray::number(QCoreApplication::applicationPid());
    const int descriptor = listeningSocket(name);
    // Unlike a renamed file, a link does not replace what is there.
    const bool isMade = descriptor >= 0 && ::link(name.constData(), finalName.constData()) == 0;
    const int reason = errno;
    if (descriptor >= 0) {
        ::unlink(name.constData());
    }
    if (!isMade) {
        ::close(descriptor);
        *error = QStringLiteral("cannot make the control socket %1: %2")
                     .arg(path,
                          reason == EEXIST ? QStringLiteral("it exists") : qt_error_string(reason));
        return false;
    }
    m_fileId = fileIdOf(finalName);
    return m_server.listen(descriptor);
}

bool ControlSocket::hasReplacedAnother() const
{
    return m_hasReplacedAnother;
}

void ControlSocket::accept()
{
    QLocalSocket *const client = m_server.nextPendingConnection();
    connect(client, &QLocalSocket::disconnected, client, &QObject::deleteLater);
    connect(client, &QLocalSocket::readyRead, this, [this, client, isTooLong = false]() mutable {
        while (client->canReadLine() || client->bytesAvailable() > kLongestCommand) {
            const QByteArray line = client->readLine(kLongestCommand + 1);
            isTooLong = isTooLong || line.size() > kLongestCommand || !line.endsWith('\n');
            // Otherwise the rest is to come.
            if (line.endsWith('\n')) {
                answer(client, std::exchange(isTooLong, false) ? QByteArray() : line);
            }
        }
    });
}

/// @param line  empty when it was longer than allowed
void ControlSocket::answer(QLocalSocket *client, const QByteArray &line) const
{
    const ControlAnswer result = line.isEmpty()
        ? ControlAnswer{QStringLiteral("a command has at most %1 bytes").arg(kLongestCommand), {}}
        : m_handler(QString::fromUtf8(line).simplified());
    client->write(result.information.toUtf8());
    client->write(result.fault.isEmpty() ? QByteArray("ok\n")
                                         : "error: " + printableText(result.fault).toUtf8() + '\n');
    client->flush();
}
