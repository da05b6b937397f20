// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "deliveryqueue.h"

#include <QtTest>

using namespace std::chrono_literals;

static Delivery bytes(const char *text, std::chrono::milliseconds pause = 0ms)
{
    Delivery delivery;
    delivery.bytes = text;
    delivery.pause = pause;
    return delivery;
}

static Delivery waiting(const char *text, std::chrono::milliseconds pause)
{
    Delivery delivery = bytes(text, pause);
    delivery.awaitsNext = true;
    return delivery;
}

// What is due, or a text that no test expects.
static QByteArray taken(DeliveryQueue &queue, DeliveryQueue::Time now)
{
    const auto delivery = queue.take(now);
    return delivery ? delivery->bytes : QByteArray("nothing");
}

class DeliveryQueueTest : public QObject {
    Q_OBJECT

private slots:
    void aDeliveryIsDueAfterItsPause()
    {
        DeliveryQueue queue;
        QVERIFY(!queue.nextDue());
        queue.add({bytes("a", 5ms)}, 100ms);
        QVERIFY(queue.nextDue() == DeliveryQueue::Time(105ms));
        QCOMPARE(taken(queue, 105ms - 1ns), QByteArray("nothing"));
        QCOMPARE(taken(queue, 105ms), QByteArray("a"));
        QVERIFY(!queue.nextDue());
    }

    void aPauseInsideAFrameStartsWithWhatWasTaken()
    {
        DeliveryQueue queue;
        queue.add({bytes("a"), bytes("b", 50ms)}, 100ms);
        QCOMPARE(taken(queue, 120ms), QByteArray("a"));
        QCOMPARE(taken(queue, 169ms), QByteArray("nothing"));
        QCOMPARE(taken(queue, 170ms), QByteArray("b"));
    }

    void laterFramesDoNotOvertake()
    {
        DeliveryQueue queue;
        queue.add({bytes("a", 50ms)}, 100ms);
        queue.add({bytes("b")}, 101ms);
        QCOMPARE(taken(queue, 149ms), QByteArray("nothing"));
        QCOMPARE(taken(queue, 150ms), QByteArray("a"));
        QCOMPARE(taken(queue, 150ms), QByteArray("b"));
    }

    void delaysOfSeveralFramesPassTogether()
    {
        DeliveryQueue queue;
        queue.add({bytes("a", 50ms)}, 100ms);
        queue.add({bytes("b", 50ms)}, 110ms);
        QCOMPARE(taken(queue, 150ms), QByteArray("a"));
        QCOMPARE(taken(queue, 159ms), QByteArray("nothing"));
        QCOMPARE(taken(queue, 160ms), QByteArray("b"));
    }

    void whatAwaitsTheNextGoesWithIt()
    {
        DeliveryQueue queue;
        queue.add({waiting("a", 500ms)}, 100ms);
        queue.add({waiting("b", 500ms)}, 200ms);
        QCOMPARE(taken(queue, 600ms), QByteArray("nothing"));
        queue.add({bytes("c"), bytes("d", 1ms)}, 600ms);
        QCOMPARE(taken(queue, 600ms), QByteArray("abc"));
        QCOMPARE(taken(queue, 601ms), QByteArray("d"));
        QVERIFY(!queue.nextDue());
    }

    void whatAwaitsTheNextGoesAloneInTheEnd()
    {
        DeliveryQueue queue;
        queue.add({waiting("a", 500ms)}, 100ms);
        QCOMPARE(taken(queue, 599ms), QByteArray("nothing"));
        QCOMPARE(taken(queue, 600ms), QByteArray("a"));
        queue.add({bytes("b")}, 700ms);
        QCOMPARE(taken(queue, 700ms), QByteArray("b"));
    }

    void nothingIsDueWhileHeld()
    {
        DeliveryQueue queue;
        queue.add({bytes("a")}, 100ms);
        queue.holdUntil(300ms);
        queue.holdUntil(200ms);
        queue.add({bytes("b")}, 150ms);
        QVERIFY(queue.nextDue() == DeliveryQueue::Time(300ms));
        QCOMPARE(taken(queue, 299ms), QByteArray("nothing"));
        QCOMPARE(taken(queue, 300ms), QByteArray("a"));
        QCOMPARE(taken(queue, 300ms), QByteArray("b"));
    }

    void clearForgetsEverything()
    {
        DeliveryQueue queue;
        queue.add({bytes("a")}, 100ms);
        queue.holdUntil(300ms);
        queue.clear();
        QVERIFY(!queue.nextDue());
        queue.add({bytes("b")}, 110ms);
        QCOMPARE(taken(queue, 110ms), QByteArray("b"));
    }
};

QTEST_GUILESS_MAIN(DeliveryQueueTest)
#include "tst_deliveryqueue.moc"
