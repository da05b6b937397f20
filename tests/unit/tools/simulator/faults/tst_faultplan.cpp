// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "faultplan.h"
#include "rows.h"

#include <algorithm>

const QStringList &kindNames()
{
    static const QStringList kNames{"drop",         "drop-byte",
                                    "insert-byte",  "corrupt",
                                    "flip",         "burst",
                                    "swap",         "truncate",
                                    "duplicate",    "delay",
                                    "late",         "split",
                                    "gap",          "join",
                                    "noise",        "ff-run",
                                    "half-frame",   "wrong-sum",
                                    "wrong-length", "wrong-command",
                                    "foreign-type", "wrong-parameter",
                                    "stale",        "trail",
                                    "silence",      "pause",
                                    "hang-up"};
    return kNames;
}

class FaultPlanTest : public QObject {
    Q_OBJECT

private slots:
    void readsAFault()
    {
        QString error;
        const auto plan = FaultPlan::parse("corrupt=2@reply:7.3", &error);
        QVERIFY2(plan, qPrintable(error));
        QVERIFY(!plan->isEmpty());
        QCOMPARE(plan->faults().size(), 1);
        const Fault &fault = plan->faults().at(0);
        QCOMPARE(fault.kind, Fault::Corrupt);
        QVERIFY(fault.value == 2);
        QCOMPARE(fault.direction, Fault::Reply);
        QCOMPARE(fault.place.form, Fault::Place::Once);
        QCOMPARE(fault.place.frame, 7);
        QVERIFY(fault.place.byte == 3);
    }

    void readsAPlace_data()
    {
        constexpr int kNoByte = -1;
        addRows<QString, int, int, int, int>(
            {"place", "form", "frame", "byte", "chance"},
            {{"a frame", "12", int(Fault::Place::Once), 12, kNoByte, 0},
             {"its first byte", "12.0", int(Fault::Place::Once), 12, 0, 0},
             {"the last byte of the longest frame", "1.140", int(Fault::Place::Once), 1, 140, 0},
             {"later ones too", "12+", int(Fault::Place::From), 12, kNoByte, 0},
             {"all", "all", int(Fault::Place::From), 1, kNoByte, 0},
             {"whole percentage", "25%", int(Fault::Place::Chance), 1, kNoByte, 250'000},
             {"decimals", "2.5%", int(Fault::Place::Chance), 1, kNoByte, 25'000},
             {"smallest probability", "0.0001%", int(Fault::Place::Chance), 1, kNoByte, 1},
             {"certain", "100%", int(Fault::Place::Chance), 1, kNoByte, 1'000'000}});
    }

    void readsAPlace()
    {
        QFETCH(QString, place);
        QString error;
        const auto plan = FaultPlan::parse("flip@request:" + place, &error);
        QVERIFY2(plan, qPrintable(error));
        const Fault &fault = plan->faults().at(0);
        QCOMPARE(fault.direction, Fault::Request);
        QVERIFY(!fault.value);
        QTEST(int(fault.place.form), "form");
        QTEST(fault.place.frame, "frame");
        QTEST(fault.place.byte.value_or(-1), "byte");
        QTEST(fault.place.chance, "chance");
    }

    void keepsTheOrderOfFaults()
    {
        QString error;
        const auto plan = FaultPlan::parse("stale@reply:3,drop@request:1,stale@reply:2", &error);
        QVERIFY2(plan, qPrintable(error));
        QCOMPARE(plan->faults().size(), 3);
        QCOMPARE(plan->faults().at(0).place.frame, 3);
        QCOMPARE(plan->faults().at(1).kind, Fault::Drop);
        QCOMPARE(plan->faults().at(2).place.frame, 2);
    }

    void noneIsAnEmptyPlan()
    {
        QString error;
        const auto plan = FaultPlan::parse("none", &error);
        QVERIFY2(plan, qPrintable(error));
        QVERIFY(plan->isEmpty());
        QCOMPARE(plan->toString(), QString("none"));
    }

    void writesANormalForm_data()
    {
        addRows<QString, QString>(
            {"plan", "normal"},
            {{"as it was", "late@reply:2,corrupt=2@request:1.0,noise=3@reply:4+",
              "late@reply:2,corrupt=2@request:1.0,noise=3@reply:4+"},
             {"hexadecimal value", "wrong-command=0x7f@reply:1", "wrong-command=127@reply:1"},
             {"leading zeros", "delay=010@reply:007", "delay=10@reply:7"},
             {"all frames from the first on", "drop@reply:1+", "drop@reply:all"},
             {"whole percentage", "drop@reply:30.0%", "drop@reply:30%"},
             {"decimals", "drop@reply:0.0500%", "drop@reply:0.05%"}});
    }

    void writesANormalForm()
    {
        QFETCH(QString, plan);
        QFETCH(QString, normal);
        QString error;
        const auto first = FaultPlan::parse(plan, &error);
        QVERIFY2(first, qPrintable(error));
        QCOMPARE(first->toString(), normal);
        const auto second = FaultPlan::parse(normal, &error);
        QVERIFY2(second, qPrintable(error));
        QCOMPARE(second->toString(), normal);
    }

    void limitsValues_data()
    {
        addRows<QString, int, int>({"kind", "minimum", "maximum"},
                                   {{"insert-byte", "insert-byte", 0, 255},
                                    {"corrupt", "corrupt", 1, 255},
                                    {"flip", "flip", 0, 7},
                                    {"burst", "burst", 1, 1024},
                                    {"duplicate", "duplicate", 0, 3'600'000},
                                    {"wrong-sum", "wrong-sum", 1, 255},
                                    {"wrong-length", "wrong-length", 0, 255},
                                    {"wrong-command", "wrong-command", 0, 255},
                                    {"foreign-type", "foreign-type", 0, 255}});
        for (const char *kind : {"delay", "late", "split", "gap", "join", "pause", "hang-up"}) {
            QTest::newRow(kind) << kind << 1 << 3'600'000;
        }
        for (const char *kind : {"noise", "ff-run", "trail"}) {
            QTest::newRow(kind) << kind << 1 << 1024;
        }
    }

    void limitsValues()
    {
        QFETCH(QString, kind);
        QFETCH(int, minimum);
        QFETCH(int, maximum);
        const auto isTaken = [&kind](int value) {
            QString error;
            return FaultPlan::parse(QString("%1=%2@reply:1").arg(kind).arg(value), &error)
                .has_value();
        };
        QVERIFY(isTaken(minimum));
        QVERIFY(isTaken(maximum));
        QVERIFY(!isTaken(minimum - 1));
        QVERIFY(!isTaken(maximum + 1));
    }

    void refusesABadPlan_data()
    {
        const QString form = "expected KIND[=VALUE]@DIRECTION:PLACE";
        addRows<QString, QString>(
            {"plan", "reason"},
            {{"empty", "", "fault '': " + form},
             {"comma at the end", "drop@reply:1,", "fault '': " + form},
             {"none among others", "none,drop@reply:1", "fault 'none': " + form},
             {"kind alone", "drop", "fault 'drop': " + form},
             {"no place", "drop@reply", "fault 'drop@reply': " + form},
             {"no kind", "@reply:1", "fault '@reply:1': " + form},
             {"two values", "delay=1=2@reply:1", "fault 'delay=1=2@reply:1': " + form},
             {"unknown kind", "drop@reply:1,dorp@reply:1",
              "fault 'dorp@reply:1': there is no kind 'dorp', see --faults help"},
             {"kind in capitals", "DROP@reply:1",
              "fault 'DROP@reply:1': there is no kind 'DROP', see --faults help"},
             {"value where there is none", "drop=1@reply:1",
              "fault 'drop=1@reply:1': drop takes no value"},
             {"empty value", "delay=@reply:1",
              "fault 'delay=@reply:1': the value (ms) is 1 to 3600000, not ''"},
             {"value is no number", "flip=x@reply:1",
              "fault 'flip=x@reply:1': the value (bit) is 0 to 7, not 'x'"},
             {"negative value", "flip=-1@reply:1",
              "fault 'flip=-1@reply:1': the value (bit) is 0 to 7, not '-1'"},
             {"value too large", "corrupt=0x100@reply:1",
              "fault 'corrupt=0x100@reply:1': the value (mask) is 1 to 255, not '0x100'"},
             {"value far too large", "delay=99999999999@reply:1",
              "fault 'delay=99999999999@reply:1': the value (ms) is 1 to 3600000, not "
              "'99999999999'"},
             {"wrong direction", "drop@replay:1",
              "fault 'drop@replay:1': the direction is request or reply, not 'replay'"}});
        for (const char *place :
             {"",    "0",        "-1",  "x",    "0x1", "1000000001", "99999999999", "0+",
              "+",   "1.",       "1.5", "1.5+", "%",   "0%",         "0.0%",        "100.1%",
              "-5%", "1.00001%", ".5%", "1e1%", "All", "1 "}) {
            QTest::addRow("place '%s'", place)
                << QString("drop@reply:%1").arg(place)
                << QString("fault 'drop@reply:%1': the place is a frame N from 1, N+, P% or all, "
                           "not '%1'")
                       .arg(place);
        }
        for (const char *place : {"1.141", "1.-1", "1.x", "1.0x1", "0.1", "1.2.3", "1.", "all.3"}) {
            QTest::addRow("byte '%s'", place)
                << QString("flip@reply:%1").arg(place)
                << QString(
                       "fault 'flip@reply:%1': the place is a frame N from 1, N.B with a byte B "
                       "from 0 to 140, N+, P% or all, not '%1'")
                       .arg(place);
        }
    }

    void refusesABadPlan()
    {
        QFETCH(QString, plan);
        QString error;
        QVERIFY(!FaultPlan::parse(plan, &error));
        QTEST(error, "reason");
    }

    void helpListsEveryKind_data()
    {
        QTest::addColumn<QString>("kind");
        for (const QString &kind : kindNames()) {
            QTest::newRow(qPrintable(kind)) << kind;
        }
    }

    void helpListsEveryKind()
    {
        QFETCH(QString, kind);
        const QStringList lines = FaultPlan::help().split('\n');
        const auto isRow = [&kind](const QString &line) {
            return line.startsWith("  " + kind + ' ');
        };
        const auto row = std::find_if(lines.begin(), lines.end(), isRow);
        QVERIFY(row != lines.end());
        QVERIFY2(row->endsWith('.'), qPrintable(*row));
        const auto isExample = [&kind](const QString &line) {
            const QString text = line.trimmed();
            return text.startsWith(kind + '@') || text.startsWith(kind + '=');
        };
        // After the row and what its value means.
        QVERIFY(std::find_if(row, lines.end(), isExample) - row <= 2);
    }

    void helpSaysEachDefault_data()
    {
        addRows<QString, QString>({"kind", "value"},
                                  {{"insert-byte", "insert-byte", "random"},
                                   {"corrupt", "corrupt", "random"},
                                   {"flip", "flip", "random"},
                                   {"burst", "burst", "3"},
                                   {"duplicate", "duplicate", "0"},
                                   {"delay", "delay", "500"},
                                   {"late", "late", "6000"},
                                   {"split", "split", "1"},
                                   {"gap", "gap", "50"},
                                   {"join", "join", "500"},
                                   {"noise", "noise", "8"},
                                   {"ff-run", "ff-run", "5"},
                                   {"wrong-sum", "wrong-sum", "1"},
                                   {"wrong-length", "wrong-length", "random"},
                                   {"wrong-command", "wrong-command", "126"},
                                   {"foreign-type", "foreign-type", "2"},
                                   {"trail", "trail", "8"},
                                   {"pause", "pause", "1000"},
                                   {"hang-up", "hang-up", "20"}});
    }

    void helpSaysEachDefault()
    {
        QFETCH(QString, kind);
        QFETCH(QString, value);
        const QString help = FaultPlan::help();
        const int row = help.indexOf("\n  " + kind + ' ');
        QVERIFY(row >= 0);
        const int fallback = help.indexOf("(default: ", row);
        QCOMPARE(help.mid(fallback, help.indexOf(')', fallback) + 1 - fallback),
                 "(default: " + value + ')');
    }

    void everyExampleInTheHelpIsAPlan()
    {
        int count = 0;
        const QStringList lines = FaultPlan::help().split('\n');
        for (const QString &line : lines) {
            const QString text = line.trimmed();
            if (text.contains('@') && !text.contains("KIND")) {
                QString error;
                QVERIFY2(FaultPlan::parse(text, &error), qPrintable(error));
                ++count;
            }
        }
        QCOMPARE(count, kindNames().size());
    }

    void readsASeed_data()
    {
        addRows<QString, qint64>({"text", "seed"},
                                 {{"lowest", "0", 0},
                                  {"highest", "4294967295", qint64(4'294'967'295)},
                                  {"too high", "4294967296", -1},
                                  {"negative", "-1", -1},
                                  {"empty", "", -1},
                                  {"no number", "x", -1}});
    }

    void readsASeed()
    {
        QFETCH(QString, text);
        const auto seed = faultSeedFrom(text);
        QTEST(seed ? qint64(*seed) : qint64(-1), "seed");
    }
};

QTEST_GUILESS_MAIN(FaultPlanTest)
#include "tst_faultplan.moc"
