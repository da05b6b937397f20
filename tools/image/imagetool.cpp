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
#include "printabletext.h"
#include "standardstreams.h"

#include <cstdlib>
#include <variant>

namespace {

constexpr int kFaultyInputStatus = 1;
constexpr int kFileErrorStatus = 3;

int write(const QString &name, const QByteArray &contents)
{
    if (name == kStandardStreamName) {
        return print(contents) ? EXIT_SUCCESS : kFileErrorStatus;
    }
    QString error;
    if (!writeFile(name, contents, &error)) {
        complain(QStringLiteral("%1: %2").arg(name, error));
        return kFileErrorStatus;
    }
    return EXIT_SUCCESS;
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
        return report({imageReport(*input)}, kFileErrorStatus);
    case Kind::Unpack:
        return write(command.output, FirmwareImage(*input).firmware());
    case Kind::Verify:
        return report({QStringLiteral("%1: valid\n").arg(printableText(command.input))},
                      kFileErrorStatus);
    }
    Q_UNREACHABLE();
}

} // namespace

int runImageTool(const QStringList &arguments)
{
    const auto commandLine = parseImageCommandLine(arguments);
    if (const auto *information = std::get_if<Information>(&commandLine)) {
        return report(*information, kFileErrorStatus);
    }
    if (const auto *error = std::get_if<UsageError>(&commandLine)) {
        return report(*error);
    }
    return obey(std::get<ImageCommand>(commandLine));
}
