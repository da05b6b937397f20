// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "controlcommand.h"
#include "rows.h"

namespace {

std::variant<ControlCommand, Information, UsageError> parse(const QString &line)
{
    return parseControlCommandLine(("corvanectl " + line).split(' ', Qt::SkipEmptyParts));
}

/// All that the command line asks for.
QString summary(const ControlCommand &command)
{
    QStringList parts{command.word};
    const auto addIf = [&parts](bool isSet, const QString &text) {
        if (isSet) {
            parts += text;
        }
    };
    addIf(!command.file.isEmpty(), "file " + command.file);
    for (const auto &[key, word] : command.assignments) {
        parts += key + " to " + word;
    }
    addIf(command.kind == ControlCommand::Kind::Zoom, QString("preset %1").arg(command.preset));
    addIf(!command.ports.isEmpty(), "on " + command.ports.join('+'));
    addIf(command.toAll, "on all");
    addIf(command.asJson, "json");
    addIf(command.probe, "probe");
    addIf(command.dryRun, "dry");
    addIf(command.kind == ControlCommand::Kind::Upgrade,
          QString("attempts %1, limit %2").arg(command.attempts).arg(command.rebootLimit.count()));
    addIf(command.newerOnly, "newer");
    return parts.join(", ");
}

} // namespace

class ControlCommandTest : public QObject {
    Q_OBJECT

private slots:
    void readsCommands_data()
    {
        addRows<QString, QString>(
            {"line", "summary"},
            {{"list", "list", "list"},
             {"list with cameras", "list --probe --json", "list, json, probe"},
             {"info of some", "info ttyUSB0 /dev/ttyUSB1", "info, on ttyUSB0+/dev/ttyUSB1"},
             {"info of all", "info --all", "info, on all"},
             {"save", "save ttyUSB0 my.json", "save, file my.json, on ttyUSB0"},
             {"diff", "diff my.json ttyUSB0 ttyUSB1", "diff, file my.json, on ttyUSB0+ttyUSB1"},
             {"apply", "apply - --all --dry-run", "apply, file -, on all, dry"},
             {"set", "set auto-zoom=off direction=upside-down ttyUSB0",
              "set, auto-zoom to off, direction to upside-down, on ttyUSB0"},
             {"set with an odd port", "set auto-zoom=off /dev/a b=c",
              "set, auto-zoom to off, on /dev/a+b=c"},
             {"set of a dry run", "set auto-zoom=on p --dry-run",
              "set, auto-zoom to on, on p, dry"},
             {"zoom 1", "zoom 1 ttyUSB0", "zoom, preset 0, on ttyUSB0"},
             {"zoom 2", "zoom 2 ttyUSB0", "zoom, preset 1, on ttyUSB0"},
             {"zoom of a dry run", "zoom 1 p --dry-run", "zoom, preset 0, on p, dry"},
             {"upgrade", "upgrade a.img ttyUSB0",
              "upgrade, file a.img, on ttyUSB0, attempts 1, limit 60"},
             {"upgrade with everything",
              "upgrade --all a.img --attempts 3 --reboot-limit 120 --newer-only --dry-run --json",
              "upgrade, file a.img, on all, json, dry, attempts 3, limit 120, newer"},
             {"options first", "--json info ttyUSB0", "info, on ttyUSB0, json"},
             {"limits of the numbers", "upgrade a.img p --attempts 100 --reboot-limit 2",
              "upgrade, file a.img, on p, attempts 100, limit 2"},
             {"other limits", "upgrade a.img p --attempts 1 --reboot-limit 3600",
              "upgrade, file a.img, on p, attempts 1, limit 3600"}});
    }

    void readsCommands()
    {
        QFETCH(QString, line);
        const auto result = parse(line);
        const auto *const error = std::get_if<UsageError>(&result);
        QVERIFY2(error == nullptr, qPrintable(error == nullptr ? QString() : error->reason));
        QTEST(summary(std::get<ControlCommand>(result)), "summary");
    }

    void refusesNonsense_data()
    {
        addRows<QString, QString>(
            {"line", "reason"},
            {{"nothing", "",
              "a command is needed: list, info, save, diff, apply, set, zoom, upgrade"},
             {"another command", "reboot p",
              "'reboot' is no command; they are list, info, save, diff, apply, set, zoom, upgrade"},
             {"list with a port", "list p", "list takes no port"},
             {"no port", "info", "a port is needed, or --all"},
             {"a port and all", "info p --all", "--all and ports exclude each other"},
             {"save without a file", "save p", "save takes a port and a file"},
             {"save of two", "save p q file", "save takes a port and a file"},
             {"apply without anything", "apply --all", "apply takes a file and ports"},
             {"apply without a port", "apply file", "a port is needed, or --all"},
             {"set without settings", "set p",
              "set takes settings such as auto-zoom=off, and ports"},
             {"set without a port", "set auto-zoom=off", "a port is needed, or --all"},
             {"set to a wrong word", "set auto-zoom=no p", "auto-zoom is off or on, not 'no'"},
             {"set to a word and more", "set auto-zoom=on=off p",
              "auto-zoom is off or on, not 'on=off'"},
             {"zoom 3", "zoom 3 p", "zoom takes 1 or 2, and ports"},
             {"zoom alone", "zoom", "zoom takes 1 or 2, and ports"},
             {"an option of another command", "info p --attempts 2", "unknown option '--attempts'"},
             {"a dry run of what changes nothing", "info p --dry-run",
              "unknown option '--dry-run'"},
             {"all of one", "save --all file", "unknown option '--all'"},
             {"an option of no command", "info p --fast", "unknown option '--fast'"},
             {"a short option", "info p -x", "unknown option '-x'"},
             {"no attempt", "upgrade i p --attempts 0",
              "--attempts is a number from 1 to 100, not '0'"},
             {"too many attempts", "upgrade i p --attempts 101",
              "--attempts is a number from 1 to 100, not '101'"},
             {"attempts in words", "upgrade i p --attempts two",
              "--attempts is a number from 1 to 100, not 'two'"},
             {"a limit too short", "upgrade i p --reboot-limit 1",
              "--reboot-limit is a number from 2 to 3600, not '1'"},
             {"two wrong numbers", "upgrade i p --attempts 0 --reboot-limit 1",
              "--reboot-limit is a number from 2 to 3600, not '1'"},
             {"a limit too long", "upgrade i p --reboot-limit 3601",
              "--reboot-limit is a number from 2 to 3600, not '3601'"}});
    }

    void refusesNonsense()
    {
        QFETCH(QString, line);
        const auto result = parse(line);
        const auto *const error = std::get_if<UsageError>(&result);
        QVERIFY(error != nullptr);
        QTEST(error->reason, "reason");
    }

    void refusesEmptyNames_data()
    {
        addRows<QStringList, QString>({"arguments", "thing"},
                                      {{"port", {"info", ""}, "port"},
                                       {"file to write", {"save", "p", ""}, "file"},
                                       {"file to compare with", {"diff", "", "p"}, "file"},
                                       {"file to read", {"apply", "", "p"}, "file"},
                                       {"image", {"upgrade", "", "p"}, "file"}});
    }

    void refusesEmptyNames()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, thing);
        const auto result = parseControlCommandLine(QStringList{"corvanectl"} + arguments);
        QCOMPARE(std::get<UsageError>(result).reason, "the name of a " + thing + " is empty");
    }

    void sayingADefaultChangesNothing_data()
    {
        addRows<QString>({"option"}, {{"attempts", "--attempts"}, {"limit", "--reboot-limit"}});
    }

    void sayingADefaultChangesNothing()
    {
        QFETCH(QString, option);
        const QString help = std::get<Information>(parse("upgrade --help")).text.simplified();
        const auto match =
            QRegularExpression(option + R"( <\w+> [^-]*\(default: (\d+)\))").match(help);
        QVERIFY2(match.hasMatch(), qPrintable(help));
        const QString line = "upgrade a.img p";
        QCOMPARE(
            summary(std::get<ControlCommand>(parse(line + ' ' + option + ' ' + match.captured(1)))),
            summary(std::get<ControlCommand>(parse(line))));
    }

    void helps_data()
    {
        // From the command on, as far as it is not the same as another's.
        addRows<QString, QString>({"line", "help"},
                                  {{"in general", "--help", R"(COMMAND [PORT...]
Configures and upgrades cameras, many at once.

Commands:
  list     List the serial ports, and with --probe the cameras.
  info     Print version and settings.
  save     Write the settings to a file.
  diff     Print which settings differ from a file's.
  apply    Give each camera the settings of a file.
  set      Change some settings of each camera.
  zoom     Set a zoom preset, and print its value.
  upgrade  Upgrade the firmware of all at the same time.

Add --help to a command to see its options. A port is a name such as ttyUSB0 or
a path. A file that is named - is the standard input or output.

Options:
  -h, --help     Print this help.
  -v, --version  Print the version.

Arguments:
  COMMAND        list, info, save, diff, apply, set, zoom, upgrade

Exit codes:
  0  every camera is done or skipped
  1  a camera has failed, or for diff differs, or a file is not right
  2  the command line makes no sense
  3  no camera answers, with --all or --probe
  4  the output could not be written
After signal N it is 128 + N, such as 130 after Ctrl+C.
)"},
                                   {"list", "list --help", R"(list
List the serial ports, and with --probe the cameras.

Options:
  -h, --help     Print this help.
  -v, --version  Print the version.
  --json         Print JSON, one object a line.
  --probe        Ask on each port whether a camera answers.

Arguments:
  list)"},
                                   {"info", "info -h", "info PORT...\nPrint"},
                                   {"save", "save --help", "save PORT FILE\nWrite"},
                                   {"diff", "diff --help", "diff FILE PORT...\nPrint"},
                                   {"apply", "apply --help", "apply FILE PORT...\nGive"},
                                   {"set", "set --help", R"(set KEY=VALUE... PORT...
Change some settings of each camera. The others stay.

Settings:
  auto-tracking   off, auto, pan, tilt
  target-missing  off, home, preset-0 to preset-7
  direction       upright, upside-down
  auto-zoom       off, on
  zoom-offset     0, 1, 2, custom

Options:
)"},
                                   {"zoom", "zoom --help", "zoom 1|2 PORT...\nSet"},
                                   {"upgrade", "upgrade --help", R"(upgrade IMAGE PORT...
Upgrade the firmware of all at the same time.

Ctrl+C during an upload says what would happen, and a second one within three
seconds abandons all of them.

Options:
  -h, --help                Print this help.
  -v, --version             Print the version.
  --json                    Print JSON, one object a line.
  --all                     Every port on which a camera answers, instead of
                            PORT.
  --dry-run                 Change nothing, and print what would be sent.
  --attempts <N>            How often to start a failed upload again, 1 to 100
                            uploads in all (default: 1).
  --reboot-limit <SECONDS>  How long a camera may take to restart, 2 to 3600
                            seconds (default: 60).
  --newer-only              Skip cameras that run the image's version or a
                            later one.

Arguments:
  upgrade)"}});
    }

    void helps()
    {
        QFETCH(QString, line);
        QFETCH(QString, help);
        const auto result = parse(line);
        const auto *const information = std::get_if<Information>(&result);
        QVERIFY(information != nullptr);
        const QString text = information->text.section("[options] ", 1);
        QCOMPARE(text.left(help.size()), help);
        QVERIFY(text.endsWith("130 after Ctrl+C.\n"));
    }

    void saysItsVersion()
    {
        QCoreApplication::setApplicationName("corvanectl");
        for (const char *const line : {"--version", "info -v"}) {
            const auto result = parse(line);
            QVERIFY(std::get<Information>(result).text.startsWith("corvanectl "));
        }
    }
};

QTEST_GUILESS_MAIN(ControlCommandTest)

#include "tst_controlcommand.moc"
