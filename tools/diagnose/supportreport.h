// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "kernellines.h"
#include "portfinding.h"
#include "portidentity.h"

#include <QByteArray>
#include <QJsonObject>
#include <QString>
#include <QStringList>
#include <QVector>

/// All that a report says about one port.
struct ReportedPort {
    QJsonObject diagnosis; ///< see jsonReport()
    PortIdentity identity;
    KernelLines kernel;
};

/// An object with one member for each of the identity's.
QJsonObject jsonObject(const PortIdentity &identity);

/// What is in a report, for the people who send it.
QString reportContents();

/// The finding with "$USER" for the name of the user and "~" for the folder of that name.
PortFinding withoutNames(PortFinding finding);

/// The groups of the user who runs this program, also with sudo, but for the one that has the
/// user's own name.
QStringList ownGroups();

/// What a support engineer asks for first, as one JSON object in UTF-8 with a line feed at its end.
QByteArray supportReport(const QVector<ReportedPort> &ports);
