// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "hangupdetector.h"
#include "pseudoterminal.h"

#include <QSocketNotifier>
#include <QtTest>

class HangUpDetectorTest : public QObject {
    Q_OBJECT

private slots:
    // Such a port reads nothing, so nothing but the detector can notice.
    void noticesWhatTheReadsOfAPortDoNot()
    {
        PseudoTerminal line;
        QSerialPort port(line.portName());
        QVERIFY(port.open(QIODevice::WriteOnly));
        new HangUpDetector(&port);
        line.hangUp();
        QTRY_COMPARE(port.error(), QSerialPort::ResourceError);
    }

    void leavesALineAloneThatHasNotHungUp()
    {
        PseudoTerminal line;
        QSerialPort port(line.portName());
        QVERIFY(port.open(QIODevice::ReadWrite));
        const auto *const detector = new HangUpDetector(&port);
        const QSignalSpy checks(detector->findChild<QSocketNotifier *>(),
                                &QSocketNotifier::activated);
        port.write("ab");
        QTRY_COMPARE(line.received(), QByteArray("ab"));
        line.send("cd");
        QTRY_COMPARE(port.bytesAvailable(), 2);
        QCOMPARE(checks.count(), 0);
        QCOMPARE(port.error(), QSerialPort::NoError);
    }

    // The closed descriptor may soon be another file's.
    void watchesNothingOnceThePortIsClosed()
    {
        PseudoTerminal line;
        QSerialPort port(line.portName());
        QVERIFY(port.open(QIODevice::ReadWrite));
        const QPointer<HangUpDetector> detector = new HangUpDetector(&port);
        const auto *const notifier = detector->findChild<QSocketNotifier *>();
        QVERIFY(notifier->isEnabled());
        port.close();
        QVERIFY(!notifier->isEnabled());
        QTRY_VERIFY(detector.isNull());
    }
};

QTEST_MAIN(HangUpDetectorTest)
#include "tst_hangupdetector.moc"
