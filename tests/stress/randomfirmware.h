// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>

class QRandomGenerator;

/// @param size  bytes
QByteArray randomFirmware(int size, QRandomGenerator &random);
