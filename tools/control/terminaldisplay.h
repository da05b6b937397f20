// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "camerareport.h"

#include <QByteArray>
#include <QString>
#include <QVector>

/// The lines of an upgrade on a terminal, one for each camera, redrawn in place.
class TerminalDisplay {
public:
    /// What the terminal is like at this moment.
    struct Screen {
        int columns = 80;
        int rows = 24;
        bool withColours = false;
    };

    /// What to write to show the cameras in the place of what was shown before.
    QByteArray redraw(const QVector<CameraStatus> &cameras, const Screen &screen);
    /// What to write before other text, which goes where the lines are; they follow it with the
    /// next redraw().
    QByteArray erase();

private:
    QByteArray up() const;

    int m_lines = 0; ///< shown now, all above the cursor
};
