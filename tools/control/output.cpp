// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "output.h"

#include "standardstreams.h"

#include <QCoreApplication>

#include <algorithm>
#include <cerrno>

#include <poll.h>
#include <unistd.h>

Output::Output(QObject *parent)
    : QObject(parent)
    , m_notifier(STDOUT_FILENO, QSocketNotifier::Write)
{
    m_notifier.setEnabled(false);
    connect(&m_notifier, &QSocketNotifier::activated, this, [this] { writePending(false); });
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
        pollfd state{STDOUT_FILENO, POLLOUT, 0};
        const int found = ::poll(&state, 1, untilAllIsWritten ? -1 : 0);
        if (found == 0 || (found < 0 && errno == EINTR)) {
            if (untilAllIsWritten) {
                continue;
            }
            break;
        }
        // What is ready takes at least as much as POSIX guarantees for a pipe.
        constexpr int kChunk = 512;
        const ssize_t count = ::write(STDOUT_FILENO, m_pending.constData(),
                                      static_cast<std::size_t>(std::min(kChunk, m_pending.size())));
        if (count < 0 && (errno == EINTR || errno == EAGAIN)) {
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
