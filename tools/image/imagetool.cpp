// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "imagetool.h"

#include "fileio.h"
#include "firmwareimage.h"
#include "firmwarepacket.h"
#include "imagecommandline.h"
#include "imagefault.h"
#include "imagepacking.h"
#include "imagereport.h"

#include <QCoreApplication>

#include <cstdio>
#include <cstdlib>
#include <variant>

namespace {

constexpr int kFaultyInputStatus = 1;
constexpr int kBadUsageStatus = 2;
constexpr int kFileErrorStatus = 3;

void complain(const QString &text)
{
    const QString line = QStringLiteral("%1: %2\n").arg(QCoreApplication::applicationName(), text);
    std::fputs(line.toLocal8Bit().constData(), stderr);
}

int write(const QString &name, const QByteArray &contents)
{
    QString error;
    if (!writeFile(name, contents, &error)) {
        complain(QStringLiteral("%1: %2").arg(name, error));
        return kFileErrorStatus;
    }
    return EXIT_SUCCESS;
}

int print(const QString &text)
{
    return write(kStandardStreamName, text.toLocal8Bit());
}

int obey(const ImageCommand &command)
{
    using Kind = ImageCommand::Kind;
    const bool isPack = command.kind == Kind::Pack;
    const int maximum = isPack ? FirmwarePacket::kMaximumFirmwareSize : kMaximumImageSize;
    QString error;
    const auto input = readFile(command.input, maximum, &error);
    if (!input) {
        complain(QStringLiteral("%1: %2").arg(command.input, error));
        return kFileErrorStatus;
    }
    const auto fault = isPack ? firmwareFault(*input) : imageFault(*input);
    if (fault) {
        complain(QStringLiteral("%1: offset %2: %3")
                     .arg(command.input, QString::number(fault->offset), fault->reason));
        return kFaultyInputStatus;
    }

    switch (command.kind) {
    case Kind::Pack:
        return write(command.output,
                     packedImage(command.protocolVersion, command.imageVersion, *input));
    case Kind::Info:
        return print(imageReport(*input));
    case Kind::Unpack:
        return write(command.output, FirmwareImage(*input).firmware());
    case Kind::Verify:
        return print(QStringLiteral("%1: valid\n").arg(command.input));
    }
    Q_UNREACHABLE();
}

} // namespace

int runImageTool(const QStringList &arguments)
{
    const auto commandLine = parseImageCommandLine(arguments);
    if (const auto *information = std::get_if<Information>(&commandLine)) {
        return print(information->text);
    }
    if (const auto *badUsage = std::get_if<BadUsage>(&commandLine)) {
        complain(badUsage->reason);
        std::fputs("Try --help.\n", stderr);
        return kBadUsageStatus;
    }
    return obey(std::get<ImageCommand>(commandLine));
}
