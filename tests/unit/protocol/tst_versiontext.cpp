// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "versiontext.h"

#include <QtTest>

class VersionTextTest : public QObject {
    Q_OBJECT

private slots:
    void showsEachByteAsSignedHexadecimal_data()
    {
        QTest::addColumn<int>("byte");
        QTest::addColumn<QString>("text");

        QTest::newRow("zero has one digit") << 0x00 << "0";
        QTest::newRow("no padding") << 0x09 << "9";
        QTest::newRow("lower case") << 0x0A << "a";
        QTest::newRow("two digits") << 0x10 << "10";
        QTest::newRow("both digits letters") << 0x6F << "6f";
        QTest::newRow("largest positive") << 0x7F << "7f";
        QTest::newRow("smallest negative") << 0x80 << "-80";
        QTest::newRow("negative letters") << 0xB1 << "-4f";
        QTest::newRow("negative one digit") << 0xF6 << "-a";
        QTest::newRow("minus one") << 0xFF << "-1";
    }

    void showsEachByteAsSignedHexadecimal()
    {
        QFETCH(int, byte);
        QTEST(signedHexadecimal(static_cast<char>(byte)), "text");
    }

    void agreesWithTheDecimalValueOfEveryByte()
    {
        for (int value = -128; value <= 127; ++value) {
            const QString text = signedHexadecimal(static_cast<char>(value));
            bool isNumber = false;
            QCOMPARE(text.toInt(&isNumber, 16), value);
            QVERIFY2(isNumber, qPrintable(text));
        }
    }

    void joinsFourBytesByDots_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("text");

        QTest::newRow("zeros") << QByteArray::fromHex("00000000") << "0.0.0.0";
        QTest::newRow("in order") << QByteArray::fromHex("01020A10") << "1.2.a.10";
        QTest::newRow("negative last") << QByteArray::fromHex("01020AFF") << "1.2.a.-1";
        QTest::newRow("all negative") << QByteArray::fromHex("80FFFE81") << "-80.-1.-2.-7f";
    }

    void joinsFourBytesByDots()
    {
        QFETCH(QByteArray, bytes);
        QTEST(versionText(bytes, 0), "text");
    }

    void readsFromTheOffsetOn_data()
    {
        QTest::addColumn<int>("offset");
        QTest::addColumn<QString>("text");

        QTest::newRow("all four bytes") << 1 << "2.3.4.5";
        QTest::newRow("the last is missing") << 2 << "3.4.5.0";
        QTest::newRow("all but the first are missing") << 4 << "5.0.0.0";
        QTest::newRow("at the end") << 5 << "0.0.0.0";
        QTest::newRow("after the end") << 6 << "0.0.0.0";
    }

    void readsFromTheOffsetOn()
    {
        QFETCH(int, offset);
        QTEST(versionText(QByteArray::fromHex("0102030405"), offset), "text");
    }
};

QTEST_APPLESS_MAIN(VersionTextTest)
#include "tst_versiontext.moc"
