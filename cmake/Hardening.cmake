# SPDX-FileCopyrightText: 2026 The Corvane developers
# SPDX-License-Identifier: MIT

# How the programs are hardened, since they read bytes from a line and files from anywhere. Debug builds,
# which those with sanitizers are, are not hardened.
# For Windows, the linker does by default what there is to do, and the other options are for ELF.
if(NOT CMAKE_BUILD_TYPE STREQUAL "Debug" AND NOT WIN32)
    set(CMAKE_POSITION_INDEPENDENT_CODE ON)
    include(CheckPIESupported)
    check_pie_supported(LANGUAGES CXX)

    set(CMAKE_CXX_VISIBILITY_PRESET hidden)
    set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
    add_compile_options(
        -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2 # a compiler may set a level by default
        -fstack-protector-strong
        -fstack-clash-protection)
    add_link_options(
        LINKER:-z,relro
        LINKER:-z,now
        LINKER:-z,noexecstack
        LINKER:--as-needed)
endif()
