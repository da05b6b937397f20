// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "output.h"

#include "standardstreams.h"

#include <QDeadlineTimer>
#include <QMutex>
#include <QThread>
#include <QWaitCondition>

#include <cstdio>

#include <windows.h>

/// A console whose text is being selected keeps whoever writes waiting, so this is a thread.
class Output::Writer : public QThread {
public:
    explicit Writer(Output *output)
        : m_output(output)
    {
        start();
    }

    Writer(const Writer &) = delete;
    Writer &operator=(const Writer &) = delete;

    ~Writer() override
    {
        {
            const QMutexLocker locker(&m_mutex);
            m_isStopped = true;
            m_isChanged.wakeAll();
        }
        wait();
    }

    void write(const QByteArray &bytes)
    {
        const QMutexLocker locker(&m_mutex);
        m_pending += m_hasFailed ? QByteArray() : bytes;
        m_isChanged.wakeAll();
        // Keeps the order with what goes to the standard error, where nothing holds the output up.
        constexpr int kPatience = 50; // milliseconds
        awaitAll(QDeadlineTimer(kPatience));
    }

    bool isBehind() const
    {
        const QMutexLocker locker(&m_mutex);
        return !m_pending.isEmpty();
    }

    bool finish()
    {
        const QMutexLocker locker(&m_mutex);
        awaitAll(QDeadlineTimer(QDeadlineTimer::Forever));
        return !m_hasFailed;
    }

private:
    /// With the mutex locked.
    void awaitAll(const QDeadlineTimer &deadline)
    {
        while (!m_pending.isEmpty() && m_isChanged.wait(&m_mutex, deadline)) {}
    }

    void run() override
    {
        QMutexLocker locker(&m_mutex);
        while (!m_isStopped) {
            if (m_pending.isEmpty()) {
                m_isChanged.wait(&m_mutex);
                continue;
            }
            const QByteArray bytes = m_pending;
            locker.unlock();
            const auto size = static_cast<std::size_t>(bytes.size());
            const bool isWritten =
                std::fwrite(bytes.constData(), 1, size, stdout) == size && std::fflush(stdout) == 0;
            const QString error = isWritten ? QString() : lastErrorText();
            locker.relock();
            m_pending.remove(0, bytes.size());
            if (!isWritten) {
                m_pending.clear();
                m_hasFailed = true;
                complain(QStringLiteral("standard output: ") + error);
                QMetaObject::invokeMethod(m_output, &Output::failed, Qt::QueuedConnection);
            }
            m_isChanged.wakeAll();
        }
    }

    Output *const m_output;
    mutable QMutex m_mutex; ///< of all below
    QWaitCondition m_isChanged;
    QByteArray m_pending; ///< stays until it is written
    bool m_hasFailed = false;
    bool m_isStopped = false;
};

Output::Output(QObject *parent)
    : QObject(parent)
    , m_writer(std::make_unique<Writer>(this))
{
}

Output::~Output() = default;

std::optional<TerminalDisplay::Screen> Output::screen()
{
    const HANDLE console = ::GetStdHandle(STD_OUTPUT_HANDLE);
    DWORD mode = 0;
    CONSOLE_SCREEN_BUFFER_INFO information{};
    // Older consoles do not know the sequences that move the cursor.
    if (::GetConsoleMode(console, &mode) == 0
        || ::SetConsoleMode(console, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING) == 0
        || ::GetConsoleScreenBufferInfo(console, &information) == 0) {
        return std::nullopt;
    }
    TerminalDisplay::Screen screen;
    screen.columns = information.srWindow.Right - information.srWindow.Left + 1;
    screen.rows = information.srWindow.Bottom - information.srWindow.Top + 1;
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
    return m_writer->finish();
}
