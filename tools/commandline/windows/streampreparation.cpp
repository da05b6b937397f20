// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "standardstreams.h"

#include <cstdio>

#include <fcntl.h>
#include <io.h>

void prepareStandardStreams()
{
    // As text, a line feed would become two bytes, and the byte 26 would end the input.
    for (std::FILE *const stream : {stdin, stdout, stderr}) {
        ::_setmode(::_fileno(stream), _O_BINARY);
    }
}
