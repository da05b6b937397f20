// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "rows.h"
#include "settingswords.h"

namespace {

QByteArray file(const QByteArray &rest)
{
    return R"({"corvane-settings": 1, )" + rest + "}";
}

QByteArray otherThan(const char *key, const QByteArray &value)
{
    QByteArray text = file(R"("auto-tracking": "pan", "target-missing": "preset-7",
        "direction": "upside-down", "auto-zoom": "off", "zoom-offset": "custom")");
    const int start = text.indexOf('"' + QByteArray(key) + '"');
    const int end = text.indexOf('"', text.indexOf('"', text.indexOf(':', start)) + 1) + 1;
    return text.replace(start, end - start, '"' + QByteArray(key) + "\": " + value);
}

} // namespace

/// Settings in the words of the command line and of files.
class SettingsWordsTest : public QObject {
    Q_OBJECT

private slots:
    void setsEveryWord_data()
    {
        addRows<QString, QString, QByteArray>(
            {"key", "word", "payload"},
            {{"tracking off", "auto-tracking", "off", "0000000000"},
             {"tracking auto", "auto-tracking", "auto", "0100000000"},
             {"tracking pan", "auto-tracking", "pan", "0200000000"},
             {"tracking tilt", "auto-tracking", "tilt", "0300000000"},
             {"missing off", "target-missing", "off", "0000000000"},
             {"missing home", "target-missing", "home", "0001000000"},
             {"missing preset 0", "target-missing", "preset-0", "0002000000"},
             {"missing preset 1", "target-missing", "preset-1", "0003000000"},
             {"missing preset 2", "target-missing", "preset-2", "0004000000"},
             {"missing preset 3", "target-missing", "preset-3", "0005000000"},
             {"missing preset 4", "target-missing", "preset-4", "0006000000"},
             {"missing preset 5", "target-missing", "preset-5", "0007000000"},
             {"missing preset 6", "target-missing", "preset-6", "0008000000"},
             {"missing preset 7", "target-missing", "preset-7", "0009000000"},
             {"upright", "direction", "upright", "0000000000"},
             {"upside down", "direction", "upside-down", "0000010000"},
             {"zoom off", "auto-zoom", "off", "0000000000"},
             {"zoom on", "auto-zoom", "on", "0000000100"},
             {"offset 0", "zoom-offset", "0", "0000000000"},
             {"offset 1", "zoom-offset", "1", "0000000001"},
             {"offset 2", "zoom-offset", "2", "0000000002"},
             {"offset custom", "zoom-offset", "custom", "0000000003"}});
    }

    void setsEveryWord()
    {
        QFETCH(QString, key);
        QFETCH(QString, word);
        CameraSettings settings;
        QString fault;
        QVERIFY(SettingsWords::set(&settings, key, word, &fault));
        QTEST(cameraSettingsPayload(settings).toHex(), "payload");
        QCOMPARE(SettingsWords::word(settings, key), word);
        QVERIFY(!SettingsWords::unknownKey(settings));
    }

    void saysWhatAWordCanBe_data()
    {
        addRows<QString, QString, QString>(
            {"key", "word", "fault"},
            {{"another word", "auto-zoom", "yes", "auto-zoom is off or on, not 'yes'"},
             {"no word", "auto-zoom", "", "auto-zoom is off or on, not ''"},
             {"upper case", "direction", "Upright",
              "direction is upright or upside-down, not 'Upright'"},
             {"another key", "zoom", "1",
              "'zoom' is no setting; they are auto-tracking, target-missing, direction, auto-zoom, "
              "zoom-offset"}});
    }

    void saysWhatAWordCanBe()
    {
        QFETCH(QString, key);
        QFETCH(QString, word);
        CameraSettings settings;
        QString fault;
        QVERIFY(!SettingsWords::set(&settings, key, word, &fault));
        QTEST(fault, "fault");
    }

    void keepsNumbersWithoutAWord()
    {
        SettingsReport report;
        report.panTracking = 1;
        report.targetMissing = -1;
        report.autoZoom = 5;
        report.zoomOffset = 4;
        const CameraSettings settings = SettingsWords::reported(report);
        QCOMPARE(cameraSettingsPayload(settings).toHex(), QByteArray("02ff000104"));
        QCOMPARE(SettingsWords::word(settings, "target-missing"), QString("unknown (-1)"));
        QCOMPARE(SettingsWords::word(settings, "zoom-offset"), QString("unknown (4)"));
        QCOMPARE(SettingsWords::unknownKey(settings).value_or(""), QString("target-missing"));
    }

    void writesAFileThatAPersonCanRead()
    {
        const CameraSettings settings{2, 9, true, 0, 3};
        QCOMPARE(SettingsWords::toFile(settings),
                 QByteArray("{\n"
                            "    \"corvane-settings\": 1,\n"
                            "    \"auto-tracking\": \"pan\",\n"
                            "    \"target-missing\": \"preset-7\",\n"
                            "    \"direction\": \"upside-down\",\n"
                            "    \"auto-zoom\": \"off\",\n"
                            "    \"zoom-offset\": \"custom\"\n"
                            "}\n"));
    }

    void readsAFile()
    {
        QString fault;
        // In any order and layout, up to the largest size.
        const QByteArray contents =
            file(R"("zoom-offset":"custom","direction":"upside-down","auto-zoom":"off",
                    "target-missing":"preset-7","auto-tracking":"pan")")
                .leftJustified(1 << 16, ' ');
        const auto settings = SettingsWords::fromFile(contents, &fault);
        QCOMPARE(fault, QString());
        QVERIFY(settings.has_value());
        QCOMPARE(cameraSettingsPayload(*settings).toHex(), QByteArray("0209010003"));
    }

    void refusesOtherFiles_data()
    {
        const QString noFile = "is no file of settings: one has \"corvane-settings\": 1";
        addRows<QByteArray, QString>(
            {"contents", "fault"},
            {{"empty", "", "offset 0: illegal value"},
             {"cut short", file("").chopped(1), "offset 24: unterminated object"},
             {"a list", "[1]", noFile},
             {"another object", "{}", noFile},
             {"a later format", R"({"corvane-settings": 2})", noFile},
             {"the format as text", R"({"corvane-settings": "1"})", noFile},
             {"too large", QByteArray((1 << 16) + 1, ' '), "too large for a file of settings"},
             {"a setting is missing", R"({"corvane-settings": 1, "auto-tracking": "off"})",
              "target-missing is missing"},
             {"a word is wrong", otherThan("auto-zoom", "\"maybe\""),
              "auto-zoom is off or on, not 'maybe'"},
             {"a number in the place of a word", otherThan("zoom-offset", "1"),
              "zoom-offset is 0 or 1 or 2 or custom, not ''"},
             {"something more", otherThan("auto-zoom", R"("on", "gamma": "1")"),
              "'gamma' is no setting; they are auto-tracking, target-missing, direction, "
              "auto-zoom, "
              "zoom-offset"}});
    }

    void refusesOtherFiles()
    {
        QFETCH(QByteArray, contents);
        QString fault;
        QVERIFY(!SettingsWords::fromFile(contents, &fault));
        QTEST(fault, "fault");
    }

    void findsWhatDiffers()
    {
        const CameraSettings wanted{2, 9, true, 0, 3};
        QVERIFY(SettingsWords::differences(wanted, wanted).isEmpty());
        const CameraSettings found{2, 12, true, 1, 3};
        QStringList texts;
        const auto differences = SettingsWords::differences(wanted, found);
        for (const auto &difference : differences) {
            texts += difference.key + ": " + difference.wanted + ", " + difference.found;
        }
        QCOMPARE(texts.join("; "),
                 QString("target-missing: preset-7, unknown (12); auto-zoom: off, on"));
    }
};

QTEST_GUILESS_MAIN(SettingsWordsTest)

#include "tst_settingswords.moc"
