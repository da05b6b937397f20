// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "announcer.h"

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
        return kind == QAccessible::Name ? static_cast<Announcer *>(object())->text() : QString();
    }
};

QAccessibleInterface *notification(const QString &className, QObject *object)
{
    return className == QLatin1String("Announcer") ? new Notification(object) : nullptr;
}

} // namespace

Announcer::Announcer(QObject *parent)
    : QObject(parent)
{
    QAccessible::installFactory(notification);
}

void Announcer::announce(const QString &text)
{
    m_text = text;
    // The change of the name keeps screen readers from speaking the text before.
    QAccessibleEvent renamed(this, QAccessible::NameChanged);
    QAccessible::updateAccessibility(&renamed);
    QAccessibleEvent shown(this, QAccessible::ObjectShow);
    QAccessible::updateAccessibility(&shown);
}
