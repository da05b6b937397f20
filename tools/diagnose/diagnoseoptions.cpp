// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "diagnoseoptions.h"

#include "diagnosis.h"
#include "fileio.h"

#include <QCommandLineOption>
#include <QCommandLineParser>

#include <cmath>
#include <initializer_list>
#include <optional>

namespace {

void describe(QCommandLineParser &parser)
{
    parser.setApplicationDescription(QStringLiteral(
        "Finds out what is wrong between this computer and a camera.\n"
        "\n"
        "Opens the port as Corvane does, asks the camera once for its version and\n"
        "settings, and says what came of it and what to do. It changes nothing in the\n"
        "camera. Close Corvane first: only one program at a time can use a port."));
    addCommonOptions(parser);
    parser.addOptions({
        {QStringLiteral("list"), QStringLiteral("List the ports that there are.")},
        {QStringLiteral("all"), QStringLiteral("Judge every port, one after the other.")},
        {QStringLiteral("watch"), QStringLiteral("Wait for an adapter, and judge its port.")},
        {QStringLiteral("json"), QStringLiteral("Print the result as one JSON object.")},
        {QStringLiteral("wait"),
         QStringLiteral("How long to wait for the answer, 0.1 to 3600 seconds (default: 6). "
                        "Corvane waits for 5."),
         QStringLiteral("SECONDS")},
        {QStringLiteral("report"),
         QStringLiteral("Also write a file for support, which says what is in it."),
         QStringLiteral("FILE")},
    });
    parser.addPositionalArgument(QStringLiteral("PORT"),
                                 QStringLiteral("The port, such as ttyUSB0 or /dev/ttyUSB0."),
                                 QStringLiteral("PORT"));
}

/// Lines with the verdicts of one exit code.
QString verdictLines(DiagnosisStatus status)
{
    constexpr int kWidth = 72;
    QString lines;
    QString line;
    const QStringList ids = verdictsOf(status);
    for (const QString &id : ids) {
        if (!line.isEmpty() && line.size() + 2 + id.size() > kWidth) {
            lines += QStringLiteral("       %1,\n").arg(line);
            line.clear();
        }
        line += (line.isEmpty() ? QString() : QStringLiteral(", ")) + id;
    }
    return lines + QStringLiteral("       %1\n").arg(line);
}

QString exitCodes()
{
    return QStringLiteral("\n"
                          "Exit codes, and the verdicts that have them:\n"
                          "  0  the camera answers\n")
        + verdictLines(DiagnosisStatus::Answer)
        + QStringLiteral("  1  it answers, with a warning\n")
        + verdictLines(DiagnosisStatus::Warning)
        + QStringLiteral("  2  the command line makes no sense\n"
                         "  3  the port cannot be used\n")
        + verdictLines(DiagnosisStatus::BadPort)
        + QStringLiteral("  4  nothing came back that Corvane could use\n")
        + verdictLines(DiagnosisStatus::NoAnswer)
        + QStringLiteral("  5  the result or the report could not be written\n"
                         "With --all, it is the lowest of all ports'.\n");
}

/// Nothing when the text is no such time.
std::optional<std::chrono::milliseconds> waitFrom(const QString &text)
{
    constexpr double kShortest = 0.1;
    constexpr double kLongest = 3600.0;
    bool isNumber = false;
    const double seconds = text.toDouble(&isNumber);
    // Also keeps "nan" out, which is neither more nor less than anything.
    if (!isNumber || !(seconds >= kShortest && seconds <= kLongest)) {
        return std::nullopt;
    }
    return std::chrono::milliseconds(std::lround(seconds * 1000.0));
}

/// Those of the options that are set.
QStringList setOptions(const QCommandLineParser &parser, std::initializer_list<const char *> names)
{
    QStringList found;
    for (const char *const name : names) {
        if (parser.isSet(QString::fromLatin1(name))) {
            found += QString::fromLatin1(name);
        }
    }
    return found;
}

DiagnoseOptions::Task taskOf(const QString &option)
{
    if (option == QLatin1String("list")) {
        return DiagnoseOptions::Task::List;
    }
    return option == QLatin1String("all") ? DiagnoseOptions::Task::AllPorts
                                          : DiagnoseOptions::Task::NextPort;
}

} // namespace

std::variant<DiagnoseOptions, Information, UsageError>
parseDiagnoseCommandLine(const QStringList &arguments)
{
    QCommandLineParser parser;
    describe(parser);
    if (const auto error = parseArguments(parser, arguments)) {
        return *error;
    }
    if (parser.isSet(QStringLiteral("help"))) {
        return Information{parser.helpText() + exitCodes()};
    }
    if (parser.isSet(QStringLiteral("version"))) {
        return versionInformation();
    }

    DiagnoseOptions options;
    options.asJson = parser.isSet(QStringLiteral("json"));
    if (parser.isSet(QStringLiteral("wait"))) {
        const QString text = parser.value(QStringLiteral("wait"));
        const auto wait = waitFrom(text);
        if (!wait) {
            return UsageError{
                QStringLiteral("--wait is a number from 0.1 to 3600, not '%1'").arg(text)};
        }
        options.wait = *wait;
    }
    if (parser.isSet(QStringLiteral("report"))) {
        options.reportPath = parser.value(QStringLiteral("report"));
        if (options.reportPath.isEmpty() || options.reportPath == kStandardStreamName) {
            return UsageError{
                QStringLiteral("--report is the path of a file, such as ./-, not '%1'")
                    .arg(options.reportPath)};
        }
    }
    const QStringList ports = parser.positionalArguments();
    const QStringList tasks = setOptions(parser, {"list", "all", "watch"});
    if (tasks.size() > 1) {
        return UsageError{
            QStringLiteral("--%1 and --%2 exclude each other").arg(tasks.first(), tasks.at(1))};
    }
    if (!tasks.isEmpty()) {
        if (!ports.isEmpty()) {
            return UsageError{QStringLiteral("--%1 takes no port").arg(tasks.first())};
        }
        options.task = taskOf(tasks.first());
        const QStringList ignored = setOptions(parser, {"wait", "report"});
        if (options.task == DiagnoseOptions::Task::List && !ignored.isEmpty()) {
            return UsageError{
                QStringLiteral("--list and --%1 exclude each other").arg(ignored.first())};
        }
        return options;
    }
    if (ports.isEmpty() || ports.first().isEmpty()) {
        return UsageError{QStringLiteral("the name of a port is needed; --list shows them")};
    }
    if (ports.size() > 1) {
        return UsageError{QStringLiteral("one port at a time")};
    }
    options.port = ports.first();
    return options;
}
