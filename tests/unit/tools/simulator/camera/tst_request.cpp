// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "frames.h"
#include "request.h"
#include "rows.h"

class RequestTest : public QObject {
    Q_OBJECT

private slots:
    void takesAFrameApart_data()
    {
        addRows<QByteArray, int, int, int, QByteArray>(
            {"frame", "type", "command", "parameter", "payload"},
            {{"no payload", Hex::hello(), 1, 22, 0, {}},
             {"two bytes of payload", Hex::zoom2(), 1, 58, 0, "01 00"},
             {"bytes are unsigned", "FF FF 0B 41 01 06 07 06 09 80 FE FF 90 00", 128, 254, 255,
              "90"}});
    }

    void takesAFrameApart()
    {
        QFETCH(QByteArray, frame);
        QFETCH(QByteArray, payload);
        const auto request = Request::fromFrame(QByteArray::fromHex(frame));
        QVERIFY(request);
        QTEST(int(request->type), "type");
        QTEST(int(request->command), "command");
        QTEST(int(request->parameter), "parameter");
        QCOMPARE(request->payload.toHex(' ').toUpper(), payload);
    }

    void needsTheSignature_data()
    {
        addRows<QByteArray>({"frame"},
                            {{"first byte", "FF FF 0A 42 01 06 07 06 09 01 16 00 80"},
                             {"second byte", "FF FF 0A 41 00 06 07 06 09 01 16 00 7E"},
                             {"third byte", "FF FF 0A 41 01 07 07 06 09 01 16 00 80"},
                             {"fourth byte", "FF FF 0A 41 01 06 06 06 09 01 16 00 7E"},
                             {"fifth byte", "FF FF 0A 41 01 06 07 07 09 01 16 00 80"},
                             {"last byte", "FF FF 0A 41 01 06 07 06 08 01 16 00 7E"}});
    }

    void needsTheSignature()
    {
        QFETCH(QByteArray, frame);
        QVERIFY(!Request::fromFrame(QByteArray::fromHex(frame)));
    }
};

QTEST_GUILESS_MAIN(RequestTest)
#include "tst_request.moc"
