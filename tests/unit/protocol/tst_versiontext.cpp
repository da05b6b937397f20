// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "versiontext.h"

#include "rows.h"

namespace {

/// Once more, digit by digit.
QByteArray hexadecimal(int byte)
{
    const int magnitude = byte < 128 ? byte : 256 - byte;
    const char *const digits = "0123456789abcdef";
    QByteArray text(byte < 128 ? "" : "-");
    if (magnitude >= 16) {
        text += digits[magnitude / 16];
    }
    return text + digits[magnitude % 16];
}

} // namespace

class VersionTextTest : public QObject {
    Q_OBJECT

private slots:
    void showsEachByteAsSignedHexadecimal_data()
    {
        addRows<int, QString>({"byte", "text"},
                              {{"zero has one digit", 0x00, "0"},
                               {"no padding", 0x09, "9"},
                               {"lower case", 0x0A, "a"},
                               {"two digits", 0x10, "10"},
                               {"both digits letters", 0x6F, "6f"},
                               {"largest positive", 0x7F, "7f"},
                               {"smallest negative", 0x80, "-80"},
                               {"negative letters", 0xB1, "-4f"},
                               {"negative one digit", 0xF6, "-a"},
                               {"minus one", 0xFF, "-1"}});
    }

    void showsEachByteAsSignedHexadecimal()
    {
        QFETCH(int, byte);
        QTEST(signedHexadecimal(static_cast<char>(byte)), "text");
    }

    void showsEveryByteInEveryPlace()
    {
        for (int byte = 0; byte < 256; ++byte) {
            QCOMPARE(signedHexadecimal(static_cast<char>(byte)), QString(hexadecimal(byte)));
            for (int place = 0; place < 4; ++place) {
                QByteArray bytes = QByteArray::fromHex("01020304");
                bytes[place] = static_cast<char>(byte);
                QList<QByteArray> numbers{"1", "2", "3", "4"};
                numbers[place] = hexadecimal(byte);
                QCOMPARE(versionText(bytes, 0), QString(numbers.join('.')));
            }
        }
    }

    void joinsFourBytesByDots_data()
    {
        addRows<QByteArray, QString>(
            {"bytes", "text"},
            {{"zeros", QByteArray::fromHex("00000000"), "0.0.0.0"},
             {"in order", QByteArray::fromHex("01020A10"), "1.2.a.10"},
             {"negative last", QByteArray::fromHex("01020AFF"), "1.2.a.-1"},
             {"all negative", QByteArray::fromHex("80FFFE81"), "-80.-1.-2.-7f"}});
    }

    void joinsFourBytesByDots()
    {
        QFETCH(QByteArray, bytes);
        QTEST(versionText(bytes, 0), "text");
    }

    void readsFromTheOffsetOn_data()
    {
        addRows<int, QString>({"offset", "text"},
                              {{"all four bytes", 1, "2.3.4.5"},
                               {"the last is missing", 2, "3.4.5.0"},
                               {"all but the first are missing", 4, "5.0.0.0"},
                               {"at the end", 5, "0.0.0.0"},
                               {"after the end", 6, "0.0.0.0"}});
    }

    void readsFromTheOffsetOn()
    {
        QFETCH(int, offset);
        QTEST(versionText(QByteArray::fromHex("0102030405"), offset), "text");
    }
};

QTEST_APPLESS_MAIN(VersionTextTest)
#include "tst_versiontext.moc"
