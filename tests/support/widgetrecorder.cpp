// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "widgetrecorder.h"

#include <QComboBox>
#include <QEvent>
#include <QLineEdit>
#include <QProgressBar>
#include <QRadioButton>
#include <QTabWidget>
#include <QTextEdit>
#include <QWidget>

WidgetRecorder::WidgetRecorder(const QWidget *window)
{
    const auto widgets = window->findChildren<QWidget *>();
    for (QWidget *widget : widgets) {
        const bool isNamed = !widget->objectName().isEmpty()
            && !widget->objectName().startsWith(QLatin1String("qt_"));
        if (isNamed) {
            widget->installEventFilter(this);
            m_isDisabled[widget] = widget->testAttribute(Qt::WA_ForceDisabled);
            watchContents(widget);
        }
    }
}

bool WidgetRecorder::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::EnabledChange) {
        noteOwnState(qobject_cast<QWidget *>(watched));
    }
    return QObject::eventFilter(watched, event);
}

void WidgetRecorder::noteOwnState(const QWidget *widget)
{
    const bool isDisabled = widget->testAttribute(Qt::WA_ForceDisabled);
    if (isDisabled != m_isDisabled.value(widget)) {
        m_isDisabled[widget] = isDisabled;
        m_changes << widget->objectName()
                + (isDisabled ? QLatin1String(" off") : QLatin1String(" on"));
    }
}

void WidgetRecorder::watchContents(QWidget *widget)
{
    const QString name = widget->objectName();
    const auto note = [this, name](const QString &value) {
        m_changes << name + QLatin1String(" = ") + value;
    };
    if (auto *const combo = qobject_cast<QComboBox *>(widget)) {
        connect(combo, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
                [note](int index) { note(QString::number(index)); });
    } else if (auto *const radio = qobject_cast<QRadioButton *>(widget)) {
        connect(radio, &QRadioButton::toggled, this,
                [note](bool on) { note(on ? QStringLiteral("chosen") : QStringLiteral("not")); });
    } else if (auto *const text = qobject_cast<QTextEdit *>(widget)) {
        connect(text, &QTextEdit::textChanged, this, [note, text] {
            note(text->toPlainText().replace(QLatin1Char('\n'), QLatin1Char('|')));
        });
    } else if (auto *const line = qobject_cast<QLineEdit *>(widget)) {
        connect(line, &QLineEdit::textChanged, this, note);
    } else if (auto *const tabs = qobject_cast<QTabWidget *>(widget)) {
        connect(tabs, &QTabWidget::currentChanged, this,
                [note](int index) { note(QString::number(index)); });
    } else if (auto *const bar = qobject_cast<QProgressBar *>(widget)) {
        connect(bar, &QProgressBar::valueChanged, this,
                [note](int value) { note(QString::number(value)); });
    }
}
