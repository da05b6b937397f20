// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>

class ProgramFixture;
class PatientOperator;
class QRandomGenerator;

/// Brings the program to a random moment at which something may happen to it: idle, in the middle
/// of a wait or an upload, with a message box or a list open.
class Moments {
public:
    /// The arguments are not owned and must outlive this object. The fixture has an image packed.
    Moments(ProgramFixture &fixture, PatientOperator &patientOperator, QRandomGenerator &random);

    /// From a state in which the camera is plugged in and answers. It may have fallen silent then.
    /// @return which moment it is, such as "during the handshake"; nothing when there is no
    ///         connecting
    QString begin();

private:
    struct Moment {
        const char *name;
        bool needsConnection;
        void (Moments::*act)();
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
    PatientOperator &m_operator;
    QRandomGenerator &m_random;
};
