// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QPalette>

class QWidget;

// What the form's style sheets leave open, made readable.

/// The style sheets are made for a light ground, so the palette is light whatever the desktop's is.
/// A control that is disabled still says something, such as the port that is connected to: its
/// text has a contrast of at least 4.5:1.
QPalette readablePalette();

/// Shows which control of the window has the focus, and which row of a list is chosen.
void markFocusAndChoice(QWidget *window);

/// Keeps larger letters from being cut off in the window's buttons: their least width, which the
/// style sheets give in pixels, is made for letters of the usual size.
void fitButtons(QWidget *window);
