// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "firmwareimage.h"

#include "versiontext.h"

#include <QFile>
#include <QFileInfo>

#include <utility>

namespace {

constexpr auto kMagic = "KVEL";
constexpr int kMagicSize = 4;
constexpr int kProtocolVersionOffset = 4;
constexpr int kImageVersionOffset = 8;

} // namespace

FirmwareImage::FirmwareImage(QByteArray contents)
    : m_contents(std::move(contents))
{
}

std::optional<FirmwareImage> FirmwareImage::read(const QString &path)
{
    QFile file(path);
    if (!QFileInfo(path).isFile() || file.size() > kMaximumFileSize
        || !file.open(QIODevice::ReadOnly)) {
        return std::nullopt;
    }
    return FirmwareImage(file.readAll());
}

bool FirmwareImage::hasMagic() const
{
    return m_contents.left(kMagicSize) == QByteArray::fromRawData(kMagic, kMagicSize);
}

QString FirmwareImage::protocolVersion() const
{
    return versionAt(kProtocolVersionOffset);
}

QString FirmwareImage::imageVersion() const
{
    return versionAt(kImageVersionOffset);
}

QByteArray FirmwareImage::firmware() const
{
    // The decoder skips "=" as it does any character that is not of the alphabet, so that padding
    // makes no difference.
    return m_contents.mid(kHeaderSize, kRawPrefixSize)
        + QByteArray::fromBase64(m_contents.mid(kHeaderSize + kRawPrefixSize));
}

QString FirmwareImage::versionAt(int offset) const
{
    return versionText(byteAt(offset), byteAt(offset + 1), byteAt(offset + 2), byteAt(offset + 3));
}

char FirmwareImage::byteAt(int offset) const
{
    return offset < m_contents.size() ? m_contents.at(offset) : '\0';
}
