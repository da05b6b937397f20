// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "framereader.h"
#include "frames.h"
#include "rows.h"

// A row's stream: bytes in hexadecimal; "|" separates what arrives separately.
static QVector<QByteArray> arrivals(const QByteArray &stream)
{
    QVector<QByteArray> parts;
    const QList<QByteArray> hexadecimals = stream.split('|');
    for (const QByteArray &part : hexadecimals) {
        parts.append(QByteArray::fromHex(part));
    }
    return parts;
}

static QStringList described(const QVector<FrameReader::Piece> &pieces)
{
    static const QStringList kKinds{"frame", "bad", "incomplete", "noise"};
    QStringList texts;
    for (const FrameReader::Piece &piece : pieces) {
        texts << kKinds.at(piece.kind) + ' ' + piece.bytes.toHex(' ').toUpper();
    }
    return texts;
}

class FrameReaderTest : public QObject {
    Q_OBJECT

private slots:
    void cutsTheStreamIntoFrames_data() { addStreams(); }

    void cutsTheStreamIntoFrames()
    {
        QFETCH(QByteArray, stream);
        FrameReader reader;
        QTEST(described(reader.take(QByteArray::fromHex(stream))), "pieces");
        QTEST(reader.hasPartial(), "partial");
    }

    void piecesDoNotDependOnHowBytesArrive_data() { addStreams(); }

    // Noise is handed out as it comes, so that only here its pieces are joined.
    void piecesDoNotDependOnHowBytesArrive()
    {
        QFETCH(QByteArray, stream);
        FrameReader reader;
        QVector<FrameReader::Piece> pieces;
        const QByteArray bytes = QByteArray::fromHex(stream);
        for (const char byte : bytes) {
            const auto found = reader.take(QByteArray(1, byte));
            for (const FrameReader::Piece &piece : found) {
                if (piece.kind == FrameReader::Noise && !pieces.isEmpty()
                    && pieces.last().kind == FrameReader::Noise) {
                    pieces.last().bytes += piece.bytes;
                } else {
                    pieces.append(piece);
                }
            }
        }
        QTEST(described(pieces), "pieces");
        QTEST(reader.hasPartial(), "partial");
    }

    void takesTheLongestFrame()
    {
        const QByteArray frame = QByteArray::fromHex("FF FF 8A 41 01 06 07 06 09 01 01 01")
            + QByteArray(128, '\xAA') + '\xEB';
        FrameReader reader;
        QVERIFY(reader.take(frame.left(140)).isEmpty());
        const auto pieces = reader.take(frame.mid(140));
        QCOMPARE(pieces.size(), 1);
        QCOMPARE(pieces.first().kind, FrameReader::Frame);
        QCOMPARE(pieces.first().bytes, frame);
    }

    void givesUpOnAPartialFrame_data()
    {
        addRows<QByteArray, QStringList>(
            {"stream", "pieces"},
            {{"nothing there", {}, {}},
             {"a lone FF", "FF", {"incomplete FF"}},
             {"a lone header", "FF FF", {"incomplete FF FF"}},
             {"half a frame", "FF FF 0F 41 01 | 06 07", {"incomplete FF FF 0F 41 01 06 07"}},
             {"a last FF is not split off", "FF FF 0F 41 FF", {"incomplete FF FF 0F 41 FF"}},
             {"a frame after half a frame",
              "FF FF 40 41 01 06 | " + Hex::hello(),
              {"incomplete FF FF 40 41 01 06", "frame " + Hex::hello()}},
             {"a frame between two halves",
              "FF FF 40 41 01 06 | " + Hex::hello() + " | FF FF 0A 41",
              {"incomplete FF FF 40 41 01 06", "frame " + Hex::hello(), "incomplete FF FF 0A 41"}},
             {"a frame whose length byte came too large",
              "FF FF 8A 41 01 06 07 06 09 01 16 00 7F | " + Hex::hello(),
              {"incomplete FF FF 8A 41 01 06 07 06 09 01 16 00 7F", "frame " + Hex::hello()}}});
    }

    void givesUpOnAPartialFrame()
    {
        QFETCH(QByteArray, stream);
        FrameReader reader;
        const QVector<QByteArray> parts = arrivals(stream);
        for (const QByteArray &bytes : parts) {
            QCOMPARE(described(reader.take(bytes)), QStringList());
        }
        QTEST(described(reader.dropPartial()), "pieces");
        QVERIFY(!reader.hasPartial());
    }

    void startsAfreshAfterGivingUp()
    {
        FrameReader reader;
        QVERIFY(reader.take(QByteArray::fromHex("FF FF 0F 41 01")).isEmpty());
        reader.dropPartial();
        QCOMPARE(described(reader.take(QByteArray::fromHex(Hex::hello()))),
                 QStringList{"frame " + Hex::hello()});
    }

private:
    static void addStreams()
    {
        QTest::addColumn<QByteArray>("stream");
        QTest::addColumn<QStringList>("pieces");
        QTest::addColumn<bool>("partial");

        QTest::newRow("one frame") << Hex::hello() << QStringList{"frame " + Hex::hello()} << false;
        QTest::newRow("two frames joined")
            << Hex::hello() + " FF FF 0C 41 01 06 07 06 09 01 3A 00 01 00 A6"
            << QStringList{"frame " + Hex::hello(),
                           "frame FF FF 0C 41 01 06 07 06 09 01 3A 00 01 00 A6"}
            << false;
        QTest::newRow("FF FF in the payload")
            << QByteArray("FF FF 0E 41 01 06 07 06 09 01 01 01 FF FF 0A FF 76 ") + Hex::hello()
            << QStringList{"frame FF FF 0E 41 01 06 07 06 09 01 01 01 FF FF 0A FF 76",
                           "frame " + Hex::hello()}
            << false;
        QTest::newRow("a checksum of FF")
            << QByteArray("FF FF 0B 41 01 06 07 06 09 01 16 00 7F FF ") + Hex::hello()
            << QStringList{"frame FF FF 0B 41 01 06 07 06 09 01 16 00 7F FF",
                           "frame " + Hex::hello()}
            << false;
        QTest::newRow("other type and signature are frames")
            << QByteArray("FF FF 0A 42 01 06 07 06 09 05 16 00 84")
            << QStringList{"frame FF FF 0A 42 01 06 07 06 09 05 16 00 84"} << false;
        QTest::newRow("noise around a frame")
            << "00 FF 12 " + Hex::hello() + " 34 FF 56"
            << QStringList{"noise 00 FF 12", "frame " + Hex::hello(), "noise 34 FF 56"} << false;
        QTest::newRow("a third FF in front of a frame")
            << "FF " + Hex::hello() << QStringList{"noise FF", "frame " + Hex::hello()} << false;
        QTest::newRow("wrong checksum")
            << "FF FF 0A 41 01 06 07 06 09 01 16 00 80 " + Hex::hello()
            << QStringList{"bad FF FF 0A 41 01 06 07 06 09 01 16 00 80", "frame " + Hex::hello()}
            << false;
        QTest::newRow("a wrong checksum of FF may start a frame, even if none follows")
            << "FF FF 0A 41 01 06 07 06 09 01 16 00 FF 12 " + Hex::hello()
            << QStringList{"bad FF FF 0A 41 01 06 07 06 09 01 16 00", "noise FF 12",
                           "frame " + Hex::hello()}
            << false;
        QTest::newRow("the header is not part of the sum")
            << QByteArray("FF FF 0A 41 01 06 07 06 09 01 16 00 7D")
            << QStringList{"bad FF FF 0A 41 01 06 07 06 09 01 16 00 7D"} << false;
        QTest::newRow("lost bytes: the next frame is found inside")
            << "FF FF 0F 41 01 06 " + Hex::hello()
            << QStringList{"bad FF FF 0F 41 01 06", "frame " + Hex::hello()} << false;
        QTest::newRow("length byte one too large")
            << "FF FF 0D 41 01 06 07 06 09 01 3A 00 01 00 A6 " + Hex::hello()
            << QStringList{"bad FF FF 0D 41 01 06 07 06 09 01 3A 00 01 00 A6",
                           "frame " + Hex::hello()}
            << false;
        QTest::newRow("length byte one too small")
            << QByteArray("FF FF 0B 41 01 06 07 06 09 01 16 00 00 00 80 ") + Hex::hello()
            << QStringList{"bad FF FF 0B 41 01 06 07 06 09 01 16 00 00 00", "noise 80",
                           "frame " + Hex::hello()}
            << false;
        QTest::newRow("length below 10")
            << "FF FF 09 41 01 06 07 06 09 01 16 7E " + Hex::hello()
            << QStringList{"noise FF FF 09 41 01 06 07 06 09 01 16 7E", "frame " + Hex::hello()}
            << false;
        QTest::newRow("length 0") << "FF FF 00 " + Hex::hello()
                                  << QStringList{"noise FF FF 00", "frame " + Hex::hello()}
                                  << false;
        QTest::newRow("length above 138")
            << "FF FF 8B 41 01 " + Hex::hello()
            << QStringList{"noise FF FF 8B 41 01", "frame " + Hex::hello()} << false;
        QTest::newRow("a frame that has not ended")
            << Hex::hello() + " FF FF 0F 41" << QStringList{"frame " + Hex::hello()} << true;
        QTest::newRow("a last FF may start a frame")
            << QByteArray("12 FF") << QStringList{"noise 12"} << true;
    }
};

QTEST_GUILESS_MAIN(FrameReaderTest)
#include "tst_framereader.moc"
