// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "controlcommand.h"

#include "settingswords.h"

#include <QCommandLineOption>
#include <QCommandLineParser>

#include <array>

namespace {

using Kind = ControlCommand::Kind;
using Result = std::variant<ControlCommand, Information, UsageError>;

struct CommandWord {
    Kind kind;
    const char *word;
    const char *arguments; ///< without the options
    const char *purpose;
};

constexpr std::array<CommandWord, 8> kCommandWords{{
    {Kind::List, "list", "", "List the serial ports, and with --probe the cameras."},
    {Kind::Info, "info", "PORT...", "Print version and settings."},
    {Kind::Save, "save", "PORT FILE", "Write the settings to a file."},
    {Kind::Diff, "diff", "FILE PORT...", "Print which settings differ from a file's."},
    {Kind::Apply, "apply", "FILE PORT...", "Give each camera the settings of a file."},
    {Kind::Set, "set", "KEY=VALUE... PORT...", "Change some settings of each camera."},
    {Kind::Zoom, "zoom", "1|2 PORT...", "Set a zoom preset, and print its value."},
    {Kind::Upgrade, "upgrade", "IMAGE PORT...", "Upgrade the firmware of all at the same time."},
}};

QString option(const char *name)
{
    return QString::fromLatin1(name);
}

QString commandNames()
{
    QStringList names;
    for (const CommandWord &command : kCommandWords) {
        names += option(command.word);
    }
    return names.join(QStringLiteral(", "));
}

bool takesPorts(Kind kind)
{
    return kind != Kind::List && kind != Kind::Save;
}

bool changesCameras(Kind kind)
{
    return kind == Kind::Apply || kind == Kind::Set || kind == Kind::Zoom || kind == Kind::Upgrade;
}

void addOptions(QCommandLineParser &parser, Kind kind)
{
    parser.addOption({option("json"), QStringLiteral("Print JSON, one object a line.")});
    if (kind == Kind::List) {
        parser.addOption(
            {option("probe"), QStringLiteral("Ask on each port whether a camera answers.")});
    }
    if (takesPorts(kind)) {
        parser.addOption(
            {option("all"),
             QStringLiteral("Every port on which a camera answers, instead of PORT.")});
    }
    if (changesCameras(kind)) {
        parser.addOption(
            {option("dry-run"), QStringLiteral("Change nothing, and print what would be sent.")});
    }
    if (kind == Kind::Upgrade) {
        parser.addOptions({
            {option("attempts"),
             QStringLiteral("How often to start a failed upload again, 1 to 100 uploads in all "
                            "(default: 1)."),
             QStringLiteral("N")},
            {option("reboot-limit"),
             QStringLiteral("How long a camera may take to restart, 2 to 3600 seconds (default: "
                            "60)."),
             QStringLiteral("SECONDS")},
            {option("newer-only"),
             QStringLiteral("Skip cameras that run the image's version or a later one.")},
        });
    }
}

/// With every option of every command, so that the command is found wherever it is.
void addAllOptions(QCommandLineParser &parser)
{
    addOptions(parser, Kind::Upgrade);
    parser.addOption({option("probe"), QString()});
}

QString exitCodes()
{
    return QStringLiteral("\n"
                          "Exit codes:\n"
                          "  0  every camera is done or skipped\n"
                          "  1  a camera has failed, or for diff differs, or a file is not right\n"
                          "  2  the command line makes no sense\n"
                          "  3  no camera answers, with --all or --probe\n"
                          "  4  the output could not be written\n"
                          "After signal N it is 128 + N, such as 130 after Ctrl+C.\n");
}

QString settingsHelp()
{
    QString text = QStringLiteral("Settings:\n");
    const QStringList keys = SettingsWords::keys();
    for (const QString &key : keys) {
        const QStringList words = SettingsWords::wordsOf(key);
        // The presets in short.
        const QString shown = words.size() > 5
            ? QStringLiteral("%1, %2 to %3")
                  .arg(words.mid(0, 2).join(QStringLiteral(", ")), words.at(2), words.last())
            : words.join(QStringLiteral(", "));
        text += QStringLiteral("  %1 %2\n").arg(key, -15).arg(shown);
    }
    return text.trimmed();
}

QString generalDescription()
{
    QString text = QStringLiteral("Configures and upgrades cameras, many at once.\n\nCommands:\n");
    for (const CommandWord &command : kCommandWords) {
        text +=
            QStringLiteral("  %1 %2\n").arg(option(command.word), -8).arg(option(command.purpose));
    }
    return text
        + QStringLiteral("\n"
                         "Add --help to a command to see its options. A port is a name such as "
                         "ttyUSB0 or\n"
                         "a path. A file that is named - is the standard input or output.");
}

void describe(QCommandLineParser &parser, const CommandWord &command)
{
    addCommonOptions(parser);
    addOptions(parser, command.kind);
    QString description = option(command.purpose);
    if (command.kind == Kind::Set) {
        description += QStringLiteral(" The others stay.\n\n") + settingsHelp();
    }
    if (command.kind == Kind::Upgrade) {
        description += QStringLiteral(
            "\n\n"
            "Ctrl+C during an upload says what would happen, and a second one within three\n"
            "seconds abandons all of them.");
    }
    parser.setApplicationDescription(description);
    parser.addPositionalArgument(
        option(command.word), QString(),
        QStringLiteral("%1 %2").arg(option(command.word), option(command.arguments)).trimmed());
}

/// The option's value as a number, or @p fallback when it is absent.
int number(const QCommandLineParser &parser, const char *name, int minimum, int maximum,
           int fallback, QString *fault)
{
    if (!parser.isSet(option(name))) {
        return fallback;
    }
    bool isNumber = false;
    const int value = parser.value(option(name)).toInt(&isNumber);
    if (!isNumber || value < minimum || value > maximum) {
        *fault = QStringLiteral("--%1 is a number from %2 to %3, not '%4'")
                     .arg(option(name))
                     .arg(minimum)
                     .arg(maximum)
                     .arg(parser.value(option(name)));
    }
    return value;
}

/// Takes the words before the ports.
/// @return why they make no sense, or an empty text
QString takeWords(ControlCommand *command, QStringList *words)
{
    switch (command->kind) {
    case Kind::List:
    case Kind::Info:
        return {};
    case Kind::Save:
        if (words->size() != 2) {
            return QStringLiteral("save takes a port and a file");
        }
        command->file = words->takeLast();
        return {};
    case Kind::Diff:
    case Kind::Apply:
    case Kind::Upgrade:
        if (words->isEmpty()) {
            return QStringLiteral("%1 takes a file and ports").arg(command->word);
        }
        command->file = words->takeFirst();
        return {};
    case Kind::Zoom:
        if (words->isEmpty()
            || (words->first() != QLatin1String("1") && words->first() != QLatin1String("2"))) {
            return QStringLiteral("zoom takes 1 or 2, and ports");
        }
        command->preset = words->takeFirst() == QLatin1String("1") ? 0 : 1;
        return {};
    case Kind::Set:
        while (!words->isEmpty() && words->first().contains(QLatin1Char('='))) {
            const QString word = words->takeFirst();
            const QString key = word.section(QLatin1Char('='), 0, 0);
            const QString value = word.section(QLatin1Char('='), 1);
            QString fault;
            CameraSettings settings;
            if (!SettingsWords::set(&settings, key, value, &fault)) {
                return fault;
            }
            command->assignments += {key, value};
        }
        return command->assignments.isEmpty()
            ? QStringLiteral("set takes settings such as auto-zoom=off, and ports")
            : QString();
    }
    Q_UNREACHABLE();
}

Result parseCommand(const CommandWord &word, const QStringList &arguments)
{
    QCommandLineParser parser;
    describe(parser, word);
    if (const auto error = parseArguments(parser, arguments)) {
        return *error;
    }
    if (parser.isSet(option("help"))) {
        return Information{parser.helpText() + exitCodes()};
    }
    ControlCommand command;
    command.kind = word.kind;
    command.word = option(word.word);
    command.asJson = parser.isSet(option("json"));
    command.probe = word.kind == Kind::List && parser.isSet(option("probe"));
    command.toAll = takesPorts(word.kind) && parser.isSet(option("all"));
    command.dryRun = changesCameras(word.kind) && parser.isSet(option("dry-run"));
    QString fault;
    if (word.kind == Kind::Upgrade) {
        constexpr int kMostAttempts = 100;
        constexpr int kShortestReboot = 2;
        constexpr int kLongestReboot = 3600;
        constexpr int kUsualReboot = 60;
        command.attempts = number(parser, "attempts", 1, kMostAttempts, 1, &fault);
        command.rebootLimit = std::chrono::seconds(
            number(parser, "reboot-limit", kShortestReboot, kLongestReboot, kUsualReboot, &fault));
        command.newerOnly = parser.isSet(option("newer-only"));
    }
    QStringList words = parser.positionalArguments().mid(1);
    if (fault.isEmpty()) {
        fault = takeWords(&command, &words);
    }
    if (!fault.isEmpty()) {
        return UsageError{fault};
    }
    const bool takesFile = command.kind == Kind::Save || command.kind == Kind::Diff
        || command.kind == Kind::Apply || command.kind == Kind::Upgrade;
    if (takesFile && command.file.isEmpty()) {
        return UsageError{QStringLiteral("the name of a file is empty")};
    }
    command.ports = words;
    if (command.ports.contains(QString())) {
        return UsageError{QStringLiteral("the name of a port is empty")};
    }
    if (command.kind == Kind::List && !command.ports.isEmpty()) {
        return UsageError{QStringLiteral("list takes no port")};
    }
    if (takesPorts(command.kind) && command.ports.isEmpty() != command.toAll) {
        return UsageError{command.toAll ? QStringLiteral("--all and ports exclude each other")
                                        : QStringLiteral("a port is needed, or --all")};
    }
    return command;
}

} // namespace

Result parseControlCommandLine(const QStringList &arguments)
{
    QCommandLineParser finder;
    addCommonOptions(finder);
    addAllOptions(finder);
    if (const auto error = parseArguments(finder, arguments)) {
        return *error;
    }
    if (finder.isSet(option("version"))) {
        return versionInformation();
    }
    const QStringList words = finder.positionalArguments();
    if (words.isEmpty()) {
        if (!finder.isSet(option("help"))) {
            return UsageError{QStringLiteral("a command is needed: ") + commandNames()};
        }
        QCommandLineParser general;
        addCommonOptions(general);
        general.setApplicationDescription(generalDescription());
        general.addPositionalArgument(QStringLiteral("COMMAND"), commandNames(),
                                      QStringLiteral("COMMAND [PORT...]"));
        return Information{general.helpText() + exitCodes()};
    }
    for (const CommandWord &command : kCommandWords) {
        if (words.first() == QLatin1String(command.word)) {
            return parseCommand(command, arguments);
        }
    }
    return UsageError{
        QStringLiteral("'%1' is no command; they are %2").arg(words.first(), commandNames())};
}
