// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

// Runs one stress test of the program and prints what it has counted. Ends with 0, with 1 when
// something happened that must not, with 2 for a command line that makes no sense.

#include "stresstests.h"

#include <QCommandLineParser>
#include <QCoreApplication>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <optional>

namespace {

constexpr int kFailedStatus = 1;
constexpr int kBadUsageStatus = 2;

struct StressTest {
    const char *name;
    const char *description;
    int usualCount;
    Tally (*run)(const StressOptions &);
};

constexpr std::array<StressTest, 7> kStressTests{{
    {"faults", "every kind of fault at every frame of an upload; COUNT cases, all when 0", 0,
     &faultTest},
    {"uploads", "COUNT sessions of 20 uploads each under random faults", 5, &uploadTest},
    {"endurance", "COUNT packets in one process", 2000, &enduranceTest},
    {"unplug", "COUNT sessions of pulling the plug 25 times at a random moment", 2, &unplugTest},
    {"close", "closing the window at a random moment, COUNT times", 10, &closeTest},
    {"monkey", "COUNT sessions of 100 random clicks each", 5, &monkeyTest},
    {"undetected", "COUNT errors of each class that the checksum is measured with", 100'000,
     &undetectedErrorsTest},
}};

QString testList()
{
    QString text = "Tests:\n";
    for (const StressTest &test : kStressTests) {
        text += QStringLiteral("  %1%2 (usually %3)\n")
                    .arg(QLatin1String(test.name), -12)
                    .arg(QLatin1String(test.description))
                    .arg(test.usualCount);
    }
    return text;
}

void describe(QCommandLineParser &parser)
{
    parser.setApplicationDescription("Tries the unmodified program with a simulated camera.\n\n"
                                     + testList().trimmed());
    parser.addHelpOption();
    parser.addPositionalArgument("TEST", "Which one to run.");
    parser.addOptions({
        {"count", "How many, see the test.", "COUNT"},
        {"seed", "The first session's (default: 1).", "N", "1"},
        {"every", "Only every Kth case (default: 1).", "K", "1"},
        {"jobs", "Sessions at the same time (default: 1).", "N", "1"},
        {"speed", "Times as fast as the clock (default: 1).", "N", "1"},
        {"plan", "For faults: this plan instead, see corvane-simulator --faults help.", "PLAN"},
        {"blind", "For uploads: faults that the protocol cannot always catch."},
    });
}

std::optional<int> number(const QCommandLineParser &parser, const QString &name, int minimum)
{
    bool isNumber = false;
    const int value = parser.value(name).toInt(&isNumber);
    if (!isNumber || value < minimum) {
        std::fprintf(stderr, "--%s is a number of at least %d\n", qPrintable(name), minimum);
        return std::nullopt;
    }
    return value;
}

std::optional<StressOptions> optionsFrom(const QCommandLineParser &parser, const StressTest &test)
{
    const QString countName = "count";
    const auto count = parser.isSet(countName) ? number(parser, countName, 0) : test.usualCount;
    const auto seed = number(parser, QStringLiteral("seed"), 0);
    const auto every = number(parser, QStringLiteral("every"), 1);
    const auto jobs = number(parser, QStringLiteral("jobs"), 1);
    const auto speed = number(parser, QStringLiteral("speed"), 1);
    if (!count || !seed || !every || !jobs || !speed) {
        return std::nullopt;
    }
    StressOptions options;
    options.count = *count;
    options.seed = static_cast<quint32>(*seed);
    options.every = *every;
    options.jobs = *jobs;
    options.speed = *speed;
    options.plan = parser.value("plan");
    options.isBlind = parser.isSet("blind");
    return options;
}

int run(const StressTest &test, const StressOptions &options)
{
    const Tally tally = test.run(options);
    std::printf("%s\n", qPrintable(tally.text()));
    return tally.hasFailed() ? kFailedStatus : EXIT_SUCCESS;
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName("corvane-stress");
    QCommandLineParser parser;
    describe(parser);
    parser.process(application);
    const QString name = parser.positionalArguments().value(0);
    for (const StressTest &test : kStressTests) {
        if (name == QLatin1String(test.name)) {
            const auto options = optionsFrom(parser, test);
            return options ? run(test, *options) : kBadUsageStatus;
        }
    }
    std::fprintf(stderr, "%s", qPrintable(testList()));
    return kBadUsageStatus;
}
