// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "childprogram.h"

#include <QFileInfo>

#include <csignal>

#include <sys/prctl.h>

namespace {

constexpr int kKilledStatus = 128;

} // namespace

ChildProgram::ChildProgram(QObject *parent)
    : QObject(parent)
{
    m_process.setProcessChannelMode(QProcess::ForwardedChannels);
    m_process.setInputChannelMode(QProcess::ForwardedInputChannel);
    connect(&m_process, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished), this,
            [this](int code, QProcess::ExitStatus status) {
                // After a crash, the code is the number of the signal.
                emit finished(status == QProcess::NormalExit ? code : kKilledStatus + code);
            });
    connect(&m_process, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart) {
            // After the name of the system call.
            emit failedToStart(QFileInfo(m_process.program()).isDir()
                                   ? QStringLiteral("it is a folder")
                                   : m_process.errorString().section(QStringLiteral(": "), -1));
        }
    });
}

void ChildProgram::start(const QString &program, const QStringList &arguments)
{
    m_process.start(program, arguments);
}

void ChildProgram::sendSignal(int number)
{
    const qint64 process = m_process.processId();
    if (process > 0) {
        ::kill(static_cast<pid_t>(process), number);
    }
}

void ChildProgram::endWithParent()
{
    ::prctl(PR_SET_PDEATHSIG, SIGTERM);
}
