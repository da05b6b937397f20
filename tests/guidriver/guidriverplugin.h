// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "eventloopwatch.h"

#include <QGenericPlugin>
#include <QJsonObject>
#include <QLocalSocket>

#include <functional>
#include <optional>

class QWidget;

/// The end of the GUI driver that lives in the program: takes orders from a local socket, carries
/// them out on the program's widgets and answers each with one line.
class GuiDriverAgent : public QObject {
    Q_OBJECT

public:
    /// @param socketPath  where the other end listens
    explicit GuiDriverAgent(const QString &socketPath);

protected:
    /// While limits are held, sees every event of the program.
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void readOrders();
    /// @return the answer, or nothing when it has been arranged for
    std::optional<QJsonObject> carryOut(const QJsonObject &order);
    void answer(const QJsonObject &answer);
    /// For what may run an event loop of its own: answers and acts when the loop comes round, so
    /// that further orders can be carried out meanwhile.
    std::nullopt_t answerFirst(QObject *context, const std::function<void()> &action);

    std::nullopt_t click(QWidget *widget);
    static QJsonObject hover(QWidget *widget);
    static QJsonObject press(QWidget *widget);
    static QJsonObject release(QWidget *widget);
    static QJsonObject openList(QWidget *widget);
    static QJsonObject addItem(QWidget *widget, const QString &text);
    static QJsonObject choose(QWidget *widget, int index);
    static QJsonObject closeList();
    static QJsonObject pressKeys(QWidget *widget, const QString &text);
    std::optional<QJsonObject> answerDialog();
    std::optional<QJsonObject> dismiss();
    static QJsonObject picture(const QString &path);
    static QJsonObject state();
    static QJsonObject listen();
    QJsonObject holdLimits(bool holds);
    QJsonObject watchEventLoop();
    QJsonObject eventLoopGaps();

    QLocalSocket m_socket;
    EventLoopWatch m_watch;
};

class GuiDriverPlugin : public QGenericPlugin {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QGenericPluginFactoryInterface_iid FILE "guidriverplugin.json")

public:
    QObject *create(const QString &key, const QString &socketPath) override;
};
