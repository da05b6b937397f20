// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "base64.h"

#include <QtTest>

class Base64Test : public QObject {
    Q_OBJECT

private slots:
    void decodes_data();
    void decodes();
    void leavesWhatStandsBefore();
    void leavesCopiesAlone();
    void readsEveryByteInEveryPlaceAsQtDoes_data();
    void readsEveryByteInEveryPlaceAsQtDoes();
};

void Base64Test::decodes_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("nothing") << QByteArray("") << QByteArray("");
    QTest::newRow("a group") << QByteArray("Q2Ft") << QByteArray("Cam");
    QTest::newRow("two groups") << QByteArray("Q2FtZXJh") << QByteArray("Camera");
    QTest::newRow("one padding character") << QByteArray("Q2FtZXI=") << QByteArray("Camer");
    QTest::newRow("two padding characters") << QByteArray("Q2FtZQ==") << QByteArray("Came");
    QTest::newRow("one missing") << QByteArray("Q2FtZXI") << QByteArray("Camer");
    QTest::newRow("two missing") << QByteArray("Q2FtZQ") << QByteArray("Came");
    QTest::newRow("a lone last character") << QByteArray("Q2FtZ") << QByteArray("Cam");
    QTest::newRow("a line feed between groups") << QByteArray("Q2Ft\nZXJh") << QByteArray("Camera");
    QTest::newRow("a line feed in a group") << QByteArray("Q2\nFtZXJh") << QByteArray("Camera");
    QTest::newRow("padding in the middle") << QByteArray("Q2FtZQ==Q2Ft")
                                           << QByteArray("Came\x04"
                                                         "6\x16");
    QTest::newRow("the URL alphabet") << QByteArray("-_Q2Ft") << QByteArray("Cam");
    QTest::newRow("the whole alphabet")
        << QByteArray("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/")
        << QByteArray::fromHex("00108310518720928b30d38f41149351559761969b71d79f"
                               "8218a39259a7a29aabb2dbafc31cb3d35db7e39ebbf3dfbf");
}

void Base64Test::decodes()
{
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, bytes);
    decodeBase64(text, 0);
    QCOMPARE(text.toHex(), bytes.toHex());
}

void Base64Test::leavesWhatStandsBefore()
{
    QByteArray bytes("raw Q2FtZXJh");
    decodeBase64(bytes, 4);
    QCOMPARE(bytes, QByteArray("raw Camera"));
}

void Base64Test::leavesCopiesAlone()
{
    QByteArray bytes("Q2FtZXJh");
    const QByteArray copy = bytes;
    decodeBase64(bytes, 0);
    QCOMPARE(copy, QByteArray("Q2FtZXJh"));
}

void Base64Test::readsEveryByteInEveryPlaceAsQtDoes_data()
{
    QTest::addColumn<QByteArray>("clean");
    QTest::newRow("among others") << QByteArray("Q2FtZXJhQ2Ft");
    QTest::newRow("among characters of no bits") << QByteArray("AAAAAAAAAAAA");
}

void Base64Test::readsEveryByteInEveryPlaceAsQtDoes()
{
    QFETCH(QByteArray, clean);
    for (int place = 0; place < clean.size(); ++place) {
        for (int byte = 0; byte < 256; ++byte) {
            QByteArray text = clean;
            text[place] = static_cast<char>(byte);
            const QByteArray expected = QByteArray::fromBase64(text);
            decodeBase64(text, 0);
            QCOMPARE(text.toHex(), expected.toHex());
        }
    }
}

QTEST_APPLESS_MAIN(Base64Test)
#include "tst_base64.moc"
