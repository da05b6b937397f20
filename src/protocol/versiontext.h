// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QString>

/// One byte the way version numbers and settings are shown: taken as signed, in lower-case
/// hexadecimal without padding or prefix (0x0A gives "a", 0xFF "-1", 0x80 "-80").
QString signedHexadecimal(char byte);

/// A version as the camera and its image files carry it, in the four bytes at @p offset: each as
/// signedHexadecimal() gives it, joined by dots. A byte after the end of @p bytes counts as 0.
QString versionText(const QByteArray &bytes, int offset);
