// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "mainwindow.h"
#include "readablelook.h"

#include <QApplication>
#include <QIcon>

int main(int argc, char *argv[])
{
    // Keeps Qt from loading OpenGL: nothing here is drawn with it, and loading it takes much of the
    // time until the window shows.
    qputenv("QT_XCB_GL_INTEGRATION", "none");
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
    // Also for pictures of twice the size, which lie beside the others as NAME@2x.png. Qt 6 always
    // takes them.
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
#endif
    const QApplication application(argc, argv);
    QApplication::setDesktopFileName(QStringLiteral(CORVANE_APPLICATION_ID));
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/images/logo.png")));
    QApplication::setPalette(readablePalette());
    MainWindow window;
    window.show();
    return QApplication::exec();
}
