// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QObject>
#include <QSocketNotifier>
#include <QVector>

/// Brings signals that would end the program into the event loop. There can be only one such object
/// at a time.
class TerminationSignals : public QObject {
    Q_OBJECT

public:
    /// @param numbers  such as SIGINT
    explicit TerminationSignals(const QVector<int> &numbers, QObject *parent = nullptr);
    /// Gives the signals their usual effect back.
    ~TerminationSignals() override;

signals:
    /// @param number          one of those
    /// @param isFromTerminal  the user has pressed Ctrl+C, by which the terminal has already sent
    ///                        it to every program in the foreground
    void received(int number, bool isFromTerminal);

private:
    void read();

    QVector<int> m_numbers;
    QSocketNotifier *m_notifier = nullptr;
};
