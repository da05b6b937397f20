// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "simulatoroptions.h"

#include <QCommandLineOption>
#include <QCommandLineParser>
#include <QCoreApplication>
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

    /// The option's value as numbers of 0 or more between separators; nothing when it is absent or
    /// wrong.
    template <std::size_t Count>
    std::optional<std::array<int, Count>> numbers(const QString &name, QChar separator, int maximum,
                                                  const QString &expected)
    {
        if (!m_parser.isSet(name)) {
            return std::nullopt;
        }
        std::array<int, Count> values{};
        const QStringList parts = m_parser.value(name).split(separator);
        bool fits = parts.size() == static_cast<int>(Count);
        for (std::size_t i = 0; fits && i < Count; ++i) {
            values[i] = parts.at(static_cast<int>(i)).toInt(&fits);
            fits = fits && values[i] >= 0 && values[i] <= maximum;
        }
        if (!fits) {
            complain(name, expected);
            return std::nullopt;
        }
        return values;
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

/// Why not both what the options say about the camera can be, or an empty text.
QString conflictOfSources(const QCommandLineParser &parser)
{
    const bool isReplay = parser.isSet(option("replay"));
    const bool isThrough = parser.isSet(option("through"));
    if (isReplay && isThrough) {
        return QStringLiteral("--replay and --through exclude each other");
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
        "With a PROGRAM, it hangs on a simulated USB serial adapter that only this program sees.\n"
        "With --pty, it hangs on a pseudo-terminal, whose name is the first line printed.\n"
        "Every frame that passes is printed. The camera's commands on the control socket, one a\n"
        "line: unplug, plug, silent on, silent off, faults PLAN [SEED], quit."));
    parser.addOptions({
        {{QStringLiteral("h"), QStringLiteral("help")}, QStringLiteral("Print this help.")},
        {{QStringLiteral("v"), QStringLiteral("version")}, QStringLiteral("Print the version.")},
        {QStringLiteral("pty"), QStringLiteral("Use a pseudo-terminal.")},
        {QStringLiteral("port"), QStringLiteral("The adapter's port (default: ttyUSB0)."),
         QStringLiteral("NAME")},
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
        "  with --pty   0 when ended by SIGINT, SIGTERM or quit\n"
        "  PROGRAM      the program's own; 128 + N when signal N killed it;\n"
        "               127 when it could not be started\n"
        "  otherwise    1 when the line, the control socket or a recording could not be made,\n"
        "               a recording could not be read or a real port not be opened,\n"
        "               2 for a command line that makes no sense\n");
}

} // namespace

std::variant<SimulatorOptions, Information, BadUsage> parseCommandLine(const QStringList &arguments)
{
    QCommandLineParser parser;
    describe(parser);
    if (!parser.parse(arguments)) {
        return BadUsage{parser.errorText()};
    }
    if (parser.isSet(option("help"))) {
        return Information{parser.helpText() + exitCodes()};
    }
    if (parser.isSet(option("version"))) {
        return Information{QStringLiteral("%1 %2\n").arg(QCoreApplication::applicationName(),
                                                         QCoreApplication::applicationVersion())};
    }

    if (parser.value(option("faults")) == QLatin1String("help")) {
        return Information{FaultPlan::help()};
    }
    const QString conflict = conflictOfSources(parser);
    if (!conflict.isEmpty()) {
        return BadUsage{conflict};
    }

    SimulatorOptions options;
    QStringList program = parser.positionalArguments();
    if (parser.isSet(option("pty")) != program.isEmpty()) {
        return BadUsage{program.isEmpty()
                            ? QStringLiteral("either --pty or a program is needed")
                            : QStringLiteral("--pty and a program exclude each other")};
    }
    if (!program.isEmpty()) {
        options.program = program.takeFirst();
        options.arguments = program;
    }

    OptionReader reader(parser);
    options.throughPort = parser.value(option("through"));
    if (parser.isSet(option("through"))) {
        if (options.throughPort.isEmpty()) {
            reader.complain(option("through"), QStringLiteral("a port"));
        }
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
    constexpr int kMaximumBaud = 4'000'000;
    options.behaviour.baud = reader.number(option("baud"), 0, kMaximumBaud, options.behaviour.baud);
    constexpr int kMaximumDelay = 3'600'000;
    options.behaviour.delay =
        std::chrono::milliseconds(reader.number(option("delay"), 0, kMaximumDelay, 0));
    const auto rebootTime = static_cast<int>(options.behaviour.rebootTime.count());
    options.behaviour.rebootTime = std::chrono::milliseconds(
        reader.number(option("reboot-time"), 0, kMaximumDelay, rebootTime));
    options.behaviour.silent = parser.isSet(option("silent"));

    constexpr int kMaximumByte = 255;
    const auto version = reader.numbers<4>(option("camera-version"), QLatin1Char('.'), kMaximumByte,
                                           QStringLiteral("four numbers from 0 to 255 with dots"));
    for (std::size_t i = 0; version && i < version->size(); ++i) {
        options.camera.version[i] = static_cast<unsigned char>((*version)[i]);
    }
    const auto values = reader.numbers<5>(option("settings"), QLatin1Char(','), kMaximumByte,
                                          QStringLiteral("five numbers with commas"));
    if (values) {
        QString fault;
        const auto settings = cameraSettingsFrom(*values, &fault);
        if (!settings) {
            return BadUsage{QStringLiteral("--settings: ") + fault};
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
            return BadUsage{QStringLiteral("--faults: ") + fault};
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

    options.controlPath = parser.value(option("control"));
    if (parser.isSet(option("control")) && options.controlPath.isEmpty()) {
        reader.complain(option("control"), QStringLiteral("a path"));
    }
    options.firmwarePath = parser.value(option("save-firmware"));
    if (parser.isSet(option("save-firmware")) && options.firmwarePath.isEmpty()) {
        reader.complain(option("save-firmware"), QStringLiteral("a path"));
    }
    options.recordingPath = parser.value(option("record"));
    if (parser.isSet(option("record")) && options.recordingPath.isEmpty()) {
        reader.complain(option("record"), QStringLiteral("a path"));
    }
    options.replayPath = parser.value(option("replay"));
    if (parser.isSet(option("replay")) && options.replayPath.isEmpty()) {
        reader.complain(option("replay"), QStringLiteral("a path"));
    }
    options.withHex = parser.isSet(option("hex"));
    options.quiet = parser.isSet(option("quiet"));
    if (!reader.fault().isEmpty()) {
        return BadUsage{reader.fault()};
    }
    return options;
}
