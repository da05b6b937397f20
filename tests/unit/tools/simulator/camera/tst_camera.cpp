// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "camera.h"
#include "frames.h"
#include "request.h"
#include "rows.h"

#include <algorithm>

Q_DECLARE_METATYPE(CameraState)

static Answer answerTo(Camera &camera, const QByteArray &frame)
{
    return camera.answer(Request::fromFrame(QByteArray::fromHex(frame)).value());
}

// The only frame of the answer in hexadecimal; anything else as a text that no test expects.
static QByteArray replyTo(Camera &camera, const QByteArray &frame)
{
    const Answer answer = answerTo(camera, frame);
    if (answer.frames.size() != 1 || !answer.refusal.isEmpty()) {
        return QByteArray::number(answer.frames.size())
            + " frames, refused: " + answer.refusal.toUtf8();
    }
    return answer.frames.first().toHex(' ').toUpper();
}

class CameraTest : public QObject {
    Q_OBJECT

private slots:
    void reportsItsStateToHello_data()
    {
        addRows<CameraState, QByteArray>(
            {"state", "reply"},
            {{"as it comes", {}, Hex::helloReply()},
             {"another version, everything off", CameraState{{0xFF, 0x80, 10, 16}, {}, {}, {}},
              "FF FF 17 41 01 06 07 06 09 05 16 00 FF 80 0A 10 00 00 00 00 00 00 00 00 00 29"},
             {"pan tracking, upside down", CameraState{{1, 0, 0, 6}, {2, 9, true, 0, 3}, {}, {}},
              "FF FF 17 41 01 06 07 06 09 05 16 00 01 00 00 06 09 00 00 01 01 01 00 00 03 A6"},
             {"tilt tracking", CameraState{{1, 0, 0, 6}, {3, 2, false, 1, 2}, {}, {}},
              "FF FF 17 41 01 06 07 06 09 05 16 00 01 00 00 06 02 00 00 00 00 00 01 01 02 9D"}});
    }

    void reportsItsStateToHello()
    {
        QFETCH(CameraState, state);
        Camera camera(state);
        QTEST(replyTo(camera, Hex::hello()), "reply");
    }

    void storesSettingsAndReportsThem_data()
    {
        addRows<QByteArray, QByteArray, QByteArray>(
            {"request", "reply", "helloReply"},
            {{"everything off", "FF FF 0F 41 01 06 07 06 09 01 55 00 00 00 00 00 00 C3",
              "FF FF 17 41 01 06 07 06 09 05 55 00 01 00 00 06 00 00 00 00 00 00 00 00 00 D6",
              "FF FF 17 41 01 06 07 06 09 05 16 00 01 00 00 06 00 00 00 00 00 00 00 00 00 97"},
             {"auto tracking, home", "FF FF 0F 41 01 06 07 06 09 01 55 00 01 01 00 01 01 C7",
              "FF FF 17 41 01 06 07 06 09 05 55 00 01 00 00 06 01 00 00 00 00 01 01 01 01 DB",
              Hex::helloReply()},
             {"pan tracking, preset 7, upside down, no auto zoom, custom offset", Hex::settings(),
              "FF FF 17 41 01 06 07 06 09 05 55 00 01 00 00 06 09 00 00 01 01 01 00 00 03 E5",
              "FF FF 17 41 01 06 07 06 09 05 16 00 01 00 00 06 09 00 00 01 01 01 00 00 03 A6"},
             {"tilt tracking, preset 0", "FF FF 0F 41 01 06 07 06 09 01 55 00 03 02 00 01 02 CB",
              "FF FF 17 41 01 06 07 06 09 05 55 00 01 00 00 06 02 00 00 00 00 00 01 01 02 DC",
              "FF FF 17 41 01 06 07 06 09 05 16 00 01 00 00 06 02 00 00 00 00 00 01 01 02 9D"}});
    }

    void storesSettingsAndReportsThem()
    {
        QFETCH(QByteArray, request);
        Camera camera;
        QTEST(replyTo(camera, request), "reply");
        QTEST(replyTo(camera, Hex::hello()), "helloReply");
    }

    void answersAZoomPresetWithItsValue_data()
    {
        addRows<qint16, QByteArray>(
            {"lensZoom", "reply"},
            {{"one byte", 25, "FF FF 0C 41 01 06 07 06 09 05 3A 00 00 19 C2"},
             {"two bytes, high one first", 400, "FF FF 0C 41 01 06 07 06 09 05 3A 00 01 90 3A"},
             {"negative", -1, "FF FF 0C 41 01 06 07 06 09 05 3A 00 FF FF A7"},
             {"smallest", -32768, "FF FF 0C 41 01 06 07 06 09 05 3A 00 80 00 29"},
             {"largest", 32767, "FF FF 0C 41 01 06 07 06 09 05 3A 00 7F FF 27"}});
    }

    void answersAZoomPresetWithItsValue()
    {
        QFETCH(qint16, lensZoom);
        CameraState state;
        state.lensZoom = {7, lensZoom};
        Camera second(state);
        QTEST(replyTo(second, Hex::zoom2()), "reply");

        state.lensZoom = {lensZoom, 7};
        Camera first(state);
        QTEST(replyTo(first, Hex::zoom1()), "reply");
    }

    void remembersZoomPresets()
    {
        Camera camera;
        QVERIFY(!camera.state().zoomPresets[0]);
        QVERIFY(!camera.state().zoomPresets[1]);
        // The reserved second byte of the payload does not matter.
        QCOMPARE(replyTo(camera, "FF FF 0C 41 01 06 07 06 09 01 3A 00 00 07 AC"), Hex::zoomReply());
        QCOMPARE(camera.state().zoomPresets[0].value_or(0), qint16(100));
        QVERIFY(!camera.state().zoomPresets[1]);
        QCOMPARE(replyTo(camera, Hex::zoom2()),
                 QByteArray("FF FF 0C 41 01 06 07 06 09 05 3A 00 00 19 C2"));
        QCOMPARE(camera.state().zoomPresets[0].value_or(0), qint16(100));
        QCOMPARE(camera.state().zoomPresets[1].value_or(0), qint16(25));
    }

    void acknowledgesAFirmware()
    {
        Camera camera;
        QCOMPARE(replyTo(camera, Hex::announcement()), Hex::announcementReply());
        QVERIFY(!camera.isRebooting());
        QCOMPARE(replyTo(camera, Hex::firstPacket()), Hex::packetReply());
        QCOMPARE(replyTo(camera, Hex::secondPacket()), Hex::packetReply());
        QVERIFY(!camera.isRebooting());
        QCOMPARE(replyTo(camera, Hex::thirdPacket()), Hex::packetReply());
        QVERIFY(camera.isRebooting());
        QCOMPARE(camera.firmware(), Hex::firmware());
    }

    void rebootsAfterTheLastByte()
    {
        Camera camera;
        answerTo(camera, Hex::smallAnnouncement());
        answerTo(camera, Hex::smallPacket());
        QVERIFY(camera.isRebooting());
        for (const QByteArray &request :
             {Hex::hello(), Hex::smallAnnouncement(), Hex::smallPacket(), Hex::zoom1()}) {
            QCOMPARE(replyTo(camera, request), QByteArray("0 frames, refused: rebooting"));
        }
        QVERIFY(!camera.state().zoomPresets[0]);
        QCOMPARE(camera.firmware(), QByteArray("\x01\x02\x03"));

        camera.finishReboot();
        QVERIFY(!camera.isRebooting());
        QCOMPARE(camera.firmware(), QByteArray());
        QCOMPARE(replyTo(camera, Hex::hello()), Hex::raisedHelloReply());
        QCOMPARE(answerTo(camera, Hex::smallPacket()).refusal,
                 QString("no firmware was announced"));
    }

    void rebootsAtOnceForAnEmptyFirmware()
    {
        Camera camera;
        QCOMPARE(replyTo(camera, Hex::emptyAnnouncement()), Hex::announcementReply());
        QVERIFY(camera.isRebooting());
    }

    void keepsItsSettingsOverAReboot()
    {
        Camera camera;
        answerTo(camera, Hex::settings());
        answerTo(camera, Hex::zoom2());
        answerTo(camera, Hex::smallAnnouncement());
        answerTo(camera, Hex::smallPacket());
        camera.finishReboot();
        QCOMPARE(replyTo(camera, Hex::hello()),
                 QByteArray("FF FF 17 41 01 06 07 06 09 05 16 00 "
                            "01 00 00 07 09 00 00 01 01 01 00 00 03 A7"));
        QCOMPARE(camera.state().zoomPresets[1].value_or(0), qint16(25));
    }

    void raisesItsVersionByAReboot_data()
    {
        addRows<QByteArray, QByteArray>({"before", "after"},
                                        {{"last part", "01 00 00 06", "01 00 00 07"},
                                         {"above 127", "01 00 00 7F", "01 00 00 80"},
                                         {"up to 255", "01 00 00 FE", "01 00 00 FF"},
                                         {"one carry", "01 00 00 FF", "01 00 01 00"},
                                         {"two carries", "01 02 FF FF", "01 03 00 00"},
                                         {"three carries", "01 FF FF FF", "02 00 00 00"},
                                         {"no part left", "FF FF FF FF", "00 00 00 00"}});
    }

    void raisesItsVersionByAReboot()
    {
        QFETCH(QByteArray, before);
        const QByteArray version = QByteArray::fromHex(before);
        CameraState state;
        std::copy_n(version.begin(), state.version.size(), state.version.begin());
        Camera camera(state);
        answerTo(camera, Hex::smallAnnouncement());
        answerTo(camera, Hex::smallPacket());
        camera.finishReboot();
        // Bytes 12 to 15.
        QTEST(replyTo(camera, Hex::hello()).mid(36, 11), "after");
    }

    void refusesWhatItDoesNotUnderstand_data()
    {
        addRows<QByteArray, QString>(
            {"request", "refusal"},
            {{"an acknowledgement", "FF FF 0A 41 01 06 07 06 09 05 16 00 83",
              "type 5 is not a request"},
             {"the reserved type", "FF FF 0A 41 01 06 07 06 09 02 16 00 80",
              "type 2 is not a request"},
             {"an unknown command", "FF FF 0C 41 01 06 07 06 09 01 4D 00 01 02 BB",
              "unknown command"},
             {"a command that only cameras send", "FF FF 0A 41 01 06 07 06 09 01 1F 00 88",
              "unknown command"},
             {"HELLO with a payload", "FF FF 0B 41 01 06 07 06 09 01 16 00 00 80",
              "payload of 1 bytes, 0 expected"},
             {"a setting too few", "FF FF 0E 41 01 06 07 06 09 01 55 00 02 09 01 00 CE",
              "payload of 4 bytes, 5 expected"},
             {"a setting too many", "FF FF 10 41 01 06 07 06 09 01 55 00 02 09 01 00 03 00 D3",
              "payload of 6 bytes, 5 expected"},
             {"auto tracking out of range", "FF FF 0F 41 01 06 07 06 09 01 55 00 04 01 00 01 01 CA",
              "auto tracking is 4, not 0 to 3"},
             {"a setting is unsigned", "FF FF 0F 41 01 06 07 06 09 01 55 00 FF 01 00 01 01 C5",
              "auto tracking is 255, not 0 to 3"},
             {"target missing out of range",
              "FF FF 0F 41 01 06 07 06 09 01 55 00 01 0A 00 01 01 D0",
              "target missing is 10, not 0 to 9"},
             {"direction out of range", "FF FF 0F 41 01 06 07 06 09 01 55 00 01 01 02 01 01 C9",
              "upside down is 2, not 0 to 1"},
             {"auto zoom out of range", "FF FF 0F 41 01 06 07 06 09 01 55 00 01 01 00 02 01 C8",
              "auto zoom is 2, not 0 to 1"},
             {"zoom offset out of range", "FF FF 0F 41 01 06 07 06 09 01 55 00 01 01 00 01 04 CA",
              "zoom offset is 4, not 0 to 3"},
             {"a third zoom preset", "FF FF 0C 41 01 06 07 06 09 01 3A 00 02 00 A7",
              "there is no such zoom preset"},
             {"a zoom preset without the reserved byte",
              "FF FF 0B 41 01 06 07 06 09 01 3A 00 00 A4", "payload of 1 bytes, 2 expected"},
             {"a zoom preset with more than the reserved byte",
              "FF FF 0D 41 01 06 07 06 09 01 3A 00 00 00 00 A6", "payload of 3 bytes, 2 expected"},
             {"a firmware packet without an announcement", Hex::smallPacket(),
              "no firmware was announced"},
             {"an announcement that is too short",
              "FF FF 0D 41 01 06 07 06 09 01 10 00 02 00 01 7F",
              "payload of 3 bytes, 4 expected"}});
    }

    void refusesWhatItDoesNotUnderstand()
    {
        QFETCH(QByteArray, request);
        Camera camera;
        const Answer answer = answerTo(camera, request);
        QTEST(answer.refusal, "refusal");
        QVERIFY(answer.frames.isEmpty());
        // Nothing has changed.
        QCOMPARE(replyTo(camera, Hex::hello()), Hex::helloReply());
        QVERIFY(!camera.state().zoomPresets[0]);
        QVERIFY(!camera.state().zoomPresets[1]);
    }
};

QTEST_GUILESS_MAIN(CameraTest)
#include "tst_camera.moc"
