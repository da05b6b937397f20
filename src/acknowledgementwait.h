// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QEventLoop>
#include <QObject>
#include <QTimer>

#include <chrono>

/// Waits in a nested event loop for a signal that acknowledges a request, for a limited time.
///
/// The user interface stays live meanwhile, and it is inside the loop that the acknowledgement is
/// received and shown. Waits may nest. One object can wait several times, one after the other.
/// GUI thread only.
class AcknowledgementWait : public QObject {
    Q_OBJECT

public:
    enum Outcome {
        ProgramEnding, ///< the program is ending: there is nobody left to tell anything
        Acknowledged,
        TimedOut,
    };

    /// @param sender  not owned, must outlive this object
    /// @param signal  the acknowledgement, as SIGNAL() gives it
    AcknowledgementWait(const QObject *sender, const char *signal);

    /// Runs the loop until the signal, the end of @p limit or the end of the program, whichever
    /// comes first. To be called behind the sending of the request: the reply cannot be lost in
    /// between, because it is delivered by the loop. A signal that is raised before the loop runs
    /// does not count.
    Outcome waitFor(std::chrono::milliseconds limit);

private slots:
    void acknowledge();
    void timeOut();

private:
    QTimer m_timer;
    QEventLoop m_loop;
};
