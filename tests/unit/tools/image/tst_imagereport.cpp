// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "imagereport.h"
#include "rows.h"

static QByteArray header()
{
    return QByteArray("KVEL\x01\x02\x0A\xFF\x80\x00\x10\x63", 12) + QByteArray(116, '\0');
}

static QString lineOf(const QString &report, const QString &name)
{
    const QStringList lines = report.split('\n');
    for (const QString &line : lines) {
        if (line.startsWith(name + ": ")) {
            return line.mid(name.size() + 2);
        }
    }
    return "no such line";
}

class ImageReportTest : public QObject {
    Q_OBJECT

private slots:
    void tellsEverything()
    {
        QCOMPARE(imageReport(header() + "0123456789abcdef0123456789ABCDEFQUJD"),
                 QString("Magic: KVEL\n"
                         "Protocol version: 1.2.a.-1 (decimal 1.2.10.255)\n"
                         "Image version: -80.0.10.63 (decimal 128.0.16.99)\n"
                         "File size: 164 bytes\n"
                         "Firmware size: 35 bytes\n"
                         "Packets: 1\n"
                         "Upload time: 0 min 0.10 s\n"
                         "SHA-256 of the firmware: "
                         "d77a178473cf2bf0a832092bfb6e9204f556c2bf8d38916ce7fc13dfc1255e3d\n"));
    }

    void tellsPacketsAndTheirTime_data()
    {
        addRows<int, QString, QString, QString>(
            {"characters", "size", "packets", "time"},
            {{"a full packet", 128, "128 bytes", "1", "0 min 0.10 s"},
             {"one byte more", 130, "129 bytes", "2", "0 min 0.15 s"},
             {"one second", 3200, "2432 bytes", "19", "0 min 1.00 s"},
             {"almost a minute", 204416, "153344 bytes", "1198", "0 min 59.95 s"},
             {"a minute", 204587, "153472 bytes", "1199", "1 min 0.00 s"},
             {"the largest", 22369578, "16777215 bytes", "131072", "109 min 13.65 s"}});
    }

    void tellsPacketsAndTheirTime()
    {
        QFETCH(int, characters);
        const QString report =
            imageReport(header() + QByteArray(32, 'x') + QByteArray(characters, 'A'));
        QTEST(lineOf(report, "Firmware size"), "size");
        QTEST(lineOf(report, "Packets"), "packets");
        QTEST(lineOf(report, "Upload time"), "time");
    }
};

QTEST_APPLESS_MAIN(ImageReportTest)

#include "tst_imagereport.moc"
