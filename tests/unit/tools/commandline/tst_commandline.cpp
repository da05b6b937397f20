// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "commandline.h"
#include "rows.h"
#include "terminationsignals.h"

#include <csignal>

class CommandLineTest : public QObject {
    Q_OBJECT

private slots:
    void namesTheProgramAndItsVersion()
    {
        setUpProgram("some-program");
        QCOMPARE(QCoreApplication::applicationName(), QString("some-program"));
        QCoreApplication::setApplicationVersion("1.2.3");
        QCOMPARE(versionInformation().text, QString("some-program 1.2.3\n"));
    }

    void letsEndingSignalsWait_data() { addEndingSignals(); }

    void letsEndingSignalsWait()
    {
        QFETCH(int, number);
        static volatile std::sig_atomic_t arrived = 0;
        arrived = 0;
        ::signal(number, [](int /*number*/) { arrived = 1; });
        {
            const TerminationDelay delay;
            ::raise(number);
            QCOMPARE(int(arrived), 0);
        }
        QCOMPARE(int(arrived), 1);
        ::signal(number, SIG_DFL);
    }

    void bringsEndingSignalsIntoTheEventLoop_data() { addEndingSignals(); }

    void bringsEndingSignalsIntoTheEventLoop()
    {
        QFETCH(int, number);
        ::signal(number, SIG_DFL);
        const TerminationSignals endings;
        QSignalSpy spy(&endings, &TerminationSignals::received);
        ::raise(number);
        QTRY_COMPARE(spy.size(), 1);
        QCOMPARE(spy.first().first().toInt(), number);
        QCOMPARE(spy.first().last().toBool(), false);
    }

    // As nohup does.
    void leavesIgnoredSignalsIgnored()
    {
        ::signal(SIGHUP, SIG_IGN);
        {
            const TerminationSignals endings;
            QSignalSpy spy(&endings, &TerminationSignals::received);
            ::raise(SIGHUP);
            ::raise(SIGTERM);
            QTRY_COMPARE(spy.size(), 1);
            QCOMPARE(spy.first().first().toInt(), SIGTERM);
        }
        QVERIFY(::signal(SIGHUP, SIG_DFL) == SIG_IGN);
    }

    void readsVersions_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QVector<int>>("numbers");

        QTest::newRow("smallest") << "0.0.0.0" << QVector<int>{0, 0, 0, 0};
        QTest::newRow("largest") << "255.255.255.255" << QVector<int>{255, 255, 255, 255};
        QTest::newRow("different") << "10.20.30.128" << QVector<int>{10, 20, 30, 128};
        QTest::newRow("leading zeros are decimal") << "010.001.0.08" << QVector<int>{10, 1, 0, 8};
    }

    void readsVersions()
    {
        QFETCH(QString, text);
        const auto version = versionFrom(text);
        QVERIFY(version.has_value());
        QTEST(QVector<int>(version->begin(), version->end()), "numbers");
    }

    void refusesOtherVersions_data()
    {
        QTest::addColumn<QString>("text");

        QTest::newRow("empty") << "";
        QTest::newRow("word") << "new";
        QTest::newRow("three numbers") << "1.2.3";
        QTest::newRow("five numbers") << "1.2.3.4.5";
        QTest::newRow("empty number") << "1..3.4";
        QTest::newRow("256") << "1.2.3.256";
        QTest::newRow("first number too large") << "999.2.3.4";
        QTest::newRow("overflow") << "1.2.3.4294967296";
        QTest::newRow("negative") << "1.2.3.-4";
        QTest::newRow("plus sign") << "1.2.3.+4";
        QTest::newRow("hexadecimal") << "1.2.a.4";
        QTest::newRow("blank in front") << " 1.2.3.4";
        QTest::newRow("line break at the end") << "1.2.3.4\n";
        QTest::newRow("commas") << "1,2,3,4";
        QTest::newRow("digits of another script") << QString::fromUtf8("1.2.3.\u0664");
    }

    void refusesOtherVersions()
    {
        QFETCH(QString, text);
        QVERIFY(!versionFrom(text));
    }

private:
    static void addEndingSignals()
    {
        addRows<int>({"number"}, {{"SIGINT", SIGINT}, {"SIGTERM", SIGTERM}, {"SIGHUP", SIGHUP}});
    }
};

QTEST_GUILESS_MAIN(CommandLineTest)

#include "tst_commandline.moc"
