// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "firmwarepacket.h"

#include <algorithm>

int FirmwarePacket::count(int firmwareSize)
{
    return firmwareSize / kSize + (firmwareSize % kSize != 0 ? 1 : 0);
}

FirmwarePacket FirmwarePacket::at(int index, int firmwareSize)
{
    const int offset = index * kSize;
    return {offset, static_cast<unsigned char>(std::min(kSize, firmwareSize - offset)),
            static_cast<unsigned char>(index + 1)};
}
