// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "simulatoroptions.h"

#include <QCommandLineOption>
#include <QCommandLineParser>
#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>
#include <array>
#include <limits>
#include <optional>

namespace {

/// Reads options one after the other and keeps the first reason to complain.
class OptionReader {
public:
    explicit OptionReader(const QCommandLineParser &parser)
        : m_parser(parser)
    {
    }

    const QString &fault() const { return m_fault; }

    /// The option's value, or @p fallback when it is absent or wrong.
    int number(const QString &name, int minimum, int maximum, int fallback)
    {
        if (!m_parser.isSet(name)) {
            return fallback;
        }
        bool isNumber = false;
        const int value = m_parser.value(name).toInt(&isNumber);
        if (!isNumber || value < minimum || value > maximum) {
            complain(name, QStringLiteral("a number from %1 to %2").arg(minimum).arg(maximum));
            return fallback;
        }
        return value;
    }

    /// The option's value, or nothing when it is absent or wrong.
    std::optional<std::array<int, 5>> settings(const QString &name)
    {
        if (!m_parser.isSet(name)) {
            return std::nullopt;
        }
        std::array<int, 5> values{};
        const QStringList parts = m_parser.value(name).split(QLatin1Char(','));
        bool fits = parts.size() == static_cast<int>(values.size());
        for (std::size_t i = 0; fits && i < values.size(); ++i) {
            constexpr int kMaximumByte = 255;
            values[i] = parts.at(static_cast<int>(i)).toInt(&fits);
            fits = fits && values[i] >= 0 && values[i] <= kMaximumByte;
        }
        if (!fits) {
            complain(name, QStringLiteral("five numbers with commas"));
            return std::nullopt;
        }
        return values;
    }

    /// The option's value, which is wrong when it is empty.
    QString text(const QString &name, const QString &expected)
    {
        if (m_parser.isSet(name) && m_parser.value(name).isEmpty()) {
            complain(name, expected);
        }
        return m_parser.value(name);
    }

    /// Likewise, of a file. Standard input and output are the program's.
    QString path(const QString &name)
    {
        if (m_parser.value(name) == QLatin1String("-")) {
            complain(name, QStringLiteral("the path of a file, such as ./-"));
        }
        return text(name, QStringLiteral("a path"));
    }

    void complain(const QString &name, const QString &expected)
    {
        if (m_fault.isEmpty()) {
            m_fault =
                QStringLiteral("--%1 is %2, not '%3'").arg(name, expected, m_parser.value(name));
        }
    }

private:
    const QCommandLineParser &m_parser;
    QString m_fault;
};

QString option(const char *name)
{
    return QString::fromLatin1(name);
}

/// What only the simulated camera heeds.
constexpr std::array<const char *, 9> kCameraOptions{"baud",   "camera-version", "settings",
                                                     "zoom-1", "zoom-2",         "silent",
                                                     "delay",  "reboot-time",    "save-firmware"};

/// The name of the first option among these that is set, or nothing.
template <std::size_t Count>
QString firstSet(const QCommandLineParser &parser, const std::array<const char *, Count> &names)
{
    const auto *const found = std::find_if(names.begin(), names.end(), [&parser](const char *name) {
        return parser.isSet(option(name));
    });
    return found == names.end() ? QString() : option(*found);
}

/// Why these options conflict; empty if they do not.
QString conflictOfSources(const QCommandLineParser &parser)
{
    const bool isReplay = parser.isSet(option("replay"));
    const bool isThrough = parser.isSet(option("through"));
    if (isReplay && isThrough) {
        return QStringLiteral("--replay and --through exclude each other");
    }
    if (parser.isSet(option("cameras"))
        && (isReplay || isThrough || parser.isSet(option("record")))) {
        return QStringLiteral("--cameras is for simulated cameras that are not recorded");
    }
    const QString unfit = firstSet(parser, kCameraOptions);
    if (unfit.isEmpty() || (!isReplay && !isThrough)) {
        return {};
    }
    return isReplay ? QStringLiteral("--replay and --%1 exclude each other: what the camera sent, "
                                     "and when, is in the recording")
                          .arg(unfit)
                    : QStringLiteral("--through and --%1 exclude each other: the real camera has "
                                     "its own way")
                          .arg(unfit);
}

void describe(QCommandLineParser &parser)
{
    parser.setApplicationDescription(QStringLiteral(
        "A simulated camera at the other end of a serial line.\n"
        "\n"
        "With a PROGRAM, it hangs on a simulated USB serial adapter that only this\n"
        "program sees. With --pty, it hangs on a pseudo-terminal, whose name is the\n"
        "first line printed. Every frame that passes is printed.\n"
        "\n"
        "The control socket takes these commands, one a line: unplug, plug, silent on,\n"
        "silent off, faults PLAN [SEED], help, quit.\n"
        "They are for the first camera; with a number in front, such as 2 unplug, for\n"
        "that one."));
    addCommonOptions(parser);
    parser.addOptions({
        {QStringLiteral("pty"), QStringLiteral("Use a pseudo-terminal.")},
        {QStringLiteral("port"), QStringLiteral("The adapter's port (default: ttyUSB0)."),
         QStringLiteral("NAME")},
        {QStringLiteral("cameras"),
         QStringLiteral("So many cameras, 1 to 256, each with a port of its own: ttyUSB0, ttyUSB1 "
                        "and so on, or a pseudo-terminal (default: 1)."),
         QStringLiteral("N")},
        {QStringLiteral("baud"),
         QStringLiteral("Speed of the line (default: 115200); 0 is as fast as possible."),
         QStringLiteral("RATE")},
        {QStringLiteral("camera-version"),
         QStringLiteral("What the camera reports, four numbers (default: 1.0.0.6)."),
         QStringLiteral("A.B.C.D")},
        {QStringLiteral("settings"),
         QStringLiteral("The camera's settings at the start (default: 1,1,0,1,1): auto tracking, "
                        "target missing, upside down, auto zoom, zoom offset, in the numbers that "
                        "a request has for them."),
         QStringLiteral("A,B,C,D,E")},
        {QStringLiteral("zoom-1"),
         QStringLiteral("The value that zoom preset 1 is set to (default: 100)."),
         QStringLiteral("VALUE")},
        {QStringLiteral("zoom-2"),
         QStringLiteral("The value that zoom preset 2 is set to (default: 25)."),
         QStringLiteral("VALUE")},
        {QStringLiteral("silent"), QStringLiteral("Never answer, as if switched off.")},
        {QStringLiteral("delay"), QStringLiteral("Wait before each reply, in milliseconds."),
         QStringLiteral("MS")},
        {QStringLiteral("reboot-time"),
         QStringLiteral("How long the camera is silent after it has received a firmware, in "
                        "milliseconds (default: 3000). Then it reports a higher version."),
         QStringLiteral("MS")},
        {QStringLiteral("save-firmware"),
         QStringLiteral("Write each firmware that the camera has received completely."),
         QStringLiteral("FILE")},
        {QStringLiteral("faults"),
         QStringLiteral("Put faults on the line; \"--faults help\" lists them."),
         QStringLiteral("PLAN")},
        {QStringLiteral("seed"),
         QStringLiteral("What the random numbers of the faults start from (default: 0)."),
         QStringLiteral("N")},
        {QStringLiteral("record"),
         QStringLiteral("Keep what passes on the line in a new file, with its time."),
         QStringLiteral("FILE")},
        {QStringLiteral("through"),
         QStringLiteral("Use the camera at a real serial port instead of a simulated one. The "
                        "adapter's port is then ttyTHROUGH0 by default."),
         QStringLiteral("PORT")},
        {QStringLiteral("replay"),
         QStringLiteral("Play the camera's side of a recording instead of a camera."),
         QStringLiteral("FILE")},
        {QStringLiteral("hex"), QStringLiteral("Print the bytes of every frame as well.")},
        {QStringLiteral("quiet"), QStringLiteral("Do not print what passes.")},
        {QStringLiteral("control"), QStringLiteral("Take commands on a local socket."),
         QStringLiteral("PATH")},
    });
    parser.addPositionalArgument(QStringLiteral("PROGRAM"),
                                 QStringLiteral("The program to run, and its arguments."),
                                 QStringLiteral("[--] [PROGRAM [ARGUMENT...]]"));
    // What follows the program is the program's, with and without the "--".
    parser.setOptionsAfterPositionalArgumentsMode(QCommandLineParser::ParseAsPositionalArguments);
}

QString exitCodes()
{
    return QStringLiteral(
        "\n"
        "Exit codes:\n"
        "  with --pty   0 when ended by SIGINT, SIGTERM, SIGHUP or quit\n"
        "  PROGRAM      the program's own; 128 + N when signal N killed it;\n"
        "               127 when it could not be started\n"
        "  otherwise    1 when the line, the control socket, a recording or the file of a\n"
        "               firmware could not be made, a recording could not be read, a real\n"
        "               port could not be opened or the help could not be written;\n"
        "               2 when the command line makes no sense\n");
}

} // namespace

QString controlHelp()
{
    return QStringLiteral("unplug                hang up and take the port away\n"
                          "plug                  bring it back\n"
                          "silent on             stop answering\n"
                          "silent off            answer again\n"
                          "faults PLAN [SEED]    put faults on the line; faults none: no more\n"
                          "N COMMAND             one of those above for camera N, not the first\n"
                          "help                  list the commands\n"
                          "quit                  end the simulator, or ask its program to end\n");
}

std::variant<SimulatorOptions, Information, UsageError>
parseCommandLine(const QStringList &arguments)
{
    QCommandLineParser parser;
    describe(parser);
    if (const auto error = parseArguments(parser, arguments)) {
        return *error;
    }
    if (parser.isSet(option("help"))) {
        return Information{parser.helpText() + exitCodes()};
    }
    if (parser.isSet(option("version"))) {
        return versionInformation();
    }

    if (parser.value(option("faults")) == QLatin1String("help")) {
        return Information{FaultPlan::help()};
    }
    if (parser.isSet(option("pty")) && parser.isSet(option("port"))) {
        return UsageError{QStringLiteral(
            "--pty and --port exclude each other: a pseudo-terminal has its own name")};
    }
    const QString conflict = conflictOfSources(parser);
    if (!conflict.isEmpty()) {
        return UsageError{conflict};
    }

    SimulatorOptions options;
    QStringList program = parser.positionalArguments();
    if (parser.isSet(option("pty")) != program.isEmpty()) {
        return UsageError{program.isEmpty()
                              ? QStringLiteral("either --pty or a program is needed")
                              : QStringLiteral("--pty and a program exclude each other")};
    }
    if (!program.isEmpty()) {
        if (program.first().isEmpty()) {
            return UsageError{QStringLiteral("the name of the program is empty")};
        }
        options.program = program.takeFirst();
        options.arguments = program;
    }

    OptionReader reader(parser);
    options.throughPort = reader.text(option("through"), QStringLiteral("a port"));
    if (parser.isSet(option("through"))) {
        options.portName = QStringLiteral("ttyTHROUGH0");
    }
    if (parser.isSet(option("port"))) {
        static const QRegularExpression kName(QStringLiteral("\\A[A-Za-z][A-Za-z0-9]*\\z"));
        options.portName = parser.value(option("port"));
        if (!kName.match(options.portName).hasMatch()) {
            reader.complain(option("port"), QStringLiteral("a name of letters and digits"));
        }
    }
    // The real port locks its name, and the program could not open one that is called the same.
    if (QFileInfo(options.throughPort).fileName() == options.portName) {
        reader.complain(option("port"), QStringLiteral("another name than that of --through"));
    }
    constexpr int kMaximumCameras = 256;
    options.cameras = reader.number(option("cameras"), 1, kMaximumCameras, 1);
    constexpr int kMaximumBaud = 4'000'000;
    options.behaviour.baud = reader.number(option("baud"), 0, kMaximumBaud, options.behaviour.baud);
    constexpr int kMaximumDelay = 3'600'000;
    options.behaviour.delay =
        std::chrono::milliseconds(reader.number(option("delay"), 0, kMaximumDelay, 0));
    const auto rebootTime = static_cast<int>(options.behaviour.rebootTime.count());
    options.behaviour.rebootTime = std::chrono::milliseconds(
        reader.number(option("reboot-time"), 0, kMaximumDelay, rebootTime));
    options.behaviour.silent = parser.isSet(option("silent"));

    if (parser.isSet(option("camera-version"))) {
        const auto version = versionFrom(parser.value(option("camera-version")));
        if (!version) {
            reader.complain(option("camera-version"),
                            QStringLiteral("four numbers from 0 to 255 with dots"));
        }
        options.camera.version = version.value_or(options.camera.version);
    }
    if (const auto values = reader.settings(option("settings"))) {
        QString fault;
        const auto settings = cameraSettingsFrom(*values, &fault);
        if (!settings) {
            return UsageError{QStringLiteral("--settings: ") + fault};
        }
        options.camera.settings = *settings;
    }
    using Zoom = std::numeric_limits<qint16>;
    for (std::size_t i = 0; i < options.camera.lensZoom.size(); ++i) {
        qint16 &zoom = options.camera.lensZoom[i];
        zoom = static_cast<qint16>(
            reader.number(QStringLiteral("zoom-%1").arg(i + 1), Zoom::min(), Zoom::max(), zoom));
    }

    if (parser.isSet(option("faults"))) {
        QString fault;
        const auto plan = FaultPlan::parse(parser.value(option("faults")), &fault);
        if (!plan) {
            return UsageError{QStringLiteral("--faults: ") + fault};
        }
        options.faults = *plan;
    }
    if (parser.isSet(option("seed"))) {
        const auto seed = faultSeedFrom(parser.value(option("seed")));
        if (!seed) {
            reader.complain(option("seed"), QStringLiteral("a number from 0 to 4294967295"));
        }
        options.seed = seed.value_or(0);
    }

    options.controlPath = reader.path(option("control"));
    options.firmwarePath = reader.path(option("save-firmware"));
    options.recordingPath = reader.path(option("record"));
    options.replayPath = reader.path(option("replay"));
    options.withHex = parser.isSet(option("hex"));
    options.quiet = parser.isSet(option("quiet"));
    if (!reader.fault().isEmpty()) {
        return UsageError{reader.fault()};
    }
    if (parser.isSet(option("seed")) && !parser.isSet(option("faults"))
        && !parser.isSet(option("control"))) {
        return UsageError{QStringLiteral("--seed needs --faults or --control")};
    }
    return options;
}
