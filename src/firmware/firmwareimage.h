// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

/// A firmware image file, as a value.
///
///     offset  size    field
///     0       4       magic, "KVEL"
///     4       4       protocol version
///     8       4       image version
///     12      116     not interpreted
///     128     32      raw prefix: the first bytes of the firmware as they are
///     160     to end  encoded body: the rest of the firmware in base64 with the standard
///                     alphabet, whose padding may be missing
///
/// There is neither a size nor a checksum in it. A byte behind the end of a short file reads as 0.
class FirmwareImage {
public:
    static constexpr int kHeaderSize = 128;
    static constexpr int kRawPrefixSize = 32;

    /// @param contents  the whole file
    explicit FirmwareImage(QByteArray contents);

    /// Reads a file whole and closes it.
    /// @return nothing when it cannot be opened, is no regular file (reading a pipe or a terminal
    ///         may never end) or is larger than kMaximumFileSize
    static std::optional<FirmwareImage> read(const QString &path);
    /// Bytes; far more than the largest firmware needs, and little enough to be held in memory.
    static constexpr qint64 kMaximumFileSize = qint64(256) * 1024 * 1024;

    /// Whether it begins with the magic, byte for byte.
    bool hasMagic() const;
    /// As versionText() gives it, likewise the next.
    QString protocolVersion() const;
    QString imageVersion() const;
    /// The bytes to upload: the raw prefix and the decoded body. Characters of the body that are
    /// not of the alphabet are skipped.
    QByteArray firmware() const;

private:
    QString versionAt(int offset) const;
    char byteAt(int offset) const;

    QByteArray m_contents;
};
