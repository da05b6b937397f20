// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "firmwareimage.h"
#include "imagefault.h"
#include "imagepacking.h"
#include "rows.h"

constexpr ImageVersion kProtocolVersion{1, 2, 0, 7};
constexpr ImageVersion kImageVersion{1, 0, 10, 255};

/// Bytes that look different at each offset and for each size.
static QByteArray someFirmware(int size)
{
    QByteArray firmware(size, '\0');
    quint32 state = static_cast<quint32>(size) + 1;
    for (char &byte : firmware) {
        state = state * 1664525U + 1013904223U;
        byte = static_cast<char>(state >> 24U);
    }
    return firmware;
}

class ImagePackingTest : public QObject {
    Q_OBJECT

private slots:
    void writesTheImage_data()
    {
        const QByteArray prefix = "0123456789abcdef0123456789ABCDEF";
        addRows<QByteArray, QByteArray>(
            {"firmware", "payload"},
            {{"nothing", {}, {}},
             {"less than the raw prefix", QByteArray("\x00=\xFF", 3), QByteArray("\x00=\xFF", 3)},
             {"the raw prefix", prefix, prefix},
             {"33 bytes", prefix + "A", prefix + "QQ=="},
             {"34 bytes", prefix + "AB", prefix + "QUI="},
             {"35 bytes", prefix + "ABC", prefix + "QUJD"},
             {"the last of the alphabet", prefix + "\xFB\xFF\xFE", prefix + "+//+"},
             // 90 bytes make 120 characters, more than others put on a line.
             {"no line breaks", prefix + QByteArray("ABC").repeated(30),
              prefix + QByteArray("QUJD").repeated(30)}});
    }

    void writesTheImage()
    {
        QFETCH(QByteArray, firmware);
        QFETCH(QByteArray, payload);
        const QByteArray versions("\x01\x02\x00\x07\x01\x00\x0A\xFF", 8);
        QCOMPARE(packedImage(kProtocolVersion, kImageVersion, firmware),
                 "KVEL" + versions + QByteArray(116, '\0') + payload);
    }

    void isUploadedAsPackedForEverySize()
    {
        for (int size = 1; size <= 1000; ++size) {
            const QByteArray firmware = someFirmware(size);
            QByteArray image = packedImage(kProtocolVersion, kImageVersion, firmware);
            QVERIFY2(!imageFault(image), qPrintable(QString::number(size)));
            QCOMPARE(FirmwareImage(image).firmware(), firmware);

            // Likewise without the padding; a "=" of the raw prefix is none.
            while (image.size() > 160 && image.endsWith('=')) {
                image.chop(1);
            }
            QVERIFY2(!imageFault(image), qPrintable(QString::number(size)));
            QCOMPARE(FirmwareImage(image).firmware(), firmware);
        }
    }

    void isUploadedAsPackedAtTheLargestSize()
    {
        const QByteArray firmware = someFirmware(16777215);
        const QByteArray image = packedImage(kProtocolVersion, kImageVersion, firmware);
        QCOMPARE(image.size(), kMaximumImageSize);
        QVERIFY(!imageFault(image));
        QVERIFY(FirmwareImage(image).firmware() == firmware);
    }
};

QTEST_APPLESS_MAIN(ImagePackingTest)

#include "tst_imagepacking.moc"
