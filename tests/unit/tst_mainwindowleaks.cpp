// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "mainwindow.h"

#include <QLabel>
#include <QtTest>

/// Runs without the suppression of the status label, which would hide everything that the window's
/// constructor allocates: under the leak sanitizer anything else that it does not free is reported
/// here.

class MainWindowLeaksTest : public QObject {
    Q_OBJECT

private slots:
    void leavesOnlyTheStatusLabel()
    {
        {
            MainWindow window;
            window.show();
            QVERIFY(QTest::qWaitForWindowExposed(&window));
        }
        const QWidgetList left = QApplication::topLevelWidgets();
        QCOMPARE(left.size(), 1);
        QVERIFY(qobject_cast<QLabel *>(left.first()) != nullptr);
        delete left.first();
    }
};

QTEST_MAIN(MainWindowLeaksTest)
#include "tst_mainwindowleaks.moc"
