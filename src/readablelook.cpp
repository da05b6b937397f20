// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "readablelook.h"

#include "focusmarker.h"

#include <QComboBox>
#include <QPushButton>
#include <QStyleFactory>
#include <QStyledItemDelegate>

#include <algorithm>
#include <memory>

QPalette readablePalette()
{
    constexpr QColor kOnGrey(0x57, 0x57, 0x57);     // of a page or a tab
    constexpr QColor kOnDarkGrey(0x3a, 0x3a, 0x3a); // of a list

    const std::unique_ptr<QStyle> style(QStyleFactory::create(QStringLiteral("Fusion")));
    QPalette palette = style->standardPalette();
    palette.setColor(QPalette::Disabled, QPalette::WindowText, kOnGrey);
    palette.setColor(QPalette::Disabled, QPalette::ButtonText, kOnGrey);
    palette.setColor(QPalette::Disabled, QPalette::Text, kOnDarkGrey);
    return palette;
}

void markFocusAndChoice(QWidget *window)
{
    new FocusMarker(window);
    // With its own delegate, Fusion highlights rows in the field's colours: black on black.
    const auto boxes = window->findChildren<QComboBox *>();
    for (QComboBox *const box : boxes) {
        box->setItemDelegate(new QStyledItemDelegate(box));
    }
}

void fitButtons(QWidget *window)
{
    const auto buttons = window->findChildren<QPushButton *>();
    for (QPushButton *const button : buttons) {
        button->ensurePolished();
        button->setMinimumWidth(std::max(button->minimumWidth(), button->sizeHint().width()));
    }
}
