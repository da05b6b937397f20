// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "hexframes.h"
#include "linemonitor.h"
#include "patience.h"
#include "rows.h"

#include <QSignalSpy>

namespace {

QByteArray bytes(const char *hexadecimal)
{
    return QByteArray::fromHex(hexadecimal);
}

// The lines without the time in front.
QStringList events(const QSignalSpy &logged)
{
    QStringList texts;
    for (const QList<QVariant> &arguments : logged) {
        texts << arguments.at(0).toString().mid(14);
    }
    return texts;
}

} // namespace

class LineMonitorTest : public QObject {
    Q_OBJECT

private slots:
    void makesALineOfWhatPasses_data()
    {
        addRows<QByteArray, QString, QString>(
            {"passing", "fromHost", "fromCamera"},
            {{"a frame", bytes(Hex::zoom2()), "<- SET_CUSTOM_ZOOM      zoom 2",
              "-> SET_CUSTOM_ZOOM ack  value 256"},
             {"a wrong checksum", bytes("FF FF 0C 41 01 06 07 06 09 05 3A 00 01 10 BB"),
              "<- (bad checksum)       FF FF 0C 41 01 06 07 06 09 05 3A 00 01 10 BB",
              "-> (bad checksum)       FF FF 0C 41 01 06 07 06 09 05 3A 00 01 10 BB"},
             {"a wrong signature", bytes("FF FF 0A 42 01 06 07 06 09 01 16 00 80"),
              "<- (wrong signature)    FF FF 0A 42 01 06 07 06 09 01 16 00 80",
              "-> (wrong signature)    FF FF 0A 42 01 06 07 06 09 01 16 00 80"},
             {"no frame", bytes("12 34"), "<- (no frame)           12 34",
              "-> (no frame)           12 34"}});
    }

    void makesALineOfWhatPasses()
    {
        QFETCH(QByteArray, passing);
        LineMonitor monitor{ExchangeLog(false)};
        QSignalSpy logged(&monitor, &LineMonitor::logged);
        monitor.fromHost(passing);
        QCOMPARE(logged.size(), 1);
        QTEST(events(logged).at(0), "fromHost");
        monitor.fromCamera(passing);
        QCOMPARE(logged.size(), 2);
        QTEST(events(logged).at(1), "fromCamera");
    }

    void keepsTheDirectionsApart()
    {
        LineMonitor monitor{ExchangeLog(false)};
        QSignalSpy logged(&monitor, &LineMonitor::logged);
        monitor.fromHost(bytes("FF FF 0A 41 01 06 07"));
        monitor.fromCamera(bytes("FF FF 0A 41 01 06 07 06 09 05"));
        monitor.fromHost(bytes("06 09 01 16 00 7F"));
        monitor.fromCamera(bytes("10 00 7D"));
        QCOMPARE(events(logged), (QStringList{"<- HELLO", "-> RECEIVE_FW_INFO ack"}));
    }

    void givesUpOnAFrameThatStalls()
    {
        LineMonitor monitor{ExchangeLog(false)};
        QSignalSpy logged(&monitor, &LineMonitor::logged);
        monitor.fromHost(bytes("FF FF 0A 41"));
        monitor.fromCamera(bytes("FF FF 0A 41 01"));
        QVERIFY(logged.isEmpty());
        QTRY_COMPARE(logged.size(), 2);
        QStringList lines = events(logged);
        lines.sort();
        QCOMPARE(lines,
                 (QStringList{"-> (incomplete)         FF FF 0A 41 01",
                              "<- (incomplete)         FF FF 0A 41"}));
    }

    void givesUpOnAFrameWhenTheLineIsLost()
    {
        LineMonitor monitor{ExchangeLog(false)};
        QSignalSpy logged(&monitor, &LineMonitor::logged);
        monitor.fromHost(bytes("FF FF 0A 41"));
        monitor.fromCamera(bytes("FF FF 0A 41 01"));
        monitor.lineLost();
        QCOMPARE(events(logged),
                 (QStringList{"<- (incomplete)         FF FF 0A 41",
                              "-> (incomplete)         FF FF 0A 41 01"}));
    }
};

QTEST_GUILESS_MAIN(LineMonitorTest)
#include "tst_linemonitor.moc"
