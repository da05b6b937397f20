// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>

class ProgramFixture;
class DialogHandler;
class QRandomGenerator;

/// Brings the program to a random moment at which something may happen to it: idle, in the middle
/// of a wait or an upload, with a message box or a list open.
class RandomScenario {
public:
    /// The arguments are not owned and must outlive this object. The fixture has an image packed.
    RandomScenario(ProgramFixture &fixture, DialogHandler &dialogHandler, QRandomGenerator &random);

    /// From a state in which the camera is plugged in and answers. It may have fallen silent then.
    /// @return which moment it is, such as "during the handshake"; nothing when there is no
    ///         connecting
    QString begin();

private:
    struct Moment {
        const char *name;
        bool needsConnection;
        void (RandomScenario::*act)();
    };

    void doNothing() {}
    void connectInVain();
    void apply();
    void applyInVain();
    void setZoomInVain();
    void upload();
    void openSuccessBox();
    void openAboutBox();
    void openList();
    void clickOnSettingsPage(const char *widget);
    void pause(int longestMs);

    ProgramFixture &m_fixture;
    DialogHandler &m_dialogHandler;
    QRandomGenerator &m_random;
};
