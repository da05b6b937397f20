// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "terminationsignals.h"

#include <cstdlib>
#include <mutex>

#include <windows.h>

namespace {

// Windows calls the handlers on a thread of their own, the last one first.
std::mutex receiverMutex;
TerminationSignals *receiver = nullptr;
std::mutex delayMutex;

BOOL WINAPI handle(DWORD event)
{
    const bool isKey = event == CTRL_C_EVENT || event == CTRL_BREAK_EVENT;
    {
        const std::lock_guard<std::mutex> lock(receiverMutex);
        if (receiver == nullptr) {
            return FALSE;
        }
        TerminationSignals *const endings = receiver;
        QMetaObject::invokeMethod(
            endings, [endings, isKey] { emit endings->received(isKey ? SIGINT : SIGTERM, isKey); },
            Qt::QueuedConnection);
    }
    if (!isKey) {
        // Windows ends the program as soon as this returns, and otherwise after some seconds.
        ::Sleep(INFINITE);
    }
    return TRUE;
}

BOOL WINAPI delay(DWORD /*event*/)
{
    const std::lock_guard<std::mutex> lock(delayMutex);
    return FALSE;
}

} // namespace

QVector<int> endingSignals()
{
    return {SIGINT, SIGTERM};
}

TerminationSignals::TerminationSignals(const QVector<int> &numbers, QObject *parent)
    : QObject(parent)
    , m_numbers(numbers)
{
    {
        const std::lock_guard<std::mutex> lock(receiverMutex);
        receiver = this;
    }
    ::SetConsoleCtrlHandler(handle, TRUE);
}

TerminationSignals::~TerminationSignals()
{
    ::SetConsoleCtrlHandler(handle, FALSE);
    const std::lock_guard<std::mutex> lock(receiverMutex);
    receiver = nullptr;
}

void TerminationSignals::endBy(int number)
{
    constexpr int kSignalStatus = 128;
    std::_Exit(kSignalStatus + number);
}

struct TerminationDelay::State {
    std::unique_lock<std::mutex> lock{delayMutex};
};

TerminationDelay::TerminationDelay()
    : m_state(std::make_unique<State>())
{
    ::SetConsoleCtrlHandler(delay, TRUE);
}

TerminationDelay::~TerminationDelay()
{
    ::SetConsoleCtrlHandler(delay, FALSE);
}
