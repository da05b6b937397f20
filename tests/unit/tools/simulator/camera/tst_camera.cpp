// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "camera.h"
#include "request.h"

#include <QtTest>

#include <algorithm>

Q_DECLARE_METATYPE(CameraState)

namespace {

QByteArray hello()
{
    return "FF FF 0A 41 01 06 07 06 09 01 16 00 7F";
}

QByteArray announcementOfThreeBytes()
{
    return "FF FF 0E 41 01 06 07 06 09 01 10 00 02 00 00 03 82";
}

QByteArray packetOfThreeBytes()
{
    return "FF FF 0D 41 01 06 07 06 09 01 01 01 01 02 03 74";
}

Answer answerTo(Camera &camera, const QByteArray &frame)
{
    return camera.answer(Request::fromFrame(QByteArray::fromHex(frame)).value());
}

// The only frame of the answer in hexadecimal; anything else as a text that no test expects.
QByteArray replyTo(Camera &camera, const QByteArray &frame)
{
    const Answer answer = answerTo(camera, frame);
    if (answer.frames.size() != 1 || !answer.refusal.isEmpty()) {
        return QByteArray::number(answer.frames.size())
            + " frames, refused: " + answer.refusal.toUtf8();
    }
    return answer.frames.first().toHex(' ').toUpper();
}

} // namespace

class CameraTest : public QObject {
    Q_OBJECT

private slots:
    void reportsItsStateToHello_data()
    {
        QTest::addColumn<CameraState>("state");
        QTest::addColumn<QByteArray>("reply");

        CameraState state;
        QTest::newRow("as it comes") << state
                                     << QByteArray("FF FF 17 41 01 06 07 06 09 05 16 00 "
                                                   "01 00 00 06 01 00 00 00 00 01 01 01 01 9C");
        state.version = {0xFF, 0x80, 10, 16};
        state.settings = {};
        QTest::newRow("another version, everything off")
            << state
            << QByteArray("FF FF 17 41 01 06 07 06 09 05 16 00 "
                          "FF 80 0A 10 00 00 00 00 00 00 00 00 00 29");
        state.version = {1, 0, 0, 6};
        state.settings = {2, 9, true, 0, 3};
        QTest::newRow("pan tracking, upside down")
            << state
            << QByteArray("FF FF 17 41 01 06 07 06 09 05 16 00 "
                          "01 00 00 06 09 00 00 01 01 01 00 00 03 A6");
        state.settings = {3, 2, false, 1, 2};
        QTest::newRow("tilt tracking") << state
                                       << QByteArray("FF FF 17 41 01 06 07 06 09 05 16 00 "
                                                     "01 00 00 06 02 00 00 00 00 00 01 01 02 9D");
    }

    void reportsItsStateToHello()
    {
        QFETCH(CameraState, state);
        Camera camera(state);
        QTEST(replyTo(camera, hello()), "reply");
    }

    void storesSettingsAndReportsThem_data()
    {
        QTest::addColumn<QByteArray>("request");
        QTest::addColumn<QByteArray>("reply");
        QTest::addColumn<QByteArray>("helloReply");

        QTest::newRow("everything off")
            << QByteArray("FF FF 0F 41 01 06 07 06 09 01 55 00 00 00 00 00 00 C3")
            << QByteArray("FF FF 17 41 01 06 07 06 09 05 55 00 "
                          "01 00 00 06 00 00 00 00 00 00 00 00 00 D6")
            << QByteArray("FF FF 17 41 01 06 07 06 09 05 16 00 "
                          "01 00 00 06 00 00 00 00 00 00 00 00 00 97");
        QTest::newRow("auto tracking, home")
            << QByteArray("FF FF 0F 41 01 06 07 06 09 01 55 00 01 01 00 01 01 C7")
            << QByteArray("FF FF 17 41 01 06 07 06 09 05 55 00 "
                          "01 00 00 06 01 00 00 00 00 01 01 01 01 DB")
            << QByteArray("FF FF 17 41 01 06 07 06 09 05 16 00 "
                          "01 00 00 06 01 00 00 00 00 01 01 01 01 9C");
        QTest::newRow("pan tracking, preset 7, upside down, no auto zoom, custom offset")
            << QByteArray("FF FF 0F 41 01 06 07 06 09 01 55 00 02 09 01 00 03 D2")
            << QByteArray("FF FF 17 41 01 06 07 06 09 05 55 00 "
                          "01 00 00 06 09 00 00 01 01 01 00 00 03 E5")
            << QByteArray("FF FF 17 41 01 06 07 06 09 05 16 00 "
                          "01 00 00 06 09 00 00 01 01 01 00 00 03 A6");
        QTest::newRow("tilt tracking, preset 0")
            << QByteArray("FF FF 0F 41 01 06 07 06 09 01 55 00 03 02 00 01 02 CB")
            << QByteArray("FF FF 17 41 01 06 07 06 09 05 55 00 "
                          "01 00 00 06 02 00 00 00 00 00 01 01 02 DC")
            << QByteArray("FF FF 17 41 01 06 07 06 09 05 16 00 "
                          "01 00 00 06 02 00 00 00 00 00 01 01 02 9D");
    }

    void storesSettingsAndReportsThem()
    {
        QFETCH(QByteArray, request);
        Camera camera;
        QTEST(replyTo(camera, request), "reply");
        QTEST(replyTo(camera, hello()), "helloReply");
    }

    void answersAZoomPresetWithItsValue_data()
    {
        QTest::addColumn<qint16>("lensZoom");
        QTest::addColumn<QByteArray>("reply");

        QTest::newRow("one byte") << qint16(25)
                                  << QByteArray("FF FF 0C 41 01 06 07 06 09 05 3A 00 00 19 C2");
        QTest::newRow("two bytes, high one first")
            << qint16(400) << QByteArray("FF FF 0C 41 01 06 07 06 09 05 3A 00 01 90 3A");
        QTest::newRow("negative") << qint16(-1)
                                  << QByteArray("FF FF 0C 41 01 06 07 06 09 05 3A 00 FF FF A7");
        QTest::newRow("smallest") << qint16(-32768)
                                  << QByteArray("FF FF 0C 41 01 06 07 06 09 05 3A 00 80 00 29");
        QTest::newRow("largest") << qint16(32767)
                                 << QByteArray("FF FF 0C 41 01 06 07 06 09 05 3A 00 7F FF 27");
    }

    void answersAZoomPresetWithItsValue()
    {
        QFETCH(qint16, lensZoom);
        CameraState state;
        state.lensZoom = {7, lensZoom};
        Camera second(state);
        QTEST(replyTo(second, "FF FF 0C 41 01 06 07 06 09 01 3A 00 01 00 A6"), "reply");

        state.lensZoom = {lensZoom, 7};
        Camera first(state);
        QTEST(replyTo(first, "FF FF 0C 41 01 06 07 06 09 01 3A 00 00 00 A5"), "reply");
    }

    void remembersZoomPresets()
    {
        Camera camera;
        QVERIFY(!camera.state().zoomPresets[0]);
        QVERIFY(!camera.state().zoomPresets[1]);
        // The reserved second byte of the payload does not matter.
        QCOMPARE(replyTo(camera, "FF FF 0C 41 01 06 07 06 09 01 3A 00 00 07 AC"),
                 QByteArray("FF FF 0C 41 01 06 07 06 09 05 3A 00 00 64 0D"));
        QCOMPARE(camera.state().zoomPresets[0].value_or(0), qint16(100));
        QVERIFY(!camera.state().zoomPresets[1]);
        QCOMPARE(replyTo(camera, "FF FF 0C 41 01 06 07 06 09 01 3A 00 01 00 A6"),
                 QByteArray("FF FF 0C 41 01 06 07 06 09 05 3A 00 00 19 C2"));
        QCOMPARE(camera.state().zoomPresets[0].value_or(0), qint16(100));
        QCOMPARE(camera.state().zoomPresets[1].value_or(0), qint16(25));
    }

    void acknowledgesAFirmware()
    {
        Camera camera;
        QCOMPARE(replyTo(camera, "FF FF 0E 41 01 06 07 06 09 01 10 00 02 00 01 2C AC"),
                 QByteArray("FF FF 0A 41 01 06 07 06 09 05 10 00 7D"));
        QVERIFY(!camera.isRebooting());
        const QByteArray first(128, 'A');
        QCOMPARE(replyTo(camera, "FF FF 8A 41 01 06 07 06 09 01 01 01 " + first.toHex() + " 6B"),
                 QByteArray("FF FF 0A 41 01 06 07 06 09 05 01 00 6E"));
        const QByteArray second(128, 'B');
        QCOMPARE(replyTo(camera, "FF FF 8A 41 01 06 07 06 09 01 01 02 " + second.toHex() + " EC"),
                 QByteArray("FF FF 0A 41 01 06 07 06 09 05 01 00 6E"));
        QVERIFY(!camera.isRebooting());
        const QByteArray third(44, 'C');
        QCOMPARE(replyTo(camera, "FF FF 36 41 01 06 07 06 09 01 01 03 " + third.toHex() + " 1D"),
                 QByteArray("FF FF 0A 41 01 06 07 06 09 05 01 00 6E"));
        QVERIFY(camera.isRebooting());
        QCOMPARE(camera.firmware(), first + second + third);
    }

    void rebootsAfterTheLastByte()
    {
        Camera camera;
        answerTo(camera, announcementOfThreeBytes());
        answerTo(camera, packetOfThreeBytes());
        QVERIFY(camera.isRebooting());
        for (const QByteArray &request :
             {hello(), announcementOfThreeBytes(), packetOfThreeBytes(),
              QByteArray("FF FF 0C 41 01 06 07 06 09 01 3A 00 00 00 A5")}) {
            QCOMPARE(replyTo(camera, request), QByteArray("0 frames, refused: rebooting"));
        }
        QVERIFY(!camera.state().zoomPresets[0]);
        QCOMPARE(camera.firmware(), QByteArray("\x01\x02\x03"));

        camera.finishReboot();
        QVERIFY(!camera.isRebooting());
        QCOMPARE(camera.firmware(), QByteArray());
        QCOMPARE(replyTo(camera, hello()),
                 QByteArray("FF FF 17 41 01 06 07 06 09 05 16 00 "
                            "01 00 00 07 01 00 00 00 00 01 01 01 01 9D"));
        QCOMPARE(answerTo(camera, packetOfThreeBytes()).refusal,
                 QString("no firmware was announced"));
    }

    void rebootsAtOnceForAnEmptyFirmware()
    {
        Camera camera;
        QCOMPARE(replyTo(camera, "FF FF 0E 41 01 06 07 06 09 01 10 00 02 00 00 00 7F"),
                 QByteArray("FF FF 0A 41 01 06 07 06 09 05 10 00 7D"));
        QVERIFY(camera.isRebooting());
    }

    void keepsItsSettingsOverAReboot()
    {
        Camera camera;
        answerTo(camera, "FF FF 0F 41 01 06 07 06 09 01 55 00 02 09 01 00 03 D2");
        answerTo(camera, "FF FF 0C 41 01 06 07 06 09 01 3A 00 01 00 A6");
        answerTo(camera, announcementOfThreeBytes());
        answerTo(camera, packetOfThreeBytes());
        camera.finishReboot();
        QCOMPARE(replyTo(camera, hello()),
                 QByteArray("FF FF 17 41 01 06 07 06 09 05 16 00 "
                            "01 00 00 07 09 00 00 01 01 01 00 00 03 A7"));
        QCOMPARE(camera.state().zoomPresets[1].value_or(0), qint16(25));
    }

    void raisesItsVersionByAReboot_data()
    {
        QTest::addColumn<QByteArray>("before");
        QTest::addColumn<QByteArray>("after");

        QTest::newRow("last part") << QByteArray("01 00 00 06") << QByteArray("01 00 00 07");
        QTest::newRow("above 127") << QByteArray("01 00 00 7F") << QByteArray("01 00 00 80");
        QTest::newRow("up to 255") << QByteArray("01 00 00 FE") << QByteArray("01 00 00 FF");
        QTest::newRow("one carry") << QByteArray("01 00 00 FF") << QByteArray("01 00 01 00");
        QTest::newRow("two carries") << QByteArray("01 02 FF FF") << QByteArray("01 03 00 00");
        QTest::newRow("three carries") << QByteArray("01 FF FF FF") << QByteArray("02 00 00 00");
        QTest::newRow("no part left") << QByteArray("FF FF FF FF") << QByteArray("00 00 00 00");
    }

    void raisesItsVersionByAReboot()
    {
        QFETCH(QByteArray, before);
        const QByteArray version = QByteArray::fromHex(before);
        CameraState state;
        std::copy_n(version.begin(), state.version.size(), state.version.begin());
        Camera camera(state);
        answerTo(camera, announcementOfThreeBytes());
        answerTo(camera, packetOfThreeBytes());
        camera.finishReboot();
        // Bytes 12 to 15.
        QTEST(replyTo(camera, hello()).mid(36, 11), "after");
    }

    void refusesWhatItDoesNotUnderstand_data()
    {
        QTest::addColumn<QByteArray>("request");
        QTest::addColumn<QString>("refusal");

        QTest::newRow("an acknowledgement")
            << QByteArray("FF FF 0A 41 01 06 07 06 09 05 16 00 83") << "type 5 is not a request";
        QTest::newRow("the reserved type")
            << QByteArray("FF FF 0A 41 01 06 07 06 09 02 16 00 80") << "type 2 is not a request";
        QTest::newRow("an unknown command")
            << QByteArray("FF FF 0C 41 01 06 07 06 09 01 4D 00 01 02 BB") << "unknown command";
        QTest::newRow("a command that only cameras send")
            << QByteArray("FF FF 0A 41 01 06 07 06 09 01 1F 00 88") << "unknown command";
        QTest::newRow("HELLO with a payload")
            << QByteArray("FF FF 0B 41 01 06 07 06 09 01 16 00 00 80")
            << "payload of 1 bytes, 0 expected";
        QTest::newRow("a setting too few")
            << QByteArray("FF FF 0E 41 01 06 07 06 09 01 55 00 02 09 01 00 CE")
            << "payload of 4 bytes, 5 expected";
        QTest::newRow("a setting too many")
            << QByteArray("FF FF 10 41 01 06 07 06 09 01 55 00 02 09 01 00 03 00 D3")
            << "payload of 6 bytes, 5 expected";
        QTest::newRow("auto tracking out of range")
            << QByteArray("FF FF 0F 41 01 06 07 06 09 01 55 00 04 01 00 01 01 CA")
            << "auto tracking is 4, not 0 to 3";
        QTest::newRow("a setting is unsigned")
            << QByteArray("FF FF 0F 41 01 06 07 06 09 01 55 00 FF 01 00 01 01 C5")
            << "auto tracking is 255, not 0 to 3";
        QTest::newRow("target missing out of range")
            << QByteArray("FF FF 0F 41 01 06 07 06 09 01 55 00 01 0A 00 01 01 D0")
            << "target missing is 10, not 0 to 9";
        QTest::newRow("direction out of range")
            << QByteArray("FF FF 0F 41 01 06 07 06 09 01 55 00 01 01 02 01 01 C9")
            << "upside down is 2, not 0 to 1";
        QTest::newRow("auto zoom out of range")
            << QByteArray("FF FF 0F 41 01 06 07 06 09 01 55 00 01 01 00 02 01 C8")
            << "auto zoom is 2, not 0 to 1";
        QTest::newRow("zoom offset out of range")
            << QByteArray("FF FF 0F 41 01 06 07 06 09 01 55 00 01 01 00 01 04 CA")
            << "zoom offset is 4, not 0 to 3";
        QTest::newRow("a third zoom preset")
            << QByteArray("FF FF 0C 41 01 06 07 06 09 01 3A 00 02 00 A7")
            << "there is no such zoom preset";
        QTest::newRow("a zoom preset without the reserved byte")
            << QByteArray("FF FF 0B 41 01 06 07 06 09 01 3A 00 00 A4")
            << "payload of 1 bytes, 2 expected";
        QTest::newRow("a zoom preset with more than the reserved byte")
            << QByteArray("FF FF 0D 41 01 06 07 06 09 01 3A 00 00 00 00 A6")
            << "payload of 3 bytes, 2 expected";
        QTest::newRow("a firmware packet without an announcement")
            << packetOfThreeBytes() << "no firmware was announced";
        QTest::newRow("an announcement that is too short")
            << QByteArray("FF FF 0D 41 01 06 07 06 09 01 10 00 02 00 01 7F")
            << "payload of 3 bytes, 4 expected";
    }

    void refusesWhatItDoesNotUnderstand()
    {
        QFETCH(QByteArray, request);
        Camera camera;
        const Answer answer = answerTo(camera, request);
        QTEST(answer.refusal, "refusal");
        QVERIFY(answer.frames.isEmpty());
        // Nothing has changed.
        QCOMPARE(replyTo(camera, hello()),
                 QByteArray("FF FF 17 41 01 06 07 06 09 05 16 00 "
                            "01 00 00 06 01 00 00 00 00 01 01 01 01 9C"));
        QVERIFY(!camera.state().zoomPresets[0]);
        QVERIFY(!camera.state().zoomPresets[1]);
    }
};

QTEST_GUILESS_MAIN(CameraTest)
#include "tst_camera.moc"
