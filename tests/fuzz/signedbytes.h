// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <cstdint>

/// A frame's bytes as signed numbers; zeros after its end.
class SignedBytes {
public:
    SignedBytes(const std::uint8_t *data, std::size_t size)
        : m_data(data)
        , m_size(size)
    {
    }
    int operator[](std::size_t offset) const
    {
        return offset < m_size ? static_cast<std::int8_t>(m_data[offset]) : 0;
    }

private:
    const std::uint8_t *m_data;
    std::size_t m_size;
};
