// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "framereader.h"

#include <QStringList>
#include <QtTest>

namespace {

QByteArray hello()
{
    return "FF FF 0A 41 01 06 07 06 09 01 16 00 7F";
}

// A row's stream: bytes in hexadecimal; "|" separates what arrives separately.
QVector<QByteArray> arrivals(const QByteArray &stream)
{
    QVector<QByteArray> parts;
    const QList<QByteArray> hexadecimals = stream.split('|');
    for (const QByteArray &part : hexadecimals) {
        parts.append(QByteArray::fromHex(part));
    }
    return parts;
}

QStringList described(const QVector<FrameReader::Piece> &pieces)
{
    static const QStringList kKinds{"frame", "bad", "incomplete", "noise"};
    QStringList texts;
    for (const FrameReader::Piece &piece : pieces) {
        texts << kKinds.at(piece.kind) + ' ' + piece.bytes.toHex(' ').toUpper();
    }
    return texts;
}

} // namespace

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
        QTest::addColumn<QByteArray>("stream");
        QTest::addColumn<QStringList>("pieces");

        QTest::newRow("nothing there") << QByteArray() << QStringList();
        QTest::newRow("a lone FF") << QByteArray("FF") << QStringList{"incomplete FF"};
        QTest::newRow("a lone header") << QByteArray("FF FF") << QStringList{"incomplete FF FF"};
        QTest::newRow("half a frame") << QByteArray("FF FF 0F 41 01 | 06 07")
                                      << QStringList{"incomplete FF FF 0F 41 01 06 07"};
        QTest::newRow("a last FF is not split off")
            << QByteArray("FF FF 0F 41 FF") << QStringList{"incomplete FF FF 0F 41 FF"};
        QTest::newRow("a frame behind half a frame") << "FF FF 40 41 01 06 | "
                + hello() << QStringList{"incomplete FF FF 40 41 01 06", "frame " + hello()};
        QTest::newRow("a frame between two halves")
            << "FF FF 40 41 01 06 | " + hello() + " | FF FF 0A 41"
            << QStringList{"incomplete FF FF 40 41 01 06", "frame " + hello(),
                           "incomplete FF FF 0A 41"};
        QTest::newRow("a frame whose length byte came too large")
            << "FF FF 8A 41 01 06 07 06 09 01 16 00 7F | " + hello()
            << QStringList{"incomplete FF FF 8A 41 01 06 07 06 09 01 16 00 7F", "frame " + hello()};
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
        QCOMPARE(described(reader.take(QByteArray::fromHex(hello()))),
                 QStringList{"frame " + hello()});
    }

private:
    static void addStreams()
    {
        QTest::addColumn<QByteArray>("stream");
        QTest::addColumn<QStringList>("pieces");
        QTest::addColumn<bool>("partial");

        QTest::newRow("one frame") << hello() << QStringList{"frame " + hello()} << false;
        QTest::newRow("two frames joined")
            << hello() + " FF FF 0C 41 01 06 07 06 09 01 3A 00 01 00 A6"
            << QStringList{"frame " + hello(), "frame FF FF 0C 41 01 06 07 06 09 01 3A 00 01 00 A6"}
            << false;
        QTest::newRow("FF FF in the payload")
            << QByteArray("FF FF 0E 41 01 06 07 06 09 01 01 01 FF FF 0A FF 76 ") + hello()
            << QStringList{"frame FF FF 0E 41 01 06 07 06 09 01 01 01 FF FF 0A FF 76",
                           "frame " + hello()}
            << false;
        QTest::newRow("a checksum of FF")
            << QByteArray("FF FF 0B 41 01 06 07 06 09 01 16 00 7F FF ") + hello()
            << QStringList{"frame FF FF 0B 41 01 06 07 06 09 01 16 00 7F FF", "frame " + hello()}
            << false;
        QTest::newRow("other type and signature are frames")
            << QByteArray("FF FF 0A 42 01 06 07 06 09 05 16 00 84")
            << QStringList{"frame FF FF 0A 42 01 06 07 06 09 05 16 00 84"} << false;
        QTest::newRow("noise around a frame")
            << "00 FF 12 " + hello() + " 34 FF 56"
            << QStringList{"noise 00 FF 12", "frame " + hello(), "noise 34 FF 56"} << false;
        QTest::newRow("a third FF in front of a frame")
            << "FF " + hello() << QStringList{"noise FF", "frame " + hello()} << false;
        QTest::newRow("wrong checksum")
            << "FF FF 0A 41 01 06 07 06 09 01 16 00 80 " + hello()
            << QStringList{"bad FF FF 0A 41 01 06 07 06 09 01 16 00 80", "frame " + hello()}
            << false;
        QTest::newRow("a wrong checksum of FF may start a frame, even if none follows")
            << "FF FF 0A 41 01 06 07 06 09 01 16 00 FF 12 " + hello()
            << QStringList{"bad FF FF 0A 41 01 06 07 06 09 01 16 00", "noise FF 12",
                           "frame " + hello()}
            << false;
        QTest::newRow("the header is not part of the sum")
            << QByteArray("FF FF 0A 41 01 06 07 06 09 01 16 00 7D")
            << QStringList{"bad FF FF 0A 41 01 06 07 06 09 01 16 00 7D"} << false;
        QTest::newRow("lost bytes: the next frame is found inside")
            << "FF FF 0F 41 01 06 " + hello()
            << QStringList{"bad FF FF 0F 41 01 06", "frame " + hello()} << false;
        QTest::newRow("length byte one too large")
            << "FF FF 0D 41 01 06 07 06 09 01 3A 00 01 00 A6 " + hello()
            << QStringList{"bad FF FF 0D 41 01 06 07 06 09 01 3A 00 01 00 A6", "frame " + hello()}
            << false;
        QTest::newRow("length byte one too small")
            << QByteArray("FF FF 0B 41 01 06 07 06 09 01 16 00 00 00 80 ") + hello()
            << QStringList{"bad FF FF 0B 41 01 06 07 06 09 01 16 00 00 00", "noise 80",
                           "frame " + hello()}
            << false;
        QTest::newRow("length below 10")
            << "FF FF 09 41 01 06 07 06 09 01 16 7E " + hello()
            << QStringList{"noise FF FF 09 41 01 06 07 06 09 01 16 7E", "frame " + hello()}
            << false;
        QTest::newRow("length 0") << "FF FF 00 " + hello()
                                  << QStringList{"noise FF FF 00", "frame " + hello()} << false;
        QTest::newRow("length above 138")
            << "FF FF 8B 41 01 " + hello()
            << QStringList{"noise FF FF 8B 41 01", "frame " + hello()} << false;
        QTest::newRow("a frame that has not ended")
            << hello() + " FF FF 0F 41" << QStringList{"frame " + hello()} << true;
        QTest::newRow("a last FF may start a frame")
            << QByteArray("12 FF") << QStringList{"noise 12"} << true;
    }
};

QTEST_GUILESS_MAIN(FrameReaderTest)
#include "tst_framereader.moc"
