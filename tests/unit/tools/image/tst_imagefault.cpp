// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "imagefault.h"
#include "rows.h"

#include <optional>

/// An image: header and raw prefix, 160 bytes, and the body.
static QByteArray start(const QByteArray &body = {})
{
    return QByteArray("KVEL\x01\x02\x00\x07\x01\x00\x00\x06", 12) + QByteArray(116, '\0')
        + "0123456789abcdef0123456789ABCDEF" + body;
}

static QString faultText(const std::optional<ImageFault> &fault)
{
    return fault ? QString("offset %1: %2").arg(QString::number(fault->offset), fault->reason)
                 : QString("no fault");
}

class ImageFaultTest : public QObject {
    Q_OBJECT

private slots:
    void acceptsWhatUploadsAsPacked_data()
    {
        QTest::addColumn<QByteArray>("image");

        QTest::newRow("a firmware of one byte") << start().left(129);
        QTest::newRow("one byte less than the raw prefix") << start().left(159);
        QTest::newRow("no body") << start();
        QTest::newRow("three bytes") << start("QUJD");
        QTest::newRow("two bytes") << start("QUI=");
        QTest::newRow("two bytes without padding") << start("QUI");
        QTest::newRow("one byte") << start("QQ==");
        QTest::newRow("one byte without padding") << start("QQ");
        QTest::newRow("two groups without padding") << start("QUJDQQ");
        QTest::newRow("the alphabet")
            << start("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/");
        QTest::newRow("padding in the raw prefix") << start().left(128) + QByteArray(32, '=');
        QTest::newRow("anything in the rest of the header")
            << start().left(12) + QByteArray(116, '\xFF') + start().mid(128) + "QUJD";
    }

    void acceptsWhatUploadsAsPacked()
    {
        QFETCH(QByteArray, image);
        QCOMPARE(faultText(imageFault(image)), QString("no fault"));
    }

    void namesWhatIsWrongAndWhere_data()
    {
        const QString lone = "a single character, which is no whole byte";
        const QString padding =
            R"(wrong padding: the encoded body takes %1 "=" at its end or none, )"
            "not %2";
        const QString cut =
            "the last character holds bits of a further byte: the encoded body is cut "
            "short or damaged";
        addRows<QByteArray, QString>(
            {"image", "fault"},
            {{"empty file",
              {},
              "offset 0: the file ends here, shorter than the header of 128 bytes"},
             {"part of the magic", "KVE",
              "offset 3: the file ends here, shorter than the header of 128 bytes"},
             {"one byte less than the header", start().left(127),
              "offset 127: the file ends here, shorter than the header of 128 bytes"},
             {"no firmware", start().left(128), "offset 128: the firmware is empty"},
             {"lower-case magic", "kvel" + start().mid(4),
              R"(offset 0: the magic is "kvel" (6b 76 65 6c), not "KVEL")"},
             {"last letter of the magic", "KVEM" + start().mid(4),
              R"(offset 0: the magic is "KVEM" (4b 56 45 4d), not "KVEL")"},
             {"unprintable magic", QByteArray("\x7F\x00\xFFL", 4) + start().mid(4),
              R"(offset 0: the magic is "...L" (7f 00 ff 4c), not "KVEL")"},
             {"short file without the magic", "PK",
              R"(offset 0: the magic is "PK" (50 4b), not "KVEL")"},
             {"foreign first character", start("*UJD"),
              R"(offset 160: "*" (2a) is not a base64 character)"},
             {"line break", start("QUJD\n"), R"(offset 164: "." (0a) is not a base64 character)"},
             {"the first of two foreign characters", start("QU-_"),
              R"(offset 162: "-" (2d) is not a base64 character)"},
             {"high byte", start("QUJ\xC4"), R"(offset 163: "." (c4) is not a base64 character)"},
             {"foreign character after padding", start("QUI=D"),
              R"(offset 163: a "=" that is not at the end of the encoded body)"},
             {"padding in the middle", start("QQ==QUI="),
              R"(offset 162: a "=" that is not at the end of the encoded body)"},
             {"a lone character", start("Q"), "offset 160: the encoded body ends with " + lone},
             {"a lone character after a group", start("QUJDQ"),
              "offset 164: the encoded body ends with " + lone},
             {"a lone character with padding", start("QUJDQ==="),
              "offset 164: the encoded body ends with " + lone},
             {"half of the padding", start("QQ="), "offset 162: " + padding.arg(2).arg(1)},
             {"too much for one byte", start("QQ==="), "offset 162: " + padding.arg(2).arg(3)},
             {"too much for two bytes", start("QUI=="), "offset 163: " + padding.arg(1).arg(2)},
             {"padding of a full group", start("QUJD="), "offset 164: " + padding.arg(0).arg(1)},
             {"a group of padding", start("QUJD===="), "offset 164: " + padding.arg(0).arg(4)},
             {"padding without a body", start("===="), "offset 160: " + padding.arg(0).arg(4)},
             {"three of four characters", start("QUJDQUJ"), "offset 166: " + cut},
             {"two of four characters", start("QUJDQU"), "offset 165: " + cut},
             {"the other bit before the padding of two bytes", start("QUK="), "offset 162: " + cut},
             {"every bit before the padding of one byte", start("QY=="), "offset 161: " + cut},
             {"damaged before the padding of two bytes", start("QUJ="), "offset 162: " + cut},
             {"damaged before the padding of one byte", start("Qf=="), "offset 161: " + cut}});
    }

    void namesWhatIsWrongAndWhere()
    {
        QFETCH(QByteArray, image);
        QTEST(faultText(imageFault(image)), "fault");
    }

    void tellsBase64CharactersFromAllOthers()
    {
        const QByteArray alphabet =
            "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
        for (int value = 0; value < 256; ++value) {
            const char character = static_cast<char>(value);
            const auto fault = imageFault(start("QU") + character + "D");
            QVERIFY2(fault.has_value() != alphabet.contains(character),
                     qPrintable(faultText(fault)));
        }
    }

    void limitsTheSizeOfTheFirmware_data()
    {
        // 5592394 groups of three bytes and one of a single byte make 16777215 with the raw prefix.
        const QString tooLarge =
            "offset 22369738: too large: a firmware has at most 16777215 bytes";
        addRows<int, QByteArray, QString>(
            {"characters", "end", "fault"},
            {{"the largest", 22369578, "==", "no fault"},
             {"the largest without padding", 22369578, {}, "no fault"},
             {"16 MiB", 22369579, "=", tooLarge},
             {"16 MiB without padding", 22369579, {}, tooLarge},
             {"16 MiB and a byte", 22369580, {}, tooLarge},
             {"as much as is read of a larger file", 22369581, {}, tooLarge}});
    }

    void limitsTheSizeOfTheFirmware()
    {
        QFETCH(int, characters);
        QFETCH(QByteArray, end);
        QTEST(faultText(imageFault(start() + QByteArray(characters, 'A') + end)), "fault");
        QCOMPARE(kMaximumImageSize, 160 + 22369578 + 2);
    }

    void limitsTheSizeToPack_data()
    {
        addRows<int, QString>(
            {"size", "fault"},
            {{"nothing", 0, "offset 0: the firmware is empty"},
             {"one byte", 1, "no fault"},
             {"the largest", 16777215, "no fault"},
             {"16 MiB", 16777216,
              "offset 16777215: too large: a firmware has at most 16777215 bytes"}});
    }

    void limitsTheSizeToPack()
    {
        QFETCH(int, size);
        QTEST(faultText(firmwareFault(QByteArray(size, '\0'))), "fault");
    }
};

QTEST_APPLESS_MAIN(ImageFaultTest)

#include "tst_imagefault.moc"
