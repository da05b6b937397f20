// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "printabletext.h"

#include <QtTest>

class PrintableTextTest : public QObject {
    Q_OBJECT

private slots:
    void writesHexadecimal()
    {
        QCOMPARE(hexadecimalText(QByteArray("\x00\x0a\xff", 3)), QString("00 0A FF"));
        QCOMPARE(hexadecimalText({}), QString());
    }

    void escapesWhatIsNotPrintable_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("printable");

        QTest::newRow("nothing") << QString() << QString();
        QTest::newRow("the first and the last of ASCII") << " ~"
                                                         << " ~";
        QTest::newRow("a line and a tab") << "\tlogin:\r\n"
                                          << R"(\tlogin:\r\n)";
        QTest::newRow("a terminal's command") << "\x1b[2J"
                                              << R"(\x1b[2J)";
        QTest::newRow("a bell") << "a\a"
                                << R"(a\x07)";
        QTest::newRow("a zero") << QString(QChar(0)) << R"(\x00)";
        QTest::newRow("delete") << "\x7f"
                                << R"(\x7f)";
        QTest::newRow("a command of eight bits") << QString(QChar(0x9b)) << R"(\x9b)";
        QTest::newRow("from right to left") << QString(QChar(0x202e)) << R"(\x202e)";
        QTest::newRow("letters and a picture") << QString::fromUtf8("\u00e4\u4e16\U0001f4f7")
                                               << QString::fromUtf8("\u00e4\u4e16\U0001f4f7");
    }

    void escapesWhatIsNotPrintable()
    {
        QFETCH(QString, text);
        QTEST(printableText(text), "printable");
    }
};

QTEST_GUILESS_MAIN(PrintableTextTest)

#include "tst_printabletext.moc"
