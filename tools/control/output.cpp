// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "output.h"

#include "standardstreams.h"

#include <QThread>
#include <QTimer>

#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace {

/// A terminal that has room for one byte is ready, and keeps whoever writes more waiting. To be
/// asked not to, it is opened once more: what is set on the inherited descriptor holds for every
/// program that has it.
int openOutput()
{
    const int terminal = ::isatty(STDOUT_FILENO) != 0
        ? ::open("/proc/self/fd/1", O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC)
        : -1;
    return terminal >= 0 ? terminal : STDOUT_FILENO;
}

} // namespace

Output::Output(QObject *parent)
    : QObject(parent)
    , m_descriptor(openOutput())
    , m_notifier(m_descriptor, QSocketNotifier::Write)
{
    m_notifier.setEnabled(false);
    connect(&m_notifier, &QSocketNotifier::activated, this, [this] { writePending(false); });
}

Output::~Output()
{
    if (m_descriptor != STDOUT_FILENO) {
        ::close(m_descriptor);
    }
}

void Output::write(const QByteArray &bytes)
{
    if (!m_hasFailed) {
        m_pending += bytes;
        writePending(false);
    }
}

bool Output::finish()
{
    writePending(true);
    return !m_hasFailed;
}

void Output::writePending(bool untilAllIsWritten)
{
    while (!m_pending.isEmpty()) {
        pollfd state{m_descriptor, POLLOUT, 0};
        const int found = ::poll(&state, 1, untilAllIsWritten ? -1 : 0);
        if (found == 0 || (found < 0 && errno == EINTR)) {
            if (untilAllIsWritten) {
                continue;
            }
            break;
        }
        // What is ready takes at least as much as POSIX guarantees for a pipe.
        constexpr int kChunk = 512;
        const ssize_t count = ::write(m_descriptor, m_pending.constData(),
                                      static_cast<std::size_t>(std::min(kChunk, m_pending.size())));
        if (count < 0 && errno == EAGAIN) {
            // Room for one byte, where a line feed needs two.
            constexpr unsigned long kPause = 100; // milliseconds
            if (untilAllIsWritten) {
                QThread::msleep(kPause);
                continue;
            }
            m_notifier.setEnabled(false);
            QTimer::singleShot(kPause, this, [this] { writePending(false); });
            return;
        }
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0) {
            complain(QStringLiteral("standard output: ") + qt_error_string(errno));
            m_hasFailed = true;
            m_pending.clear();
            m_notifier.setEnabled(false);
            emit failed();
            return;
        }
        m_pending.remove(0, static_cast<int>(count));
    }
    m_notifier.setEnabled(!m_pending.isEmpty());
}
