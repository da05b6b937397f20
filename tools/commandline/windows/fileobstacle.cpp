// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "fileobstacle.h"

#include <QDir>

#include <array>

#include <windows.h>

QString fileObstacle(const QString &name)
{
    const std::wstring path = QDir::toNativeSeparators(name).toStdWString();
    // Turns the name of a device, such as COM1 or NUL, into a path of that kind, in any folder.
    std::array<wchar_t, MAX_PATH> buffer{};
    const DWORD size =
        ::GetFullPathNameW(path.c_str(), static_cast<DWORD>(buffer.size()), buffer.data(), nullptr);
    const QString full = size < buffer.size()
        ? QString::fromWCharArray(buffer.data(), static_cast<int>(size)).toLower()
        : QString();
    if (full.startsWith(QLatin1String("\\\\.\\pipe\\"))) {
        return QStringLiteral("is a pipe, not a file");
    }
    if (full.startsWith(QLatin1String("\\\\.\\"))) {
        return QStringLiteral("is a device, not a file");
    }
    const DWORD attributes = ::GetFileAttributesW(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) {
        const DWORD error = ::GetLastError();
        const bool isAbsent = error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
        return isAbsent ? QString() : qt_error_string(static_cast<int>(error));
    }
    const bool isFolder = (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    return isFolder ? QStringLiteral("is a folder, not a file") : QString();
}
