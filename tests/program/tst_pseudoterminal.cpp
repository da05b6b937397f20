// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "rows.h"
#include "runningprogram.h"
#include "step.h"

#include <memory>

namespace {

/// The unmodified program, and the simulated camera on a pseudo-terminal: no device is mocked.
class TerminalFixture : public ProgramFixture {
public:
    bool start(const QStringList &cameraOptions)
    {
        m_camera = std::make_unique<Simulator>(QStringList{"--pty", "--quiet"} + cameraOptions);
        return corvane.start(CORVANE_PROGRAM, {})
            && corvane.addItem("comboBox_portlist", m_camera->portName() + " (terminal)")
            && corvane.holdLimits(true);
    }

private:
    std::unique_ptr<Simulator> m_camera;
};

/// Each value of a byte, twice: five packets, the last of them a short one.
QByteArray firmware()
{
    QByteArray bytes;
    for (int i = 0; i < 520; ++i) {
        bytes += static_cast<char>(i % 256);
    }
    return bytes;
}

} // namespace

/// What also runs where no device can be mocked: on an emulated processor.
class PseudoTerminalTest : public QObject {
    Q_OBJECT

private slots:
    void anOperatorsSession()
    {
        TerminalFixture fixture;
        DO(fixture.start({"--camera-version", "1.0.255.16", "--zoom-2", "272", "--reboot-time", "0",
                          "--save-firmware", fixture.path("received")}));
        DO(fixture.connectCamera());
        DO(fixture.corvane.waitForText("textEdit_device_info", "Device Version: 1.0.-1.10"));

        DO(fixture.corvane.choose("comboBox_targetmissing", 9));
        DO(fixture.corvane.click("radioButton_upside_down"));
        DO(fixture.corvane.waitUntil("both are chosen", [&fixture] {
            return fixture.corvane.text("comboBox_targetmissing") == "Preset 7"
                && fixture.corvane.isChecked("radioButton_upside_down");
        }));
        DO(fixture.apply());
        QCOMPARE(fixture.corvane.text("comboBox_targetmissing"), QString("Preset 7"));

        DO(fixture.corvane.click("pushButton_custom_zoom_2"));
        DO(fixture.corvane.waitForText("textEdit_device_info",
                                       "Device Version: 1.0.-1.10\nSetting custom zoom: 272"));

        DO(fixture.pack(firmware()));
        DO(fixture.startUpgrade());
        DO(fixture.waitUntilComplete());
        QCOMPARE(fixture.contents("received"), firmware());

        DO(fixture.corvane.close());
        DO(fixture.corvane.waitUntilEnded());
        QCOMPARE(fixture.corvane.exitCode(), 0);
    }
};

QTEST_GUILESS_MAIN(PseudoTerminalTest)
#include "tst_pseudoterminal.moc"
