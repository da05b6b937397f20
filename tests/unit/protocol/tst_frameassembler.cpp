// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "frameassembler.h"

#include "frames.h"

#include <utility>

namespace {

// In hexadecimal, as the rows are.
QByteArray longFrame()
{
    return Frames::helloReply().toHex();
}
QByteArray shortFrame()
{
    return Frames::settingsAcknowledgement().toHex();
}

/// Writes down each event, frames as "frame ..." in hexadecimal.
class Recorder : public FrameAssembler::Listener {
public:
    void lengthReceived(quint32 length) override
    {
        events << QStringLiteral("length %1").arg(length);
    }
    void frameAccepted(std::string_view frame, quint32 length) override
    {
        const QByteArray bytes(frame.data(), static_cast<int>(frame.size()));
        events << QStringLiteral("frame of %1: ").arg(length) + QString::fromLatin1(bytes.toHex());
    }
    void checksumFailed(qint32 sum) override { events << QStringLiteral("sum %1").arg(sum); }
    void lengthRejected(quint32 length) override
    {
        events << QStringLiteral("rejected %1").arg(length);
    }

    QStringList events;
};

QString accepted(int length, const QByteArray &delivered)
{
    return QStringLiteral("frame of %1: ").arg(length)
        + QString::fromLatin1(QByteArray::fromHex(delivered).toHex());
}

} // namespace

class FrameAssemblerTest : public QObject {
    Q_OBJECT

private slots:
    void tellsWhatAStreamAmountsTo_data()
    {
        QTest::addColumn<QByteArray>("stream");
        QTest::addColumn<QStringList>("events");

        const QString reply = accepted(23, longFrame().chopped(2));
        const QString shortReply = accepted(10, shortFrame().chopped(2));

        QTest::newRow("nothing") << QByteArray() << QStringList();
        QTest::newRow("a reply is delivered without its checksum")
            << longFrame() << QStringList{"length 23", reply};
        QTest::newRow("a reply without payload")
            << shortFrame() << QStringList{"length 10", shortReply};
        QTest::newRow("two frames come out in order") << longFrame()
                + shortFrame() << QStringList{"length 23", reply, "length 10", shortReply};
        QTest::newRow("noise before the header is ignored")
            << "00 ff 12 fe 41 ff 00" + shortFrame() << QStringList{"length 10", shortReply};
        QTest::newRow("noise between two frames is ignored") << shortFrame() + "01 02 ff 03"
                + longFrame() << QStringList{"length 10", shortReply, "length 23", reply};
        QTest::newRow("the end of a frame without its begin is ignored")
            << longFrame().mid(6) + shortFrame() << QStringList{"length 10", shortReply};
        // 11 + 94 + 5 + 58 + 200 = 368, low 8 bits 70
        QTest::newRow("a sum above 255 wraps")
            << QByteArray("ffff0b410106070609053a00c870")
            << QStringList{"length 11", accepted(11, "ffff0b410106070609053a00c8")};
        QTest::newRow("a wrong checksum drops the frame and names the unreduced sum")
            << QByteArray("ffff0b410106070609053a00c871") << QStringList{"length 11", "sum 368"};
        QTest::newRow("a frame after a wrong checksum is found") << "ffff0b410106070609053a00c871"
                + shortFrame() << QStringList{"length 11", "sum 368", "length 10", shortReply};
        QTest::newRow("neither signature nor type nor command are looked at")
            << QByteArray("ffff03aabb68") << QStringList{"length 3", accepted(3, "ffff03aabb")};
        QTest::newRow("a length of 1 is a checksum alone")
            << QByteArray("ffff0101") << QStringList{"length 1", accepted(1, "ffff01")};
        QTest::newRow("a length of 0 is rejected at the next byte") << "ffff0000"
                + shortFrame() << QStringList{"length 0", "rejected 0", "length 10", shortReply};
        QTest::newRow("a length of 0 says nothing before the next byte")
            << QByteArray("ffff00") << QStringList{"length 0"};
        QTest::newRow("a truncated frame waits without a word")
            << QByteArray("ffff1741010607060905") << QStringList{"length 23"};
        QTest::newRow("a truncated frame is abandoned at the next header")
            << "ffff174101" + shortFrame() << QStringList{"length 23", "length 10", shortReply};
        // 3 + 41 hex + 01 = 69
        QTest::newRow("FF FF in a payload starts a new frame with the byte after it as length")
            << "ffff0f410106070609053a00ffff03410145" + shortFrame()
            << QStringList{"length 15", "length 3", accepted(3, "ffff034101"), "length 10",
                           shortReply};
        QTest::newRow("FF FF in the signature starts a new frame")
            << "ffff0affff" + shortFrame().mid(4)
            << QStringList{"length 10", "length 10", accepted(10, shortFrame().chopped(2))};
        // 04 + 01 + ff + ff = 203 hex, so the length byte 03 is the right checksum too.
        QTest::newRow("the byte after FF FF first completes the abandoned frame")
            << QByteArray("ffff0401ffff03 aabb68")
            << QStringList{"length 4", accepted(4, "ffff0401ffff"), "length 3",
                           accepted(3, "ffff03aabb")};
        QTest::newRow("the byte after FF FF may fail the abandoned frame")
            << QByteArray("ffff0401ffff0a") << QStringList{"length 4", "sum 515", "length 10"};
        QTest::newRow("three FF are a pair and a length of 255")
            << QByteArray("ffffff") << QStringList{"length 255"};
        QTest::newRow("the third FF is also the first of another pair") << "ffffffff"
                + shortFrame().mid(4) << QStringList{"length 255", "length 10", shortReply};
        QTest::newRow("a run of FF: every pair announces, the byte after it is its length")
            << QByteArray("ffffffffffff") << QStringList{"length 255", "length 255"};
        // 11 + 94 + 5 + 58 + 87 = 255. The next frame's second FF is then a length of 255, and
        // the frame is lost; the one after it is found again.
        QTest::newRow("a checksum of FF takes the next frame's first header byte for its own pair")
            << "ffff0b410106070609053a0057ff" + shortFrame() + longFrame()
            << QStringList{"length 11", accepted(11, "ffff0b410106070609053a0057"), "length 255",
                           "length 23", reply};
        // 138 + 94 + 5 + 1 + 128 * 1 = 366, low 8 bits 6e
        QTest::newRow("138 is the longest frame")
            << "ffff8a410106070609050100" + QByteArray("01").repeated(128) + "6e"
            << QStringList{
                   "length 138",
                   accepted(138, "ffff8a410106070609050100" + QByteArray("01").repeated(128))};
        QTest::newRow("139 is dropped, even with a right sum")
            << "ffff8b410106070609050100" + QByteArray("01").repeated(129) + "70" + shortFrame()
            << QStringList{"length 139", "length 10", shortReply};
        // 255 + 254 * 1 = 509, low 8 bits fd
        QTest::newRow("255 is dropped, even with a right sum")
            << "ffffff" + QByteArray("01").repeated(254) + "fd" + shortFrame()
            << QStringList{"length 255", "length 10", shortReply};
        QTest::newRow("a length too long ends the collection of the frame before it")
            << QByteArray("ffff0a4101ffffc8 06070609055500c2")
            << QStringList{"length 10", "length 200"};
    }

    void tellsWhatAStreamAmountsTo()
    {
        QFETCH(QByteArray, stream);
        FrameAssembler assembler;
        Recorder recorder;
        const QByteArray bytes = QByteArray::fromHex(stream);
        for (const char byte : bytes) {
            assembler.take(static_cast<unsigned char>(byte), recorder);
        }
        QTEST(recorder.events, "events");
    }

    // Meant for the address sanitizer above all: no length byte writes past the frame store.
    void everyAnnouncedLengthStaysInBounds()
    {
        for (int length = 0; length <= 255; ++length) {
            FrameAssembler assembler;
            Recorder recorder;
            assembler.take(0xFF, recorder);
            assembler.take(0xFF, recorder);
            assembler.take(static_cast<unsigned char>(length), recorder);
            for (int i = 0; i < 300; ++i) {
                assembler.take(0x01, recorder);
            }
            const int outcomes = recorder.events.size() - 1;
            QCOMPARE(recorder.events.first(), QStringLiteral("length %1").arg(length));
            QVERIFY2(outcomes == (length <= 138 ? 1 : 0), qPrintable(recorder.events.join(", ")));
        }
    }

    void everyCorruptedByteOfAFrameIsNoticed()
    {
        const QByteArray reply = QByteArray::fromHex(longFrame());
        for (int position = 3; position < reply.size(); ++position) {
            QByteArray corrupted = reply;
            corrupted[position] = static_cast<char>(corrupted.at(position) ^ 0x10);
            FrameAssembler assembler;
            Recorder recorder;
            for (const char byte : std::as_const(corrupted)) {
                assembler.take(static_cast<unsigned char>(byte), recorder);
            }
            QCOMPARE(recorder.events.size(), 2);
            QVERIFY2(recorder.events.last().startsWith(QLatin1String("sum ")),
                     qPrintable(QString::number(position)));
        }
    }
};

QTEST_APPLESS_MAIN(FrameAssemblerTest)
#include "tst_frameassembler.moc"
