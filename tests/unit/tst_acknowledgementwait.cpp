// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "acknowledgementwait.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QtTest>

using namespace std::chrono_literals;

namespace {

class Sender : public QObject {
    Q_OBJECT

public:
    AcknowledgementWait wait{this, SIGNAL(acknowledged())};

    int connections() const { return receivers(SIGNAL(acknowledged())); }

signals:
    void acknowledged();
    void somethingElse();
};

} // namespace

class AcknowledgementWaitTest : public QObject {
    Q_OBJECT

private slots:
    void theSignalEndsItAsAcknowledged()
    {
        Sender sender;
        QCOMPARE(sender.connections(), 1);
        QTimer::singleShot(10ms, &sender, &Sender::acknowledged);
        QCOMPARE(sender.wait.waitFor(5000ms), AcknowledgementWait::Acknowledged);
    }

    void itsTimerEndsItAsTimedOut()
    {
        Sender sender;
        QCOMPARE(sender.wait.waitFor(20ms), AcknowledgementWait::TimedOut);
    }

    void anotherSignalDoesNotEndIt()
    {
        Sender sender;
        QTimer::singleShot(1ms, &sender, &Sender::somethingElse);
        QCOMPARE(sender.wait.waitFor(50ms), AcknowledgementWait::TimedOut);
    }

    // A coarse timer would be up to 5 % early for some of these.
    void neverEndsEarly()
    {
        Sender sender;
        for (auto limit = 61ms; limit < 140ms; limit += 3ms) {
            QElapsedTimer timer;
            timer.start();
            QCOMPARE(sender.wait.waitFor(limit), AcknowledgementWait::TimedOut);
            QVERIFY2(timer.nsecsElapsed() >= std::chrono::nanoseconds(limit - 1ms).count(),
                     qPrintable(QString::number(timer.nsecsElapsed())));
        }
    }

    void aSignalBeforeTheLoopDoesNotCount()
    {
        Sender sender;
        emit sender.acknowledged();
        QCOMPARE(sender.wait.waitFor(20ms), AcknowledgementWait::TimedOut);

        QTimer::singleShot(0, &sender, &Sender::acknowledged);
        QCOMPARE(sender.wait.waitFor(5000ms), AcknowledgementWait::Acknowledged);
        // The timer of the wait before is still active.
        emit sender.acknowledged();
        QCOMPARE(sender.wait.waitFor(20ms), AcknowledgementWait::TimedOut);
    }

    void canWaitSeveralTimes()
    {
        Sender sender;
        for (int i = 0; i < 3; ++i) {
            QTimer::singleShot(1ms, &sender, &Sender::acknowledged);
            QCOMPARE(sender.wait.waitFor(5000ms), AcknowledgementWait::Acknowledged);
            QCOMPARE(sender.wait.waitFor(10ms), AcknowledgementWait::TimedOut);
        }
    }

    void aSignalEndsAllNestedWaits()
    {
        Sender sender;
        auto innerOutcome = AcknowledgementWait::TimedOut;
        QTimer::singleShot(1ms, this, [&sender, &innerOutcome] {
            AcknowledgementWait inner(&sender, SIGNAL(acknowledged()));
            QTimer::singleShot(1ms, &sender, &Sender::acknowledged);
            innerOutcome = inner.waitFor(5000ms);
        });
        QCOMPARE(sender.wait.waitFor(5000ms), AcknowledgementWait::Acknowledged);
        QCOMPARE(innerOutcome, AcknowledgementWait::Acknowledged);
    }

    void anOuterWaitThatTimedOutMeanwhileIsNotSavedByALateSignal()
    {
        Sender sender;
        auto innerOutcome = AcknowledgementWait::TimedOut;
        QTimer::singleShot(1ms, this, [&sender, &innerOutcome] {
            AcknowledgementWait inner(&sender, SIGNAL(acknowledged()));
            QTimer::singleShot(200ms, &sender, &Sender::acknowledged);
            innerOutcome = inner.waitFor(5000ms);
        });
        QCOMPARE(sender.wait.waitFor(50ms), AcknowledgementWait::TimedOut);
        QCOMPARE(innerOutcome, AcknowledgementWait::Acknowledged);
    }

    // As when a message box that an inner wait showed keeps the outer one from returning.
    void aTimerThatRunsOutAfterAnAcknowledgementCountsAsTimedOut()
    {
        Sender sender;
        QTimer::singleShot(0, this, [&sender] {
            QEventLoop box;
            QTimer::singleShot(20ms, Qt::PreciseTimer, &sender, &Sender::acknowledged);
            // Due after the wait's own, which runs already; an acknowledgement does not restart
            // that.
            QTimer::singleShot(50ms, Qt::PreciseTimer, &box, &QEventLoop::quit);
            box.exec();
        });
        QCOMPARE(sender.wait.waitFor(50ms), AcknowledgementWait::TimedOut);
    }

    void theEndOfTheProgramIsNeither()
    {
        Sender sender;
        auto during = AcknowledgementWait::TimedOut;
        auto afterwards = AcknowledgementWait::TimedOut;
        QTimer::singleShot(0, this, [&sender, &during, &afterwards] {
            AcknowledgementWait wait(&sender, SIGNAL(acknowledged()));
            QTimer::singleShot(1ms, QCoreApplication::instance(), &QCoreApplication::quit);
            during = wait.waitFor(5000ms);
            afterwards = wait.waitFor(5000ms);
        });
        QElapsedTimer timer;
        timer.start();
        QCoreApplication::exec();
        QCOMPARE(during, AcknowledgementWait::ProgramEnding);
        QCOMPARE(afterwards, AcknowledgementWait::ProgramEnding);
        QVERIFY(timer.elapsed() < 5000);
    }

    void theEndOfTheProgramEndsEveryNestedWait()
    {
        Sender sender;
        auto outerOutcome = AcknowledgementWait::Acknowledged;
        auto innerOutcome = AcknowledgementWait::Acknowledged;
        QTimer::singleShot(0, this, [&] {
            AcknowledgementWait outer(&sender, SIGNAL(acknowledged()));
            QTimer::singleShot(1ms, this, [&] {
                AcknowledgementWait inner(&sender, SIGNAL(acknowledged()));
                // The outer wait has timed out by then, which must not be what is reported.
                QTimer::singleShot(100ms, QCoreApplication::instance(), &QCoreApplication::quit);
                innerOutcome = inner.waitFor(5000ms);
            });
            outerOutcome = outer.waitFor(20ms);
        });
        QCoreApplication::exec();
        QCOMPARE(innerOutcome, AcknowledgementWait::ProgramEnding);
        QCOMPARE(outerOutcome, AcknowledgementWait::ProgramEnding);
    }
};

QTEST_GUILESS_MAIN(AcknowledgementWaitTest)
#include "tst_acknowledgementwait.moc"
