// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "base64.h"

#include <algorithm>
#include <array>

namespace {

constexpr int kGroupCharacters = 4;
constexpr quint32 kNotOfTheAlphabet = 1U << 24; // above the 24 bits of a group

/// The bits that each character adds to its group, for each of the four places in it.
using Bits = std::array<std::array<quint32, 256>, kGroupCharacters>;

constexpr Bits bitsOfCharacters()
{
    constexpr auto kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    constexpr quint32 kAlphabetSize = 64;
    constexpr int kBitsPerCharacter = 6;

    Bits bits{};
    for (std::size_t place = 0; place < kGroupCharacters; ++place) {
        for (quint32 &character : bits[place]) {
            character = kNotOfTheAlphabet;
        }
        const auto shift = kBitsPerCharacter * (kGroupCharacters - 1 - place);
        for (quint32 value = 0; value < kAlphabetSize; ++value) {
            bits[place][static_cast<unsigned char>(kAlphabet[value])] = value << shift;
        }
    }
    return bits;
}

} // namespace

void decodeBase64(QByteArray &bytes, int offset)
{
    static constexpr Bits kBits = bitsOfCharacters();
    char *to = bytes.data() + offset;
    const auto *from = reinterpret_cast<const unsigned char *>(to);
    const unsigned char *const end = from + bytes.size() - offset;
    for (; end - from >= kGroupCharacters; from += kGroupCharacters) {
        const quint32 group =
            kBits[0][from[0]] | kBits[1][from[1]] | kBits[2][from[2]] | kBits[3][from[3]];
        if (group >= kNotOfTheAlphabet) {
            break;
        }
        *to++ = static_cast<char>(group >> 16);
        *to++ = static_cast<char>(group >> 8);
        *to++ = static_cast<char>(group);
    }
    // The end with its padding, and all that is unusual.
    const QByteArray rest = QByteArray::fromBase64(QByteArray::fromRawData(
        reinterpret_cast<const char *>(from), static_cast<int>(end - from)));
    to = std::copy(rest.begin(), rest.end(), to);
    bytes.truncate(static_cast<int>(to - bytes.constData()));
}
