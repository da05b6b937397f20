// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>

/// One byte the way version numbers and settings are shown: taken as signed, in lower-case
/// hexadecimal without padding or prefix (0x0A gives "a", 0xFF "-1", 0x80 "-80").
QString signedHexadecimal(char byte);

/// A version as the camera and its image files carry it, four bytes, shown as
/// "first.second.third.fourth" with each byte as signedHexadecimal() gives it.
QString versionText(char first, char second, char third, char fourth);
