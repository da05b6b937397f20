// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "accessibility.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QComboBox>
#include <QGroupBox>
#include <QHash>
#include <QImage>
#include <QMetaEnum>
#include <QPixmap>
#include <QRadioButton>
#include <QStringList>
#include <QTabBar>
#include <QTextEdit>
#include <QToolButton>

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

bool listens = false;

QStringList &heardTexts()
{
    static QStringList texts;
    return texts;
}

bool isAncestor(const QAccessibleInterface *candidate, const QAccessibleInterface *of)
{
    const QAccessibleInterface *item = of->parent();
    while (item != nullptr && item != candidate) {
        item = item->parent();
    }
    return item != nullptr;
}

/// What screen readers take for the label: they leave out the group that the object is in.
QString labelOf(const QAccessibleInterface *object)
{
    const auto relations = object->relations(QAccessible::Label);
    for (const auto &relation : relations) {
        if (!isAncestor(relation.first, object)) {
            return relation.first->text(QAccessible::Name);
        }
    }
    return {};
}

void append(QJsonArray &all, const QAccessibleInterface *object)
{
    if (object == nullptr || object->state().invisible) {
        return;
    }
    const auto *const role = QMetaEnum::fromType<QAccessible::Role>().valueToKey(object->role());
    all << QJsonObject{
        {"widget", object->object() != nullptr ? object->object()->objectName() : QString()},
        {"role", role},
        {"name", object->text(QAccessible::Name)},
        {"label", labelOf(object)},
        {"description", object->text(QAccessible::Description)}};
    // A list has its rows as children, also while it is closed.
    const bool isList = object->role() == QAccessible::ComboBox;
    for (int index = 0; index < object->childCount() && !isList; ++index) {
        append(all, object->child(index));
    }
}

double luminance(QRgb color)
{
    const auto linear = [](int value) {
        const double part = value / 255.0;
        return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(qRed(color)) + 0.7152 * linear(qGreen(color))
        + 0.0722 * linear(qBlue(color));
}

double contrast(QRgb one, QRgb other)
{
    const double oneLight = luminance(one) + 0.05;
    const double otherLight = luminance(other) + 0.05;
    return std::max(oneLight, otherLight) / std::min(oneLight, otherLight);
}

/// A row of pixels of a text.
struct Row {
    QHash<QRgb, int> counts;
    QRgb ground = 0;
};

Row rowOf(const QImage &look, const QRect &area, int y)
{
    Row row;
    for (int x = area.left(); x <= area.right(); ++x) {
        const QRgb color = look.pixel(x, y);
        if (++row.counts[color] > row.counts.value(row.ground)) {
            row.ground = color;
        }
    }
    return row;
}

/// A letter's edge is blended with the ground, so what differs most has the color of the text.
/// Where the ground is a gradient, the row counts in which that color differs least.
double contrastIn(const QImage &look, const QRect &area)
{
    QVector<Row> rows;
    QRgb text = 0;
    double most = 0;
    for (int y = area.top(); y <= area.bottom(); ++y) {
        rows << rowOf(look, area, y);
        const auto colors = rows.last().counts.keys();
        for (const QRgb color : colors) {
            if (contrast(color, rows.last().ground) > most) {
                most = contrast(color, rows.last().ground);
                text = color;
            }
        }
    }
    double least = most;
    for (const Row &row : std::as_const(rows)) {
        // Of large letters, a row may have more than of the ground.
        if (row.counts.contains(text) && row.ground != text) {
            least = std::min(least, contrast(text, row.ground));
        }
    }
    return least;
}

/// Where a widget has its text, without its frame, its arrow, its icon or what else it draws; empty
/// when it has none.
QRect textArea(const QWidget *widget)
{
    constexpr int kFrame = 5;
    constexpr int kArrow = 25;
    constexpr int kAboveText = 34;
    const QRect inside = widget->rect().adjusted(kFrame, kFrame, -kFrame, -kFrame);
    if (const auto *const box = qobject_cast<const QComboBox *>(widget)) {
        return box->currentText().isEmpty() ? QRect() : inside.adjusted(0, 0, -kArrow, 0);
    }
    if (const auto *const pane = qobject_cast<const QTextEdit *>(widget)) {
        return pane->toPlainText().isEmpty() ? QRect() : inside;
    }
    if (const auto *const group = qobject_cast<const QGroupBox *>(widget)) {
        return {QPoint(0, 0), group->fontMetrics().size(0, group->title())};
    }
    if (widget->property("text").toString().isEmpty()) {
        return {};
    }
    if (qobject_cast<const QRadioButton *>(widget) != nullptr) {
        return inside.adjusted(kArrow, 0, 0, 0);
    }
    if (qobject_cast<const QToolButton *>(widget) != nullptr) {
        return inside.adjusted(0, kAboveText, 0, 0);
    }
    return inside;
}

} // namespace

/// Takes the place of Qt's, because this plugin is preloaded as well. Qt's drops what happens until
/// the platform says that a screen reader listens, which needs Qt's private headers without a
/// desktop.
void QAccessible::updateAccessibility(QAccessibleEvent *event)
{
    const QAccessibleInterface *const source = listens ? event->accessibleInterface() : nullptr;
    if (source == nullptr) {
        return;
    }
    const bool isNotification =
        event->type() == QAccessible::ObjectShow && source->role() == QAccessible::Notification;
    const bool isLabel =
        event->type() == QAccessible::NameChanged && source->role() == QAccessible::StaticText;
    if (isNotification || isLabel) {
        heardTexts() << source->text(QAccessible::Name);
    }
}

QJsonArray Accessibility::objects(QWidget *window)
{
    QJsonArray all;
    append(all, QAccessible::queryAccessibleInterface(window));
    return all;
}

void Accessibility::listen()
{
    listens = true;
}

QJsonArray Accessibility::heard()
{
    return QJsonArray::fromStringList(heardTexts());
}

QJsonObject Accessibility::contrasts(QWidget *window)
{
    const QImage look = window->grab().toImage();
    QJsonObject all;
    const auto widgets = window->findChildren<QWidget *>();
    for (const QWidget *widget : widgets) {
        if (!widget->isVisible()) {
            continue;
        }
        const QPoint place = widget->mapTo(window, QPoint(0, 0));
        if (const auto *const tabs = qobject_cast<const QTabBar *>(widget)) {
            constexpr int kFrame = 5;
            for (int tab = 0; tab < tabs->count(); ++tab) {
                const QRect area = tabs->tabRect(tab).adjusted(kFrame, kFrame, -kFrame, -kFrame);
                all[tabs->tabText(tab)] = contrastIn(look, area.translated(place));
            }
        } else if (!widget->objectName().isEmpty() && textArea(widget).isValid()) {
            all[widget->objectName()] = contrastIn(look, textArea(widget).translated(place));
        }
    }
    return all;
}
