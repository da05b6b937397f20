// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "terminationsignals.h"

#include <QSocketNotifier>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

namespace {

// The handler may do hardly more than write into a pipe, at whose other end the event loop reads.
std::array<int, 2> pipeEnds{-1, -1};

struct Message {
    int number;
    bool isFromTerminal;
};

void handle(int number, siginfo_t *info, void * /*context*/)
{
    const int error = errno;
    const Message message{number, info->si_code == SI_KERNEL};
    // A full pipe has signals enough.
    [[maybe_unused]] const ssize_t count = ::write(pipeEnds[1], &message, sizeof message);
    errno = error;
}

} // namespace

QVector<int> endingSignals()
{
    return {SIGINT, SIGTERM, SIGHUP};
}

TerminationSignals::TerminationSignals(const QVector<int> &numbers, QObject *parent)
    : QObject(parent)
{
    if (::pipe2(pipeEnds.data(), O_CLOEXEC | O_NONBLOCK) != 0) {
        qFatal("cannot make a pipe: %s", qPrintable(qt_error_string(errno)));
    }
    const auto *const notifier = new QSocketNotifier(pipeEnds[0], QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, [this] {
        Message message{};
        while (::read(pipeEnds[0], &message, sizeof message) == sizeof message) {
            emit received(message.number, message.isFromTerminal);
        }
    });

    struct sigaction action = {};
    action.sa_sigaction = handle;
    action.sa_flags = SA_SIGINFO | SA_RESTART;
    for (const int number : numbers) {
        struct sigaction present = {};
        ::sigaction(number, nullptr, &present);
        if (present.sa_handler != SIG_IGN) {
            ::sigaction(number, &action, nullptr);
            m_numbers += number;
        }
    }
}

TerminationSignals::~TerminationSignals()
{
    for (const int number : std::as_const(m_numbers)) {
        ::signal(number, SIG_DFL);
    }
    delete findChild<QSocketNotifier *>(); // before its pipe
    for (int &end : pipeEnds) {
        ::close(end);
        end = -1;
    }
}

void TerminationSignals::endBy(int number)
{
    ::signal(number, SIG_DFL);
    ::raise(number);
    std::abort();
}

struct TerminationDelay::State {
    sigset_t blockedBefore{};
};

TerminationDelay::TerminationDelay()
    : m_state(std::make_unique<State>())
{
    sigset_t ending;
    ::sigemptyset(&ending);
    const QVector<int> numbers = endingSignals();
    for (const int number : numbers) {
        ::sigaddset(&ending, number);
    }
    ::pthread_sigmask(SIG_BLOCK, &ending, &m_state->blockedBefore);
}

TerminationDelay::~TerminationDelay()
{
    ::pthread_sigmask(SIG_SETMASK, &m_state->blockedBefore, nullptr);
}
