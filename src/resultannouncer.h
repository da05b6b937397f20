// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QTextEdit>
#include <QTimer>

/// Lets a screen reader speak what appears in a text pane while the focus is elsewhere.
///
/// To screen readers each text is a notification that is shown. Without a screen reader nothing
/// happens. GUI thread only.
class ResultAnnouncer : public QObject {
    Q_OBJECT

public:
    /// @param pane  becomes the parent
    explicit ResultAnnouncer(QTextEdit *pane);

    /// What was announced last.
    QString text() const { return m_text; }

private slots:
    void announce();

private:
    QTextEdit *const m_pane;
    QTimer m_settled; ///< ends when the pane has all the lines that it gets at once
    QString m_text;
};
