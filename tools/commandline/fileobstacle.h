// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>

/// Why there is no file to read or to replace by that name; empty when there is one, or nothing.
QString fileObstacle(const QString &name);
