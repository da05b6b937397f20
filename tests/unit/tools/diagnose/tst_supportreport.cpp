// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "rows.h"
#include "supportreport.h"

#include <pwd.h>
#include <unistd.h>

class SupportReportTest : public QObject {
    Q_OBJECT

private slots:
    void findsWhatTheKernelSaysAboutAPort_data()
    {
        addRows<QByteArray, QStringList>(
            {"record", "lines"},
            {{"the port",
              "6,812,5123456,-;usb 1-1.2: FTDI USB converter now attached to ttyUSB1",
              {"[5.123456] usb 1-1.2: FTDI USB converter now attached to ttyUSB1"}},
             {"the port with a colon",
              "3,813,1000000,-;ftdi_sio ttyUSB1: failed",
              {"[1.000000] ftdi_sio ttyUSB1: failed"}},
             {"the device",
              "6,814,9,-;usb 1-1.2: USB disconnect, device number 4",
              {"[0.000009] usb 1-1.2: USB disconnect, device number 4"}},
             {"the device's interface",
              "6,815,9,-;ftdi_sio 1-1.2:1.0: device disconnected",
              {"[0.000009] ftdi_sio 1-1.2:1.0: device disconnected"}},
             {"at the end of a sentence",
              "6,816,9,c,more=1;lost ttyUSB1.",
              {"[0.000009] lost ttyUSB1."}},
             {"another port", "6,817,9,-;attached to ttyUSB10", {}},
             {"a device on a hub there", "6,818,9,-;usb 1-1.2.3: new device", {}},
             {"another bus", "6,819,9,-;usb 11-1.2: new device", {}},
             {"something else", "6,820,9,-;eth0: link up", {}},
             {"what a line is about", " DEVICE=+usb:1-1.2", {}},
             {"no record", "ttyUSB1", {}}});
    }

    void findsWhatTheKernelSaysAboutAPort()
    {
        QFETCH(QByteArray, record);
        QTEST(linesAbout("6,1,1,-;first\n" + record + "\n6,2,2,-;last\n", {"ttyUSB1", "1-1.2"}),
              "lines");
        QCOMPARE(linesAbout(record, {QString(), QString()}), QStringList());
    }

    void keepsTheLastLinesOfTheKernel()
    {
        QByteArray log;
        for (int i = 1; i <= 30; ++i) {
            log += "6," + QByteArray::number(i) + ",1000000,-;ttyUSB1: line "
                + QByteArray::number(i) + '\n';
        }
        const QStringList lines = linesAbout(log, {"ttyUSB1"});
        QCOMPARE(lines.size(), 20);
        QCOMPARE(lines.first(), QString("[1.000000] ttyUSB1: line 11"));
        QCOMPARE(lines.last(), QString("[1.000000] ttyUSB1: line 30"));
    }

    void leavesNamesOut()
    {
        PortFinding finding;
        finding.user = "jane";
        finding.owner = "jane";
        finding.port = QString(::getpwuid(::geteuid())->pw_dir) + "/port";
        finding.devicePath = finding.port;
        const PortFinding result = withoutNames(finding);
        QCOMPARE(result.user, QString("$USER"));
        QCOMPARE(result.owner, QString("$USER"));
        QCOMPARE(result.port, QString("~/port"));
        QCOMPARE(result.devicePath, QString("~/port"));
        finding.owner = "root";
        QCOMPARE(withoutNames(finding).owner, QString("root"));
        // Somebody else's.
        finding.port = QString(::getpwuid(::geteuid())->pw_dir) + "2/port";
        QCOMPARE(withoutNames(finding).port, finding.port);
    }

    void namesTheGroupsButNotTheUser()
    {
        const passwd *const user = ::getpwuid(::geteuid());
        QStringList groups = ownGroups();
        QVERIFY(user == nullptr || !groups.contains(user->pw_name));
        QCOMPARE(groups.removeDuplicates(), 0);
    }

    void namesTheGroupsOfTheUserWhoRunsSudo()
    {
        const passwd *const other = ::getpwnam("nobody");
        QVERIFY(other != nullptr);
        qputenv("SUDO_UID", QByteArray::number(other->pw_uid));
        const QStringList groups = ownGroups();
        qunsetenv("SUDO_UID");
        // Without root's rights, it was another program that sudo has started.
        QCOMPARE(groups, ::geteuid() == 0 ? QStringList("nogroup") : ownGroups());
    }

    void holdsWhatItSays()
    {
        PortIdentity identity;
        identity.port = "ttyUSB1";
        identity.usbNumbers = "0403:6001";
        identity.serialNumber = "A1";
        const QByteArray text =
            supportReport({{{{"verdict", "silent"}}, identity, {{"[1.000000] ttyUSB1: lost"}, {}}},
                           {{{"verdict", "no-device"}}, {}, {{}, "Operation not permitted"}}});
        QVERIFY(text.endsWith("}\n"));
        const QJsonObject report = QJsonDocument::fromJson(text).object();
        QCOMPARE(report.keys(), (QStringList{"contents", "diagnoses", "groups", "versions"}));
        QCOMPARE(report["contents"].toString(), reportContents());
        QCOMPARE(report["versions"].toObject().keys(),
                 (QStringList{"corvane", "kernel", "qt", "system"}));
        QCOMPARE(report["versions"]["qt"].toString(), QString(qVersion()));
        const QJsonArray diagnoses = report["diagnoses"].toArray();
        QCOMPARE(diagnoses.size(), 2);
        QCOMPARE(diagnoses[0]["verdict"].toString(), QString("silent"));
        QCOMPARE(diagnoses[0]["identity"]["usbNumbers"].toString(), QString("0403:6001"));
        QCOMPARE(diagnoses[0]["identity"]["serialNumber"].toString(), QString("A1"));
        QCOMPARE(diagnoses[0]["kernel"].toObject(),
                 (QJsonObject{{"lines", QJsonArray{"[1.000000] ttyUSB1: lost"}}}));
        QCOMPARE(
            diagnoses[1]["kernel"].toObject(),
            (QJsonObject{{"lines", QJsonArray()}, {"systemError", "Operation not permitted"}}));
    }
};

QTEST_GUILESS_MAIN(SupportReportTest)
#include "tst_supportreport.moc"
