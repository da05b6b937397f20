// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QGenericPlugin>
#include <QJsonObject>
#include <QLocalSocket>

class QWidget;

/// The end of the pilot that lives in the program: takes orders from a local socket, carries them
/// out on the program's widgets and answers each with one line.
class PilotAgent : public QObject {
    Q_OBJECT

public:
    /// @param socketPath  where the other end listens
    explicit PilotAgent(const QString &socketPath);

private:
    void readOrders();
    QJsonObject carryOut(const QJsonObject &order);
    void answer(const QJsonObject &answer);

    static QJsonObject click(QWidget *widget);
    static QJsonObject hover(QWidget *widget);
    static QJsonObject choose(QWidget *widget, int index);
    static QJsonObject closeList();
    static QJsonObject pressKeys(QWidget *widget, const QString &text);
    static QJsonObject answerDialog();
    static QJsonObject picture(const QString &path);
    static QJsonObject state();

    QLocalSocket m_socket;
};

class PilotPlugin : public QGenericPlugin {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QGenericPluginFactoryInterface_iid FILE "pilotplugin.json")

public:
    QObject *create(const QString &key, const QString &specification) override;
};
