// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

// The least that a Qt Widgets program can be, to compare starts and memory with: an empty window of
// Corvane's size.

#include <QApplication>
#include <QMainWindow>

int main(int argc, char *argv[])
{
    const QApplication application(argc, argv);
    QMainWindow window;
    window.resize(1000, 700);
    window.show();
    return QApplication::exec();
}
