// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QEventLoop>
#include <QObject>
#include <QTimer>

#include <chrono>

/// Waits in a nested event loop for a signal that acknowledges a request, for a limited time.
///
/// The user interface stays live meanwhile, and the reply is received and shown inside the loop.
/// Waits may nest. One object can wait several times, one after the other. GUI thread only.
class AcknowledgementWait : public QObject {
    Q_OBJECT

public:
    /// The exit codes of the loop. QEventLoop::quit(), and with it the end of the program, gives 0.
    enum Outcome {
        ProgramEnding = 0, ///< nothing is left to be shown
        Acknowledged = 1,
        TimedOut = 2,
    };

    /// @param sender  not owned, must outlive this object
    /// @param signal  the acknowledgement, as SIGNAL() gives it
    AcknowledgementWait(const QObject *sender, const char *signal);

    /// Runs the loop until the signal, the end of @p limit or the end of the program, whichever
    /// comes first. Call it after sending the request: the reply cannot be lost in between, because
    /// the loop delivers it. A signal that is emitted before the loop runs does not count.
    Outcome waitFor(std::chrono::milliseconds limit);

private slots:
    void acknowledge();
    void timeOut();

private:
    QTimer m_timer;
    QEventLoop m_loop;
};
