// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>

class GuiDriver;

/// Closes the program's window, again and again, and the boxes that are open, until the program has
/// ended.
/// @return what is wrong about its end; or nothing
QString closeAndEnd(GuiDriver &program);
