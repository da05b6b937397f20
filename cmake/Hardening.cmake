# SPDX-FileCopyrightText: 2026 The Corvane developers
# SPDX-License-Identifier: MIT

# The one place that says how a release is hardened: everything below is built so. Bytes from a line
# and files from anywhere are what the programs read. script/check-hardening looks at the result.
if(CMAKE_BUILD_TYPE STREQUAL "Release")
    set(hardened_by_default ON)
else()
    set(hardened_by_default OFF)
endif()
option(CORVANE_HARDENED "Build as for a release to others" ${hardened_by_default})

if(CORVANE_HARDENED)
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
