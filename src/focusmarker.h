// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QFocusFrame>

/// Frames the control of a window that has the keyboard focus.
///
/// The styles would, but do not where a style sheet gives the control a border.
class FocusMarker : public QFocusFrame {
    Q_OBJECT

public:
    /// @param window  becomes the parent
    explicit FocusMarker(QWidget *window);

private slots:
    void follow(QWidget *before, QWidget *now);

private:
    QWidget *const m_window;
};
