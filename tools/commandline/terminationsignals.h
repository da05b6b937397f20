// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QObject>
#include <QVector>

#include <csignal>
#include <memory>

/// The signals that users and systems end programs with: SIGINT, SIGTERM and SIGHUP. On Windows,
/// SIGINT stands for Ctrl+C and Ctrl+Break, and SIGTERM for the end of the console or the session.
QVector<int> endingSignals();

/// Brings signals that would end the program into the event loop. One that the program was started
/// to ignore, as nohup(1) does, stays ignored. There can be only one such object at a time.
class TerminationSignals : public QObject {
    Q_OBJECT

public:
    explicit TerminationSignals(const QVector<int> &numbers = endingSignals(),
                                QObject *parent = nullptr);
    /// Gives the signals their usual effect back.
    ~TerminationSignals() override;

    /// Ends the program as the signal would have done, so that a shell sees what has ended it.
    [[noreturn]] static void endBy(int number);

signals:
    /// @param number          one of those
    /// @param isFromTerminal  the user has pressed Ctrl+C or closed the terminal, by which the
    ///                        terminal has already sent it to every program in the foreground
    void received(int number, bool isFromTerminal);

private:
    QVector<int> m_numbers; ///< those that are not ignored
};

/// Makes the ending signals wait for the end of this object.
class TerminationDelay {
public:
    TerminationDelay();
    TerminationDelay(const TerminationDelay &) = delete;
    TerminationDelay &operator=(const TerminationDelay &) = delete;
    ~TerminationDelay();

private:
    struct State;
    std::unique_ptr<State> m_state;
};
