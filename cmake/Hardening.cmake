# SPDX-FileCopyrightText: 2026 The Corvane developers
# SPDX-License-Identifier: MIT

# The one place that says how the programs are hardened: bytes from a line and files from anywhere are
# what they read. Builds for debugging do without, and so do the sanitizers, which are such builds.
if(NOT CMAKE_BUILD_TYPE STREQUAL "Debug")
    set(CMAKE_POSITION_INDEPENDENT_CODE ON)
    include(CheckPIESupported)
    check_pie_supported(LANGUAGES CXX)

    set(CMAKE_CXX_VISIBILITY_PRESET hidden)
    set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
    add_compile_options(
        -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2 # a compiler may have a level of its own
        -fstack-protector-strong
        -fstack-clash-protection)
    add_link_options(
        LINKER:-z,relro
        LINKER:-z,now
        LINKER:-z,noexecstack
        LINKER:--as-needed)
endif()
