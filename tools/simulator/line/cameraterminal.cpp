// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "cameraterminal.h"

#include <QFile>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

namespace {

// While no host has the terminal open, its descriptor is always "ready" with a hang-up, so that a
// notifier would spin. It is then looked at this often instead.
constexpr std::chrono::milliseconds kHostPoll(10);

constexpr int kOpenFlags = O_RDWR | O_NOCTTY | O_CLOEXEC;

bool setUp(int descriptor, QString *hostPath)
{
    std::array<char, 64> path{};
    if (::grantpt(descriptor) != 0 || ::unlockpt(descriptor) != 0
        || ::ptsname_r(descriptor, path.data(), path.size()) != 0) {
        return false;
    }
    // Only after the other end has been open once is it known as closed.
    const int host = ::open(path.data(), kOpenFlags);
    if (host < 0) {
        return false;
    }
    termios settings{};
    bool done = ::tcgetattr(host, &settings) == 0;
    if (done) {
        ::cfmakeraw(&settings);
        done = ::tcsetattr(host, TCSANOW, &settings) == 0;
    }
    const int error = errno;
    ::close(host);
    errno = error;
    *hostPath = QFile::decodeName(path.data());
    return done;
}

} // namespace

std::unique_ptr<CameraTerminal> CameraTerminal::create(QString *error)
{
    QString hostPath;
    const int descriptor = ::posix_openpt(kOpenFlags | O_NONBLOCK);
    if (descriptor < 0 || !setUp(descriptor, &hostPath)) {
        *error = QStringLiteral("cannot make a pseudo-terminal: ") + qt_error_string(errno);
        if (descriptor >= 0) {
            ::close(descriptor);
        }
        return nullptr;
    }
    return std::unique_ptr<CameraTerminal>(new CameraTerminal(descriptor, hostPath));
}

CameraTerminal::CameraTerminal(int descriptor, QString hostPath)
    : m_descriptor(descriptor)
    , m_hostPath(std::move(hostPath))
    , m_notifier(descriptor, QSocketNotifier::Read)
{
    m_hostTimer.setInterval(kHostPoll);
    connect(&m_notifier, &QSocketNotifier::activated, this, &CameraTerminal::read);
    connect(&m_hostTimer, &QTimer::timeout, this, &CameraTerminal::lookForHost);
    waitForHost();
}

CameraTerminal::~CameraTerminal()
{
    m_notifier.setEnabled(false);
    ::close(m_descriptor);
}

QString CameraTerminal::hostPath() const
{
    return m_hostPath;
}

void CameraTerminal::write(const QByteArray &bytes)
{
    if ((events() & POLLHUP) != 0) {
        return;
    }
    int written = 0;
    while (written < bytes.size()) {
        const ssize_t count = ::write(m_descriptor, bytes.constData() + written,
                                      static_cast<std::size_t>(bytes.size() - written));
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            return;
        }
        written += static_cast<int>(count);
    }
}

short CameraTerminal::events() const
{
    pollfd state{m_descriptor, POLLIN, 0};
    return ::poll(&state, 1, 0) < 0 ? short(0) : state.revents;
}

void CameraTerminal::read()
{
    QByteArray bytes;
    std::array<char, 4096> buffer{};
    ssize_t count = 0;
    do {
        count = ::read(m_descriptor, buffer.data(), buffer.size());
        if (count > 0) {
            bytes.append(buffer.data(), static_cast<int>(count));
        }
    } while (count > 0 || (count < 0 && errno == EINTR));
    // The last host has closed its end: there is nothing left to read.
    if (count < 0 && errno == EIO) {
        waitForHost();
    }
    if (!bytes.isEmpty()) {
        emit bytesReceived(bytes);
    }
}

void CameraTerminal::lookForHost()
{
    const short found = events();
    if ((found & POLLHUP) == 0) {
        m_hostTimer.stop();
        m_notifier.setEnabled(true);
    } else if ((found & POLLIN) != 0) {
        // A host came, wrote and went in between.
        read();
    }
}

void CameraTerminal::waitForHost()
{
    // The kernel would keep what the host has not read for the next one. Flushing from this end
    // does not reach all of it.
    const int host = ::open(QFile::encodeName(m_hostPath).constData(), kOpenFlags);
    if (host >= 0) {
        ::tcflush(host, TCIFLUSH);
        ::close(host);
    }
    m_notifier.setEnabled(false);
    m_hostTimer.start();
}
