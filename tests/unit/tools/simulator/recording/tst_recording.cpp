// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "recording.h"
#include "rows.h"

static QByteArray bytes(const char *hexadecimal)
{
    return QByteArray::fromHex(hexadecimal);
}

static LineEvent at(qint64 microseconds, LineEvent::Kind kind, const char *hexadecimal = "")
{
    return {std::chrono::microseconds(microseconds), kind, bytes(hexadecimal)};
}

// What follows the first line.
static QVector<LineEvent> parsed(const QByteArray &lines)
{
    QString error;
    const auto events = Recording::parse("# Corvane line recording 1\n" + lines, &error);
    if (!events) {
        qWarning("%s", qPrintable(error));
    }
    return events.value_or(QVector<LineEvent>());
}

Q_DECLARE_METATYPE(LineEvent)

class RecordingTest : public QObject {
    Q_OBJECT

private slots:
    void namesItsFormatInTheFirstLine()
    {
        QCOMPARE(Recording::header(), QByteArray("# Corvane line recording 1\n"));
    }

    void writesOneLineForEachEvent_data()
    {
        addRows<LineEvent, QByteArray>(
            {"event", "line"},
            {{"plugged", at(0, LineEvent::Plugged), "0.000000 plugged\n"},
             {"unplugged", at(9'000'210, LineEvent::Unplugged), "9.000210 unplugged\n"},
             {"from the host", at(1'203'451, LineEvent::Host, "FF FF 0A 41"),
              "1.203451 host   FF FF 0A 41\n"},
             {"from the camera", at(1, LineEvent::Camera, "07"), "0.000001 camera 07\n"},
             {"all kinds of digits", at(0, LineEvent::Host, "00 9A BC DE F0"),
              "0.000000 host   00 9A BC DE F0\n"},
             {"after a day", at(86'400'999'999, LineEvent::Unplugged),
              "86400.999999 unplugged\n"}});
    }

    void writesOneLineForEachEvent()
    {
        QFETCH(LineEvent, event);
        QTEST(Recording::line(event), "line");
    }

    void readsALineAsAnEvent_data()
    {
        addRows<QByteArray, LineEvent>(
            {"line", "expected"},
            {{"plugged", "0.000000 plugged", at(0, LineEvent::Plugged)},
             {"unplugged", "9.000210 unplugged", at(9'000'210, LineEvent::Unplugged)},
             {"from the host", "1.203451 host   FF 0A", at(1'203'451, LineEvent::Host, "FF 0A")},
             {"from the camera", "1.203451 camera 41", at(1'203'451, LineEvent::Camera, "41")},
             {"small digits", "0 host ff 0a", at(0, LineEvent::Host, "FF 0A")},
             {"whole seconds", "12 plugged", at(12'000'000, LineEvent::Plugged)},
             {"tenths of a second", "12.5 plugged", at(12'500'000, LineEvent::Plugged)},
             {"the latest time", "999999999.999999 plugged",
              at(999'999'999'999'999, LineEvent::Plugged)},
             {"blanks and tabs", "  1.5\thost \t FF  0A ", at(1'500'000, LineEvent::Host, "FF 0A")},
             {"from another system", "1.5 host FF\r", at(1'500'000, LineEvent::Host, "FF")},
             {"a comment after", "1.5 host FF # that late", at(1'500'000, LineEvent::Host, "FF")}});
    }

    void readsALineAsAnEvent()
    {
        QFETCH(QByteArray, line);
        QFETCH(LineEvent, expected);
        // With and without a line feed at the end.
        for (const char *end : {"\n", ""}) {
            const QVector<LineEvent> events = parsed(line + end);
            QCOMPARE(events.size(), 1);
            QCOMPARE(events.first().time.count(), expected.time.count());
            QCOMPARE(events.first().kind, expected.kind);
            QCOMPARE(events.first().bytes, expected.bytes);
        }
    }

    void skipsWhatIsNoEvent_data()
    {
        addRows<QByteArray>({"lines"},
                            {{"nothing", {}},
                             {"empty lines", "\n\r\n  \t\n"},
                             {"comments", "# 1.5 host FF\n   # and so on\n#"}});
    }

    void skipsWhatIsNoEvent()
    {
        QFETCH(QByteArray, lines);
        QString error;
        const auto events = Recording::parse("# Corvane line recording 1\n" + lines, &error);
        QVERIFY2(events, qPrintable(error));
        QCOMPARE(events->size(), 0);
    }

    void keepsTheEventsInTheirOrder()
    {
        const QVector<LineEvent> events =
            parsed("0 plugged\n1 host 01\n1 camera 02\n2.5 unplugged\n"
                   "2.5 plugged\n3 camera 03\n");
        QByteArray passed;
        QVector<int> kinds;
        for (const LineEvent &event : events) {
            kinds << event.kind;
            passed += event.bytes;
        }
        QCOMPARE(kinds,
                 (QVector<int>{LineEvent::Plugged, LineEvent::Host, LineEvent::Camera,
                               LineEvent::Unplugged, LineEvent::Plugged, LineEvent::Camera}));
        QCOMPARE(passed, bytes("01 02 03"));
    }

    void refusesABadLineByItsNumber_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QString>("reason");

        const QString noHeader = "line 1: '# Corvane line recording 1' expected";
        QTest::newRow("an empty file") << QByteArray() << noHeader;
        QTest::newRow("no recording") << QByteArray("\x7f"
                                                    "ELF\n\x01")
                                      << noHeader;
        QTest::newRow("an unknown format")
            << QByteArray("# Corvane line recording 2\n") << noHeader;

        const auto addRow = [](const char *name, const QByteArray &lines, const QString &reason) {
            QTest::newRow(name) << "# Corvane line recording 1\n" + lines + '\n' << reason;
        };
        addRow("no time", "plugged",
               "line 2: a time in seconds, such as 1.203451, expected, not 'plugged'");
        addRow("a negative time", "-1 plugged",
               "line 2: a time in seconds, such as 1.203451, expected, not '-1'");
        addRow("too many decimals", "1.0000001 plugged",
               "line 2: a time in seconds, such as 1.203451, expected, not '1.0000001'");
        addRow("a decimal comma", "1,5 plugged",
               "line 2: a time in seconds, such as 1.203451, expected, not '1,5'");
        addRow("nothing after the point", "1. plugged",
               "line 2: a time in seconds, such as 1.203451, expected, not '1.'");
        addRow("a time far away", "1000000000 plugged",
               "line 2: a time in seconds, such as 1.203451, expected, not '1000000000'");
        addRow("a time that runs backwards", "\n1.5 host FF\n# before\n1.499999 host FF\n",
               "line 5: a time of at least 1.500000 expected, not '1.499999'");
        addRow("no event", "1.5 # host FF", "line 2: plugged, unplugged, host or camera expected");
        addRow("an unknown event", "1.5 Host FF",
               "line 2: plugged, unplugged, host or camera expected, not 'Host'");
        addRow("no bytes", "1.5 host",
               "line 2: bytes of two hexadecimal digits, such as FF 0A, expected");
        addRow("half a byte", "1.5 camera FF F",
               "line 2: bytes of two hexadecimal digits, such as FF 0A, expected, not 'F'");
        addRow("bytes without a blank", "1.5 camera FFFF",
               "line 2: bytes of two hexadecimal digits, such as FF 0A, expected, not 'FFFF'");
        addRow("no hexadecimal digit", "1.5 camera FF FG",
               "line 2: bytes of two hexadecimal digits, such as FF 0A, expected, not 'FG'");
        addRow("bytes of a plug", "1.5 plugged FF",
               "line 2: nothing more on the line expected, not 'FF'");
        addRow("plugged twice", "0 plugged\n1 plugged\n",
               "line 3: anything else, as the line is plugged, expected, not 'plugged'");
        addRow("plugged later, without having been unplugged", "0 host FF\n1 plugged\n",
               "line 3: anything else, as the line is plugged, expected, not 'plugged'");
        addRow("unplugged twice", "0 unplugged\n1 unplugged\n",
               "line 3: plugged, as the line is unplugged, expected, not 'unplugged'");
        addRow("bytes on an unplugged line", "0 unplugged\n1 camera FF\n",
               "line 3: plugged, as the line is unplugged, expected, not 'camera'");
    }

    void refusesABadLineByItsNumber()
    {
        QFETCH(QByteArray, text);
        QString error;
        QVERIFY(!Recording::parse(text, &error));
        QTEST(error, "reason");
    }

    void leavesOutALastLineThatWasCutOff_data()
    {
        addRows<QByteArray>({"rest"},
                            {{"in a byte", "1.5 host FF 0"},
                             {"before the bytes", "1.5 host"},
                             {"in the event", "1.5 ca"},
                             {"in the time", "1."},
                             {"where a disk has kept only the length", QByteArray(100, '\0')}});
    }

    void leavesOutALastLineThatWasCutOff()
    {
        QFETCH(QByteArray, rest);
        QString remark;
        const auto events =
            Recording::parse("# Corvane line recording 1\n0 plugged\n1 host 01\n" + rest, &remark);
        QVERIFY2(events, qPrintable(remark));
        QCOMPARE(events->size(), 2);
        QCOMPARE(remark, QString("line 4 is cut off and left out"));
    }

    void skipsAByteOrderMark()
    {
        QString error;
        const auto events =
            Recording::parse("\xEF\xBB\xBF# Corvane line recording 1\r\n0 plugged\r\n", &error);
        QVERIFY2(events, qPrintable(error));
        QCOMPARE(events->size(), 1);
    }

    void readsBackExactlyWhatItHasWritten()
    {
        QByteArray everyByte;
        for (int byte = 0; byte < 256; ++byte) {
            everyByte += static_cast<char>(byte);
        }
        const QVector<LineEvent> events{
            at(0, LineEvent::Plugged),
            {std::chrono::microseconds(999'999), LineEvent::Host, everyByte},
            {std::chrono::microseconds(1'000'000), LineEvent::Camera, everyByte},
            at(1'000'001, LineEvent::Unplugged),
            at(70'000'010, LineEvent::Plugged),
        };
        QByteArray text;
        for (const LineEvent &event : events) {
            text += Recording::line(event);
        }
        const QVector<LineEvent> readBack = parsed(text);
        QCOMPARE(readBack.size(), events.size());
        for (int i = 0; i < events.size(); ++i) {
            QCOMPARE(readBack.at(i).time.count(), events.at(i).time.count());
            QCOMPARE(readBack.at(i).kind, events.at(i).kind);
            QCOMPARE(readBack.at(i).bytes, events.at(i).bytes);
        }
    }
};

QTEST_GUILESS_MAIN(RecordingTest)
#include "tst_recording.moc"
