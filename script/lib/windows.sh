# SPDX-FileCopyrightText: 2026 The Corvane developers
# SPDX-License-Identifier: MIT
# shellcheck shell=bash
# shellcheck disable=SC2034 # used by the scripts that source this

# Where the Qt for Windows is kept, and what it is built with.

qt_version=$(/usr/lib/qt5/bin/qmake -query QT_VERSION)
cache=${XDG_CACHE_HOME:-$HOME/.cache}/corvane/windows
qt=$cache/qt-$qt_version
qtbase=$cache/qtbase
serialport_source=$cache/qtserialport
qt_build=$cache/build
mkdir -p "$qt_build"

# The compiler's variant with POSIX threads, which std::thread needs, whatever the default is.
for name in gcc g++; do
    ln -sf "/usr/bin/x86_64-w64-mingw32-$name-posix" "$qt_build/x86_64-w64-mingw32-$name"
done
export PATH=$qt_build:$PATH MAKEFLAGS="${MAKEFLAGS:--j$(nproc)}"

# build_serialport_in FOLDER: qtserialport, from a copy of its source, with what is patched there.
build_serialport_in() {
    if [ ! -e "$1" ]; then
        cp -r "$serialport_source" "$1"
    fi
    # Without the first, qmake does not make the headers; on the others, which an archive may lack, it
    # insists.
    mkdir -p "$1/.git" "$1/tests/auto/cmake" "$1/src/serialport/doc"
    touch "$1/src/serialport/doc/qtserialport.qdocconf"
    (cd "$1" && "$qt_build/qtbase/bin/qmake" && make)
}
