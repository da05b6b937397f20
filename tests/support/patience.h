// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QtTest>

#include <chrono>

/// How long a test waits for what has to happen, in milliseconds. It only keeps a test that fails
/// from hanging: a busy machine needs seconds, and CTest allows a whole test many times as much.
constexpr int kPatience = 120'000;

// Qt gives up after five seconds.
#undef QTRY_COMPARE
#define QTRY_COMPARE(expression, expected)                                                         \
    QTRY_COMPARE_WITH_TIMEOUT((expression), expected, kPatience)
#undef QTRY_VERIFY
#define QTRY_VERIFY(expression) QTRY_VERIFY_WITH_TIMEOUT((expression), kPatience)

/// Whether something has happened once that much time has passed. It has to be started by a timer
/// of this thread that runs already: timers go off in the order in which they are due, so that the
/// answer does not depend on how busy the machine is.
template <typename Condition>
bool happensWithin(std::chrono::milliseconds time, Condition condition)
{
    // For what that timer starts in turn, without any delay.
    static constexpr std::chrono::milliseconds kAfterwards(5);
    QEventLoop loop;
    bool hasHappened = false;
    const auto look = [&loop, &hasHappened, &condition] {
        hasHappened = condition();
        loop.quit();
    };
    QTimer::singleShot(time, Qt::PreciseTimer, &loop, [&loop, &look] {
        QTimer::singleShot(kAfterwards, Qt::PreciseTimer, &loop, look);
    });
    loop.exec();
    return hasHappened;
}

/// For a duration that a busy machine only makes longer.
#define VERIFY_AT_LEAST(actual, minimum)                                                           \
    do {                                                                                           \
        const auto value = (actual);                                                               \
        QVERIFY2(value >= (minimum), qPrintable(QStringLiteral("only %1").arg(value)));            \
    } while (false)
