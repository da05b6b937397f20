// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

// Operates the real program with the simulated camera, says what it does and takes a picture of
// each step. Ends with 0, or with the number of the step that went wrong.

#include "pilot.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <cstdio>
#include <vector>

namespace {

void say(const QString &text)
{
    std::puts(text.toLocal8Bit().constData());
    std::fflush(stdout);
}

struct Step {
    const char *picture; ///< the name of its PNG file
    const char *description;
    std::function<bool(Pilot &)> perform;
};

QByteArray contentsOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// @param scratch  a folder for what the steps need, gone when the tour is over
std::vector<Step> steps(const QDir &scratch)
{
    const QString controlSocket = scratch.filePath("control");
    const QString savedFirmware = scratch.filePath("received.bin");
    // Copies, so that the pictures show a path that is the same for everybody.
    const QString firmware = scratch.filePath("firmware.bin");
    const QString image = scratch.filePath("sample.img");
    QFile::copy(SAMPLE_FIRMWARE, firmware);
    QFile::copy(SAMPLE_IMAGE, image);
    return {
        {"start", "Start: the adapter stands in the list of ports",
         [controlSocket, savedFirmware](Pilot &corvane) {
             return corvane.start(CORVANE_SIMULATOR,
                                  {"--control", controlSocket, "--settings", "0,0,0,0,0",
                                   "--save-firmware", savedFirmware, "--reboot-time", "2000", "--",
                                   CORVANE_PROGRAM})
                 && corvane.waitUntil("the port is listed", [&corvane] {
                        return corvane.text("comboBox_portlist") == "ttyUSB0 (USB Serial)";
                    });
         }},
        {"connect", "Connect: the camera reports its version and settings",
         [](Pilot &corvane) {
             return corvane.click("pushButton_connect") && corvane.waitForEnabled("tabWidget")
                 && corvane.waitUntil("the version is shown", [&corvane] {
                        return corvane.text("textEdit_device_info") == "Device Version: 1.0.0.6";
                    });
         }},
        {"list", "Open a list: the tracking modes",
         [](Pilot &corvane) {
             return corvane.click("comboBox_autotracking")
                 && corvane.waitUntil("the list is open",
                                      [&corvane] { return corvane.isListOpen(); });
         }},
        {"change", "Change: pan tracking, preset 7, upside down, no auto zoom, custom zoom offset",
         [](Pilot &corvane) {
             return corvane.closeList() && corvane.choose("comboBox_autotracking", 2)
                 && corvane.waitForEnabled("comboBox_targetmissing")
                 && corvane.choose("comboBox_targetmissing", 9)
                 && corvane.click("radioButton_upside_down")
                 && corvane.choose("comboBox_autozoom", 0)
                 && corvane.choose("comboBox_zoomoffset", 3)
                 && corvane.waitUntil("everything is chosen", [&corvane] {
                        return corvane.index("comboBox_autotracking") == 2
                            && corvane.index("comboBox_targetmissing") == 9
                            && corvane.isChecked("radioButton_upside_down")
                            && corvane.index("comboBox_zoomoffset") == 3;
                    });
         }},
        {"apply", "Apply: the camera acknowledges",
         [](Pilot &corvane) {
             return corvane.click("pushButton_apply")
                 && corvane.waitForDialog("Information: Apply Success.");
         }},
        {"zoom", "Set the second zoom preset: the camera reports its zoom",
         [](Pilot &corvane) {
             return corvane.answerDialog() && corvane.waitForDialog({})
                 && corvane.click("pushButton_custom_zoom_2")
                 && corvane.waitUntil("the zoom is shown", [&corvane] {
                        return corvane.text("textEdit_device_info")
                            == "Device Version: 1.0.0.6\nSetting custom zoom: 25";
                    });
         }},
        {"about", "About: the program's version",
         [](Pilot &corvane) {
             return corvane.click("toolButton_about")
                 && corvane.waitForDialog("about: Corvane: Version 1.0.0.5");
         }},
        {"no-image", "Choose a file that is no firmware image: it is refused",
         [firmware](Pilot &corvane) {
             return corvane.answerDialog() && corvane.waitForDialog({})
                 && corvane.choose("tabWidget", 1)
                 && corvane.waitUntil("the page is shown",
                                      [&corvane] { return corvane.index("tabWidget") == 1; })
                 && corvane.type("lineEdit_firmware", firmware)
                 && corvane.waitUntil("it is refused", [&corvane] {
                        return corvane.text("textEdit_firmware_info") == "Firmware file error."
                            && !corvane.isEnabled("pushButton_start_upgrade");
                    });
         }},
        {"image", "Choose a firmware image: its versions are shown",
         [image](Pilot &corvane) {
             return corvane.type("lineEdit_firmware", image)
                 && corvane.waitForEnabled("pushButton_start_upgrade")
                 && corvane.text("textEdit_firmware_info")
                 == "Protocol version: 1.2.0.7\nImage version: 1.0.0.7";
         }},
        {"half-way", "Upgrade: half of it is done",
         [](Pilot &corvane) {
             return corvane.click("pushButton_start_upgrade")
                 && corvane.waitUntil(
                     "half of it is done",
                     [&corvane] { return corvane.value("progressBar_updating") > 12345 / 2; },
                     20000);
         }},
        {"complete", "The upgrade is complete, and the camera has received what was packed",
         [savedFirmware](Pilot &corvane) {
             return corvane.waitUntil(
                        "it is complete",
                        [&corvane] {
                            return corvane.text("textEdit_firmware_info")
                                == "Update is complete. Device auto-rebooting.";
                        },
                        20000)
                 && corvane.waitForEnabled("pushButton_connect")
                 && corvane.waitUntil("the firmware is saved", [savedFirmware] {
                        return contentsOf(savedFirmware) == contentsOf(SAMPLE_FIRMWARE);
                    });
         }},
        {"reconnect", "Connect again when it has rebooted: it reports its new version",
         [](Pilot &corvane) {
             return corvane.waitUntil(
                        "it has rebooted",
                        [&corvane] { return corvane.output().contains("running version 1.0.0.7"); })
                 && corvane.click("pushButton_connect") && corvane.waitForEnabled("tabWidget")
                 && corvane.choose("tabWidget", 0)
                 && corvane.waitUntil("the version is shown", [&corvane] {
                        return corvane.text("textEdit_device_info") == "Device Version: 1.0.0.7";
                    });
         }},
        {"disconnect", "Disconnect",
         [](Pilot &corvane) {
             return corvane.click("pushButton_disconnect")
                 && corvane.waitForEnabled("tabWidget", false);
         }},
        {"no-answer", "Connect to a camera that is switched off: five seconds later it says so",
         [controlSocket](Pilot &corvane) {
             return tellSimulator(controlSocket, "silent on") && corvane.click("pushButton_connect")
                 && corvane.waitForDialog("Error: Connection fail!");
         }},
        {"unplugged", "Switch it on, connect, pull the plug: the window is disconnected again",
         [controlSocket](Pilot &corvane) {
             return corvane.answerDialog() && corvane.waitForDialog({})
                 && tellSimulator(controlSocket, "silent off")
                 && corvane.click("pushButton_connect") && corvane.waitForEnabled("tabWidget")
                 && tellSimulator(controlSocket, "unplug")
                 && corvane.waitForEnabled("tabWidget", false)
                 && corvane.waitForEnabled("pushButton_connect");
         }},
        {"no-port", "Connect to the adapter that is gone",
         [](Pilot &corvane) {
             return corvane.click("pushButton_connect")
                 && corvane.waitForDialog("Error: No such file or directory");
         }},
        {nullptr, "Close the window: the program ends",
         [](Pilot &corvane) {
             return corvane.answerDialog() && corvane.waitForDialog({}) && corvane.close()
                 && corvane.waitUntilEnded() && corvane.exitCode() == 0;
         }},
    };
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    if (argc != 2) {
        say("usage: corvane-tour DIRECTORY-FOR-THE-PICTURES");
        return 100;
    }
    const QDir directory(QString::fromLocal8Bit(argv[1]));
    directory.mkpath(".");
    const QStringList oldPictures = directory.entryList({"*.png"});
    for (const QString &picture : oldPictures) {
        QFile::remove(directory.filePath(picture));
    }

    const QTemporaryDir scratch(QDir::tempPath() + "/corvane-tour-XXXXXX");
    Pilot corvane;
    int number = 0;
    for (const Step &step : steps(QDir(scratch.path()))) {
        ++number;
        say(QStringLiteral("%1. %2").arg(number, 2).arg(QLatin1String(step.description)));
        bool isDone = step.perform(corvane);
        if (isDone && step.picture != nullptr) {
            const QString path = directory.filePath(
                QStringLiteral("%1-%2.png").arg(number, 2, 10, QLatin1Char('0')).arg(step.picture));
            isDone = corvane.picture(path);
        }
        if (!isDone) {
            say(QStringLiteral("    went wrong: ") + corvane.errorText());
            say(QStringLiteral("What the programs printed:\n") + corvane.output());
            return number;
        }
    }
    say(QStringLiteral("The pictures are in ") + directory.path());
    return 0;
}
