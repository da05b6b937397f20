// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QtGlobal>

#include <random>

/// Random numbers that are the same on every machine for the same seed.
class SeededRandom {
public:
    /// @param stream  numbers with the same seed in different streams have nothing in common
    SeededRandom(quint32 seed, quint32 stream);

    /// @param count  1 or more
    /// @return 0 to @p count - 1
    int below(int count);
    /// @return @p minimum to @p maximum
    int between(int minimum, int maximum);

private:
    std::mt19937 m_engine;
};
