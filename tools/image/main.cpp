// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "commandline.h"
#include "imagetool.h"

#include <QCoreApplication>

int main(int argc, char *argv[])
{
    setUpProgram(QStringLiteral("corvane-image"));
    const QCoreApplication application(argc, argv);
    return runImageTool(QCoreApplication::arguments());
}
