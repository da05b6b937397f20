// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "bytestext.h"

#include <QtTest>

class BytesTextTest : public QObject {
    Q_OBJECT

private slots:
    void writesHexadecimal()
    {
        QCOMPARE(hexadecimalText(QByteArray("\x00\x0a\xff", 3)), QString("00 0A FF"));
        QCOMPARE(hexadecimalText({}), QString());
    }

    void writesOnlyWhatIsPrintable_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("text");

        QTest::newRow("nothing") << QByteArray() << QString();
        QTest::newRow("the first and the last of ASCII") << QByteArray(" ~") << QString(" ~");
        QTest::newRow("a line and a tab")
            << QByteArray("\tlogin:\r\n") << QString(R"(\tlogin:\r\n)");
        QTest::newRow("below") << QByteArray("a\x1f") << QString();
        QTest::newRow("above") << QByteArray("a\x7f") << QString();
        QTest::newRow("beyond 7 bits") << QByteArray("\xe4") << QString();
        QTest::newRow("a zero") << QByteArray("a\0", 2) << QString();
    }

    void writesOnlyWhatIsPrintable()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, text);
        QCOMPARE(printableText(bytes), text);
    }
};

QTEST_GUILESS_MAIN(BytesTextTest)
#include "tst_bytestext.moc"
