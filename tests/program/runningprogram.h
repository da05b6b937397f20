// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "patience.h"

#include <QProcess>

#include <csignal>

/// A program that runs beside the test, and ends with it.
class RunningProgram {
public:
    RunningProgram() = default;
    RunningProgram(const QString &program, const QStringList &arguments)
    {
        process.start(program, arguments);
    }
    RunningProgram(const RunningProgram &) = delete;
    RunningProgram &operator=(const RunningProgram &) = delete;
    ~RunningProgram()
    {
        process.terminate();
        process.waitForFinished(kPatience);
    }

    /// Before it is started.
    void setEnvironment(const QString &name, const QString &value)
    {
        QProcessEnvironment environment = process.processEnvironment();
        if (environment.isEmpty()) {
            environment = QProcessEnvironment::systemEnvironment();
        }
        environment.insert(name, value);
        process.setProcessEnvironment(environment);
    }
    /// Before it is started: its time passes so many times as fast, by the library of faketime(1).
    /// That program itself would not pass signals on.
    void speedUp(int factor)
    {
        // Programs with Clang's address sanitizer may hang at their start when time is faked.
        if (factor > 1 && !qEnvironmentVariableIsSet("CORVANE_REAL_TIME")) {
            setEnvironment("LD_PRELOAD", "/usr/$LIB/faketime/libfaketime.so.1");
            setEnvironment("FAKETIME", QString("+0 x%1").arg(factor));
        }
    }
    /// The next line of its output, or a text that no test expects.
    QString line()
    {
        while (!process.canReadLine()) {
            if (!process.waitForReadyRead(kPatience)) {
                return "no more lines; errors: " + errors();
            }
        }
        return QString::fromLocal8Bit(process.readLine()).trimmed();
    }
    /// The next line of what it complains about, likewise.
    QString errorLine()
    {
        process.setReadChannel(QProcess::StandardError);
        QString text = line();
        process.setReadChannel(QProcess::StandardOutput);
        return text;
    }
    void sendSignal(int number) { ::kill(static_cast<pid_t>(process.processId()), number); }
    bool hasEnded(int patience = kPatience)
    {
        return process.state() == QProcess::NotRunning || process.waitForFinished(patience);
    }
    /// Waits for its end. -1 when it does not end, -2 when it crashes.
    int exitCode()
    {
        if (!hasEnded()) {
            return -1;
        }
        return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -2;
    }
    /// What it has not been asked for yet; all of it only once it has ended.
    QString output() { return QString::fromLocal8Bit(process.readAllStandardOutput()); }
    QString errors() { return QString::fromLocal8Bit(process.readAllStandardError()); }

    QProcess process;
};

/// The simulated camera.
class Simulator : public RunningProgram {
public:
    explicit Simulator(const QStringList &arguments, int speed = 1)
    {
        speedUp(speed);
        process.start(SIMULATOR_PROGRAM, arguments);
    }
    Simulator() = default;

    /// The name of its pseudo-terminal, from its first line.
    QString portName()
    {
        const QString text = line();
        return text.startsWith("Port: ") ? text.mid(6) : "no port in: " + text;
    }
    /// The next line of its log without the time in front.
    QString event() { return line().mid(14); }
};
