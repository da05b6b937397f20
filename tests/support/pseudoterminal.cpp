// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "pseudoterminal.h"

#include <array>
#include <cerrno>
#include <cstdlib>

#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

PseudoTerminal::PseudoTerminal(QObject *parent)
    : QObject(parent)
{
    m_master = posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (m_master < 0 || grantpt(m_master) != 0 || unlockpt(m_master) != 0) {
        qFatal("no pseudo-terminal to be had");
    }
    m_portName = QString::fromLocal8Bit(ptsname(m_master));
    m_slave = open(ptsname(m_master), O_RDWR | O_NOCTTY | O_CLOEXEC);
    termios settings{};
    tcgetattr(m_slave, &settings);
    cfmakeraw(&settings);
    tcsetattr(m_slave, TCSANOW, &settings);

    m_notifier = std::make_unique<QSocketNotifier>(m_master, QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, &PseudoTerminal::readAvailable);
}

PseudoTerminal::~PseudoTerminal()
{
    hangUp();
    close(m_slave);
}

void PseudoTerminal::send(const QByteArray &bytes)
{
    if (write(m_master, bytes.constData(), static_cast<size_t>(bytes.size())) != bytes.size()) {
        qFatal("the pseudo-terminal took only a part");
    }
}

void PseudoTerminal::sendAll(const QByteArray &bytes) const
{
    constexpr int kForever = -1;
    const char *at = bytes.constData();
    const char *const end = at + bytes.size();
    while (at < end) {
        pollfd writable{m_master, POLLOUT, 0};
        poll(&writable, 1, kForever);
        const auto written = write(m_master, at, static_cast<size_t>(end - at));
        if (written < 0 && errno != EAGAIN) {
            qFatal("the pseudo-terminal does not take anything");
        }
        at += qMax<qint64>(written, 0);
    }
}

QByteArray PseudoTerminal::received()
{
    readAvailable();
    return m_received;
}

void PseudoTerminal::forgetReceived()
{
    readAvailable();
    m_received.clear();
}

void PseudoTerminal::hangUp()
{
    if (m_master < 0) {
        return;
    }
    m_notifier.reset();
    close(m_master);
    m_master = -1;
}

void PseudoTerminal::readAvailable()
{
    std::array<char, 4096> buffer{};
    const auto count = m_master < 0 ? -1 : read(m_master, buffer.data(), buffer.size());
    if (count <= 0) {
        return;
    }
    const QByteArray bytes(buffer.data(), static_cast<int>(count));
    m_received += bytes;
    emit bytesReceived(bytes);
}
