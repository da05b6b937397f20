// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "randomfirmware.h"

#include <QRandomGenerator>

#include <algorithm>

QByteArray randomFirmware(int size, QRandomGenerator &random)
{
    constexpr int kByteValues = 256;
    QByteArray firmware(size, '\0');
    std::generate(firmware.begin(), firmware.end(),
                  [&random] { return static_cast<char>(random.bounded(kByteValues)); });
    return firmware;
}
