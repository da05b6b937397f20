// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>

#include <functional>

class GuiDriver;
class ProgramFixture;

/// Closes the program's window, again and again, and the boxes that are open, until the program has
/// ended.
/// @return what is wrong about its end; or nothing
QString closeAndEnd(GuiDriver &program);

/// Answers every message box that comes up and closes every list that is open,
/// whatever else is going on.
///
/// A wait that a pulled plug has cut off still ends by its time-out and with its box, which may
/// then come up in the middle of something else.
class DialogHandler {
public:
    /// @param fixture  not owned
    explicit DialogHandler(ProgramFixture &fixture);

    /// Waits until @p condition holds and neither box nor list is open.
    /// @param limitMs  by the clock
    bool waitUntil(const QString &description, const std::function<bool()> &condition, int limitMs);
    /// Tries until the window is connected, some times if need be.
    bool connectCamera();
    /// Whether the window is in its disconnected state and can be used.
    bool isDisconnected() const;
    /// Waits until no wait of the program can be left over, answering what they say at their end.
    bool outlastWaits(int speed);

private:
    bool isConnected() const;

    ProgramFixture &m_fixture;
};
