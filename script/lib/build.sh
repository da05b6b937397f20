# SPDX-FileCopyrightText: 2026 The Corvane developers
# SPDX-License-Identifier: MIT
# shellcheck shell=bash

# build PRESET [TARGET]...: brings the targets, or everything, up to date.
build() {
    local command=(cmake --build --preset "$1")
    if [ $# -gt 1 ]; then
        command+=(--target "${@:2}")
    fi
    # CMake writes what it says of presets to its standard output, but errors to standard error.
    cmake --preset "$1" >/dev/null
    if [ "$("${command[@]}" -- -n)" != "ninja: no work to do." ]; then
        local TIMEFORMAT='Built in %0lR; processor time %0lU + %0lS.'
        time "${command[@]}"
    fi
}
