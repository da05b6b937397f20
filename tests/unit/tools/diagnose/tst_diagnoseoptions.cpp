// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "diagnoseoptions.h"
#include "rows.h"

static std::variant<DiagnoseOptions, Information, UsageError> parse(const QStringList &arguments)
{
    return parseDiagnoseCommandLine(QStringList{"corvane-diagnose"} + arguments);
}

class DiagnoseOptionsTest : public QObject {
    Q_OBJECT

private slots:
    void readsWhatIsAskedFor_data()
    {
        addRows<QStringList, QString, int, bool>(
            {"arguments", "port", "milliseconds", "asJson"},
            {{"a port", {"ttyUSB0"}, "ttyUSB0", 6000, false},
             {"everything",
              {"--json", "--wait", "0.25", "/dev/ttyUSB0"},
              "/dev/ttyUSB0",
              250,
              true},
             {"options after the port",
              {"ttyUSB0", "--wait", "2", "--json"},
              "ttyUSB0",
              2000,
              true},
             {"the shortest wait", {"ttyUSB0", "--wait", "0.1"}, "ttyUSB0", 100, false},
             {"the longest wait", {"ttyUSB0", "--wait", "3600"}, "ttyUSB0", 3600000, false},
             {"the list", {"--list"}, "", 6000, false},
             {"the list for programs", {"--list", "--json"}, "", 6000, true}});
    }

    void readsWhatIsAskedFor()
    {
        QFETCH(QStringList, arguments);
        const auto commandLine = parse(arguments);
        const auto *options = std::get_if<DiagnoseOptions>(&commandLine);
        QVERIFY(options != nullptr);
        QTEST(options->port, "port");
        QTEST(static_cast<int>(options->wait.count()), "milliseconds");
        QTEST(options->asJson, "asJson");
    }

    void sayingTheDefaultWaitChangesNothing()
    {
        const auto help = parse({"--help"});
        static const QRegularExpression kDefault("--wait <SECONDS>[^-]*\\(default: ([^)]*)\\)");
        const QString text = std::get<Information>(help).text;
        const QString wait = kDefault.match(text).captured(1);
        const auto given = parse({"ttyUSB0", "--wait", wait});
        QVERIFY(std::get<DiagnoseOptions>(given).wait
                == std::get<DiagnoseOptions>(parse({"ttyUSB0"})).wait);
    }

    void readsWhichPorts_data()
    {
        using Task = DiagnoseOptions::Task;
        addRows<QStringList, int, QString>(
            {"arguments", "task", "report"},
            {{"one", {"ttyUSB0"}, int(Task::OnePort), {}},
             {"all", {"--all", "--report", "a.json"}, int(Task::AllPorts), "a.json"},
             {"the next", {"--watch", "--wait", "3"}, int(Task::NextPort), {}},
             {"the list", {"--list"}, int(Task::List), {}}});
    }

    void readsWhichPorts()
    {
        QFETCH(QStringList, arguments);
        const auto options = std::get<DiagnoseOptions>(parse(arguments));
        QTEST(int(options.task), "task");
        QTEST(options.reportPath, "report");
    }

    void refusesWhatMakesNoSense_data()
    {
        const QString noPort = "the name of a port is needed; --list shows them";
        addRows<QStringList, QString>(
            {"arguments", "reason"},
            {{"nothing", {}, noPort},
             {"an empty port", {""}, noPort},
             {"two ports", {"ttyUSB0", "ttyUSB1"}, "one port at a time"},
             {"a port to list", {"--list", "ttyUSB0"}, "--list takes no port"},
             {"a port among all", {"--all", "ttyUSB0"}, "--all takes no port"},
             {"a port to watch for", {"--watch", "ttyUSB0"}, "--watch takes no port"},
             {"two tasks", {"--watch", "--all"}, "--all and --watch exclude each other"},
             {"a wait for the list",
              {"--list", "--wait", "1"},
              "--list and --wait exclude each other"},
             {"a report of the list",
              {"--list", "--report", "x"},
              "--list and --report exclude each other"},
             {"an empty report path",
              {"--report=", "ttyUSB0"},
              "--report is the path of a file, such as ./-, not ''"},
             {"standard output as the report",
              {"--report", "-", "ttyUSB0"},
              "--report is the path of a file, such as ./-, not '-'"},
             {"an unknown option", {"--lists"}, "unknown option '--lists'"}});
        for (const char *wait : {"0.09", "3601", "-1", "nan", "inf", "soon", ""}) {
            QTest::addRow("a wait of '%s'", wait)
                << QStringList{"ttyUSB0", QString("--wait=%1").arg(wait)}
                << QString("--wait is a number from 0.1 to 3600, not '%1'").arg(wait);
        }
    }

    void refusesWhatMakesNoSense()
    {
        QFETCH(QStringList, arguments);
        const auto commandLine = parse(arguments);
        const auto *error = std::get_if<UsageError>(&commandLine);
        QVERIFY(error != nullptr);
        QTEST(error->reason, "reason");
    }

    void tellsEachVerdictWithItsExitCode()
    {
        const auto commandLine = parse({"--help"});
        const auto *information = std::get_if<Information>(&commandLine);
        QVERIFY(information != nullptr);
        QVERIFY2(
            information->text.endsWith(
                "\n"
                "Exit codes, and the verdicts that have them:\n"
                "  0  the camera answers\n"
                "       answer\n"
                "  1  it answers, with a warning\n"
                "       answer-short, answer-shared, answer-sum-ff, answer-among-others,\n"
                "       answer-amid-noise, answer-late\n"
                "  2  the command line makes no sense\n"
                "  3  the port cannot be used\n"
                "       no-device, not-serial, not-in-group, login-missing, not-permitted,\n"
                "       console, held, held-unseen, stale-lock, cannot-open, hung-up,\n"
                "       hung-up-by-program\n"
                "  4  nothing came back that Corvane could use\n"
                "       answer-too-late, shared, shared-unseen, silent, other-acknowledgements,\n"
                "       foreign-frames, echo, wrong-sums, broken-off, no-frame\n"
                "  5  the result or the report could not be written\n"
                "With --all, it is the lowest of all ports'.\n"),
            qPrintable(information->text));
    }
};

QTEST_GUILESS_MAIN(DiagnoseOptionsTest)
#include "tst_diagnoseoptions.moc"
