// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QHash>
#include <QObject>
#include <QStringList>

class QWidget;

/// Writes down, in the order in which it happens, what changes on the widgets of a window:
/// "name on", "name off" for the enabled state, "name = value" for what they show. A widget that is
/// disabled or enabled only because its parent is does not count.
class WidgetRecorder : public QObject {
    Q_OBJECT

public:
    /// Watches @p window's named children.
    explicit WidgetRecorder(const QWidget *window);

    QStringList changes() const { return m_changes; }
    /// Adds a remark of the test's own, to see what came before and what after it.
    void note(const QString &text) { m_changes << text; }
    void clear() { m_changes.clear(); }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void noteOwnState(const QWidget *widget);
    void watchContents(QWidget *widget);

    QHash<const QWidget *, bool> m_isDisabled; ///< by its own setting, not by its parent's
    QStringList m_changes;
};
