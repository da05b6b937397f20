// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "dialogwatcher.h"

#include <QApplication>
#include <QPushButton>
#include <QTimer>

DialogWatcher::DialogWatcher(bool answersAtOnce)
    : m_answersAtOnce(answersAtOnce)
{
    qApp->installEventFilter(this);
}

QStringList DialogWatcher::texts() const
{
    QStringList texts;
    for (const Seen &box : m_seen) {
        texts << box.title + QLatin1String(": ") + box.text;
    }
    return texts;
}

void DialogWatcher::answer()
{
    qobject_cast<QMessageBox *>(QApplication::activeModalWidget())
        ->button(QMessageBox::Ok)
        ->click();
}

bool DialogWatcher::isOpen() const
{
    return qobject_cast<QMessageBox *>(QApplication::activeModalWidget()) != nullptr;
}

bool DialogWatcher::eventFilter(QObject *watched, QEvent *event)
{
    auto *const box = qobject_cast<QMessageBox *>(watched);
    // At Show, only some versions of Qt have added the Ok that a box without buttons gets.
    if (box != nullptr && event->type() == QEvent::ShowToParent) {
        m_seen << Seen{box->icon(),         box->windowTitle(),
                       box->text(),         box->standardButtons(),
                       box->parentWidget(), box->windowModality()};
        if (m_answersAtOnce) {
            QTimer::singleShot(0, box, [box] { box->button(QMessageBox::Ok)->click(); });
        }
    }
    return QObject::eventFilter(watched, event);
}
