// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "patience.h"

#include <QtTest>

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

#include <sys/stat.h>

namespace {

/// A command for a shell that one of the companions can only refuse.
struct OddInput {
    QString command;
    int exitCode;
    QString message; ///< a part of what it prints
};

/// What came of it.
struct Outcome {
    int exitCode = -1; ///< -1 when it crashed or did not end
    QString output;
    QString errors;
    QStringList lost; ///< names of the files that are not as they were, or were not there
};

using Inputs = QVector<OddInput>;
using NamesAndMessages = QVector<std::pair<QString, QString>>;

void put(const QString &path, const QByteArray &contents)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(contents) != contents.size()) {
        qFatal("cannot make %s", qPrintable(path));
    }
}

// What every input finds in its folder.
void prepare(const QString &folder)
{
    const QByteArray image = QByteArray("KVEL\x01\x02\x00\x07\x01\x00\x00\x06", 12)
        + QByteArray(116, '\0') + "0123456789abcdef0123456789ABCDEFQUJD";
    put(folder + "/good.img", image);
    put(folder + "/empty.img", image.left(128));
    put(folder + "/short.img", image.left(100));
    put(folder + "/old", "precious");
    put(folder + "/nothing", {});
    put(folder + "/recording", "# Corvane line recording 1\n0 plugged\n");
    if (!QDir(folder).mkdir("folder") || !QFile::link("loop", folder + "/loop")
        || !QFile::link("nowhere", folder + "/link")
        || ::mkfifo(QFile::encodeName(folder + "/pipe").constData(), 0600) != 0) {
        qFatal("cannot prepare %s", qPrintable(folder));
    }
}

// Longer than any file system takes.
QString longName()
{
    return {300, QLatin1Char('x')};
}

QStringList names(const QString &folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::System | QDir::Hidden
                                  | QDir::NoDotAndDotDot);
}

/// Each regular file's contents by its name; of everything else, only that it is there.
QMap<QString, QByteArray> contentsOf(const QString &folder)
{
    QMap<QString, QByteArray> contents;
    const QStringList entries = names(folder);
    for (const QString &name : entries) {
        QFile file(folder + '/' + name);
        const bool isRead = QFileInfo(file).isFile() && file.open(QIODevice::ReadOnly);
        contents[name] = isRead ? file.readAll() : QByteArray("something else");
    }
    return contents;
}

QString program(const OddInput &input)
{
    static const QRegularExpression kProgram("corvane(-[a-z]+|ctl)");
    return kProgram.match(input.command).captured();
}

// Names of files that cannot be read, and why.
NamesAndMessages unreadable()
{
    return {{"missing", "missing: No such file or directory"},
            {"missing/file", "missing/file: No such file or directory"},
            {"good.img/file", "good.img/file: Not a directory"},
            {"folder", "folder: is a folder, not a file"},
            {"folder/.", "folder/.: is a folder, not a file"},
            {"/", "/: is a folder, not a file"},
            {"pipe", "pipe: is a pipe, not a file"},
            {"/dev/zero", "/dev/zero: is a device, not a file"},
            {"/dev/full", "/dev/full: is a device, not a file"},
            {"/dev/null", "/dev/null: is a device, not a file"},
            {"/proc/self/mem", "/proc/self/mem: Input/output error"},
            {"link", "link: No such file or directory"},
            {"loop", "loop: Too many levels of symbolic links"},
            {longName(), longName() + ": File name too long"},
            {"\"$(printf '\\033[2J')\"", R"(\x1b[2J: No such file or directory)"},
            {"\"$(printf 'a\\nb')\"", R"(a\nb: No such file or directory)"}};
}

// Likewise, that cannot be written.
NamesAndMessages unwritable()
{
    return {{"missing/new", "missing/new: No such file or directory"},
            {"good.img/new", "good.img/new: Not a directory"},
            {"folder", "folder: is a folder, not a file"},
            {".", ".: is a folder, not a file"},
            {"pipe", "pipe: is a pipe, not a file"},
            {"/dev/full", "/dev/full: is a device, not a file"},
            {"/dev/null", "/dev/null: is a device, not a file"},
            {longName(), longName() + ": File name too long"},
            {"/proc/new", "/proc/new: No such file or directory"}};
}

// Names that are refused before anything is looked for.
NamesAndMessages impossible()
{
    return {
        {"\"$(printf 'a\\377b')\"", "' is not in the character encoding of this locale"},
        {"\"$(printf '\\303(')\"", "' is not in the character encoding of this locale"},
        {"\"$(printf '\\355\\240\\200')\"", "' is not in the character encoding of this locale"}};
}

const char *const kPack = "corvane-image pack --protocol-version 1.2.3.4 --image-version 1.2.3.4 ";

void addFiles(Inputs *inputs)
{
    const NamesAndMessages unreadableNames = unreadable();
    for (const auto &[name, message] : unreadableNames) {
        *inputs +=
            Inputs{{"corvanectl upgrade " + name + " missing", 1, message},
                   {"corvanectl apply " + name + " missing", 1, message},
                   {"corvane-image verify " + name, 3, message},
                   {"corvane-image info " + name, 3, message},
                   {"corvane-image unpack " + name + " old", 3, message},
                   {kPack + name + " old", 3, message},
                   {"corvane-simulator --pty --replay " + name, 1, "cannot replay " + message}};
    }
    const NamesAndMessages unwritableNames = unwritable();
    for (const auto &[name, message] : unwritableNames) {
        *inputs += Inputs{{"corvanectl save missing " + name, 1, message},
                          {"corvane-image unpack good.img " + name, 3, message},
                          {kPack + ("old " + name), 3, message},
                          {"corvane-simulator --pty --save-firmware " + name, 1,
                           "cannot save the firmware as " + message},
                          {"corvane-diagnose --report " + name + " ./missing", 5, message}};
    }
    const NamesAndMessages impossibleNames = impossible();
    for (const auto &[name, message] : impossibleNames) {
        for (const char *const command :
             {"corvanectl info ", "corvanectl --json save tty ", "corvanectl upgrade ",
              "corvane-image verify ", "corvane-image unpack good.img ", kPack, "corvane-diagnose ",
              "corvane-diagnose --json --report ", "corvane-simulator --pty --replay ",
              "corvane-simulator --pty --record ", "corvane-simulator --pty --control ",
              "corvane-simulator --pty --save-firmware ", "corvane-simulator --pty --through ",
              "corvane-simulator -- "}) {
            *inputs += Inputs{{command + name, 2, message}};
        }
    }
    const QString cannotRecord = "cannot record in ";
    const QString noSocket = "cannot make the control socket ";
    *inputs += Inputs{
        {"corvane-image verify ''", 2, "the name of a file is empty"},
        {"corvane-image unpack good.img ''", 2, "the name of a file is empty"},
        {"corvane-image unpack good.img good.img", 2, "are the same file"},
        {"corvane-image unpack good.img ./good.img", 2, "are the same file"},
        {"corvane-image verify - <&-", 3, "-: Bad file descriptor"},
        {"corvane-image verify - <folder", 3, "-: Is a directory"},
        {"corvane-image verify - </dev/null", 1, "-: offset 0: the file ends here"},
        {"corvane-image verify - </dev/zero", 1, "-: offset 0: the magic is"},
        {kPack + QString("- old </dev/zero"), 1, "-: offset 16777215: too large"},
        {kPack + QString("nothing old"), 1, "nothing: offset 0: the firmware is empty"},
        {"corvane-image info good.img >/dev/full", 3, "standard output: No space left on device"},
        {"corvane-image unpack good.img - >&-", 3, "standard output: Bad file descriptor"},
        {"corvane-simulator --help >/dev/full", 1, "standard output: No space left on device"},
        {"corvane-diagnose --list >/dev/full", 5, "standard output: No space left on device"},
        {"corvane-simulator --pty --record old", 1,
         cannotRecord + "old: it exists, and what is in it would be lost"},
        {"corvane-simulator --pty --record folder", 1, cannotRecord + "folder: it exists"},
        {"corvane-simulator --pty --record pipe", 1, cannotRecord + "pipe: it exists"},
        {"corvane-simulator --pty --record missing/new", 1,
         cannotRecord + "missing/new: No such file or directory"},
        {"corvane-simulator --pty --record old/new", 1, cannotRecord + "old/new: Not a directory"},
        {"corvane-simulator --pty --record " + longName(), 1,
         cannotRecord + longName() + ": File name too long"},
        {"corvane-simulator --pty --control old", 1, noSocket + "old: it exists"},
        {"corvane-simulator --pty --control folder", 1, noSocket + "folder: it exists"},
        {"corvane-simulator --pty --control pipe", 1, noSocket + "pipe: it exists"},
        {"corvane-simulator --pty --control missing/new", 1,
         noSocket + "missing/new: No such file or directory"},
        {"corvane-simulator --pty --control old/new", 1, noSocket + "old/new: Not a directory"},
        {"corvane-simulator --pty --control " + longName(), 1,
         noSocket + longName() + ": File name too long"}};
}

void addImages(Inputs *inputs)
{
    // What follows the 160 bytes of header and raw prefix.
    const NamesAndMessages bodies{
        {"Q", "offset 160: the encoded body ends with a single character"},
        {"QUJDQ", "offset 164: the encoded body ends with a single character"},
        {"QUJD*", R"(offset 164: "*" (2a) is not a base64 character)"},
        {"QUJD\\n", R"(offset 164: "." (0a) is not a base64 character)"},
        {"QUJ_", R"(offset 163: "_" (5f) is not a base64 character)"},
        {"\\033[2J", R"(offset 160: "." (1b) is not a base64 character)"},
        {"Q=JD", "offset 161: a \"=\" that is not at the end of the encoded body"},
        {"====", "offset 160: wrong padding"},
        {"QQ=", "offset 162: wrong padding"},
        {"QUJD=", "offset 164: wrong padding"},
        {"QUJ", "offset 162: the last character holds bits of a further byte"}};
    for (const auto &[body, message] : bodies) {
        const QString image = "(head -c 160 good.img; printf '" + body + "') | corvane-image ";
        *inputs += Inputs{{image + "verify -", 1, message}, {image + "unpack - old", 1, message}};
    }
    *inputs +=
        Inputs{{"corvane-image verify empty.img", 1, "offset 128: the firmware is empty"},
               {"corvane-image info empty.img", 1, "offset 128: the firmware is empty"},
               {"corvane-image unpack empty.img old", 1, "offset 128: the firmware is empty"},
               {"corvane-image verify short.img", 1, "offset 100: the file ends here"},
               {"corvane-image info nothing", 1, "offset 0: the file ends here"},
               {"corvane-image unpack old new", 1,
                R"(offset 0: the magic is "prec" (70 72 65 63), not "KVEL")"},
               {"printf KV | corvane-image verify -", 1, "offset 2: the file ends here"},
               {"printf 'kvel' | corvane-image verify -", 1, "the magic is \"kvel\""},
               {"printf 'KVE\\0' | corvane-image verify -", 1, "the magic is \"KVE.\""},
               {"printf '\\033]0;' | corvane-image verify -", 1, "the magic is \".]0;\""},
               {"corvane-image verify --sha256 " + QString(64, '0') + " good.img", 1,
                "good.img: well-formed, but its SHA-256 is "},
               {"head -c 160 good.img | corvane-image verify - --sha256 " + QString(64, 'f'), 1,
                "-: well-formed, but its SHA-256 is "}};
}

void addRecordings(Inputs *inputs)
{
    // What follows the first line.
    const NamesAndMessages lines{
        {"plugged", "line 2: a time in seconds, such as 1.203451, expected, not 'plugged'"},
        {"-1 plugged", "line 2: a time in seconds"},
        {"1,5 plugged", "line 2: a time in seconds"},
        {"1e3 plugged", "line 2: a time in seconds"},
        {"1000000000 plugged", "line 2: a time in seconds"},
        {"1 host 01\\n0 host 02", "line 3: a time of at least 1.000000 expected, not '0'"},
        {"1", "line 2: plugged, unplugged, host or camera expected"},
        {"1 Host 01", "line 2: plugged, unplugged, host or camera expected, not 'Host'"},
        {"1 \\033[2J", R"(line 2: plugged, unplugged, host or camera expected, not '\x1b[2J')"},
        {"1 host", "line 2: bytes of two hexadecimal digits"},
        {"1 host 0", "line 2: bytes of two hexadecimal digits, such as FF 0A, expected, not '0'"},
        {"1 host 0102", "line 2: bytes of two hexadecimal digits"},
        {"1 camera 0x01", "line 2: bytes of two hexadecimal digits"},
        {"1 camera FG", "line 2: bytes of two hexadecimal digits"},
        {"1 plugged 01", "line 2: nothing more on the line expected, not '01'"},
        {"0 plugged\\n1 plugged", "line 3: anything else, as the line is plugged"},
        {"0 unplugged\\n1 host 01", "line 3: plugged, as the line is unplugged"}};
    for (const auto &[text, message] : lines) {
        *inputs += Inputs{{"printf '# Corvane line recording 1\\n" + text
                               + "\\n' > made; corvane-simulator --pty --replay made",
                           1, "cannot replay made: " + message}};
    }
    for (const char *const name : {"old", "nothing", "good.img", "empty.img"}) {
        *inputs += Inputs{
            {QString("corvane-simulator --pty --record new --replay ") + name, 1,
             QString("cannot replay %1: line 1: '# Corvane line recording 1' expected").arg(name)}};
    }
    *inputs += Inputs{{"printf '# Corvane line recording 2\\n' > made; corvane-simulator --pty "
                       "--replay made",
                       1, "line 1: '# Corvane line recording 1' expected"},
                      {"truncate -s 256M made; truncate -s +1 made; corvane-simulator --pty "
                       "--replay made",
                       1, "cannot replay made: it is larger than 256 MiB"}};
}

void addOptions(Inputs *inputs)
{
    for (const char *const version : {"''", "1", "1.2.3", "1.2.3.4.5", "1.2.3.256", "1.2.3.-4",
                                      "a.b.c.d", "1..3.4", "' 1.2.3.4'", "0x1.2.3.4"}) {
        const QString message = "is four numbers from 0 to 255 with dots, not '";
        *inputs += Inputs{{QString("corvane-image pack --protocol-version %1 --image-version "
                                   "1.2.3.4 old new")
                               .arg(version),
                           2, "--protocol-version " + message},
                          {QString("corvane-image pack --protocol-version 1.2.3.4 --image-version "
                                   "%1 old new")
                               .arg(version),
                           2, "--image-version " + message},
                          {QString("corvane-simulator --pty --camera-version %1").arg(version), 2,
                           "--camera-version " + message}};
    }
    const NamesAndMessages numbers{{"baud", "a number from 0 to 4000000"},
                                   {"delay", "a number from 0 to 3600000"},
                                   {"reboot-time", "a number from 0 to 3600000"},
                                   {"zoom-1", "a number from -32768 to 32767"},
                                   {"zoom-2", "a number from -32768 to 32767"},
                                   {"faults none --seed", "a number from 0 to 4294967295"}};
    for (const auto &[option, message] : numbers) {
        for (const char *const value :
             {"", "fast", "1.5", "0x10", "-40000", "99999999999", "1e3"}) {
            *inputs += Inputs{
                {QString("corvane-simulator --pty --%1='%2'").arg(option, value), 2,
                 QString("--%1 is %2, not '%3'").arg(option.section("--", -1), message, value)}};
        }
    }
    for (const char *const wait : {"", "0", "0.09", "3601", "-1", "nan", "inf", "soon", "1,5"}) {
        *inputs += Inputs{{QString("corvane-diagnose --wait='%1' none").arg(wait), 2,
                           QString("--wait is a number from 0.1 to 3600, not '%1'").arg(wait)}};
    }
    for (const char *const settings : {"", "1", "1,1,0,1", "1,1,0,1,1,1", "a,b,c,d,e", "1;1;0;1;1",
                                       "1,1,0,1,256", "1,1,0,1,-1"}) {
        *inputs +=
            Inputs{{QString("corvane-simulator --pty --settings='%1'").arg(settings), 2,
                    QString("--settings is five numbers with commas, not '%1'").arg(settings)}};
    }
    for (const char *const name :
         {"", ".", "..", "../x", "tty USB0", "/dev/ttyUSB0", "0tty", "tty\n"}) {
        *inputs += Inputs{{QString("corvane-simulator --port '%1' true").arg(name), 2,
                           "--port is a name of letters and digits, not '"}};
    }
    for (const char *const hash : {"", "0", "g", "0x00"}) {
        *inputs += Inputs{{QString("corvane-image verify good.img --sha256 '%1'").arg(hash), 2,
                           QString("--sha256 is 64 hexadecimal digits, not '%1'").arg(hash)}};
    }
    const NamesAndMessages plans{
        {"", "fault '': expected KIND[=VALUE]@DIRECTION:PLACE"},
        {",", "fault '': expected KIND[=VALUE]@DIRECTION:PLACE"},
        {"drop", "fault 'drop': expected KIND[=VALUE]@DIRECTION:PLACE"},
        {"dorp@reply:1", "there is no kind 'dorp', see --faults help"},
        {"drop=1@reply:1", "drop takes no value"},
        {"drop@camera:1", "the direction is request or reply, not 'camera'"},
        {"drop@reply:0", "the place is a frame N from 1"},
        {"drop@reply:101%", "the place is a frame N from 1"},
        {"drop@reply:1,,drop@reply:2", "fault '': expected KIND[=VALUE]@DIRECTION:PLACE"}};
    for (const auto &[plan, message] : plans) {
        *inputs += Inputs{{"corvane-simulator --pty --faults='" + plan + "'", 2, message}};
    }
    for (const char *const path : {"control", "save-firmware", "record", "replay"}) {
        *inputs += Inputs{{QString("corvane-simulator --pty --%1 -").arg(path), 2,
                           QString("--%1 is the path of a file, such as ./-, not '-'").arg(path)},
                          {QString("corvane-simulator --pty --%1=").arg(path), 2,
                           QString("--%1 is a path, not ''").arg(path)}};
    }
}

void addCommandLines(Inputs *inputs)
{
    const std::initializer_list<std::pair<QString, int>> tools{{"corvane-image", 2},
                                                               {"corvane-diagnose", 3},
                                                               {"corvane-simulator", 127},
                                                               {"corvanectl", 2}};
    for (const auto &[tool, exitCode] : tools) {
        *inputs += Inputs{{tool + " --frob", 2, "unknown option '--frob'"},
                          {tool + " -x", 2, "unknown option '-x'"},
                          {tool + " --help=1", 2, "Unexpected value after '--help'."},
                          {tool + " '--\a'", 2, R"(unknown option '--\x07')"},
                          {tool + " \"$(printf '\\033')\"", exitCode, R"(\x1b)"}};
    }
    for (const char *const option :
         {"port", "baud", "camera-version", "settings", "zoom-1", "zoom-2", "delay", "reboot-time",
          "save-firmware", "faults", "seed", "record", "through", "replay", "control"}) {
        *inputs += Inputs{{QString("corvane-simulator --pty --%1").arg(option), 2,
                           QString("Missing value after '--%1'.").arg(option)}};
    }
    for (const char *const option : {"baud=9600", "camera-version=1.2.3.4", "settings=1,1,0,1,1",
                                     "zoom-1=1", "silent", "delay=1", "save-firmware=new"}) {
        const QString name = QString(option).section('=', 0, 0);
        *inputs += Inputs{{QString("corvane-simulator --pty --replay recording --%1").arg(option),
                           2, "--replay and --" + name + " exclude each other"},
                          {QString("corvane-simulator --pty --through tty --%1").arg(option), 2,
                           "--through and --" + name + " exclude each other"}};
    }
    *inputs += Inputs{
        {"corvanectl", 2, "a command is needed: list, info, save"},
        {"corvanectl ''", 2, "'' is no command"},
        {"corvanectl LIST", 2, "'LIST' is no command"},
        {"corvanectl list tty", 2, "list takes no port"},
        {"corvanectl info", 2, "a port is needed, or --all"},
        {"corvanectl info ''", 2, "the name of a port is empty"},
        {"corvanectl info missing --all", 2, "--all and ports exclude each other"},
        {"corvanectl info --dry-run missing", 2, "unknown option '--dry-run'"},
        {"corvanectl info missing ./missing", 1, "There is no serial port missing."},
        {"corvanectl info ./pipe ./folder", 1, "./folder is not a serial port but"},
        {"ln -s /dev/null made; corvanectl info ./made", 1,
         "./made is not a serial port but another kind of device."},
        {"corvanectl info missing missing", 2, "missing and missing are the same port"},
        {"corvanectl save missing", 2, "save takes a port and a file"},
        {"corvanectl save missing ''", 2, "the name of a file is empty"},
        {"corvanectl apply '' missing", 2, "the name of a file is empty"},
        {"corvanectl apply - missing <&-", 1, "-: Bad file descriptor"},
        {"corvanectl apply - missing </dev/zero", 1, "-: "},
        {"corvanectl apply nothing missing", 1, "nothing: "},
        {"corvanectl apply good.img missing", 1, "good.img: "},
        {"corvanectl diff old missing", 1, "old: "},
        {"corvanectl set missing", 2, "set takes settings such as auto-zoom=off"},
        {"corvanectl set zoom=1 missing", 2, "'zoom' is no setting; they are "},
        {"corvanectl set auto-zoom= missing", 2, "auto-zoom is off or on, not ''"},
        {"corvanectl set auto-zoom=ON missing", 2, "auto-zoom is off or on, not 'ON'"},
        {"corvanectl zoom 3 missing", 2, "zoom takes 1 or 2, and ports"},
        {"corvanectl zoom missing", 2, "zoom takes 1 or 2, and ports"},
        {"corvanectl upgrade good.img --attempts", 2, "Missing value after '--attempts'."},
        {"corvanectl upgrade good.img missing --attempts 0", 2,
         "--attempts is a number from 1 to 100, not '0'"},
        {"corvanectl upgrade old missing", 1, "old: is no firmware image: the magic is missing"},
        {"corvanectl upgrade nothing missing", 1,
         "nothing: is no firmware image: the magic is missing"},
        {"corvanectl upgrade empty.img missing", 1, "empty.img: the firmware is empty"},
        {"corvanectl upgrade - missing </dev/zero", 1, "-: is larger than 256 MiB"},
        {"corvanectl list >/dev/full", 4, "standard output: No space left on device"},
        {"corvane-image", 2, "a command is needed: pack, info, unpack or verify"},
        {"corvane-image ''", 2, "'' is no command"},
        {"corvane-image VERIFY good.img", 2, "'VERIFY' is no command"},
        {"corvane-image good.img", 2, "'good.img' is no command"},
        {"corvane-image verify", 2, "verify takes one file: IMAGE"},
        {"corvane-image verify good.img old", 2, "verify takes one file: IMAGE"},
        {"corvane-image unpack good.img", 2, "unpack takes two files: IMAGE FIRMWARE"},
        {"corvane-image pack old new", 2, "--protocol-version is needed"},
        {"corvane-image pack --protocol-version 1.2.3.4 old new", 2, "--image-version is needed"},
        {"corvane-image info --sha256 0 good.img", 2, "unknown option '--sha256'"},
        {"corvane-image verify good.img --sha256", 2, "Missing value after '--sha256'."},
        {"corvane-simulator", 2, "either --pty or a program is needed"},
        {"corvane-simulator --", 2, "either --pty or a program is needed"},
        {"corvane-simulator -- ''", 2, "the name of the program is empty"},
        {"corvane-simulator ''", 2, "the name of the program is empty"},
        {"corvane-simulator --pty true", 2, "--pty and a program exclude each other"},
        {"corvane-simulator --pty --port ttyUSB1", 2, "--pty and --port exclude each other"},
        {"corvane-simulator --pty --seed 1", 2, "--seed needs --faults or --control"},
        {"corvane-simulator --seed 1 true", 2, "--seed needs --faults or --control"},
        {"corvane-simulator --pty --replay recording --through tty", 2,
         "--replay and --through exclude each other"},
        {"corvane-simulator --through ttyUSB0 --port ttyUSB0 true", 2,
         "--port is another name than that of --through"},
        {"corvane-simulator --through '' true", 2, "--through is a port, not ''"},
        {"corvane-simulator --pty --through missing", 1,
         "cannot open missing: No such file or directory"},
        {"ln -s /dev/null made; corvane-simulator --pty --through $PWD/made", 1,
         "/made: it is not a serial port"},
        {"corvane-simulator --pty --through ./folder", 1, "cannot open ./folder: Is a directory"},
        {"corvane-simulator --pty --through ./pipe", 1,
         "cannot open ./pipe: it is not a serial port"},
        {"corvane-simulator -- missing", 127, "cannot start missing: No such file"},
        {"corvane-simulator -- ./missing", 127, "cannot start ./missing: No such file"},
        {"corvane-simulator -- ./folder", 127, "cannot start ./folder: it is a folder"},
        {"corvane-simulator -- ./old", 127, "cannot start ./old: Permission denied"},
        {"corvane-simulator -- ./pipe", 127, "cannot start ./pipe: Permission denied"},
        {"corvane-simulator -- old/x", 127, "cannot start old/x: Not a directory"}};
}

void addPorts(Inputs *inputs)
{
    const NamesAndMessages ports{
        {"missing", "There is no serial port missing."},
        {"./missing", "There is no serial port ./missing."},
        {"/dev/missing", "There is no serial port /dev/missing."},
        {"./old/x", "There is no serial port ./old/x."},
        {"./link", "There is no serial port ./link."},
        {"./old", "./old is not a serial port but a file."},
        {"./folder", "./folder is not a serial port but a folder."},
        {"/", "/ is not a serial port but a folder."},
        {"./pipe", "./pipe is not a serial port but another kind of device."},
        {"./loop", "./loop cannot be opened: Too many levels of symbolic links."},
        {longName(), "File name too long."},
        {"\"$(printf './a\\033b')\"", R"(There is no serial port ./a\x1bb.)"},
        {"\"$(printf './a\\nb')\"", R"(There is no serial port ./a\nb.)"}};
    for (const auto &[port, message] : ports) {
        *inputs += Inputs{{"corvane-diagnose " + port, 3, message},
                          {"corvane-diagnose --json " + port, 3, "\"status\": 3"}};
    }
    *inputs += Inputs{
        {"corvane-diagnose", 2, "the name of a port is needed; --list shows them"},
        {"corvane-diagnose ''", 2, "the name of a port is needed; --list shows them"},
        {"corvane-diagnose one two", 2, "one port at a time"},
        {"corvane-diagnose --list tty", 2, "--list takes no port"},
        {"corvane-diagnose --all tty", 2, "--all takes no port"},
        {"corvane-diagnose --watch tty", 2, "--watch takes no port"},
        {"corvane-diagnose --list --all", 2, "--list and --all exclude each other"},
        {"corvane-diagnose --list --watch", 2, "--list and --watch exclude each other"},
        {"corvane-diagnose --all --watch", 2, "--all and --watch exclude each other"},
        {"corvane-diagnose --list --wait 1", 2, "--list and --wait exclude each other"},
        {"corvane-diagnose --list --report new", 2, "--list and --report exclude each other"},
        {"corvane-diagnose --report - tty", 2, "--report is the path of a file"},
        {"corvane-diagnose --report= tty", 2, "--report is the path of a file"},
        {"corvane-diagnose --json --frob", 2, R"("verdict": "bad-command-line")"},
        {"corvane-diagnose --json", 2, R"("verdict": "bad-command-line")"}};
}

Inputs oddInputs()
{
    Inputs inputs;
    addFiles(&inputs);
    addImages(&inputs);
    addRecordings(&inputs);
    addOptions(&inputs);
    addCommandLines(&inputs);
    addPorts(&inputs);
    return inputs;
}

} // namespace

/// Whatever the companions are given, they say what is wrong with it in words that their users
/// know, end with an exit code that their help explains, and leave the files as they were.
class OddInputsTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase()
    {
        qputenv("PATH", PROGRAMS ":" + qgetenv("PATH"));
        // The preload library stands in front of a sanitizer's runtime library, which does no harm.
        qputenv("ASAN_OPTIONS", qgetenv("ASAN_OPTIONS") + ":verify_asan_link_order=0");
        QVERIFY2(m_inputs.size() >= 300, qPrintable(QString::number(m_inputs.size())));
        m_outcomes.resize(static_cast<std::size_t>(m_inputs.size()));
        // They wait more than they compute.
        const unsigned int count = 2 * qMax(1U, std::thread::hardware_concurrency());
        std::atomic<std::size_t> next{0};
        std::vector<std::thread> threads;
        for (unsigned int i = 0; i < count; ++i) {
            threads.emplace_back([this, &next] {
                for (std::size_t j = next++; j < m_outcomes.size(); j = next++) {
                    m_outcomes[j] = run(m_inputs.at(static_cast<int>(j)));
                }
            });
        }
        for (std::thread &thread : threads) {
            thread.join();
        }
        for (const char *const name :
             {"corvane-image", "corvane-diagnose", "corvane-simulator", "corvanectl"}) {
            QProcess help;
            help.start(name, {"--help"});
            QVERIFY(help.waitForFinished(kPatience));
            m_exitCodes[name] = QString::fromUtf8(help.readAll()).section("Exit codes", 1);
        }
    }

    void refusesEachInputClearly_data()
    {
        QTest::addColumn<int>("index");
        for (int i = 0; i < m_inputs.size(); ++i) {
            QTest::newRow(qPrintable(m_inputs.at(i).command)) << i;
        }
    }

    void refusesEachInputClearly()
    {
        QFETCH(int, index);
        const OddInput &input = m_inputs.at(index);
        const Outcome &outcome = m_outcomes.at(static_cast<std::size_t>(index));
        const QString text = outcome.output + outcome.errors;
        QVERIFY2(text.contains(input.message), qPrintable(text));
        QCOMPARE(outcome.exitCode, input.exitCode);
        QCOMPARE(outcome.lost, QStringList());
        // A verdict is a result; all else is said on the standard error, after the program's name.
        const bool hasResult = input.command.startsWith("corvane-diagnose")
            || input.command.contains("--json") || input.command.startsWith("corvanectl info");
        QVERIFY2(hasResult || outcome.output.isEmpty(), qPrintable(outcome.output));
        QVERIFY2(outcome.errors.isEmpty() || outcome.errors.startsWith(program(input) + ": "),
                 qPrintable(outcome.errors));
        static const QRegularExpression kBetweenWords("\\W+");
        const QString exitCodes = m_exitCodes[program(input)];
        QVERIFY2(exitCodes.split(kBetweenWords).contains(QString::number(input.exitCode)),
                 qPrintable(exitCodes));
        static const QRegularExpression kUnfit(
            "[\\x00-\\x09\\x0B-\\x1F\\x7F]|QLocal|QFile|execv|ioctl|"
            "Unknown error|argument$");
        QVERIFY2(!text.contains(kUnfit), qPrintable(text));
    }

private:
    static Outcome run(const OddInput &input)
    {
        const QTemporaryDir folder;
        prepare(folder.path());
        QProcess shell;
        shell.setWorkingDirectory(folder.path());
        const QMap<QString, QByteArray> before = contentsOf(folder.path());
        shell.start("sh", {"-c", input.command});
        Outcome outcome;
        if (shell.waitForFinished(kPatience) && shell.exitStatus() == QProcess::NormalExit) {
            outcome.exitCode = shell.exitCode();
        }
        outcome.output = QString::fromUtf8(shell.readAllStandardOutput());
        outcome.errors = QString::fromUtf8(shell.readAllStandardError());
        QMap<QString, QByteArray> after = contentsOf(folder.path());
        after.remove("made"); // by the shell
        QMap<QString, QByteArray> all = before;
        all.insert(after);
        for (auto entry = all.cbegin(); entry != all.cend(); ++entry) {
            const QString &name = entry.key();
            if (before.value(name) != after.value(name) || !after.contains(name)) {
                outcome.lost << name;
            }
        }
        return outcome;
    }

    const Inputs m_inputs = oddInputs();
    std::vector<Outcome> m_outcomes;
    QMap<QString, QString> m_exitCodes; ///< by the program, from its help
};

QTEST_GUILESS_MAIN(OddInputsTest)

#include "tst_oddinputs.moc"
