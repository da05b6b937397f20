// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QObject>

/// Lets a screen reader speak a text that no control with the focus shows.
///
/// To screen readers each text is a notification that is shown. Without a screen reader nothing
/// happens. GUI thread only.
class Announcer : public QObject {
    Q_OBJECT

public:
    /// @param parent  what the texts are about; becomes the notification's parent too
    explicit Announcer(QObject *parent);

    void announce(const QString &text);
    /// What was announced last.
    QString text() const { return m_text; }

private:
    QString m_text;
};
