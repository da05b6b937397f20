// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "windowonline.h"

#include <QtTest>

// On its own because it takes 51 s of the program's time, which CTest lets pass faster.
class MainWindowRepeatZeroTest : public QObject {
    Q_OBJECT

private slots:
    void repeatingZeroTimesMeans256();
};

void MainWindowRepeatZeroTest::repeatingZeroTimesMeans256()
{
    WindowOnLine desk;
    QVERIFY(desk.connectCamera());
    QCOMPARE(
        desk.window.SendUARTCommand(UART_COMM_TYPE_REQUEST, UART_CTRL_CMD_HELLO, 0, nullptr, 0, 0),
        0);
    QTRY_COMPARE_WITH_TIMEOUT(desk.line.received().size(), 256 * 13, 100000);
    QCOMPARE(desk.line.received(), WindowOnLine::helloRequest().repeated(256));
}

QTEST_MAIN(MainWindowRepeatZeroTest)
#include "tst_mainwindowrepeatzero.moc"
