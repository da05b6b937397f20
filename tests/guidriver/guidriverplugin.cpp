// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "guidriverplugin.h"

#include "accessibility.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QJsonArray>
#include <QJsonDocument>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QMap>
#include <QMessageBox>
#include <QProgressBar>
#include <QScreen>
#include <QTabBar>
#include <QTabWidget>
#include <QTest>
#include <QTextEdit>
#include <QTimer>

namespace {

QJsonObject ok()
{
    return {{"ok", true}};
}

QJsonObject error(const QString &text)
{
    return {{"ok", false}, {"error", text}};
}

QMainWindow *mainWindow()
{
    const auto windows = QApplication::topLevelWidgets();
    for (QWidget *window : windows) {
        if (auto *const found = qobject_cast<QMainWindow *>(window)) {
            return found;
        }
    }
    return nullptr;
}

QMessageBox *openDialog()
{
    return qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
}

void clickAt(const QWidget *widget, const QPoint &position)
{
    const QWidget *const window = widget->window();
    QTest::mouseClick(window->windowHandle(), Qt::LeftButton, Qt::NoModifier,
                      widget->mapTo(window, position));
}

QJsonObject stateOf(QWidget *widget)
{
    QJsonObject state{{"enabled", widget->isEnabled()}, {"visible", widget->isVisible()}};
    if (const auto *const combo = qobject_cast<QComboBox *>(widget)) {
        state["index"] = combo->currentIndex();
        state["text"] = combo->currentText();
        QJsonArray items;
        for (int i = 0; i < combo->count(); ++i) {
            items += combo->itemText(i);
        }
        state["items"] = items;
    } else if (const auto *const button = qobject_cast<QAbstractButton *>(widget)) {
        state["text"] = button->text();
        state["checked"] = button->isChecked();
        state["cut"] = button->width() < button->sizeHint().width();
    } else if (const auto *const edit = qobject_cast<QTextEdit *>(widget)) {
        state["text"] = edit->toPlainText();
    } else if (const auto *const line = qobject_cast<QLineEdit *>(widget)) {
        state["text"] = line->text();
    } else if (const auto *const bar = qobject_cast<QProgressBar *>(widget)) {
        state["value"] = bar->value();
        state["maximum"] = bar->maximum();
    } else if (const auto *const tabs = qobject_cast<QTabWidget *>(widget)) {
        state["index"] = tabs->currentIndex();
    }
    return state;
}

} // namespace

GuiDriverAgent::GuiDriverAgent(const QString &socketPath)
{
    connect(&m_socket, &QLocalSocket::readyRead, this, &GuiDriverAgent::readOrders);
    QTimer::singleShot(0, this, [this, socketPath] { m_socket.connectToServer(socketPath); });
}

void GuiDriverAgent::readOrders()
{
    while (m_socket.canReadLine()) {
        const QJsonObject order = QJsonDocument::fromJson(m_socket.readLine()).object();
        const auto result = carryOut(order);
        if (result) {
            answer(*result);
        }
    }
}

std::nullopt_t GuiDriverAgent::answerFirst(QObject *context, const std::function<void()> &action)
{
    QTimer::singleShot(0, context, [this, action] {
        answer(ok());
        action();
    });
    return std::nullopt;
}

void GuiDriverAgent::answer(const QJsonObject &answer)
{
    m_socket.write(QJsonDocument(answer).toJson(QJsonDocument::Compact) + '\n');
    m_socket.flush();
}

std::optional<QJsonObject> GuiDriverAgent::carryOut(const QJsonObject &order)
{
    const QString action = order["do"].toString();
    const QString name = order["widget"].toString();
    using Orders = QMap<QString, std::function<std::optional<QJsonObject>()>>;
    const Orders always{
        {"state", [] { return state(); }},
        {"answer", [this] { return answerDialog(); }},
        {"dismiss", [this] { return dismiss(); }},
        {"picture", [&] { return picture(order["path"].toString()); }},
        {"close list", [] { return closeList(); }},
        {"hold limits", [&] { return holdLimits(order["holds"].toBool()); }},
        {"watch event loop", [this] { return watchEventLoop(); }},
        {"event loop gaps", [this] { return eventLoopGaps(); }},
        {"listen", [] { return listen(); }},
    };
    if (always.contains(action)) {
        return always[action]();
    }
    if (mainWindow() == nullptr) {
        return error("there is no main window");
    }
    if (action == "close") {
        return answerFirst(this, [] { mainWindow()->close(); });
    }
    if (action == "accessibility") {
        return QJsonObject{{"ok", true},
                           {"objects", Accessibility::objects(mainWindow())},
                           {"contrasts", Accessibility::contrasts(mainWindow())},
                           {"heard", Accessibility::heard()}};
    }
    auto *const widget = mainWindow()->findChild<QWidget *>(name);
    if (widget == nullptr) {
        return error("there is no widget " + name);
    }
    const Orders toWidget{
        {"click", [&] { return click(widget); }},
        {"hover", [&] { return hover(widget); }},
        {"press", [&] { return press(widget); }},
        {"release", [&] { return release(widget); }},
        {"open list", [&] { return openList(widget); }},
        {"add item", [&] { return addItem(widget, order["text"].toString()); }},
        {"choose", [&] { return choose(widget, order["index"].toInt()); }},
        {"type", [&] { return pressKeys(widget, order["text"].toString()); }},
    };
    return toWidget.contains(action) ? toWidget[action]() : error("unknown order " + action);
}

std::nullopt_t GuiDriverAgent::click(QWidget *widget)
{
    return answerFirst(widget, [widget] {
        // Radio buttons and check boxes react at their left end only.
        const bool atLeft = qobject_cast<QAbstractButton *>(widget) != nullptr
            && qobject_cast<QAbstractButton *>(widget)->isCheckable();
        clickAt(widget, atLeft ? QPoint(10, widget->height() / 2) : widget->rect().center());
    });
}

QJsonObject GuiDriverAgent::hover(QWidget *widget)
{
    QTest::mouseMove(widget->window()->windowHandle(),
                     widget->mapTo(widget->window(), widget->rect().center()));
    return ok();
}

QJsonObject GuiDriverAgent::press(QWidget *widget)
{
    QTest::mousePress(widget->window()->windowHandle(), Qt::LeftButton, Qt::NoModifier,
                      widget->mapTo(widget->window(), widget->rect().center()));
    return ok();
}

QJsonObject GuiDriverAgent::release(QWidget *widget)
{
    const QPoint outside = widget->mapTo(widget->window(), QPoint(-1, -1));
    QTest::mouseMove(widget->window()->windowHandle(), outside);
    QTest::mouseRelease(widget->window()->windowHandle(), Qt::LeftButton, Qt::NoModifier, outside);
    return ok();
}

QJsonObject GuiDriverAgent::openList(QWidget *widget)
{
    widget->setFocus(Qt::TabFocusReason);
    QTest::keyClick(widget->window()->windowHandle(), Qt::Key_Down, Qt::AltModifier);
    return ok();
}

QJsonObject GuiDriverAgent::addItem(QWidget *widget, const QString &text)
{
    auto *const combo = qobject_cast<QComboBox *>(widget);
    if (combo == nullptr) {
        return error(widget->objectName() + " has no items");
    }
    combo->addItem(text);
    combo->setCurrentIndex(combo->count() - 1);
    return ok();
}

QJsonObject GuiDriverAgent::choose(QWidget *widget, int index)
{
    if (auto *const tabs = qobject_cast<QTabWidget *>(widget)) {
        clickAt(tabs->tabBar(), tabs->tabBar()->tabRect(index).center());
        return ok();
    }
    auto *const combo = qobject_cast<QComboBox *>(widget);
    if (combo == nullptr) {
        return error(widget->objectName() + " has nothing to choose from");
    }
    clickAt(combo, combo->rect().center());
    QAbstractItemView *const list = combo->view();
    if (!list->isVisible()) {
        return error(combo->objectName() + " does not open");
    }
    const QModelIndex item = combo->model()->index(index, 0);
    list->scrollTo(item);
    // A list that has just opened ignores clicks for a moment, keys it does not.
    list->setCurrentIndex(item);
    QTest::keyClick(list->window()->windowHandle(), Qt::Key_Return);
    return ok();
}

QJsonObject GuiDriverAgent::closeList()
{
    QWidget *const popup = QApplication::activePopupWidget();
    if (popup == nullptr) {
        return error("no list is open");
    }
    QTest::keyClick(popup->windowHandle(), Qt::Key_Escape);
    return ok();
}

QJsonObject GuiDriverAgent::pressKeys(QWidget *widget, const QString &text)
{
    clickAt(widget, widget->rect().center());
    QWindow *const window = widget->window()->windowHandle();
    QTest::keyClick(window, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(window, Qt::Key_Delete);
    for (const QChar character : text) {
        QTest::keyClick(window, character.toLatin1());
    }
    QTest::keyClick(window, Qt::Key_Return);
    return ok();
}

std::optional<QJsonObject> GuiDriverAgent::answerDialog()
{
    QMessageBox *const dialog = openDialog();
    if (dialog == nullptr) {
        return error("no message box is open");
    }
    return answerFirst(dialog, [dialog] {
        const QAbstractButton *const button = dialog->button(QMessageBox::Ok);
        clickAt(button, button->rect().center());
    });
}

std::optional<QJsonObject> GuiDriverAgent::dismiss()
{
    QWidget *const popup = QApplication::activePopupWidget();
    QWidget *const top = popup != nullptr ? popup : QApplication::activeModalWidget();
    if (top == nullptr) {
        return error("there is nothing to dismiss");
    }
    return answerFirst(top, [top] { QTest::keyClick(top->windowHandle(), Qt::Key_Escape); });
}

QJsonObject GuiDriverAgent::picture(const QString &path)
{
    // Without a display, only the window itself can be looked at.
    if (QGuiApplication::platformName() == "offscreen") {
        return mainWindow()->grab().save(path) ? ok() : error("cannot write " + path);
    }
    QRect area;
    const auto windows = QApplication::topLevelWidgets();
    for (const QWidget *window : windows) {
        if (window->isVisible()) {
            area = area.united(window->frameGeometry());
        }
    }
    const QPixmap picture = QGuiApplication::primaryScreen()->grabWindow(
        0, area.x(), area.y(), area.width(), area.height());
    return picture.save(path) ? ok() : error("cannot write " + path);
}

QJsonObject GuiDriverAgent::state()
{
    QJsonObject widgets;
    const QMainWindow *const window = mainWindow();
    if (window != nullptr) {
        const auto children = window->findChildren<QWidget *>();
        for (QWidget *child : children) {
            if (!child->objectName().isEmpty()) {
                widgets[child->objectName()] = stateOf(child);
            }
        }
    }
    QJsonObject state{{"ok", true}, {"widgets", widgets}};
    state["process"] = static_cast<int>(QCoreApplication::applicationPid());
    state["desktop file"] = QGuiApplication::desktopFileName();
    state["icon"] = !QGuiApplication::windowIcon().availableSizes().isEmpty();
    state["list"] = QApplication::activePopupWidget() != nullptr;
    state["active"] = QApplication::activeWindow() != nullptr;
    state["blocked"] = QApplication::activeModalWidget() != nullptr;
    if (const QMessageBox *const dialog = openDialog()) {
        state["dialog"] = dialog->windowTitle() + ": " + dialog->text();
    }
    return state;
}

QJsonObject GuiDriverAgent::listen()
{
    Accessibility::listen();
    return ok();
}

QJsonObject GuiDriverAgent::holdLimits(bool holds)
{
    if (holds) {
        qApp->installEventFilter(this);
    } else {
        qApp->removeEventFilter(this);
    }
    return ok();
}

bool GuiDriverAgent::eventFilter(QObject *watched, QEvent *event)
{
    // Only a wait for an acknowledgement is that particular about its end. A timer that does not
    // hear of its end runs once more.
    const auto *const timer = qobject_cast<QTimer *>(watched);
    const bool isLimit = timer != nullptr && event->type() == QEvent::Timer && timer->isSingleShot()
        && timer->timerType() == Qt::PreciseTimer;
    return isLimit || QObject::eventFilter(watched, event);
}

QJsonObject GuiDriverAgent::watchEventLoop()
{
    m_watch.start();
    return ok();
}

QJsonObject GuiDriverAgent::eventLoopGaps()
{
    const QVector<double> gaps = m_watch.stop();
    if (gaps.isEmpty()) {
        return error("the event loop was not watched");
    }
    constexpr int kThousand = 1000;
    const int percentile999 = gaps.size() - 1 - gaps.size() / kThousand;
    return {{"ok", true},
            {"turns", gaps.size()},
            {"percentile 99.9 ms", gaps.at(percentile999)},
            {"longest ms", gaps.last()}};
}

QObject *GuiDriverPlugin::create(const QString &key, const QString &socketPath)
{
    Q_UNUSED(key)
    return new GuiDriverAgent(socketPath);
}
