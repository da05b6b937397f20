// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "imagetool.h"

#include <QCoreApplication>

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("corvane-image"));
    QCoreApplication::setApplicationVersion(QStringLiteral(CORVANE_VERSION));
    return runImageTool(QCoreApplication::arguments());
}
