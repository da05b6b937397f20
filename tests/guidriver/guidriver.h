// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "patience.h"

#include <QJsonObject>
#include <QLocalServer>
#include <QProcess>
#include <QTemporaryDir>

#include <functional>
#include <limits>
#include <memory>

class QLocalSocket;

/// Sends one command to the simulated camera.
/// @param controlSocket  as its --control option has it
/// @return whether the camera said that it was done
bool tellSimulator(const QString &controlSocket, const QByteArray &command);

/// Starts a Qt program, operates its widgets by their object names and reads what they show.
///
/// Needs a QCoreApplication, not a running event loop. Each function that fails says why in
/// errorText().
class GuiDriver {
public:
    GuiDriver();
    ~GuiDriver();

    /// Starts @p program, or a program that starts it, and waits until it can be operated. What it
    /// prints is kept, see output().
    bool start(const QString &program, const QStringList &arguments);
    /// Waits until the program has ended by itself.
    bool waitUntilEnded(int limitMs = kPatience);
    /// As the program left it; -1 when it crashed, was killed or still runs.
    int exitCode() const;
    /// The process that start() started, also when that is another program which starts the one
    /// that is operated.
    qint64 processId() const { return m_process.processId(); }
    /// The process that is operated; -1 when it does not answer.
    qint64 operatedProcessId() { return state()["process"].toInt(-1); }
    /// What desktops find the program's entry and its icons by.
    QString desktopFile() { return state()["desktop file"].toString(); }
    bool hasIcon() { return state()["icon"].toBool(); }
    /// What the program has printed so far, standard output and error together.
    QString output();
    /// From now on at most the last @p characters of that are kept, for programs that run for long.
    void limitOutput(int characters) { m_outputLimit = characters; }

    bool click(const QString &widget) { return order({{"do", "click"}, {"widget", widget}}); }
    bool hover(const QString &widget) { return order({{"do", "hover"}, {"widget", widget}}); }
    /// Holds the mouse button down on a widget, until release().
    bool press(const QString &widget) { return order({{"do", "press"}, {"widget", widget}}); }
    /// Lets the mouse button go outside of the widget, so that nothing is clicked.
    bool release(const QString &widget) { return order({{"do", "release"}, {"widget", widget}}); }
    /// Chooses an item of a combo box through its popup, or a tab.
    bool choose(const QString &widget, int index)
    {
        return order({{"do", "choose"}, {"widget", widget}, {"index", index}});
    }
    /// Gives a combo box an item more and chooses it: a port that the system does not list.
    bool addItem(const QString &widget, const QString &text)
    {
        return order({{"do", "add item"}, {"widget", widget}, {"text", text}});
    }
    /// Opens the popup of a combo box, at the keyboard.
    bool openList(const QString &widget)
    {
        return order({{"do", "open list"}, {"widget", widget}});
    }
    /// Closes the popup that is open, with Escape.
    bool closeList() { return order({{"do", "close list"}}); }
    /// Replaces what a line edit holds, ending with Return.
    bool type(const QString &widget, const QString &text)
    {
        return order({{"do", "type"}, {"widget", widget}, {"text", text}});
    }
    /// Presses Ok in the message box that is open.
    bool answerDialog() { return order({{"do", "answer"}}); }
    /// Closes the dialog or popup that is open, whatever it is, with Escape.
    bool dismiss() { return order({{"do", "dismiss"}}); }
    /// Closes the main window.
    bool close() { return order({{"do", "close"}}); }
    /// Saves what the program shows on the screen.
    bool picture(const QString &path);

    /// The named widgets of the main window that are shown and enabled.
    QStringList usableWidgets();
    QString text(const QString &widget) { return stateOf(widget, "text").toString(); }
    int index(const QString &widget) { return stateOf(widget, "index").toInt(-1); }
    int value(const QString &widget) { return stateOf(widget, "value").toInt(-1); }
    bool isChecked(const QString &widget) { return stateOf(widget, "checked").toBool(); }
    bool isEnabled(const QString &widget) { return stateOf(widget, "enabled").toBool(); }
    /// Whether a button is narrower than its text needs.
    bool isCut(const QString &button) { return stateOf(button, "cut").toBool(); }
    /// Whether a window of the program is the one that the operator works in.
    bool isActive() { return state()["active"].toBool(); }
    bool isListOpen() { return state()["list"].toBool(); }
    /// "title: text" of the message box that is open, or nothing.
    QString dialog() { return state()["dialog"].toString(); }
    /// Whether a message box or another dialog keeps the main window from being used.
    bool isBlocked() { return state()["blocked"].toBool(); }

    /// Begins to measure for how long the program's event loop is away from its events.
    bool watchEventLoop() { return order({{"do", "watch event loop"}}); }
    /// Ends that.
    /// @return the loop's "turns", its gaps' "percentile 99.9 ms" and "longest ms"; empty on
    ///         failure
    QJsonObject eventLoopGaps()
    {
        return order({{"do", "event loop gaps"}}) ? m_answer : QJsonObject();
    }

    /// From now on what a screen reader would speak without being asked is kept.
    bool listen() { return order({{"do", "listen"}}); }
    /// The "objects" that a screen reader finds, the "contrasts" of the texts by their widgets, and
    /// what was "heard"; see accessibility.h. Empty on failure.
    QJsonObject accessibility()
    {
        return order({{"do", "accessibility"}}) ? m_answer : QJsonObject();
    }

    /// From now on no wait of the program for an acknowledgement ends by its limit; with false,
    /// they do again, no sooner than they would have.
    bool holdLimits(bool holds) { return order({{"do", "hold limits"}, {"holds", holds}}); }

    /// Lets time pass without asking the program anything, and reads what it prints: a full pipe
    /// would hold it up.
    void pause(int ms);
    /// Asks again and again until @p condition holds.
    bool waitUntil(const QString &description, const std::function<bool()> &condition,
                   int limitMs = kPatience);
    bool waitForDialog(const QString &titleAndText, int limitMs = kPatience);
    bool waitForEnabled(const QString &widget, bool enabled = true, int limitMs = kPatience);
    bool waitForText(const QString &widget, const QString &text);

    QString errorText() const { return m_errorText; }

private:
    bool order(const QJsonObject &order);
    QJsonObject state() { return order({{"do", "state"}}) ? m_answer : QJsonObject(); }
    QJsonValue stateOf(const QString &widget, const QString &key)
    {
        return state()["widgets"].toObject()[widget].toObject()[key];
    }
    void readOutput();
    bool fail(const QString &text);

    QTemporaryDir m_directory;
    QLocalServer m_server;
    QLocalSocket *m_socket = nullptr; ///< child of m_server
    QProcess m_process;
    QString m_output;
    int m_outputLimit = std::numeric_limits<int>::max();
    QJsonObject m_answer;
    QString m_errorText;
};
