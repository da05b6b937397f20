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

#include <QCryptographicHash>

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

int verify(const ImageCommand &command, const QByteArray &image)
{
    const QByteArray sha256 = QCryptographicHash::hash(image, QCryptographicHash::Sha256).toHex();
    if (!command.sha256.isEmpty() && sha256 != command.sha256) {
        complain(
            QStringLiteral("%1: well-formed, but its SHA-256 is %2: another file, or a part of "
                           "the file")
                .arg(command.input, QString::fromLatin1(sha256)));
        return kFaultyInputStatus;
    }
    return report({QStringLiteral("%1: well-formed, %2 bytes, SHA-256 %3\n")
                       .arg(printableText(command.input), QString::number(image.size()),
                            QString::fromLatin1(sha256))},
                  kFileErrorStatus);
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
        return verify(command, *input);
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
