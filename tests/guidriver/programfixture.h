// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "guidriver.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

/// The unmodified program with a simulated camera of its own on its line, and an operator.
///
/// The environment variable CORVANE_WRAPPER, if set, holds a command under which the program runs,
/// a memory checker for example.
///
/// Several may exist side by side, also in threads. Its functions fail as those of GuiDriver do,
/// and explanation() says why.
class ProgramFixture {
public:
    ProgramFixture();
    ~ProgramFixture();

    /// Lets time run this many times as fast for program and camera, with all their waits; 1 to
    /// 100, to be set before start(). Limits of this class and of GuiDriver remain those of the
    /// clock.
    void setSpeed(int speed) { m_speed = speed; }

    /// The name of the adapter's port instead of one that no other fixture has. To be set before
    /// start().
    void setPort(const QString &name) { m_port = name; }

    bool start(const QStringList &simulatorOptions = {});
    bool connectCamera()
    {
        return corvane.click("pushButton_connect") && corvane.waitForEnabled("tabWidget");
    }
    /// With success, and to the end of the box that says so.
    bool apply()
    {
        return corvane.click("pushButton_apply")
            && corvane.waitForDialog("Information: Apply Success.") && corvane.answerDialog()
            && corvane.waitForDialog({});
    }
    /// Makes the image that startUpgrade() uses.
    bool pack(const QByteArray &firmware);
    /// From the connected state.
    bool startUpgrade();
    /// The window is disconnected then.
    bool waitUntilComplete();
    /// Gives the simulator a command of its control socket.
    bool tell(const QByteArray &command) { return tellSimulator(controlSocket(), command); }

    QString portName() const { return m_port; }
    /// The adapter as it is in the list of ports.
    QString portItem() const { return m_port + " (USB Serial)"; }
    /// A file of this fixture's own folder.
    QString path(const QString &name) const { return m_directory.filePath(name); }
    /// What is in such a file; nothing when it is not there.
    QByteArray contents(const QString &name) const;
    /// The frames that passed, as "<- FF FF ..." from the host and "-> FF FF ..." to it.
    QStringList frames();
    /// What went wrong last. Prints what the programs have printed, which is too much for QtTest.
    QString explanation();

    GuiDriver corvane;

private:
    QString controlSocket() const { return path("control"); }

    QString m_port;
    QTemporaryDir m_directory;
    int m_speed = 1;
};
