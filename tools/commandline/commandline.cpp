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
    keepStandardStreamsOpen();
    QCoreApplication::setApplicationName(name);
    QCoreApplication::setApplicationVersion(QStringLiteral(CORVANE_VERSION));
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
        const int number = match.capturedRef(static_cast<int>(i) + 1).toInt();
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
    constexpr int kUsageErrorStatus = 2;
    complain(error.reason);
    std::fputs("Try --help.\n", stderr);
    return kUsageErrorStatus;
}
