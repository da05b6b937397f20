// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QStringList>

/// Runs the whole program, but for what needs an application object to be made first.
/// @param arguments  with the program's name in front
/// @return its exit code: 0 when all is well, 1 when an image or a firmware is not right, 2 for a
///         command line that makes no sense, 3 when a file could not be read or written
int runImageTool(const QStringList &arguments);
