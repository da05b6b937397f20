// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "commandline.h"

#include "standardstreams.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QRegularExpression>

#include <cstdio>
#include <cstdlib>

void setUpProgram(const QString &name)
{
    prepareStandardStreams();
    QCoreApplication::setApplicationName(name);
    QCoreApplication::setApplicationVersion(QStringLiteral(CORVANE_VERSION));
}

std::optional<UsageError> parseArguments(QCommandLineParser &parser, const QStringList &arguments)
{
    for (const QString &argument : arguments) {
        if (argument.contains(QChar::ReplacementCharacter)) {
            return UsageError{QStringLiteral("'%1' is not in the character encoding of this locale")
                                  .arg(argument)};
        }
    }
    if (parser.parse(arguments)) {
        return std::nullopt;
    }
    const QStringList unknown = parser.unknownOptionNames();
    if (unknown.isEmpty()) {
        return UsageError{parser.errorText()};
    }
    // The parser has taken the dashes off.
    const QString longForm = QStringLiteral("--") + unknown.first();
    const bool isShort = unknown.first().size() == 1 && !arguments.contains(longForm);
    return UsageError{
        QStringLiteral("unknown option '%1'").arg(isShort ? longForm.mid(1) : longForm)};
}

void addCommonOptions(QCommandLineParser &parser)
{
    parser.addOptions({
        {{QStringLiteral("h"), QStringLiteral("help")}, QStringLiteral("Print this help.")},
        {{QStringLiteral("v"), QStringLiteral("version")}, QStringLiteral("Print the version.")},
    });
}

Information versionInformation()
{
    return {QStringLiteral("%1 %2\n").arg(QCoreApplication::applicationName(),
                                          QCoreApplication::applicationVersion())};
}

std::optional<std::array<unsigned char, 4>> versionFrom(const QString &text)
{
    static const QRegularExpression kFourNumbers(
        QStringLiteral("\\A([0-9]{1,3})\\.([0-9]{1,3})\\.([0-9]{1,3})\\.([0-9]{1,3})\\z"));
    const QRegularExpressionMatch match = kFourNumbers.match(text);
    bool fits = match.hasMatch();
    std::array<unsigned char, 4> version{};
    for (std::size_t i = 0; fits && i < version.size(); ++i) {
        constexpr int kMaximumNumber = 255;
        const int number = match.captured(static_cast<int>(i) + 1).toInt();
        fits = number <= kMaximumNumber;
        version[i] = static_cast<unsigned char>(number);
    }
    return fits ? std::make_optional(version) : std::nullopt;
}

int report(const Information &information, int failureStatus)
{
    return print(information.text) ? EXIT_SUCCESS : failureStatus;
}

int report(const UsageError &error)
{
    complain(error.reason);
    std::fputs("Try --help.\n", stderr);
    return kUsageErrorStatus;
}
