// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "imagecommandline.h"

#include "fileio.h"

#include <QCommandLineOption>
#include <QCommandLineParser>
#include <QFileInfo>
#include <QRegularExpression>

#include <array>
#include <optional>

namespace {

using Kind = ImageCommand::Kind;

struct CommandWord {
    Kind kind;
    const char *word;
    const char *purpose;
    const char *input;
    const char *output; ///< null when it has none
};

constexpr std::array<CommandWord, 4> kCommandWords{{
    {Kind::Pack, "pack", "Write an image from a firmware.", "FIRMWARE", "IMAGE"},
    {Kind::Info, "info", "Print what an image holds.", "IMAGE", nullptr},
    {Kind::Unpack, "unpack", "Write the bytes that would be uploaded.", "IMAGE", "FIRMWARE"},
    {Kind::Verify, "verify", "Check whether an image is well-formed.", "IMAGE", nullptr},
}};

QString uploadTimeNote()
{
    return QStringLiteral("The upload time that info prints is 50 ms for each packet and 50 ms for "
                          "the\n"
                          "announcement of the size: Corvane looks for the camera's replies every "
                          "50 ms and\n"
                          "sends nothing before the last reply. A slower camera takes longer.\n");
}

QString exitCodes()
{
    return QStringLiteral("\n"
                          "Exit codes:\n"
                          "  0  all is well\n"
                          "  1  the image or the firmware is not right\n"
                          "  2  the command line makes no sense\n"
                          "  3  a file could not be read or written\n");
}

QString generalDescription()
{
    QString text = QStringLiteral("Makes and examines firmware image files.\n\nCommands:\n");
    for (const CommandWord &command : kCommandWords) {
        text += QStringLiteral("  %1%2\n")
                    .arg(QString::fromLatin1(command.word), -8)
                    .arg(QString::fromLatin1(command.purpose));
    }
    return text
        + QStringLiteral("\n"
                         "Add --help to a command to see its options and files. A file named - is "
                         "the\n"
                         "standard input or output. An output is written whole or not at all.\n"
                         "\n")
        + uploadTimeNote().trimmed();
}

void addPackOptions(QCommandLineParser &parser)
{
    parser.addOptions({
        {QStringLiteral("protocol-version"),
         QStringLiteral("The image's protocol version, four decimal numbers from 0 to 255."),
         QStringLiteral("A.B.C.D")},
        {QStringLiteral("image-version"), QStringLiteral("The image's own version, likewise."),
         QStringLiteral("A.B.C.D")},
    });
}

void addVerifyOptions(QCommandLineParser &parser)
{
    parser.addOption({QStringLiteral("sha256"),
                      QStringLiteral("The SHA-256 that the file has to have, 64 hexadecimal "
                                     "digits."),
                      QStringLiteral("HEX")});
}

/// Prepares the parser for one command.
void describe(QCommandLineParser &parser, const CommandWord &command)
{
    addCommonOptions(parser);
    QString description = QString::fromLatin1(command.purpose);
    if (command.kind == Kind::Pack) {
        addPackOptions(parser);
        description += QStringLiteral(" Both versions are needed.\n"
                                      "The window shows them in signed hexadecimal: 10 as a, 255 "
                                      "as -1.");
    }
    if (command.kind == Kind::Verify) {
        addVerifyOptions(parser);
        description += QStringLiteral("\n\n"
                                      "The format has no checksum, so that a file which was cut "
                                      "off may still be\n"
                                      "well-formed. Compare its size or its SHA-256 with the "
                                      "original's.");
    }
    if (command.kind == Kind::Info) {
        description += QLatin1String("\n\n") + uploadTimeNote().trimmed();
    }
    parser.setApplicationDescription(description);

    const QString input = QString::fromLatin1(command.input);
    parser.addPositionalArgument(
        input, QStringLiteral("The file to read; - is the standard input."),
        QStringLiteral("%1 %2").arg(QString::fromLatin1(command.word), input));
    if (command.output != nullptr) {
        parser.addPositionalArgument(QString::fromLatin1(command.output),
                                     QStringLiteral("The file to write; - is the standard "
                                                    "output."));
    }
}

const CommandWord *commandNamed(const QString &word)
{
    for (const CommandWord &command : kCommandWords) {
        if (word == QLatin1String(command.word)) {
            return &command;
        }
    }
    return nullptr;
}

/// The version that an option gives.
/// @param[out] fault  why there is none
std::optional<ImageVersion> versionOf(const QCommandLineParser &parser, const QString &option,
                                      QString *fault)
{
    if (!parser.isSet(option)) {
        *fault = QStringLiteral("--%1 is needed").arg(option);
        return std::nullopt;
    }
    const auto version = versionFrom(parser.value(option));
    if (!version) {
        *fault = QStringLiteral("--%1 is four numbers from 0 to 255 with dots, not '%2'")
                     .arg(option, parser.value(option));
    }
    return version;
}

bool isSameFile(const QString &one, const QString &other)
{
    const QString path = QFileInfo(one).canonicalFilePath();
    return one != kStandardStreamName && other != kStandardStreamName && !path.isEmpty()
        && path == QFileInfo(other).canonicalFilePath();
}

/// Reads the arguments of a command, which are its word and its files.
std::variant<ImageCommand, Information, UsageError> parseCommand(const CommandWord &word,
                                                                 const QStringList &arguments)
{
    QCommandLineParser parser;
    describe(parser, word);
    if (const auto error = parseArguments(parser, arguments)) {
        return *error;
    }
    if (parser.isSet(QStringLiteral("help"))) {
        return Information{parser.helpText() + exitCodes()};
    }

    const QStringList files = parser.positionalArguments().mid(1);
    if (files.size() != (word.output == nullptr ? 1 : 2)) {
        const QString wanted =
            QStringLiteral("%1 takes %2: %3")
                .arg(QLatin1String(word.word),
                     QLatin1String(word.output == nullptr ? "one file" : "two files"),
                     QLatin1String(word.input));
        return UsageError{(wanted + QLatin1Char(' ') + QLatin1String(word.output)).trimmed()};
    }
    if (files.contains(QString())) {
        return UsageError{QStringLiteral("the name of a file is empty")};
    }
    ImageCommand command;
    command.kind = word.kind;
    command.input = files.first();
    if (word.output != nullptr) {
        command.output = files.last();
        if (isSameFile(command.input, command.output)) {
            return UsageError{QStringLiteral("%1 and %2 are the same file")
                                  .arg(QLatin1String(word.input), QLatin1String(word.output))};
        }
    }
    if (word.kind == Kind::Pack) {
        QString fault;
        const auto protocol = versionOf(parser, QStringLiteral("protocol-version"), &fault);
        if (!protocol) {
            return UsageError{fault};
        }
        const auto image = versionOf(parser, QStringLiteral("image-version"), &fault);
        if (!image) {
            return UsageError{fault};
        }
        command.protocolVersion = *protocol;
        command.imageVersion = *image;
    }
    if (word.kind == Kind::Verify && parser.isSet(QStringLiteral("sha256"))) {
        static const QRegularExpression kHash(QStringLiteral("\\A[0-9A-Fa-f]{64}\\z"));
        const QString text = parser.value(QStringLiteral("sha256"));
        if (!kHash.match(text).hasMatch()) {
            return UsageError{
                QStringLiteral("--sha256 is 64 hexadecimal digits, not '%1'").arg(text)};
        }
        command.sha256 = text.toLower().toLatin1();
    }
    return command;
}

} // namespace

std::variant<ImageCommand, Information, UsageError>
parseImageCommandLine(const QStringList &arguments)
{
    // Knows every option, so that the command is found wherever it is.
    QCommandLineParser finder;
    addCommonOptions(finder);
    addPackOptions(finder);
    addVerifyOptions(finder);
    if (const auto error = parseArguments(finder, arguments)) {
        return *error;
    }
    if (finder.isSet(QStringLiteral("version"))) {
        return versionInformation();
    }
    const QStringList words = finder.positionalArguments();
    if (words.isEmpty()) {
        if (!finder.isSet(QStringLiteral("help"))) {
            return UsageError{QStringLiteral("a command is needed: pack, info, unpack or verify")};
        }
        QCommandLineParser general;
        addCommonOptions(general);
        general.setApplicationDescription(generalDescription());
        general.addPositionalArgument(QStringLiteral("COMMAND"),
                                      QStringLiteral("pack, info, unpack or verify."),
                                      QStringLiteral("COMMAND FILE..."));
        return Information{general.helpText() + exitCodes()};
    }
    const CommandWord *command = commandNamed(words.first());
    if (command == nullptr) {
        return UsageError{
            QStringLiteral("'%1' is no command; they are pack, info, unpack and verify")
                .arg(words.first())};
    }
    return parseCommand(*command, arguments);
}
