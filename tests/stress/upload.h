// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

class ProgramFixture;

/// How one upload went: what the operator read, and what the camera has.
struct UploadOutcome {
    enum Ending {
        Complete, ///< the pane says so
        Failed,   ///< a failure text was shown, the port is closed, the pane claims nothing
        Improper, ///< neither, see problem
    };
    Ending ending = Improper;
    QString message;          ///< the pane's last text, or the message box's
    bool isIdentical = false; ///< the camera holds what was packed, byte for byte
    int connections = 0;      ///< attempts that it took to connect, without faults
    QString problem;          ///< why it is improper; else empty
};

/// Connects, uploads under faults and looks at what came of it. The fixture is left disconnected
/// and without faults, so that the next upload can follow.
class Upload {
public:
    /// Options of the simulator that the fixture has to be started with.
    static QStringList simulatorOptions(const ProgramFixture &fixture);

    /// How long an upload may take by the clock when every packet is as late as it may be, with
    /// time to spare.
    static int limitMs(int packets, int speed);

    /// @param fixture  not owned, running and disconnected
    explicit Upload(ProgramFixture &fixture);

    /// @param plan       as the simulator's option --faults has it; the size announcement is the
    ///                   first request, packet n is request 1 + n
    /// @param planSeed   of the plan's random numbers
    /// @param limitMs    by the clock, after which the upload counts as hanging
    UploadOutcome run(const QByteArray &firmware, const QString &plan, quint32 planSeed,
                      int limitMs);

private:
    bool prepare(const QByteArray &firmware);
    bool connectCamera();
    bool awaitEnd(int limitMs);
    bool isAtRest();
    UploadOutcome improper(const QString &problem);

    ProgramFixture &m_fixture;
    UploadOutcome m_outcome;
};
