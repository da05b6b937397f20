// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "dialoghandler.h"

#include "programfixture.h"

#include <QElapsedTimer>

namespace {

constexpr int kLongestWaitMs = 5000;
constexpr int kConnectionAttempts = 5;
constexpr int kConnectionLimitMs = 12000;

} // namespace

DialogHandler::DialogHandler(ProgramFixture &fixture)
    : m_fixture(fixture)
{
}

bool DialogHandler::waitUntil(const QString &description, const std::function<bool()> &condition,
                              int limitMs)
{
    GuiDriver &corvane = m_fixture.corvane;
    return corvane.waitUntil(
        description,
        [&corvane, &condition] {
            if (!corvane.isBlocked() && !corvane.isListOpen()) {
                return condition();
            }
            corvane.dismiss();
            return false;
        },
        limitMs);
}

bool DialogHandler::connectCamera()
{
    GuiDriver &corvane = m_fixture.corvane;
    for (int attempt = 0; attempt < kConnectionAttempts; ++attempt) {
        const auto isDecided = [this] { return isConnected() || isDisconnected(); };
        if (!waitUntil("the window is at rest", isDecided, kConnectionLimitMs)) {
            return false;
        }
        if (isConnected()) {
            return true;
        }
        corvane.click("pushButton_connect");
        corvane.waitForEnabled("pushButton_connect", false);
    }
    return false;
}

bool DialogHandler::isDisconnected() const
{
    GuiDriver &corvane = m_fixture.corvane;
    // Not that the pane of the device is empty: a reply that was on its way is still shown.
    return corvane.isEnabled("pushButton_connect") && !corvane.isEnabled("tabWidget");
}

bool DialogHandler::outlastWaits(int speed)
{
    QElapsedTimer elapsed;
    elapsed.start();
    // Waits may be nested in each other, and then their boxes come one after the other.
    const int restMs = (kLongestWaitMs + 1000) / speed;
    return waitUntil(
        "all waits have ended",
        [this, &elapsed, restMs] { return elapsed.hasExpired(restMs) && isDisconnected(); },
        restMs + kConnectionLimitMs);
}

bool DialogHandler::isConnected() const
{
    return m_fixture.corvane.isEnabled("tabWidget")
        && m_fixture.corvane.isEnabled("pushButton_disconnect");
}

QString closeAndEnd(GuiDriver &program)
{
    constexpr int kLimitMs = 20'000;
    constexpr int kPauseMs = 100;
    for (int waitedMs = 0; waitedMs < kLimitMs; waitedMs += kPauseMs) {
        program.close();
        if (program.waitUntilEnded(kPauseMs)) {
            return program.exitCode() == 0
                ? QString()
                : QStringLiteral("the program has ended with %1").arg(program.exitCode());
        }
        if (program.isBlocked() || program.isListOpen()) {
            program.dismiss();
        }
    }
    return "closing the window does not end the program";
}
