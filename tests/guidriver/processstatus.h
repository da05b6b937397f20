// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QtGlobal>

/// What the system says about a running process at one moment.
struct ProcessStatus {
    /// @return all zero and false when there is no such process
    static ProcessStatus of(qint64 processId);

    bool isAsleep = false;      ///< whether its main thread waits for something
    qint64 processorTimeMs = 0; ///< used since its start, in steps of 10
    qint64 residentKiB = 0;
    qint64 privateKiB = 0; ///< that of it which no other process has as well
    int threads = 0;
    int descriptors = 0; ///< open files, sockets and so on
    int terminals = 0;   ///< those of them that are terminals or serial ports
};
