// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "jsonreport.h"

#include <QVector>

/// The serial ports of this computer, as the window lists them.
QVector<PortDescription> portList();
