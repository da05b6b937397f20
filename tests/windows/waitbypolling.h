// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <thread>

#include <windows.h>

/// Takes the place of QtSerialPort's wait for received bytes, which Wine never completes on a
/// pseudo-terminal: looks for them every millisecond on another thread. As there, the end of the
/// wait is said in an alertable wait of the calling thread.
inline BOOL waitByPolling(HANDLE port, DWORD * /*mask*/, OVERLAPPED *overlapped,
                          LPOVERLAPPED_COMPLETION_ROUTINE routine)
{
    struct Wait {
        HANDLE port;
        HANDLE thread;
        OVERLAPPED *overlapped;
        LPOVERLAPPED_COMPLETION_ROUTINE routine;
        DWORD error;
    };
    auto *const wait = new Wait{port, nullptr, overlapped, routine, ERROR_SUCCESS};
    const HANDLE process = ::GetCurrentProcess();
    ::DuplicateHandle(process, ::GetCurrentThread(), process, &wait->thread, 0, FALSE,
                      DUPLICATE_SAME_ACCESS);
    std::thread([wait] {
        COMSTAT status{};
        while (status.cbInQue == 0 && wait->error == ERROR_SUCCESS) {
            ::Sleep(1);
            DWORD lineErrors = 0;
            if (::ClearCommError(wait->port, &lineErrors, &status) == 0) {
                wait->error = ERROR_OPERATION_ABORTED; // closed
            }
        }
        ::QueueUserAPC(
            [](ULONG_PTR parameter) {
                auto *const done = reinterpret_cast<Wait *>(parameter);
                ::CloseHandle(done->thread);
                done->routine(done->error, 0, done->overlapped);
                delete done;
            },
            wait->thread, reinterpret_cast<ULONG_PTR>(wait));
    }).detach();
    return TRUE;
}
