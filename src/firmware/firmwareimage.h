// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

/// A firmware image file, as a value.
///
/// It consists of
/// - a header of kHeaderSize bytes: the magic, the protocol version and the image version, four
///   bytes each; the rest is not interpreted,
/// - the raw prefix of kRawPrefixSize bytes: the first bytes of the firmware as they are,
/// - the encoded body: the rest of the firmware in base64 with the standard alphabet, whose padding
///   may be missing.
///
/// It has neither a size nor a checksum.
class FirmwareImage {
public:
    static constexpr auto kMagic = "KVEL";
    static constexpr int kProtocolVersionOffset = 4;
    static constexpr int kImageVersionOffset = 8;
    static constexpr int kHeaderSize = 128;
    static constexpr int kRawPrefixSize = 32;

    /// @param contents  the whole file
    explicit FirmwareImage(QByteArray contents);

    /// Reads a whole file.
    /// @return nothing when it cannot be opened or read to its end, is no regular file (reading
    ///         a pipe or a terminal may never end) or is larger than kMaximumFileSize
    static std::optional<FirmwareImage> read(const QString &path);
    /// Bytes; far more than the largest firmware needs, and little enough to be held in memory.
    static constexpr qint64 kMaximumFileSize = qint64(256) * 1024 * 1024;

    /// Whether it begins with the magic.
    bool hasMagic() const;
    /// As versionText() gives it; a byte that a short file does not have counts as 0.
    QString protocolVersion() const;
    /// Likewise.
    QString imageVersion() const;
    /// The bytes to upload: the raw prefix and the decoded body. Characters of the body that are
    /// not of the alphabet are skipped.
    QByteArray firmware() const;

private:
    QByteArray m_contents;
};
