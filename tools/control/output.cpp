// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "output.h"

#include "standardstreams.h"

#include <QSocketNotifier>

#include <algorithm>
#include <cerrno>
#include <csignal>

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
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

class Output::Writer : public QObject {
public:
    explicit Writer(Output *output);
    Writer(const Writer &) = delete;
    Writer &operator=(const Writer &) = delete;
    ~Writer() override;

    void write(const QByteArray &bytes);
    void writePending(bool untilAllIsWritten);

    bool isBehind() const { return !m_pending.isEmpty(); }
    bool hasFailed() const { return m_hasFailed; }

private:
    /// @param patience  in milliseconds, -1 for ever
    bool isReady(int patience) const;

    Output *const m_output;
    const int m_descriptor;
    QByteArray m_pending;
    QSocketNotifier m_notifier;
    bool m_hasFailed = false;
};

Output::Writer::Writer(Output *output)
    : m_output(output)
    , m_descriptor(openOutput())
    , m_notifier(m_descriptor, QSocketNotifier::Write)
{
    // A reader that has gone is an error of the output.
    ::signal(SIGPIPE, SIG_IGN);
    m_notifier.setEnabled(false);
    connect(&m_notifier, &QSocketNotifier::activated, this, [this] { writePending(false); });
}

Output::Writer::~Writer()
{
    if (m_descriptor != STDOUT_FILENO) {
        ::close(m_descriptor);
    }
}

void Output::Writer::write(const QByteArray &bytes)
{
    if (!m_hasFailed) {
        m_pending += bytes;
        writePending(false);
    }
}

bool Output::Writer::isReady(int patience) const
{
    pollfd state{m_descriptor, POLLOUT, 0};
    return ::poll(&state, 1, patience) > 0;
}

void Output::Writer::writePending(bool untilAllIsWritten)
{
    while (!m_pending.isEmpty() && (isReady(untilAllIsWritten ? -1 : 0) || untilAllIsWritten)) {
        // What is ready takes at least as much as POSIX guarantees for a pipe.
        constexpr int kChunk = 512;
        const ssize_t count =
            ::write(m_descriptor, m_pending.constData(),
                    static_cast<std::size_t>(std::min<int>(kChunk, m_pending.size())));
        if (count >= 0) {
            m_pending.remove(0, static_cast<int>(count));
        } else if (errno != EAGAIN && errno != EINTR) {
            complain(QStringLiteral("standard output: ") + qt_error_string(errno));
            m_hasFailed = true;
            m_pending.clear();
            emit m_output->failed();
        } else if (!untilAllIsWritten) {
            // A terminal with room for one byte is ready, and a line feed needs two.
            break;
        }
    }
    m_notifier.setEnabled(!m_pending.isEmpty());
}

Output::Output(QObject *parent)
    : QObject(parent)
    , m_writer(std::make_unique<Writer>(this))
{
}

Output::~Output() = default;

std::optional<TerminalDisplay::Screen> Output::screen()
{
    const QByteArray terminal = qgetenv("TERM");
    if (::isatty(STDOUT_FILENO) != 1 || terminal.isEmpty() || terminal == "dumb") {
        return std::nullopt;
    }
    TerminalDisplay::Screen screen;
    winsize size{};
    if (::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 && size.ws_row > 0) {
        screen.columns = size.ws_col;
        screen.rows = size.ws_row;
    }
    return screen;
}

void Output::write(const QByteArray &bytes)
{
    m_writer->write(bytes);
}

bool Output::isBehind() const
{
    return m_writer->isBehind();
}

bool Output::finish()
{
    m_writer->writePending(true);
    return !m_writer->hasFailed();
}
