// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "firmwareimage.h"

#include "versiontext.h"

#include <QFile>
#include <QFileInfo>

#include <utility>

FirmwareImage::FirmwareImage(QByteArray contents)
    : m_contents(std::move(contents))
{
}

std::optional<FirmwareImage> FirmwareImage::read(const QString &path)
{
    QFile file(path);
    // Additions of our own: special files and files above the limit are refused.
    if (!QFileInfo(path).isFile() || file.size() > kMaximumFileSize
        || !file.open(QIODevice::ReadOnly)) {
        return std::nullopt;
    }
    QByteArray contents = file.readAll();
    if (file.error() != QFileDevice::NoError) {
        return std::nullopt;
    }
    return FirmwareImage(std::move(contents));
}

bool FirmwareImage::hasMagic() const
{
    return m_contents.startsWith(kMagic);
}

QString FirmwareImage::protocolVersion() const
{
    return versionText(m_contents, kProtocolVersionOffset);
}

QString FirmwareImage::imageVersion() const
{
    return versionText(m_contents, kImageVersionOffset);
}

QByteArray FirmwareImage::firmware() const
{
    // Decodes in place, in the copy that mid() makes, so that there is room for the prefix as well.
    // The decoder skips "=" as it does any character that is not of the alphabet, so that padding
    // makes no difference.
    QByteArray firmware =
        QByteArray::fromBase64Encoding(m_contents.mid(kHeaderSize + kRawPrefixSize)).decoded;
    return firmware.insert(0, m_contents.mid(kHeaderSize, kRawPrefixSize));
}
