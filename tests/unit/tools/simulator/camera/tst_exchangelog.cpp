// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "exchangelog.h"
#include "frames.h"
#include "request.h"
#include "rows.h"

static QTime someTime()
{
    return {9, 5, 1, 34};
}

class ExchangeLogTest : public QObject {
    Q_OBJECT

private slots:
    void describesARequest_data()
    {
        addRows<QByteArray, QString>(
            {"frame", "line"},
            {{"HELLO", Hex::hello(), "09:05:01.034  <- HELLO"},
             {"settings, pan", Hex::settings(),
              "09:05:01.034  <- CUSTOM_SETTING       auto tracking pan, target missing preset 7, "
              "upside down, auto zoom off, zoom offset custom"},
             {"settings, off", "FF FF 0F 41 01 06 07 06 09 01 55 00 00 00 00 00 00 C3",
              "09:05:01.034  <- CUSTOM_SETTING       auto tracking off, target missing off, "
              "upright, auto zoom off, zoom offset 0"},
             {"settings, tilt", "FF FF 0F 41 01 06 07 06 09 01 55 00 03 02 00 01 02 CB",
              "09:05:01.034  <- CUSTOM_SETTING       auto tracking tilt, target missing preset 0, "
              "upright, auto zoom on, zoom offset 2"},
             {"settings, auto", "FF FF 0F 41 01 06 07 06 09 01 55 00 01 01 00 01 01 C7",
              "09:05:01.034  <- CUSTOM_SETTING       auto tracking auto, target missing home, "
              "upright, auto zoom on, zoom offset 1"},
             {"settings out of range are numbers",
              "FF FF 0F 41 01 06 07 06 09 01 55 00 04 FF 07 02 05 D4",
              "09:05:01.034  <- CUSTOM_SETTING       auto tracking 4, target missing 255, upside "
              "down, auto zoom 2, zoom offset 5"},
             {"settings of the wrong size are bytes",
              "FF FF 0E 41 01 06 07 06 09 01 55 00 02 09 01 00 CE",
              "09:05:01.034  <- CUSTOM_SETTING       payload 02 09 01 00"},
             {"first zoom preset", Hex::zoom1(), "09:05:01.034  <- SET_CUSTOM_ZOOM      zoom 1"},
             {"second zoom preset", Hex::zoom2(), "09:05:01.034  <- SET_CUSTOM_ZOOM      zoom 2"},
             {"firmware size", Hex::announcement(),
              "09:05:01.034  <- RECEIVE_FW_INFO      firmware of 300 bytes"},
             {"firmware size in 24 bits", "FF FF 0E 41 01 06 07 06 09 01 10 00 02 01 23 45 E8",
              "09:05:01.034  <- RECEIVE_FW_INFO      firmware of 74565 bytes"},
             {"firmware size that starts with another number",
              "FF FF 0E 41 01 06 07 06 09 01 10 00 03 00 01 2C AD",
              "09:05:01.034  <- RECEIVE_FW_INFO      payload 03 00 01 2C"},
             {"firmware size that is too short", "FF FF 0D 41 01 06 07 06 09 01 10 00 02 00 01 7F",
              "09:05:01.034  <- RECEIVE_FW_INFO      payload 02 00 01"},
             {"firmware packet",
              "FF FF 13 41 01 06 07 06 09 01 01 01 00 01 02 03 04 05 06 07 08 98",
              "09:05:01.034  <- UPLOAD_FIRMWARE      packet 1, 9 bytes"},
             {"firmware packet after number 255", "FF FF 0B 41 01 06 07 06 09 01 01 00 00 6B",
              "09:05:01.034  <- UPLOAD_FIRMWARE      packet 0, 1 bytes"},
             {"firmware packet without payload", "FF FF 0A 41 01 06 07 06 09 01 01 FF 69",
              "09:05:01.034  <- UPLOAD_FIRMWARE      packet 255, 0 bytes"},
             {"reboot", "FF FF 0A 41 01 06 07 06 09 01 1F 00 88", "09:05:01.034  <- REBOOT"},
             {"unknown command", "FF FF 0C 41 01 06 07 06 09 01 4D 00 01 02 BB",
              "09:05:01.034  <- command 77           payload 01 02"},
             {"eight bytes of which nothing is known",
              "FF FF 12 41 01 06 07 06 09 01 4D 00 01 02 03 04 05 06 07 08 E2",
              "09:05:01.034  <- command 77           payload 01 02 03 04 05 06 07 08"},
             {"more bytes of which nothing is known",
              "FF FF 13 41 01 06 07 06 09 01 4D 00 01 02 03 04 05 06 07 08 09 EC",
              "09:05:01.034  <- command 77           payload of 9 bytes"}});
    }

    void describesARequest()
    {
        QFETCH(QByteArray, frame);
        const QByteArray bytes = QByteArray::fromHex(frame);
        const ExchangeLog log(false);
        QTEST(log.received(someTime(), bytes, Request::fromFrame(bytes).value(), {}), "line");
    }

    void describesAReply_data()
    {
        addRows<QByteArray, QString>(
            {"frame", "line"},
            {{"HELLO", Hex::helloReply(),
              "09:05:01.034  -> HELLO ack            version 1.0.0.6, auto tracking auto, target "
              "missing home, upright, auto zoom on, zoom offset 1"},
             {"the version as the host shows it",
              "FF FF 17 41 01 06 07 06 09 05 16 00 FF 80 0A 10 00 00 00 00 00 00 00 00 00 29",
              "09:05:01.034  -> HELLO ack            version -1.-80.a.10, auto tracking off, "
              "target missing off, upright, auto zoom off, zoom offset 0"},
             {"settings",
              "FF FF 17 41 01 06 07 06 09 05 55 00 01 00 00 06 09 00 00 01 01 01 00 00 03 E5",
              "09:05:01.034  -> CUSTOM_SETTING ack   version 1.0.0.6, auto tracking pan, target "
              "missing preset 7, upside down, auto zoom off, zoom offset custom"},
             {"zoom value with a high low byte", "FF FF 0C 41 01 06 07 06 09 05 3A 00 01 90 3A",
              "09:05:01.034  -> SET_CUSTOM_ZOOM ack  value 400"},
             {"negative zoom value", "FF FF 0C 41 01 06 07 06 09 05 3A 00 FF FF A7",
              "09:05:01.034  -> SET_CUSTOM_ZOOM ack  value -1"},
             {"firmware size", Hex::announcementReply(), "09:05:01.034  -> RECEIVE_FW_INFO ack"},
             {"firmware packet", Hex::packetReply(), "09:05:01.034  -> UPLOAD_FIRMWARE ack"},
             {"without payload", "FF FF 0A 41 01 06 07 06 09 05 16 00 83",
              "09:05:01.034  -> HELLO ack"}});
    }

    void describesAReply()
    {
        QFETCH(QByteArray, frame);
        const ExchangeLog log(false);
        QTEST(log.sent(someTime(), QByteArray::fromHex(frame)), "line");
    }

    void saysWhyARequestIsNotAnswered()
    {
        const ExchangeLog log(false);
        const QByteArray zoom = QByteArray::fromHex("FF FF 0C 41 01 06 07 06 09 01 3A 00 02 00 A7");
        QCOMPARE(log.received(someTime(), zoom, Request::fromFrame(zoom).value(), "no such preset"),
                 "09:05:01.034  <- SET_CUSTOM_ZOOM      zoom 3  (not answered: no such preset)");
        const QByteArray hello = QByteArray::fromHex(Hex::hello());
        QCOMPARE(log.received(someTime(), hello, Request::fromFrame(hello).value(), "silent"),
                 "09:05:01.034  <- HELLO                (not answered: silent)");
    }

    void showsTheBytesOfWhatIsFaulty()
    {
        for (const bool withHex : {false, true}) {
            const ExchangeLog log(withHex);
            QCOMPARE(log.receivedFaulty(someTime(), QByteArray::fromHex("FF FF 0A 41 7F"),
                                        "bad checksum"),
                     "09:05:01.034  <- (bad checksum)       FF FF 0A 41 7F");
            QCOMPARE(log.sentFaulty(someTime(), QByteArray::fromHex("FF FF 0A 41 7F"), "no frame"),
                     "09:05:01.034  -> (no frame)           FF FF 0A 41 7F");
        }
    }

    void addsTheBytesOnDemand()
    {
        const ExchangeLog log(true);
        const QByteArray hello = QByteArray::fromHex(Hex::hello());
        QCOMPARE(log.received(someTime(), hello, Request::fromFrame(hello).value(), {}),
                 "09:05:01.034  <- HELLO | FF FF 0A 41 01 06 07 06 09 01 16 00 7F");
        QCOMPARE(log.sent(someTime(),
                          QByteArray::fromHex("FF FF 0C 41 01 06 07 06 09 05 3A 00 00 19 C2")),
                 "09:05:01.034  -> SET_CUSTOM_ZOOM ack  value 25 | "
                 "FF FF 0C 41 01 06 07 06 09 05 3A 00 00 19 C2");
    }

    void notesOtherEvents()
    {
        QCOMPARE(ExchangeLog(true).notice(someTime(), "unplugged"), "09:05:01.034  -- unplugged");
    }
};

QTEST_GUILESS_MAIN(ExchangeLogTest)
#include "tst_exchangelog.moc"
