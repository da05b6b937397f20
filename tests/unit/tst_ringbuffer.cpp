// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "ringbuffer.h"

#include <QtTest>

#include <thread>

class RingBufferTest : public QObject {
    Q_OBJECT

private slots:
    void bytesComeOutInOrder()
    {
        RingBuffer buffer;
        buffer.append("ab");
        buffer.append("c");
        QCOMPARE(buffer.getChar(), int('a'));
        buffer.append("d");
        QCOMPARE(buffer.getChar(), int('b'));
        QCOMPARE(buffer.getChar(), int('c'));
        QVERIFY(!buffer.isEmpty());
        QCOMPARE(buffer.getChar(), int('d'));
        QVERIFY(buffer.isEmpty());
    }

    void bytesAreUnsigned()
    {
        RingBuffer buffer;
        buffer.append(QByteArray::fromHex("ff80"));
        QCOMPARE(buffer.getChar(), 255);
        QCOMPARE(buffer.getChar(), 128);
    }

    void emptyGivesMinusOne()
    {
        RingBuffer buffer;
        QVERIFY(buffer.isEmpty());
        QCOMPARE(buffer.getChar(), -1);
    }

    void appendingNothingLeavesNothingToTake()
    {
        RingBuffer buffer;
        buffer.append(QByteArray());
        QVERIFY(buffer.isEmpty());
        buffer.append("a");
        buffer.append(QByteArray());
        buffer.append("b");
        QCOMPARE(buffer.getChar(), int('a'));
        QCOMPARE(buffer.getChar(), int('b'));
        QCOMPARE(buffer.getChar(), -1);
        QVERIFY(buffer.isEmpty());
    }

    void clearForgetsEverything()
    {
        RingBuffer buffer;
        buffer.append("abc");
        buffer.clear();
        QVERIFY(buffer.isEmpty());
        buffer.append("d");
        QCOMPARE(buffer.getChar(), int('d'));
    }

    // One thread appends pieces of changing length, the other takes single bytes, as the window and
    // its parser thread do; the thread sanitizer runs this too.
    void losesNothingBetweenTwoThreads()
    {
        constexpr int kBytes = 2'000'000;
        RingBuffer buffer;

        std::thread producer([&buffer] {
            int sent = 0;
            while (sent < kBytes) {
                QByteArray piece(qMin(1 + sent % 97, kBytes - sent), '\0');
                for (char &byte : piece) {
                    byte = static_cast<char>(sent % 251);
                    ++sent;
                }
                buffer.append(piece);
            }
        });

        int wrong = 0;
        int received = 0;
        while (received < kBytes) {
            if (buffer.isEmpty()) {
                std::this_thread::yield();
                continue;
            }
            wrong += buffer.getChar() == received % 251 ? 0 : 1;
            ++received;
        }
        producer.join();
        QCOMPARE(wrong, 0);
        QVERIFY(buffer.isEmpty());
    }
};

QTEST_APPLESS_MAIN(RingBufferTest)
#include "tst_ringbuffer.moc"
