// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>

/// The library that shows programs the made-up devices of libumockdev.
///
/// Not only the program under test needs it: libumockdev announces devices through libudev, which
/// finds the made-up ones only with the library loaded into the simulator itself. A running program
/// cannot load it any more, so the simulator starts itself once again.
namespace PreloadLibrary {

/// Whether it is loaded into this process, and thus also into every program it starts.
bool isLoaded();

/// Replaces this process by the same program with the same @p arguments and the library loaded,
/// after what is to be loaded anyway: a sanitizer's library insists on being the first.
/// @param arguments  as main() got them, up to a null pointer
/// @return only if it fails, with the reason
QString restartWith(char **arguments);

} // namespace PreloadLibrary
