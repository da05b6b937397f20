// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QMessageBox>
#include <QObject>

/// Sees every message box of the program, remembers it, and answers it on request.
class DialogWatcher : public QObject {
    Q_OBJECT

public:
    struct Seen {
        QMessageBox::Icon icon;
        QString title;
        QString text;
        QMessageBox::StandardButtons buttons;
        const QWidget *parent; ///< not to be used after its end
        Qt::WindowModality modality;
    };

    /// @param answersAtOnce  whether each box is closed by its Ok button as soon as it is shown
    explicit DialogWatcher(bool answersAtOnce = true);

    QList<Seen> seen() const { return m_seen; }
    /// "title: text" of each.
    QStringList texts() const;
    /// Presses Ok in the box that is open now. Not to be called without one.
    void answer();
    bool isOpen() const;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    bool m_answersAtOnce;
    QList<Seen> m_seen;
};
