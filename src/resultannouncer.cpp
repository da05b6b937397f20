// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "resultannouncer.h"

#include <QAccessible>
#include <QAccessibleObject>

namespace {

class Notification : public QAccessibleObject {
public:
    using QAccessibleObject::QAccessibleObject;

    QAccessibleInterface *parent() const override
    {
        return QAccessible::queryAccessibleInterface(object()->parent());
    }
    int childCount() const override { return 0; }
    QAccessibleInterface *child(int /*index*/) const override { return nullptr; }
    int indexOfChild(const QAccessibleInterface * /*child*/) const override { return -1; }
    QAccessible::Role role() const override { return QAccessible::Notification; }
    QAccessible::State state() const override { return {}; }
    QString text(QAccessible::Text kind) const override
    {
        return kind == QAccessible::Name ? static_cast<ResultAnnouncer *>(object())->text()
                                         : QString();
    }
};

QAccessibleInterface *notification(const QString &className, QObject *object)
{
    return className == QLatin1String("ResultAnnouncer") ? new Notification(object) : nullptr;
}

} // namespace

ResultAnnouncer::ResultAnnouncer(QTextEdit *pane)
    : QObject(pane)
    , m_pane(pane)
{
    QAccessible::installFactory(notification);
    m_settled.setSingleShot(true);
    connect(pane, SIGNAL(textChanged()), &m_settled, SLOT(start()));
    connect(&m_settled, SIGNAL(timeout()), SLOT(announce()));
}

void ResultAnnouncer::announce()
{
    m_text = m_pane->toPlainText();
    // With the focus there, the operator types a note, or has what changes read out anyway.
    if (m_text.isEmpty() || m_pane->hasFocus()) {
        return;
    }
    // The change of the name keeps screen readers from speaking the text before.
    QAccessibleEvent renamed(this, QAccessible::NameChanged);
    QAccessible::updateAccessibility(&renamed);
    QAccessibleEvent shown(this, QAccessible::ObjectShow);
    QAccessible::updateAccessibility(&shown);
}
