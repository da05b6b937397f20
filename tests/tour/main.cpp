// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

// Operates the real program with the simulated camera, says what it does and takes a picture of
// each step. Ends with 0, or with the number of the step that went wrong.

#include "guidriver.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLockFile>
#include <QTemporaryDir>

#include <cstdio>
#include <vector>

namespace {

constexpr int kFirmwareSize = 12345;
constexpr int kUpgradeLimitMs = 20000;

void say(const QString &text)
{
    std::puts(text.toLocal8Bit().constData());
    std::fflush(stdout);
}

QByteArray contentsOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// What a step has at hand: the program, its camera, and a folder that is gone after the tour.
class Stage : public GuiDriver {
public:
    /// @param programArguments  what corvane gets on its command line
    bool start(const QStringList &programArguments)
    {
        // Copies, by names without a folder, so that the pictures show the same for everybody.
        QDir::setCurrent(m_scratch.path());
        QFile::copy(QStringLiteral(SAMPLE_FIRMWARE), firmware());
        QFile::copy(QStringLiteral(SAMPLE_IMAGE), image());
        // Time-outs are half of the tour, so program and camera live four times as fast.
        return GuiDriver::start("faketime",
                                QStringList{"-f", "+0 x4", CORVANE_SIMULATOR, "--control",
                                            control(), "--settings", "0,0,0,0,0", "--save-firmware",
                                            saved(), "--reboot-time", "2000", "--", CORVANE_PROGRAM}
                                    + programArguments);
    }

    bool tell(const QByteArray &command) { return tellSimulator(control(), command); }

    bool shows(const QString &textEdit, const QString &expected, int limitMs = 8000)
    {
        return waitUntil(
            textEdit + " shows what it should",
            [this, textEdit, expected] { return text(textEdit) == expected; }, limitMs);
    }

    bool connectCamera() { return click("pushButton_connect") && waitForEnabled("tabWidget"); }

    bool showPage(int page)
    {
        return choose("tabWidget", page)
            && waitUntil("the page is shown", [this, page] { return index("tabWidget") == page; });
    }

    bool showList(const QString &comboBox)
    {
        return openList(comboBox) && waitUntil("the list is open", [this] { return isListOpen(); });
    }

    bool closeDialog() { return answerDialog() && waitForDialog({}); }

    bool chooseImage()
    {
        return type("lineEdit_firmware", image()) && waitForEnabled("pushButton_start_upgrade");
    }

    bool upgradeHalfWay()
    {
        const auto hasSentHalf = [this] {
            return value("progressBar_updating") > kFirmwareSize / 2;
        };
        // The bar still shows what the upgrade before has come to.
        return click("pushButton_start_upgrade")
            && waitUntil("the bar starts again", [hasSentHalf] { return !hasSentHalf(); })
            && waitUntil("half of it is sent", hasSentHalf, kUpgradeLimitMs);
    }

    static QString firmware() { return "firmware.bin"; }
    static QString image() { return "sample.img"; }
    QString saved() const { return m_scratch.filePath("received.bin"); }

    /// As any program that has the port open, and its lock.
    QLockFile portLock{"/var/lock/LCK..ttyUSB0"};

private:
    QString control() const { return m_scratch.filePath("control"); }

    QTemporaryDir m_scratch{QDir::tempPath() + "/corvane-tour-XXXXXX"};
};

struct Step {
    const char *picture; ///< the name of its PNG file; none for a step that shows nothing
    const char *description;
    std::function<bool(Stage &)> perform;
};
using Steps = std::vector<Step>;

Step list(const char *picture, const char *description, const char *comboBox)
{
    return {picture, description, [comboBox](Stage &stage) { return stage.showList(comboBox); }};
}

Step closeTheList()
{
    return {nullptr, "Close it", [](Stage &stage) { return stage.closeList(); }};
}

Steps connecting()
{
    return {
        {"start", "Start: the adapter is in the list of ports",
         [](Stage &stage) {
             return stage.shows("comboBox_portlist", "ttyUSB0 (USB Serial)")
                 && stage.waitUntil("the window is on the screen",
                                    [&stage] { return stage.isActive(); });
         }},
        list("port-list", "Open a list: the ports", "comboBox_portlist"),
        closeTheList(),
        list("baud-rate-list", "Open a list: the only baud rate", "comboBox_baudrate"),
        closeTheList(),
        {"hover-connect", "Point at Connect",
         [](Stage &stage) { return stage.hover("pushButton_connect"); }},
        {"pressed-connect", "Press Connect, and keep it pressed",
         [](Stage &stage) { return stage.press("pushButton_connect"); }},
        {"hover-about", "Let go beside it, and point at About",
         [](Stage &stage) {
             return stage.release("pushButton_connect") && stage.hover("toolButton_about");
         }},
        {"connecting", "Connect to a camera that is switched off: it is waited for",
         [](Stage &stage) {
             return stage.hover("label_logo_title") && stage.tell("silent on")
                 && stage.click("pushButton_connect")
                 && stage.waitForEnabled("pushButton_connect", false);
         }},
        {"no-answer", "Five seconds later it says so",
         [](Stage &stage) { return stage.waitForDialog("Error: Connection fail!"); }},
        {"connect", "Switch it on, connect: the camera reports its version and settings",
         [](Stage &stage) {
             return stage.closeDialog() && stage.tell("silent off") && stage.connectCamera()
                 && stage.shows("textEdit_device_info", "Device Version: 1.0.0.6");
         }},
    };
}

Steps changingSettings()
{
    return {
        list("tracking-list", "Open a list: the tracking modes", "comboBox_autotracking"),
        {"change", "Change: pan tracking, preset 7, upside down, no auto zoom, custom zoom offset",
         [](Stage &stage) {
             return stage.closeList() && stage.choose("comboBox_autotracking", 2)
                 && stage.waitForEnabled("comboBox_targetmissing")
                 && stage.choose("comboBox_targetmissing", 9)
                 && stage.click("radioButton_upside_down") && stage.choose("comboBox_autozoom", 0)
                 && stage.choose("comboBox_zoomoffset", 3)
                 && stage.waitUntil("everything is chosen", [&stage] {
                        return stage.index("comboBox_autotracking") == 2
                            && stage.index("comboBox_targetmissing") == 9
                            && stage.isChecked("radioButton_upside_down")
                            && stage.index("comboBox_zoomoffset") == 3;
                    });
         }},
        list("zoom-list", "Open a list: auto zoom", "comboBox_autozoom"),
        closeTheList(),
        list("target-list", "Open a list: what to do without a target", "comboBox_targetmissing"),
        closeTheList(),
        list("offset-list", "Open a list: the zoom offsets", "comboBox_zoomoffset"),
        closeTheList(),
        {"hover-apply", "Point at Apply",
         [](Stage &stage) { return stage.hover("pushButton_apply"); }},
        {"pressed-apply", "Press Apply, and keep it pressed",
         [](Stage &stage) { return stage.press("pushButton_apply"); }},
        {"apply", "Let go beside it; apply: the camera acknowledges",
         [](Stage &stage) {
             return stage.release("pushButton_apply") && stage.click("pushButton_apply")
                 && stage.waitForDialog("Information: Apply Success.");
         }},
        {"zoom", "Set the second zoom preset: the camera reports its zoom",
         [](Stage &stage) {
             return stage.closeDialog() && stage.click("pushButton_custom_zoom_2")
                 && stage.shows("textEdit_device_info",
                                "Device Version: 1.0.0.6\nSetting custom zoom: 25");
         }},
        {"apply-failed", "Apply to a camera that is switched off: five seconds later it says so",
         [](Stage &stage) {
             return stage.tell("silent on") && stage.click("pushButton_apply")
                 && stage.waitForDialog("Error: Apply fail!");
         }},
        {"zoom-failed", "Set the first zoom preset: two seconds later it says that this failed",
         [](Stage &stage) {
             return stage.closeDialog() && stage.click("pushButton_custom_zoom_1")
                 && stage.shows("textEdit_device_info",
                                "Device Version: 1.0.0.6\nSetting custom zoom 1 failed!")
                 && stage.tell("silent off");
         }},
        {"about", "About: the program's version",
         [](Stage &stage) {
             return stage.click("toolButton_about")
                 && stage.waitForDialog("about: Corvane: Version 1.0.0.5");
         }},
    };
}

Steps failingToUpgrade()
{
    return {
        {"firmware", "The firmware page at rest",
         [](Stage &stage) { return stage.closeDialog() && stage.showPage(1); }},
        {"choose-file", "Choose a file, from a dialog",
         [](Stage &stage) {
             return stage.click("pushButton_choose_file")
                 && stage.waitUntil("the dialog is open", [&stage] { return stage.isBlocked(); });
         }},
        {"no-image", "Choose a file that is no firmware image: it is refused",
         [](Stage &stage) {
             return stage.dismiss()
                 && stage.waitUntil("the dialog is closed", [&stage] { return !stage.isBlocked(); })
                 && stage.type("lineEdit_firmware", stage.firmware())
                 && stage.shows("textEdit_firmware_info", "Firmware file error.")
                 && !stage.isEnabled("pushButton_start_upgrade");
         }},
        {"image", "Choose a firmware image: its versions are shown",
         [](Stage &stage) {
             return stage.chooseImage()
                 && stage.shows("textEdit_firmware_info",
                                "Protocol version: 1.2.0.7\nImage version: 1.0.0.7");
         }},
        {"not-announced", "Upgrade a camera that is switched off: five seconds later it says so",
         [](Stage &stage) {
             return stage.tell("silent on") && stage.click("pushButton_start_upgrade")
                 && stage.waitForDialog("Error: Connection timeout!");
         }},
        {"stopped", "Upgrade a camera that is switched off half-way: it says so after two seconds",
         [](Stage &stage) {
             return stage.closeDialog() && stage.tell("silent off") && stage.connectCamera()
                 && stage.chooseImage() && stage.upgradeHalfWay() && stage.tell("silent on")
                 && stage.waitForDialog("Error: Transmission stop!");
         }},
    };
}

Steps upgrading()
{
    return {
        {"half-way", "Upgrade: half of it is done",
         [](Stage &stage) {
             return stage.closeDialog() && stage.tell("silent off") && stage.connectCamera()
                 && stage.chooseImage() && stage.upgradeHalfWay();
         }},
        {"complete", "The upgrade is complete, and the camera has received what was packed",
         [](Stage &stage) {
             return stage.shows("textEdit_firmware_info",
                                "Update is complete. Device auto-rebooting.", kUpgradeLimitMs)
                 && stage.waitForEnabled("pushButton_connect")
                 && stage.waitUntil("the firmware is saved", [&stage] {
                        return contentsOf(stage.saved()) == contentsOf(SAMPLE_FIRMWARE);
                    });
         }},
        {"reconnect", "Connect again when it has rebooted: it reports its new version",
         [](Stage &stage) {
             return stage.waitUntil(
                        "it has rebooted",
                        [&stage] { return stage.output().contains("running version 1.0.0.7"); })
                 && stage.connectCamera() && stage.showPage(0)
                 && stage.shows("textEdit_device_info", "Device Version: 1.0.0.7");
         }},
        {"disconnect", "Disconnect",
         [](Stage &stage) {
             return stage.click("pushButton_disconnect")
                 && stage.waitForEnabled("tabWidget", false);
         }},
    };
}

Steps losingThePort()
{
    return {
        {"locked", "Connect while another program has locked the port",
         [](Stage &stage) {
             return stage.portLock.tryLock() && stage.click("pushButton_connect")
                 && stage.waitForDialog("Error: Permission error while locking the device");
         }},
        {"unplugged", "Connect, pull the plug: the window is disconnected again",
         [](Stage &stage) {
             stage.portLock.unlock();
             return stage.closeDialog() && stage.connectCamera() && stage.tell("unplug")
                 && stage.waitForEnabled("tabWidget", false)
                 && stage.waitForEnabled("pushButton_connect");
         }},
        {"no-port", "Connect to the adapter that is gone",
         [](Stage &stage) {
             return stage.click("pushButton_connect")
                 && stage.waitForDialog("Error: No such file or directory");
         }},
        {"no-ports", "Open the list of ports again: it is empty",
         [](Stage &stage) {
             return stage.closeDialog() && stage.openList("comboBox_portlist")
                 && stage.shows("comboBox_portlist", "");
         }},
        {nullptr, "Close the window: the program ends",
         [](Stage &stage) {
             return stage.close() && stage.waitUntilEnded() && stage.exitCode() == 0;
         }},
    };
}

Steps allSteps()
{
    Steps all;
    for (const Steps &part :
         {connecting(), changingSettings(), failingToUpgrade(), upgrading(), losingThePort()}) {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}

/// The folder of the pictures, without those of an earlier tour.
QDir emptied(const QString &path)
{
    // Whole, because the tour goes to another folder.
    QDir directory(QFileInfo(path).absoluteFilePath());
    directory.mkpath(".");
    const QStringList oldPictures = directory.entryList({"*.png"});
    for (const QString &picture : oldPictures) {
        directory.remove(picture);
    }
    return directory;
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    QStringList arguments = QCoreApplication::arguments().mid(1);
    if (arguments.isEmpty()) {
        say("usage: corvane-tour DIRECTORY-FOR-THE-PICTURES [ARGUMENT-OF-CORVANE...]");
        return 100;
    }
    const QDir directory = emptied(arguments.takeFirst());

    Stage stage;
    if (!stage.start(arguments)) {
        say("Corvane has not started: " + stage.errorText());
        return 100;
    }
    int number = 0;
    for (const Step &step : allSteps()) {
        ++number;
        say(QStringLiteral("%1. %2").arg(number, 2).arg(QLatin1String(step.description)));
        bool isDone = step.perform(stage);
        if (isDone && step.picture != nullptr) {
            const QString path = directory.filePath(
                QStringLiteral("%1-%2.png").arg(number, 2, 10, QLatin1Char('0')).arg(step.picture));
            isDone = stage.picture(path);
        }
        if (!isDone) {
            say("    went wrong: " + stage.errorText());
            say("What the programs printed:\n" + stage.output());
            return number;
        }
    }
    say("The pictures are in " + directory.path());
    return 0;
}
