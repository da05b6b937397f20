// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "preloadlibrary.h"

#include <QByteArray>
#include <QtGlobal>

#include <cerrno>

#include <dlfcn.h>
#include <unistd.h>

namespace {

constexpr const char *kName = "libumockdev-preload.so.0";
constexpr const char *kVariable = "LD_PRELOAD";

} // namespace

bool PreloadLibrary::isLoaded()
{
    // umockdev_in_mock_environment() would need a made-up /sys to look at first.
    void *const library = ::dlopen(kName, RTLD_LAZY | RTLD_NOLOAD);
    if (library == nullptr) {
        return false;
    }
    ::dlclose(library);
    return true;
}

QString PreloadLibrary::restartWith(char **arguments)
{
    QByteArray libraries = qgetenv(kVariable);
    if (libraries.contains(kName)) {
        return QStringLiteral("%1 cannot be loaded; is it installed?").arg(QLatin1String(kName));
    }
    if (!libraries.isEmpty()) {
        libraries += ':';
    }
    qputenv(kVariable, libraries + kName);
    ::execv("/proc/self/exe", arguments);
    return QStringLiteral("cannot start again with %1: %2")
        .arg(QLatin1String(kName), qt_error_string(errno));
}
