// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "frames.h"
#include "linemonitor.h"
#include "patience.h"
#include "rows.h"

static QByteArray bytes(const char *hexadecimal)
{
    return QByteArray::fromHex(hexadecimal);
}

/// A monitor and what it says.
struct Monitored {
    // The lines without the time in front.
    QStringList events() const
    {
        QStringList texts;
        for (const QList<QVariant> &arguments : logged) {
            texts << arguments.at(0).toString().mid(14);
        }
        return texts;
    }

    LineMonitor monitor{ExchangeLog(false)};
    QSignalSpy logged{&monitor, &LineMonitor::logged};
};

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
        Monitored line;
        line.monitor.fromHost(passing);
        QCOMPARE(line.logged.size(), 1);
        QTEST(line.events().at(0), "fromHost");
        line.monitor.fromCamera(passing);
        QCOMPARE(line.logged.size(), 2);
        QTEST(line.events().at(1), "fromCamera");
    }

    void keepsTheDirectionsApart()
    {
        Monitored line;
        line.monitor.fromHost(bytes("FF FF 0A 41 01 06 07"));
        line.monitor.fromCamera(bytes("FF FF 0A 41 01 06 07 06 09 05"));
        line.monitor.fromHost(bytes("06 09 01 16 00 7F"));
        line.monitor.fromCamera(bytes("10 00 7D"));
        QCOMPARE(line.events(), (QStringList{"<- HELLO", "-> RECEIVE_FW_INFO ack"}));
    }

    void givesUpOnAFrameThatStalls()
    {
        Monitored line;
        line.monitor.fromHost(bytes("FF FF 0A 41"));
        line.monitor.fromCamera(bytes("FF FF 0A 41 01"));
        QVERIFY(line.logged.isEmpty());
        QTRY_COMPARE(line.logged.size(), 2);
        QStringList lines = line.events();
        lines.sort();
        QCOMPARE(lines,
                 (QStringList{"-> (incomplete)         FF FF 0A 41 01",
                              "<- (incomplete)         FF FF 0A 41"}));
    }

    void givesUpOnAFrameWhenTheLineIsLost()
    {
        Monitored line;
        line.monitor.fromHost(bytes("FF FF 0A 41"));
        line.monitor.fromCamera(bytes("FF FF 0A 41 01"));
        line.monitor.lineLost();
        QCOMPARE(line.events(),
                 (QStringList{"<- (incomplete)         FF FF 0A 41",
                              "-> (incomplete)         FF FF 0A 41 01"}));
    }
};

QTEST_GUILESS_MAIN(LineMonitorTest)
#include "tst_linemonitor.moc"
