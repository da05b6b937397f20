// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QString>

/// What there is to know about an image, one "Name: value" a line.
/// @param image  the whole file, in which imageFault() finds nothing
QString imageReport(const QByteArray &image);
