# SPDX-FileCopyrightText: 2026 The Corvane developers
# SPDX-License-Identifier: MIT

# What the compiler checks: every target of ours links corvane_warnings.
option(CORVANE_WARNINGS_AS_ERRORS
    "Fail the build on a compiler warning; for CI, not for users with newer compilers" OFF)

add_library(corvane_warnings INTERFACE)
target_compile_options(corvane_warnings INTERFACE
    -Wall
    -Wextra
    -Wpedantic
    -Wcast-align
    -Wcast-qual
    -Wconversion
    -Wdouble-promotion
    -Wformat=2
    -Wnon-virtual-dtor
    -Wold-style-cast
    -Woverloaded-virtual
    -Wshadow
    -Wsign-conversion
    -Wundef
    -Wunused
    $<$<CXX_COMPILER_ID:GNU>:-Wduplicated-branches>
    $<$<CXX_COMPILER_ID:GNU>:-Wduplicated-cond>
    $<$<CXX_COMPILER_ID:GNU>:-Wlogical-op>
    # Qt 5 has sizes of int, Qt 6 of 64 bits. Nothing here is as large, and Qt 5 checks all else.
    $<$<EQUAL:${CORVANE_QT},6>:-Wno-conversion>
    # QSKIP has variadic arguments, and is used without any.
    $<$<CXX_COMPILER_ID:Clang>:-Wno-gnu-zero-variadic-macro-arguments>
    $<$<BOOL:${CORVANE_WARNINGS_AS_ERRORS}>:-Werror>)
