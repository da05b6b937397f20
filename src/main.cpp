// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "mainwindow.h"

#include <QApplication>
#include <QIcon>

namespace {

/// Keeps Qt from loading OpenGL, with which nothing is drawn here: that is half of the time until
/// the window is there, and more memory than all the rest. Somebody who has set the variable wants
/// something else.
void doWithoutOpenGL()
{
    constexpr auto kVariable = "QT_XCB_GL_INTEGRATION";
    if (!qEnvironmentVariableIsSet(kVariable)) {
        qputenv(kVariable, "none");
    }
}

} // namespace

int main(int argc, char *argv[])
{
    doWithoutOpenGL();
    const QApplication application(argc, argv);
    QApplication::setDesktopFileName(QStringLiteral(CORVANE_APPLICATION_ID));
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/images/logo.png")));
    MainWindow window;
    window.show();
    return QApplication::exec();
}
