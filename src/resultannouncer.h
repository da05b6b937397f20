// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "announcer.h"

#include <QTextEdit>
#include <QTimer>

/// Announces what appears in the window's text panes, and how far its progress bar is. GUI thread
/// only.
void announceResults(QWidget *window);

/// Lets a screen reader speak what appears in a text pane while the focus is elsewhere. GUI thread
/// only.
class ResultAnnouncer : public Announcer {
    Q_OBJECT

public:
    /// @param pane  becomes the parent
    explicit ResultAnnouncer(QTextEdit *pane);

private slots:
    void noteChange();
    void announceText();

private:
    QTextEdit *const m_pane;
    QTimer m_settled; ///< ends when nothing has changed for a while
};
