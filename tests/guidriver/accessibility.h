// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QJsonArray>
#include <QJsonObject>

class QWidget;

/// What the program is to someone who uses a screen reader, or has weak eyes.
namespace Accessibility {

/// What a screen reader can be asked for: the window and all that is shown in it, each with its
/// "widget", "role", "name", "label" and "description".
QJsonArray objects(QWidget *window);

/// From now on keeps what a screen reader speaks without being asked.
void listen();
/// In the order in which it came: notifications and new texts of labels.
QJsonArray heard();

/// The contrast of each text that the window shows, by the name of its widget, as WCAG 2 defines
/// it: 1 when it cannot be seen, 21 for black on white. Measured in the pixels of the window.
QJsonObject contrasts(QWidget *window);

} // namespace Accessibility
