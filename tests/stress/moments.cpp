// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "moments.h"

#include "patientoperator.h"
#include "programfixture.h"

#include <QRandomGenerator>
#include <QThread>

#include <array>

Moments::Moments(ProgramFixture &fixture, PatientOperator &patientOperator,
                 QRandomGenerator &random)
    : m_fixture(fixture)
    , m_operator(patientOperator)
    , m_random(random)
{
}

QString Moments::begin()
{
    static constexpr std::array<Moment, 9> kMoments{{
        {"while connected", true, &Moments::doNothing},
        {"during the handshake", false, &Moments::connectInVain},
        {"while settings are applied in vain", true, &Moments::applyInVain},
        {"while settings are applied", true, &Moments::apply},
        {"while a zoom is set in vain", true, &Moments::setZoomInVain},
        {"during an upload", true, &Moments::upload},
        {"while a message box is open", true, &Moments::openSuccessBox},
        {"while the about box is open", true, &Moments::openAboutBox},
        {"while a list is open", true, &Moments::openList},
    }};
    const auto index = m_random.bounded(static_cast<int>(kMoments.size()));
    const Moment &moment = kMoments.at(static_cast<std::size_t>(index));
    if (moment.needsConnection && !m_operator.connectCamera()) {
        return {};
    }
    (this->*moment.act)();
    pause(300);
    return QString::fromLatin1(moment.name);
}

void Moments::connectInVain()
{
    m_fixture.tell("silent on");
    m_fixture.corvane.click(QStringLiteral("pushButton_connect"));
}

void Moments::apply()
{
    clickOnSettingsPage("pushButton_apply");
}

void Moments::applyInVain()
{
    m_fixture.tell("silent on");
    clickOnSettingsPage("pushButton_apply");
}

void Moments::setZoomInVain()
{
    m_fixture.tell("silent on");
    clickOnSettingsPage("pushButton_custom_zoom_2");
}

void Moments::upload()
{
    // Does not start when what is left of an earlier wait has just disconnected.
    if (m_fixture.startUpgrade()) {
        pause(1000);
    }
}

void Moments::openSuccessBox()
{
    constexpr int kLimitMs = 1000;
    apply();
    m_fixture.corvane.waitForDialog(QStringLiteral("Information: Apply Success."), kLimitMs);
}

void Moments::openAboutBox()
{
    m_fixture.corvane.click(QStringLiteral("toolButton_about"));
}

void Moments::openList()
{
    clickOnSettingsPage("comboBox_zoomoffset");
}

void Moments::clickOnSettingsPage(const char *widget)
{
    constexpr int kSettingsPage = 0;
    m_fixture.corvane.choose(QStringLiteral("tabWidget"), kSettingsPage);
    m_fixture.corvane.click(QLatin1String(widget));
}

void Moments::pause(int longestMs)
{
    QThread::msleep(static_cast<unsigned long>(m_random.bounded(longestMs)));
}
