// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "recordedhost.h"
#include "rows.h"

// Of the host: 01 02 03 04, then 05 06.
static RecordedHost recordedHost()
{
    const auto event = [](qint64 microseconds, LineEvent::Kind kind, const char *hexadecimal) {
        return LineEvent{std::chrono::microseconds(microseconds), kind,
                         QByteArray::fromHex(hexadecimal)};
    };
    return RecordedHost(
        {event(0, LineEvent::Plugged, ""), event(1'000'000, LineEvent::Host, "01 02 03 04"),
         event(1'500'000, LineEvent::Camera, "AA BB"), event(2'000'007, LineEvent::Host, "05 06"),
         event(3'000'000, LineEvent::Unplugged, "")});
}

class RecordedHostTest : public QObject {
    Q_OBJECT

private slots:
    void tellsTheFirstDifferenceInEachEvent_data()
    {
        addRows<QStringList, QStringList>(
            {"pieces", "differences"},
            {{"nothing", {}, {}},
             {"the same", {"01 02 03 04", "05 06"}, {}},
             {"the same at once", {"01 02 03 04 05 06"}, {}},
             {"the same byte by byte", {"01", "02", "03", "04", "05", "06"}, {}},
             {"the same, cut elsewhere", {"01 02 03", "04 05", "06"}, {}},
             {"less", {"01 02 03"}, {}},
             {"the first byte",
              {"11 02 03 04", "05 06"},
              {"from byte 1 on the host sends 11 02 03 04 instead of 01 02 03 04, recorded at "
               "1.000000"}},
             {"the last byte of an event",
              {"01 02 03 14 05 06"},
              {"from byte 4 on the host sends 14 instead of 04, recorded at 1.000000"}},
             {"a later event",
              {"01 02 03 04", "05 16"},
              {"from byte 6 on the host sends 16 instead of 06, recorded at 2.000007"}},
             {"two places in one event",
              {"11 02", "13 04", "05 06"},
              {"from byte 1 on the host sends 11 02 instead of 01 02, recorded at 1.000000"}},
             {"two events in one piece",
              {"01 12 03 04 15 06"},
              {"from byte 2 on the host sends 12 03 04 instead of 02 03 04, recorded at 1.000000",
               "from byte 5 on the host sends 15 06 instead of 05 06, recorded at 2.000007"}},
             {"more",
              {"01 02 03 04", "05 06 07", "08", "09"},
              {"from byte 7 on the host sends 07, where nothing more is recorded"}}});
    }

    void tellsTheFirstDifferenceInEachEvent()
    {
        QFETCH(QStringList, pieces);
        RecordedHost host = recordedHost();
        QStringList differences;
        for (const QString &piece : pieces) {
            differences << host.take(QByteArray::fromHex(piece.toLatin1()));
        }
        QTEST(differences, "differences");
    }
};

QTEST_GUILESS_MAIN(RecordedHostTest)
#include "tst_recordedhost.moc"
