// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "seededrandom.h"

namespace {

std::mt19937 makeEngine(quint32 seed, quint32 stream)
{
    std::seed_seq seeds{seed, stream};
    return std::mt19937(seeds);
}

} // namespace

SeededRandom::SeededRandom(quint32 seed, quint32 stream)
    : m_engine(makeEngine(seed, stream))
{
}

// The engine's numbers are laid down by the standard, those of the library's distributions are not.
int SeededRandom::below(int count)
{
    constexpr int kBits = 32;
    const quint64 number = m_engine();
    return static_cast<int>((number * static_cast<quint64>(count)) >> kBits);
}

int SeededRandom::between(int minimum, int maximum)
{
    return minimum + below(maximum - minimum + 1);
}
