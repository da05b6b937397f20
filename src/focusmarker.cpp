// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "focusmarker.h"

#include <QApplication>
#include <QPainter>
#include <QProxyStyle>
#include <QStyleOption>

namespace {

/// Draws a frame that can be seen on light and dark grounds.
class FrameStyle : public QProxyStyle {
public:
    int pixelMetric(PixelMetric metric, const QStyleOption *option,
                    const QWidget *widget) const override
    {
        const bool isMargin = metric == PM_FocusFrameHMargin || metric == PM_FocusFrameVMargin;
        return isMargin ? kWidth : QProxyStyle::pixelMetric(metric, option, widget);
    }

    int styleHint(StyleHint hint, const QStyleOption *option, const QWidget *widget,
                  QStyleHintReturn *result) const override
    {
        // Otherwise the control's parent would cut it off.
        return hint == SH_FocusFrame_AboveWidget
            ? 1
            : QProxyStyle::styleHint(hint, option, widget, result);
    }

    void drawControl(ControlElement element, const QStyleOption *option, QPainter *painter,
                     const QWidget *widget) const override
    {
        if (element != CE_FocusFrame) {
            QProxyStyle::drawControl(element, option, painter, widget);
            return;
        }
        painter->fillRect(option->rect, Qt::white);
        painter->fillRect(option->rect.adjusted(1, 1, -1, -1), Qt::black);
    }

private:
    static constexpr int kWidth = 3; ///< pixels, of which the outermost is white
};

} // namespace

FocusMarker::FocusMarker(QWidget *window)
    : QFocusFrame(window)
    , m_window(window)
{
    auto *const frameStyle = new FrameStyle;
    frameStyle->setParent(this);
    setStyle(frameStyle);
    connect(qApp, &QApplication::focusChanged, this, &FocusMarker::follow);
}

void FocusMarker::follow(QWidget * /*before*/, QWidget *now)
{
    setWidget(now != nullptr && now->window() == m_window ? now : nullptr);
}
