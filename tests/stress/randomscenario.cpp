// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "randomscenario.h"

#include "dialoghandler.h"
#include "programfixture.h"

#include <QRandomGenerator>
#include <QThread>

#include <vector>

QString beginRandomScenario(ProgramFixture &fixture, DialogHandler &dialogHandler,
                            QRandomGenerator &random)
{
    GuiDriver &corvane = fixture.corvane;
    const auto pause = [&random](int longestMs) {
        QThread::msleep(static_cast<unsigned long>(random.bounded(longestMs)));
    };
    const auto clickOnSettingsPage = [&corvane](const char *widget) {
        corvane.choose("tabWidget", 0);
        corvane.click(widget);
    };
    const auto clickInVain = [&](const char *widget) {
        fixture.tell("silent on");
        clickOnSettingsPage(widget);
    };
    struct Moment {
        const char *name;
        bool needsConnection;
        std::function<void()> act;
    };
    const std::vector<Moment> moments{
        {"while connected", true, [] {}},
        {"during the handshake", false,
         [&] {
             fixture.tell("silent on");
             corvane.click("pushButton_connect");
         }},
        {"while settings are applied in vain", true, [&] { clickInVain("pushButton_apply"); }},
        {"while settings are applied", true, [&] { clickOnSettingsPage("pushButton_apply"); }},
        {"while a zoom is set in vain", true, [&] { clickInVain("pushButton_custom_zoom_2"); }},
        {"during an upload", true,
         [&] {
             // Does not start when what is left of an earlier wait has just disconnected.
             if (fixture.startUpgrade()) {
                 pause(1000);
             }
         }},
        {"while a message box is open", true,
         [&] {
             constexpr int kLimitMs = 1000;
             clickOnSettingsPage("pushButton_apply");
             corvane.waitForDialog("Information: Apply Success.", kLimitMs);
         }},
        {"while the about box is open", true, [&] { corvane.click("toolButton_about"); }},
        {"while a list is open", true, [&] { clickOnSettingsPage("comboBox_zoomoffset"); }},
    };
    const auto index = random.bounded(static_cast<int>(moments.size()));
    const Moment &moment = moments.at(static_cast<std::size_t>(index));
    if (moment.needsConnection && !dialogHandler.connectCamera()) {
        return {};
    }
    moment.act();
    pause(300);
    return moment.name;
}
