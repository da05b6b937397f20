// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QtTest>

/// How long a test waits for what has to happen, in milliseconds. It only keeps a test that fails
/// from hanging: a busy machine needs seconds, and CTest allows a whole test many times as much.
constexpr int kPatience = 120'000;

// Qt gives up after five seconds.
#undef QTRY_COMPARE
#define QTRY_COMPARE(expression, expected)                                                         \
    QTRY_COMPARE_WITH_TIMEOUT((expression), expected, kPatience)
#undef QTRY_VERIFY
#define QTRY_VERIFY(expression) QTRY_VERIFY_WITH_TIMEOUT((expression), kPatience)

/// For a duration that a busy machine only makes longer.
#define VERIFY_AT_LEAST(actual, minimum)                                                           \
    do {                                                                                           \
        const auto value = (actual);                                                               \
        QVERIFY2(value >= (minimum), qPrintable(QStringLiteral("only %1").arg(value)));            \
    } while (false)
