// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "firmwareimage.h"

#include "versiontext.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
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
    return FirmwareImage(file.readAll());
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
    // Without a copy of the body, which takes as long as decoding it.
    const int bodyOffset = std::min(kHeaderSize + kRawPrefixSize, m_contents.size());
    const QByteArray body = QByteArray::fromRawData(m_contents.constData() + bodyOffset,
                                                    m_contents.size() - bodyOffset);
    // The decoder skips "=" as it does any character that is not of the alphabet, so that padding
    // makes no difference.
    return QByteArray::fromBase64(body).prepend(m_contents.mid(kHeaderSize, kRawPrefixSize));
}
