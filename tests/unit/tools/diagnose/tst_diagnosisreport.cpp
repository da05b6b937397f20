// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "diagnosisreport.h"
#include "rows.h"

using std::chrono::milliseconds;

static PortFinding finding(PortFinding::Kind kind = PortFinding::Kind::Open)
{
    PortFinding result;
    result.kind = kind;
    result.port = "ttyUSB0";
    result.devicePath = "/dev/ttyUSB0";
    result.ports = QStringList{"ttyUSB0 (USB Serial)"};
    return result;
}

static LineRecord record(const QByteArray &hexadecimal)
{
    Observation observation;
    observation.take(QByteArray::fromHex(hexadecimal), milliseconds(15));
    return observation.record();
}

static QByteArray answer()
{
    return "FF FF 17 41 01 06 07 06 09 05 16 00 01 00 00 06 09 00 00 01 01 01 00 00 03 A6";
}

static Diagnosis diagnosis()
{
    return {DiagnosisStatus::Warning,
            {"first-id", "The first sentence.", "The first remedy."},
            {{"second-id", "The second sentence.", "The second remedy."}}};
}

static QJsonObject json(const Diagnosis &diagnosis, const PortFinding &finding,
                        const LineRecord &line)
{
    const QByteArray report = jsonText(jsonReport(diagnosis, finding, line));
    return report.endsWith("}\n") ? QJsonDocument::fromJson(report).object() : QJsonObject();
}

class DiagnosisReportTest : public QObject {
    Q_OBJECT

private slots:
    void tellsEverythingInWords()
    {
        QCOMPARE(
            textReport(diagnosis(), finding(), record("00 " + answer())),
            QString("The first sentence.\n"
                    "The first remedy.\n"
                    "\n"
                    "The second sentence.\n"
                    "The second remedy.\n"
                    "\n"
                    "Device Version: 1.0.0.6\n"
                    "Auto Tracking: Pan Tracking\n"
                    "Target Missing Compensation: Preset 7\n"
                    "Camera Installed direction: Upside down\n"
                    "Auto Zoom: OFF\n"
                    "Zoom Offset: Custom\n"
                    "Received: bytes 27, whole frames 1, wrong sums 0, broken off 0, bytes outside "
                    "whole frames 1\n"
                    "First bytes: 00 FF FF 17 41 01 06 07 06 09 05 16 00 01 00 00 06 09 00 00 01 "
                    "01 01 00 00 03 A6\n"
                    "Verdict on ttyUSB0: first-id, second-id\n"));
    }

    void leavesOutWhatIsNotThere()
    {
        QCOMPARE(
            textReport({DiagnosisStatus::Answer, {"id", "A sentence.", {}}, {}}, finding(), {}),
            QString("A sentence.\n"
                    "\n"
                    "Received: bytes 0, whole frames 0, wrong sums 0, broken off 0, bytes outside "
                    "whole frames 0\n"
                    "Verdict on ttyUSB0: id\n"));
    }

    void tellsTheVersionOfAnAnswerWithoutSettings()
    {
        const LineRecord line = record("FF FF 0E 41 01 06 07 06 09 05 16 00 01 02 0A 10 A4");
        const QString report = textReport(diagnosis(), finding(), line);
        QVERIFY(report.contains("\nDevice Version: 1.2.a.10\nReceived: "));
        const QJsonObject object = json(diagnosis(), finding(), line);
        QCOMPARE(object["version"].toString(), QString("1.2.a.10"));
        QVERIFY(!object.contains("settings"));

        const LineRecord bare = record("FF FF 0A 41 01 06 07 06 09 05 16 00 83");
        QVERIFY(!textReport(diagnosis(), finding(), bare).contains("Version"));
        QVERIFY(!json(diagnosis(), finding(), bare).contains("version"));
        QCOMPARE(json(diagnosis(), finding(), bare)["answerMilliseconds"].toInt(), 15);
    }

    void doesNotTellOfALineThatWasNotUsed_data()
    {
        using Kind = PortFinding::Kind;
        addRows<int, bool>({"kind", "wasUsed"},
                           {{"open", static_cast<int>(Kind::Open), true},
                            {"hung up", static_cast<int>(Kind::HungUp), true},
                            {"no device", static_cast<int>(Kind::NoDevice), false},
                            {"held", static_cast<int>(Kind::Held), false},
                            {"cannot open", static_cast<int>(Kind::CannotOpen), false}});
    }

    void doesNotTellOfALineThatWasNotUsed()
    {
        QFETCH(int, kind);
        QFETCH(bool, wasUsed);
        const PortFinding given = finding(static_cast<PortFinding::Kind>(kind));
        QCOMPARE(textReport(diagnosis(), given, {}).contains("Received: "), wasUsed);
        QCOMPARE(json(diagnosis(), given, {}).contains("received"), wasUsed);
    }

    void tellsEverythingInJson()
    {
        const QByteArray expected = R"json({
        "verdict": "first-id", "sentence": "The first sentence.", "remedy": "The first remedy.",
        "status": 1, "port": "ttyUSB0", "device": "/dev/ttyUSB0",
        "ports": ["ttyUSB0 (USB Serial)"],
            "furtherWarnings": [{"verdict": "second-id", "sentence": "The second sentence.",
                                 "remedy": "The second remedy."}],
            "holders": [],
            "received": {
                "bytes": 82, "frames": 5, "answers": 1, "ownRequests": 1,
                "otherAcknowledgements": 1, "otherCommands": [58],
                "foreignFrames": 2, "foreignTypes": [2, 255],
                "wrongSums": 0, "brokenOff": 0, "strayBytes": 2,
                "firstBytes": "00 01 FF FF 17 41 01 06 07 06 09 05 16 00 01 00 00 06 09 00 00 01 01 01 00 00 03 A6 FF FF 0A 41"
            },
            "answerMilliseconds": 15, "version": "1.0.0.6",
            "settings": {"Auto Tracking": "Pan Tracking", "Target Missing Compensation": "Preset 7",
                         "Camera Installed direction": "Upside down", "Auto Zoom": "OFF",
                         "Zoom Offset": "Custom"}})json";
        const LineRecord line = record("00 01 " + answer()
                                       + "FF FF 0A 41 01 06 07 06 09 01 16 00 7F"
                                         "FF FF 0C 41 01 06 07 06 09 05 3A 00 00 64 0D"
                                         "FF FF 0A 41 01 06 07 06 09 FF 16 00 7D"
                                         "FF FF 0A 41 01 06 07 06 09 02 16 00 80");
        const QJsonObject wanted = QJsonDocument::fromJson(expected).object();
        QVERIFY(!wanted.isEmpty());
        const QJsonObject actual = json(diagnosis(), finding(), line);
        QCOMPARE(QJsonDocument(actual).toJson(), QJsonDocument(wanted).toJson());
    }

    void namesTheHoldersInJson()
    {
        PortFinding held = finding(PortFinding::Kind::Held);
        held.holders = {{42, "corvane"}};
        held.systemText = "Device or resource busy";
        const QJsonObject object = json(diagnosis(), held, {});
        const QJsonArray holders{QJsonObject{{"pid", 42}, {"name", "corvane"}}};
        QCOMPARE(object["holders"].toArray(), holders);
        QCOMPARE(object["systemError"].toString(), QString("Device or resource busy"));
    }
};

QTEST_GUILESS_MAIN(DiagnosisReportTest)
#include "tst_diagnosisreport.moc"
