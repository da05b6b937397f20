// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QLockFile>
#include <QString>
#include <QStringList>

/// Marks a folder of made-up devices with the process that uses it, for as long as this object
/// lives.
class TestbedMark {
public:
    explicit TestbedMark(const QString &folder);

    /// Removes the folders of this user's simulators that were killed, for nothing else would.
    /// @return their paths
    static QStringList removeLeftovers();

private:
    QLockFile m_lock;
};
