// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "mainwindow.h"

#include <QApplication>
#include <QIcon>

#ifdef __GLIBC__
#include <malloc.h>
#endif

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

/// Has what a large image takes given back to the system when it is done. Otherwise glibc takes
/// such sizes for usual as soon as one was freed, and keeps up to twice as much for the next one.
void giveLargeBlocksBack()
{
#ifdef __GLIBC__
    constexpr int kLargeBlock = 128 * 1024; // bytes; glibc's own beginning, which now stays
    mallopt(M_MMAP_THRESHOLD, kLargeBlock);
#endif
}

} // namespace

int main(int argc, char *argv[])
{
    doWithoutOpenGL();
    giveLargeBlocksBack();
    const QApplication application(argc, argv);
    QApplication::setDesktopFileName(QStringLiteral(CORVANE_APPLICATION_ID));
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/images/logo.png")));
    MainWindow window;
    window.show();
    return QApplication::exec();
}
