// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "upload.h"

#include "processstatus.h"
#include "programfixture.h"

#include <QFile>

namespace {

constexpr int kConnectionAttempts = 20;
constexpr int kSettleLimitMs = 10000;

QString receivedFirmware(const ProgramFixture &fixture)
{
    return fixture.path("received");
}

} // namespace

QStringList Upload::simulatorOptions(const ProgramFixture &fixture)
{
    return {"--quiet", "--reboot-time", "0", "--save-firmware", receivedFirmware(fixture)};
}

int Upload::limitMs(int packets, int speed)
{
    constexpr int kAnnouncementLimitMs = 5000;
    constexpr int kPacketLimitMs = 2000;
    constexpr int kSpareMs = 20'000;
    return (kAnnouncementLimitMs + packets * kPacketLimitMs) / speed + kSpareMs;
}

Upload::Upload(ProgramFixture &fixture)
    : m_fixture(fixture)
{
}

UploadOutcome Upload::run(const QByteArray &firmware, const QString &plan, quint32 planSeed,
                          int limitMs)
{
    m_outcome = {};
    if (!prepare(firmware)) {
        return improper("could not be prepared");
    }
    if (!connectCamera()) {
        return improper("could not connect without faults");
    }
    const QString faults = QStringLiteral("faults %1 %2").arg(plan).arg(planSeed);
    if (!m_fixture.tell(faults.toUtf8())) {
        return improper("the simulator refuses the plan");
    }
    if (!m_fixture.startUpgrade()) {
        return improper("could not be started");
    }
    if (!awaitEnd(limitMs)) {
        return improper("does not end");
    }
    if (!isAtRest()) {
        return improper("ends with the port open or the window unusable");
    }
    m_fixture.tell("faults none");
    m_outcome.isIdentical =
        m_fixture.contents("received") == firmware && QFile::exists(receivedFirmware(m_fixture));
    return m_outcome;
}

bool Upload::prepare(const QByteArray &firmware)
{
    QFile::remove(receivedFirmware(m_fixture));
    // Refused when no fault has hung up, and then it is plugged.
    m_fixture.tell("plug");
    return m_fixture.tell("faults none") && m_fixture.pack(firmware);
}

// What a fault has left of a frame may cost the next one, here the reply to HELLO. And on a machine
// that is busy, waits at many times the speed may be too short.
bool Upload::connectCamera()
{
    GuiDriver &corvane = m_fixture.corvane;
    while (m_outcome.connections < kConnectionAttempts) {
        ++m_outcome.connections;
        const auto isDecided = [&corvane] {
            return corvane.isEnabled("tabWidget") || !corvane.dialog().isEmpty();
        };
        if (!corvane.click("pushButton_connect")
            || !corvane.waitUntil("the handshake has ended", isDecided)) {
            return false;
        }
        if (corvane.isEnabled("tabWidget")) {
            return true;
        }
        if (corvane.dialog() != "Error: Connection fail!" || !corvane.answerDialog()
            || !corvane.waitForEnabled("pushButton_connect")) {
            return false;
        }
    }
    return false;
}

bool Upload::awaitEnd(int limitMs)
{
    GuiDriver &corvane = m_fixture.corvane;
    const auto hasEnded = [this, &corvane] {
        const QString dialog = corvane.dialog();
        const QString pane = corvane.text("textEdit_firmware_info");
        if (pane == QLatin1String("Update is complete. Device auto-rebooting.")) {
            m_outcome.ending = UploadOutcome::Complete;
            m_outcome.message = pane;
            return true;
        }
        if (dialog == "Error: Connection timeout!" || dialog == "Error: Transmission stop!") {
            m_outcome.ending = UploadOutcome::Failed;
            m_outcome.message = dialog;
            return corvane.answerDialog();
        }
        return false;
    };
    return corvane.waitUntil("the upload has ended", hasEnded, limitMs);
}

bool Upload::isAtRest()
{
    GuiDriver &corvane = m_fixture.corvane;
    const auto isDisconnected = [&corvane] {
        return corvane.isEnabled("pushButton_connect") && !corvane.isBlocked()
            && !corvane.isEnabled("tabWidget")
            && ProcessStatus::of(corvane.operatedProcessId()).terminals == 0;
    };
    return corvane.waitUntil("the window is disconnected", isDisconnected, kSettleLimitMs);
}

UploadOutcome Upload::improper(const QString &problem)
{
    m_outcome.ending = UploadOutcome::Improper;
    m_outcome.problem =
        QStringLiteral("%1 (%2; open: %3)")
            .arg(problem, m_fixture.corvane.errorText(), m_fixture.corvane.dialog());
    return m_outcome;
}
