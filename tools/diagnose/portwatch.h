// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>

/// Waits, for as long as it takes, until there is a port that was not there before.
/// @return its name
QString portThatAppears();
