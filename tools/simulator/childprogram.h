// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QObject>
#include <QProcess>
#include <QString>
#include <QStringList>

/// The program that the simulated adapter is made for, run with this process' own input, output and
/// environment.
///
/// It is asked to end (SIGTERM) when this process ends without having seen its end.
class ChildProgram : public QObject {
    Q_OBJECT

public:
    explicit ChildProgram(QObject *parent = nullptr);

    void start(const QString &program, const QStringList &arguments);
    /// Passes on a signal of the system. Nothing happens when the program does not run.
    void sendSignal(int number);

signals:
    /// The program has ended.
    /// @param status  its exit status, or 128 plus the number of the signal that killed it
    void finished(int status);
    /// There is no such program, or it cannot be run, for that @p reason.
    void failedToStart(const QString &reason);

private:
    /// Runs between fork and exec, where only system calls are safe.
    static void endWithParent();

    class Process : public QProcess {
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
        void setupChildProcess() override
        {
            endWithParent();
        }
#else // which has no such function any more
    public:
        Process()
        {
            setChildProcessModifier(endWithParent);
        }
#endif
    };

    Process m_process;
};
