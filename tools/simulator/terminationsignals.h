// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QObject>
#include <QSocketNotifier>

/// Brings SIGINT and SIGTERM into the event loop. There can be only one such object at a time.
class TerminationSignals : public QObject {
    Q_OBJECT

public:
    explicit TerminationSignals(QObject *parent = nullptr);
    /// Gives the signals their usual effect back.
    ~TerminationSignals() override;

signals:
    /// @param number          SIGINT or SIGTERM
    /// @param isFromTerminal  the user has pressed Ctrl+C, by which the terminal has already sent
    ///                        it to every program in the foreground
    void received(int number, bool isFromTerminal);

private:
    void read();

    QSocketNotifier *m_notifier = nullptr;
};
