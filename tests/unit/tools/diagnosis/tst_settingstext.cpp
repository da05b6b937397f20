// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "rows.h"
#include "settingstext.h"

class SettingsTextTest : public QObject {
    Q_OBJECT

private slots:
    // Offset 12 holds the first byte of the version and 24 the last of the settings.
    void knowsWhatAFrameIsLongEnoughFor()
    {
        QVERIFY(!hasWholeVersion(QByteArray(15, '\0')));
        QVERIFY(hasWholeVersion(QByteArray(16, '\0')));
        QVERIFY(!isWholeReport(QByteArray(24, '\0')));
        QVERIFY(isWholeReport(QByteArray(25, '\0')));
    }

    void namesEachSetting_data()
    {
        // settings: offsets 16 to 24
        addRows<QByteArray, QStringList>(
            {"settings", "words"},
            {{"all off", "00 00 00 00 00 00 00 00 00", {"OFF", "OFF", "Upright", "OFF", "0"}},
             {"the usual choices",
              "01 00 00 00 00 01 01 01 01",
              {"Auto Tracking", "ON (Home)", "Upright", "ON", "1"}},
             {"the last of each",
              "09 00 00 01 01 00 01 01 03",
              {"Tilt Tracking", "Preset 7", "Upside down", "ON", "Custom"}},
             {"pan alone, the first preset, one direction flag",
              "02 00 00 01 00 01 00 00 02",
              {"Pan Tracking", "Preset 0", "Upright", "OFF", "2"}},
             {"numbers beyond the lists",
              "0A 00 00 00 00 00 00 02 04",
              {"OFF", "unknown (10)", "Upright", "ON", "unknown (4)"}},
             {"negative numbers",
              "FF 00 00 00 00 00 00 80 80",
              {"OFF", "unknown (-1)", "Upright", "ON", "unknown (-128)"}}});
    }

    void namesEachSetting()
    {
        QFETCH(QByteArray, settings);
        QFETCH(QStringList, words);
        const QByteArray frame =
            QByteArray::fromHex("FF FF 17 41 01 06 07 06 09 05 16 00 01 00 00 06 " + settings);
        QStringList names;
        QStringList values;
        const QVector<NamedSetting> settingsOfFrame = namedSettings(DeviceReply(frame).settings());
        for (const NamedSetting &setting : settingsOfFrame) {
            names << setting.name;
            values << setting.value;
        }
        QCOMPARE(values, words);
        QCOMPARE(names,
                 (QStringList{"Auto Tracking", "Target Missing Compensation",
                              "Camera Installed direction", "Auto Zoom", "Zoom Offset"}));
    }
};

QTEST_GUILESS_MAIN(SettingsTextTest)
#include "tst_settingstext.moc"
