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
    qint64 operatedProcessId();
    /// What the program has printed so far, standard output and error together.
    QString output();
    /// From now on at most the last @p characters of that are kept, for programs that run for long.
    void limitOutput(int characters) { m_outputLimit = characters; }

    bool click(const QString &widget);
    bool hover(const QString &widget);
    /// Holds the mouse button down on a widget, until release().
    bool press(const QString &widget);
    /// Lets the mouse button go outside of the widget, so that nothing is clicked.
    bool release(const QString &widget);
    /// Chooses an item of a combo box through its popup, or a tab.
    bool choose(const QString &widget, int index);
    /// Opens the popup of a combo box, at the keyboard.
    bool openList(const QString &widget);
    /// Closes the popup that is open, with Escape.
    bool closeList();
    /// Replaces what a line edit holds, ending with Return.
    bool type(const QString &widget, const QString &text);
    /// Presses Ok in the message box that is open.
    bool answerDialog();
    /// Closes the dialog or popup that is open, whatever it is, with Escape.
    bool dismiss();
    /// Closes the main window.
    bool close();
    /// Saves what the program shows on the screen.
    bool picture(const QString &path);

    /// The named widgets of the main window that are shown and enabled.
    QStringList usableWidgets();
    QString text(const QString &widget);
    int index(const QString &widget);
    int value(const QString &widget);
    bool isChecked(const QString &widget);
    bool isEnabled(const QString &widget);
    bool isListOpen();
    /// "title: text" of the message box that is open, or nothing.
    QString dialog();
    /// Whether a message box or another dialog keeps the main window from being used.
    bool isBlocked();

    /// Begins to measure for how long the program's event loop is away from its events.
    bool watchEventLoop();
    /// Ends that.
    /// @return the loop's "turns", its gaps' "percentile 99.9 ms" and "longest ms"; empty on
    ///         failure
    QJsonObject eventLoopGaps();

    /// From now on no wait of the program for an acknowledgement ends by its limit; with false,
    /// they do again, no sooner than they would have.
    bool holdLimits(bool holds);

    /// Lets time pass without asking the program anything, and reads what it prints: a full pipe
    /// would hold it up.
    void pause(int ms);
    /// Asks again and again until @p condition holds.
    bool waitUntil(const QString &description, const std::function<bool()> &condition,
                   int limitMs = kPatience);
    bool waitForDialog(const QString &titleAndText, int limitMs = kPatience);
    bool waitForEnabled(const QString &widget, bool enabled = true, int limitMs = kPatience);

    QString errorText() const { return m_errorText; }

private:
    bool order(const QJsonObject &order);
    QJsonObject state();
    QJsonValue stateOf(const QString &widget, const QString &key);
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
