// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "randomscenario.h"

#include "dialoghandler.h"
#include "programfixture.h"

#include <QRandomGenerator>
#include <QThread>

#include <array>

RandomScenario::RandomScenario(ProgramFixture &fixture, DialogHandler &dialogHandler,
                               QRandomGenerator &random)
    : m_fixture(fixture)
    , m_dialogHandler(dialogHandler)
    , m_random(random)
{
}

QString RandomScenario::begin()
{
    static constexpr std::array<Moment, 9> kMoments{{
        {"while connected", true, &RandomScenario::doNothing},
        {"during the handshake", false, &RandomScenario::connectInVain},
        {"while settings are applied in vain", true, &RandomScenario::applyInVain},
        {"while settings are applied", true, &RandomScenario::apply},
        {"while a zoom is set in vain", true, &RandomScenario::setZoomInVain},
        {"during an upload", true, &RandomScenario::upload},
        {"while a message box is open", true, &RandomScenario::openSuccessBox},
        {"while the about box is open", true, &RandomScenario::openAboutBox},
        {"while a list is open", true, &RandomScenario::openList},
    }};
    const auto index = m_random.bounded(static_cast<int>(kMoments.size()));
    const Moment &moment = kMoments.at(static_cast<std::size_t>(index));
    if (moment.needsConnection && !m_dialogHandler.connectCamera()) {
        return {};
    }
    (this->*moment.act)();
    pause(300);
    return QString::fromLatin1(moment.name);
}

void RandomScenario::connectInVain()
{
    m_fixture.tell("silent on");
    m_fixture.corvane.click(QStringLiteral("pushButton_connect"));
}

void RandomScenario::apply()
{
    clickOnSettingsPage("pushButton_apply");
}

void RandomScenario::applyInVain()
{
    m_fixture.tell("silent on");
    clickOnSettingsPage("pushButton_apply");
}

void RandomScenario::setZoomInVain()
{
    m_fixture.tell("silent on");
    clickOnSettingsPage("pushButton_custom_zoom_2");
}

void RandomScenario::upload()
{
    // Does not start when what is left of an earlier wait has just disconnected.
    if (m_fixture.startUpgrade()) {
        pause(1000);
    }
}

void RandomScenario::openSuccessBox()
{
    constexpr int kLimitMs = 1000;
    apply();
    m_fixture.corvane.waitForDialog(QStringLiteral("Information: Apply Success."), kLimitMs);
}

void RandomScenario::openAboutBox()
{
    m_fixture.corvane.click(QStringLiteral("toolButton_about"));
}

void RandomScenario::openList()
{
    clickOnSettingsPage("comboBox_zoomoffset");
}

void RandomScenario::clickOnSettingsPage(const char *widget)
{
    constexpr int kSettingsPage = 0;
    m_fixture.corvane.choose(QStringLiteral("tabWidget"), kSettingsPage);
    m_fixture.corvane.click(QLatin1String(widget));
}

void RandomScenario::pause(int longestMs)
{
    QThread::msleep(static_cast<unsigned long>(m_random.bounded(longestMs)));
}
