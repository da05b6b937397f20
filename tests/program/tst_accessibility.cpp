// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "step.h"

#include <QFile>
#include <QImage>
#include <QJsonArray>
#include <QJsonObject>

namespace {

// "role: what is spoken first (what is spoken after it)". A list is spoken by its label; its name
// is what is chosen in it.
QStringList always()
{
    return {
        "Window: Corvane",
        "StaticText: Corvane",
        "Button: About (Shows the version of Corvane)",
        "Grouping: Connection",
        "StaticText: Port :",
        "ComboBox: Port :",
        "StaticText: Baudrate:",
        "ComboBox: Baudrate:",
        "Button: Connect",
        "Button: Disconnect",
        "Client: Pages",
        "PageTab: Camera Setting",
        "PageTab: Firmware Update",
    };
}
QStringList cameraPage()
{
    return {
        "PageTabList: Camera Setting",
        "Client: Camera Setting",
        "StaticText: Auto Tracking :",
        "ComboBox: Auto Tracking :",
        "StaticText: Target Missing Compensation :",
        "ComboBox: Target Missing Compensation :",
        "StaticText: Auto Zoom :",
        "ComboBox: Auto Zoom :",
        "StaticText: Zoom Offset:",
        "ComboBox: Zoom Offset:",
        "StaticText: Camera Installed direction :",
        "Grouping: Camera Installed direction",
        "RadioButton: Upright",
        "RadioButton: Upside down",
        "StaticText: Camera Custom Zoom :",
        "Grouping: Camera Custom Zoom",
        "Button: Zoom 1 (Lets the camera set its first zoom preset)",
        "Button: Zoom 2 (Lets the camera set its second zoom preset)",
        "EditableText: Device information (The version of the camera and the last zoom preset)",
        "Button: Default (Fills in the usual settings and sends nothing)",
        "Button: Apply (Sends all settings to the camera)",
    };
}
QStringList firmwarePage()
{
    return {
        "PageTabList: Firmware Update",
        "Client: Firmware Update",
        "Grouping: Step 1:",
        "Button: Choose file (Chooses the firmware image)",
        "EditableText: Firmware image (The path of the file)",
        "Grouping: Step 2:",
        "Button: Upgrade (Sends the firmware to the camera)",
        "ProgressBar: Upload",
        "EditableText: Firmware information"
            + QStringLiteral(" (The versions of the image and the outcome of the upgrade)"),
    };
}

/// What is of use in the tree: without panels and other helpers that have no name.
QStringList spokenIn(const QJsonArray &objects)
{
    const QStringList helpers{"Client",    "Grouping",  "Grip",   "LayeredPane",
                              "ScrollBar", "StatusBar", "Border", "Pane"};
    QStringList lines;
    for (const QJsonValue &object : objects) {
        const QString role = object["role"].toString();
        const QString label = object["label"].toString();
        const QString spoken = label.isEmpty() ? object["name"].toString() : label;
        const QString description = object["description"].toString();
        if (spoken.isEmpty() && helpers.contains(role)) {
            continue;
        }
        lines << role + ": " + spoken
                + (description.isEmpty() ? QString() : QStringLiteral(" (%1)").arg(description));
    }
    lines.sort();
    return lines;
}

/// Texts that cannot be read well. The style sheets fix the colors of push buttons, and hide what
/// is chosen in a setting's list while it is disabled.
QStringList unreadable(const QJsonObject &contrasts, const QStringList &hidden)
{
    constexpr double kReadable = 4.5;
    QStringList names;
    for (auto text = contrasts.begin(); text != contrasts.end(); ++text) {
        const double contrast = text->toDouble();
        const bool isAsItShouldBe =
            hidden.contains(text.key()) ? contrast == 1 : contrast >= kReadable;
        if (!isAsItShouldBe && !text.key().startsWith("pushButton_")) {
            names << QStringLiteral("%1: %2").arg(text.key()).arg(contrast, 0, 'f', 2);
        }
    }
    return names;
}

/// Holds what the window says at this moment, to ear and eye, against what it should.
class Inspection {
public:
    Inspection(GuiDriver &corvane, const QStringList &page, const QStringList &hidden = {})
        : m_expected(always() + page)
    {
        m_expected.sort();
        const QJsonObject found = corvane.accessibility();
        m_spoken = spokenIn(found["objects"].toArray());
        m_unreadable = unreadable(found["contrasts"].toObject(), hidden);
        qInfo("%s", qPrintable(contrastLines(found["contrasts"].toObject())));
    }

    QString faults() const
    {
        QStringList faults = m_unreadable;
        for (const QString &line : m_spoken) {
            if (m_spoken.count(line) != m_expected.count(line)) {
                faults << "unexpected " + line;
            }
        }
        for (const QString &line : m_expected) {
            if (!m_spoken.contains(line)) {
                faults << "missing " + line;
            }
        }
        return faults.join("\n");
    }

private:
    static QString contrastLines(const QJsonObject &contrasts)
    {
        QStringList lines;
        for (auto text = contrasts.begin(); text != contrasts.end(); ++text) {
            lines << QStringLiteral("%1 %2").arg(text->toDouble(), 5, 'f', 2).arg(text.key());
        }
        return lines.join("\n");
    }

    QStringList m_expected;
    QStringList m_spoken;
    QStringList m_unreadable;
};

QStringList settingLists()
{
    return {"comboBox_autotracking", "comboBox_targetmissing", "comboBox_autozoom",
            "comboBox_zoomoffset"};
}

} // namespace

#define INSPECT(...)                                                                               \
    do {                                                                                           \
        const QString faults = Inspection(fixture.corvane, __VA_ARGS__).faults();                  \
        QVERIFY2(faults.isEmpty(), qPrintable(faults));                                            \
    } while (false)

/// The unmodified program, for someone who does not see its window, or not well.
class AccessibilityTest : public QObject {
    Q_OBJECT

private slots:
    void everythingHasItsNameAndCanBeReadInEveryState()
    {
        PatientFixture fixture;
        DO(fixture.start({"--settings", "0,0,0,0,0"}));
        INSPECT(cameraPage(), settingLists());

        DO(fixture.tell("silent on"));
        DO(fixture.corvane.click("pushButton_connect"));
        DO(fixture.corvane.waitForEnabled("pushButton_connect", false));
        INSPECT(cameraPage(), settingLists());
        DO(fixture.corvane.holdLimits(false));
        DO(fixture.corvane.waitForDialog("Error: Connection fail!"));
        DO(fixture.corvane.answerDialog());
        DO(fixture.corvane.waitForDialog({}));
        DO(fixture.corvane.holdLimits(true));

        DO(fixture.tell("silent off"));
        DO(fixture.connectCamera());
        INSPECT(cameraPage(), {"comboBox_targetmissing", "comboBox_autozoom"});
        DO(fixture.corvane.choose("comboBox_autotracking", 1));
        DO(fixture.corvane.waitForEnabled("comboBox_autozoom"));
        INSPECT(cameraPage());

        DO(fixture.corvane.choose("tabWidget", 1));
        DO(fixture.corvane.waitUntil(
            "the page is shown", [&fixture] { return fixture.corvane.index("tabWidget") == 1; }));
        INSPECT(firmwarePage());
        // Far more than passes before the camera is silent.
        DO(fixture.pack(QByteArray(100'000, 'x')));
        DO(fixture.corvane.type("lineEdit_firmware", fixture.path("firmware")));
        DO(fixture.corvane.waitForText("textEdit_firmware_info", "Firmware file error."));
        INSPECT(firmwarePage());

        DO(fixture.startUpgrade());
        DO(fixture.corvane.waitUntil("it has begun", [&fixture] {
            return fixture.corvane.value("progressBar_updating") > 0;
        }));
        INSPECT(firmwarePage());
        DO(fixture.tell("silent on"));
        DO(fixture.corvane.holdLimits(false));
        DO(fixture.corvane.waitForDialog("Error: Transmission stop!"));
        DO(fixture.corvane.answerDialog());
        DO(fixture.corvane.waitForEnabled("pushButton_connect"));

        DO(fixture.tell("silent off"));
        DO(fixture.corvane.holdLimits(true));
        DO(fixture.pack(QByteArray(300, 'x')));
        DO(fixture.connectCamera());
        DO(fixture.startUpgrade());
        DO(fixture.waitUntilComplete());
        INSPECT(firmwarePage());
    }

    void resultsAreSpokenWhereverTheFocusIs()
    {
        PatientFixture fixture;
        DO(fixture.start({"--camera-version", "1.0.10.16", "--zoom-2", "272"}));
        // Long enough for what its start shows to be spoken before its end.
        DO(fixture.pack(QByteArray(4000, 'x')));
        DO(fixture.corvane.listen());
        DO(fixture.connectCamera());
        DO(hears(fixture, "Device Version: 1.0.a.10"));
        DO(fixture.corvane.click("pushButton_custom_zoom_2"));
        DO(hears(fixture, "Device Version: 1.0.a.10\nSetting custom zoom: 272"));
        DO(fixture.tell("silent on"));
        DO(fixture.corvane.holdLimits(false));
        DO(fixture.corvane.click("pushButton_custom_zoom_1"));
        DO(hears(fixture, "Device Version: 1.0.a.10\nSetting custom zoom 1 failed!"));
        DO(fixture.corvane.holdLimits(true));
        DO(fixture.tell("silent off"));

        DO(fixture.corvane.choose("tabWidget", 1));
        DO(fixture.corvane.type("lineEdit_firmware", fixture.path("firmware")));
        DO(hears(fixture, "Firmware file error."));
        const QString versions = "Protocol version: 1.2.0.7\nImage version: 1.0.0.6";
        DO(fixture.corvane.type("lineEdit_firmware", fixture.path("image")));
        DO(hears(fixture, versions));
        DO(fixture.corvane.click("pushButton_start_upgrade"));
        DO(fixture.waitUntilComplete());
        DO(hears(fixture, "Update is complete. Device auto-rebooting."));
        QCOMPARE(
            fixture.corvane.accessibility()["heard"].toVariant().toStringList(),
            QStringList({"Device Version: 1.0.a.10",
                         "Device Version: 1.0.a.10\nSetting custom zoom: 272",
                         "Device Version: 1.0.a.10\nSetting custom zoom 1 failed!",
                         "Firmware file error.", versions, versions + "\nCurrent version: 1.0.a.10",
                         "Update is complete. Device auto-rebooting."}));
    }

    void whatIsTypedIntoAPaneIsNotSpokenTwice()
    {
        PatientFixture fixture;
        DO(fixture.start());
        DO(fixture.corvane.listen());
        DO(fixture.connectCamera());
        DO(hears(fixture, "Device Version: 1.0.0.6"));
        DO(fixture.corvane.type("textEdit_device_info", "note"));
        DO(fixture.corvane.choose("tabWidget", 1));
        DO(fixture.pack(QByteArray(300, 'x')));
        DO(fixture.corvane.type("lineEdit_firmware", fixture.path("firmware")));
        DO(hears(fixture, "Firmware file error."));
        QCOMPARE(fixture.corvane.accessibility()["heard"].toVariant().toStringList(),
                 QStringList({"Device Version: 1.0.0.6", "Firmware file error."}));
    }

    void aDenseScreenShowsTheLargerPictures()
    {
        qputenv("QT_SCALE_FACTOR", "2");
        PatientFixture fixture;
        const bool isStarted = fixture.start();
        qunsetenv("QT_SCALE_FACTOR");
        DO(isStarted);
        DO(fixture.corvane.picture(fixture.path("look.png")));

        // The middle of the banner, where nothing lies on it.
        const QRect middle(900, 0, 800, 200);
        const QImage look = QImage(fixture.path("look.png")).copy(middle);
        QImage banner(LARGE_BANNER);
        banner.setDevicePixelRatio(1); // so that pixels are counted
        QCOMPARE(look.convertToFormat(QImage::Format_RGB32),
                 banner.copy(middle).convertToFormat(QImage::Format_RGB32));
    }

    void largeLettersAreNotCutOffInButtons()
    {
        qputenv("QT_FONT_DPI", "144");
        PatientFixture fixture;
        const bool isStarted = fixture.start();
        qunsetenv("QT_FONT_DPI");
        DO(isStarted);
        for (const char *const button :
             {"pushButton_connect", "pushButton_disconnect", "pushButton_default",
              "pushButton_apply", "pushButton_custom_zoom_1", "pushButton_custom_zoom_2"}) {
            QVERIFY2(!fixture.corvane.isCut(button), button);
        }
    }

private:
    static bool hears(PatientFixture &fixture, const QString &text)
    {
        return fixture.corvane.waitUntil("a screen reader hears " + text, [&fixture, text] {
            return fixture.corvane.accessibility()["heard"].toArray().contains(text);
        });
    }
};

QTEST_GUILESS_MAIN(AccessibilityTest)
#include "tst_accessibility.moc"
