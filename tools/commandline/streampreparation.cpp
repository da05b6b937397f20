// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "standardstreams.h"

#include <fcntl.h>
#include <unistd.h>

void prepareStandardStreams()
{
    // A file gets the lowest number that is free. Opened the wrong way round, it cannot be used.
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (::fcntl(stream, F_GETFD) < 0) {
            ::open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
        }
    }
}
