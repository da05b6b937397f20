// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "resultannouncer.h"

#include "progressannouncer.h"

namespace {

// A screen reader that is given many events at once, as when a page is enabled, drops those that it
// has not come to. By now it has.
constexpr int kSettledTime = 500; // milliseconds

} // namespace

void announceResults(QWidget *window)
{
    const auto panes = window->findChildren<QTextEdit *>();
    for (QTextEdit *const pane : panes) {
        new ResultAnnouncer(pane);
    }
    const auto bars = window->findChildren<QProgressBar *>();
    for (QProgressBar *const bar : bars) {
        new ProgressAnnouncer(bar);
    }
}

ResultAnnouncer::ResultAnnouncer(QTextEdit *pane)
    : Announcer(pane)
    , m_pane(pane)
{
    m_settled.setSingleShot(true);
    m_settled.setInterval(kSettledTime);
    connect(pane, SIGNAL(textChanged()), SLOT(noteChange()));
    connect(&m_settled, SIGNAL(timeout()), SLOT(announceText()));
}

void ResultAnnouncer::noteChange()
{
    // With the focus there, the operator types a note, or has what changes read out anyway.
    if (!m_pane->hasFocus()) {
        m_settled.start();
    }
}

void ResultAnnouncer::announceText()
{
    const QString text = m_pane->toPlainText();
    if (!text.isEmpty()) {
        announce(text);
    }
}
