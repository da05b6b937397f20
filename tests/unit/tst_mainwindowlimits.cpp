// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "patience.h"
#include "rows.h"
#include "threadclock.h"
#include "windowfixture.h"

#include <dlfcn.h>

namespace {

/// Which events the window had delivered, in each of its waits and at once. Message boxes do not
/// count.
QList<int> &deliveries()
{
    static QList<int> all;
    return all;
}

void note(QEventLoop::ProcessEventsFlags flags)
{
    if (!flags.testFlag(QEventLoop::DialogExec)) {
        deliveries() << static_cast<int>(flags);
    }
}

/// The function of that name in Qt's library.
template <typename Function> Function original(const char *name)
{
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

} // namespace

// The linker prefers these to those in Qt's library.
int QEventLoop::exec(ProcessEventsFlags flags)
{
    note(flags);
    using Exec = int (*)(QEventLoop *, ProcessEventsFlags);
    static const auto exec =
        original<Exec>("_ZN10QEventLoop4execE6QFlagsINS_17ProcessEventsFlagEE");
    return exec(this, flags);
}

void QCoreApplication::processEvents(QEventLoop::ProcessEventsFlags flags)
{
    note(flags);
    using Process = void (*)(QEventLoop::ProcessEventsFlags);
    static const auto process = original<Process>(
        "_ZN16QCoreApplication13processEventsE6QFlagsIN10QEventLoop17ProcessEventsFlagEE");
    process(flags);
}

namespace {

/// Raises a signal of the window again and again, so that no wait for it takes long.
class Acknowledger : public QTimer {
public:
    Acknowledger(MainWindow *window, const QByteArray &signal)
    {
        callOnTimeout(window, [window, signal] { QMetaObject::invokeMethod(window, signal); });
        setInterval(1);
        QTimer::start();
    }
};

/// As the parser delivers it, without payload.
QByteArray replyOf(int type, int command)
{
    return Frames::hex("ffff0a410106070609") + static_cast<char>(type) + static_cast<char>(command)
        + '\0';
}

/// All that a camera can say except what is waited for, and waits until the window has seen it.
void sendEverythingBut(const QList<int> &commands, WindowFixture &fixture)
{
    for (int value = 0; value < 256; ++value) {
        if (!commands.contains(value)) {
            fixture.deliver(replyOf(5, value));
        }
        if (value != 5) {
            fixture.deliver(replyOf(value, commands.constFirst()));
        }
    }
    QByteArray reply = replyOf(5, commands.constFirst());
    fixture.deliver(reply.left(10));
    reply += static_cast<char>(10 + 94 + 5 + commands.constFirst());
    const QByteArray broken = reply.chopped(1) + static_cast<char>(reply.back() + 1);
    const QByteArray cutShort = reply.chopped(1);
    fixture.log.clear();
    fixture.line.send(QByteArray(100, '\x16') + broken + broken + cutShort
                      + Frames::rebootAcknowledgement());
    QTRY_VERIFY(fixture.log.texts().contains("UART_CTRL_CMD_REBOOT Received"));
}

int sendHello(MainWindow &window, unsigned char times)
{
    return window.SendUARTCommand(UART_COMM_TYPE_REQUEST, UART_CTRL_CMD_HELLO, 0, nullptr, 0,
                                  times);
}

} // namespace

class MainWindowLimitsTest : public QObject {
    Q_OBJECT

private slots:
    void waitsForAReplyAtMost_data()
    {
        addRows<QByteArray, QByteArray, int>(
            {"slot", "acknowledgement", "limit"},
            {{"settings, 5 s", "on_pushButton_apply_clicked", "receive_setting_ack", 5000},
             {"custom zoom 1, 2 s", "on_pushButton_custom_zoom_1_clicked",
              "receive_custom_zoom_ack", 2000},
             {"custom zoom 2, 2 s", "on_pushButton_custom_zoom_2_clicked",
              "receive_custom_zoom_ack", 2000}});
    }

    void waitsForAReplyAtMost()
    {
        QFETCH(QByteArray, slot);
        QFETCH(QByteArray, acknowledgement);
        QFETCH(int, limit);
        WindowFixture fixture;
        const Acknowledger acknowledger(&fixture.window, acknowledgement);
        fixture.limits.clear();
        deliveries().clear();
        fixture.call(slot);
        QCOMPARE(fixture.limits.asked(), QList<int>{limit});
        QCOMPARE(deliveries(), QList<int>{QEventLoop::AllEvents});
    }

    void waitsForTheReplyToAConnectionAtMostFiveSeconds()
    {
        WindowFixture fixture;
        const Acknowledger acknowledger(&fixture.window, "receive_hello_ack");
        fixture.limits.clear();
        deliveries().clear();
        fixture.click("pushButton_connect");
        QCOMPARE(deliveries(), QList<int>{QEventLoop::AllEvents});
        QVERIFY(fixture.port()->isOpen());
        QCOMPARE(fixture.limits.asked(), QList<int>{5000});
    }

    void waitsForEachPacketAtMostTwoSeconds()
    {
        // 256 bytes of firmware, which are two packets: 32 as they are and 224 in base64.
        const ImageFile image(QByteArray("KVEL").leftJustified(160, '\0')
                              + QByteArray(224, 'x').toBase64());
        WindowFixture fixture;
        fixture.enterFirmwarePath(image.fileName());
        const Acknowledger acknowledger(&fixture.window, "receive_fw_info_ack");
        fixture.limits.clear();
        deliveries().clear();
        fixture.call("on_pushButton_start_upgrade_clicked");
        QCOMPARE(fixture.limits.asked(), QList<int>({5000, 2000, 2000}));
        // In each wait, before each packet's, and once the bar is full.
        constexpr int kAll = QEventLoop::AllEvents;
        QCOMPARE(deliveries(), QList<int>({kAll, kAll, kAll, kAll, kAll, kAll}));
    }

    void nothingElseEndsAWaitOrChangesItsEnd_data()
    {
        addRows<QByteArray, QList<int>, int>(
            {"slot", "own", "waitsBefore"},
            {{"for HELLO", "on_pushButton_connect_clicked", {22}, 0},
             {"for the settings", "on_pushButton_apply_clicked", {85}, 0},
             {"for a zoom", "on_pushButton_custom_zoom_1_clicked", {58}, 0},
             {"for the firmware's size", "on_pushButton_start_upgrade_clicked", {16, 1}, 0},
             {"for a packet", "on_pushButton_start_upgrade_clicked", {1, 16}, 1}});
    }

    void nothingElseEndsAWaitOrChangesItsEnd()
    {
        QFETCH(QByteArray, slot);
        QFETCH(QList<int>, own);
        QFETCH(int, waitsBefore);
        const ImageFile image(QByteArray("KVEL").leftJustified(160, '\0')); // one packet
        WindowFixture fixture;
        if (slot != "on_pushButton_connect_clicked") {
            QVERIFY(fixture.connectCamera());
        }
        fixture.enterFirmwarePath(image.fileName());
        fixture.limits.clear();

        QElapsedTimer clock;
        clock.start();
        constexpr int kRounding = 2; // milliseconds
        int earliestEnd = 0;
        int latestEnd = 0;
        bool isChecked = false;
        bool isUnchanged = false;
        QTimer poll;
        poll.callOnTimeout([&] {
            if (latestEnd == 0 && fixture.limits.runsAfter(waitsBefore)) {
                poll.stop();
                earliestEnd = int(clock.elapsed()) - kRounding;
                const int remaining = fixture.limits.remaining();
                earliestEnd += remaining;
                latestEnd = int(clock.elapsed()) + remaining + kRounding;
                sendEverythingBut(own, fixture);
                poll.start();
                return;
            }
            if (latestEnd != 0 && !isChecked) {
                isChecked = true;
                const int before = int(clock.elapsed());
                const int remaining = fixture.limits.remaining();
                isUnchanged = before + remaining <= latestEnd
                    && int(clock.elapsed()) + remaining >= earliestEnd;
            }
            fixture.deliver(replyOf(5, own.constFirst()));
        });
        poll.start(1);
        fixture.call(slot);
        QVERIFY(isUnchanged);
    }

    // Destroyed while the parser pauses, it waits for the end of that pause and for no other.
    void isDestroyedWithinOnePoll()
    {
        ThreadClock clock;
        clock.holdOthers();
        auto window = std::make_unique<MainWindow>();
        window->show();
        QTRY_VERIFY(ThreadClock::isHolding());
        clock.clear();
        window.reset();
        QCOMPARE(clock.pauses(), QList<unsigned long>());
    }

    void bytesThatWaitForTheParserOutliveAReconnect()
    {
        ThreadClock clock;
        WindowFixture fixture;
        QVERIFY(fixture.connectCamera());
        clock.holdOthers();
        QTRY_VERIFY(ThreadClock::isHolding());
        {
            const QSignalBlocker blocker(fixture.port());
            fixture.line.send(Frames::rebootAcknowledgement());
            QTRY_COMPARE(fixture.port()->bytesAvailable(), 13);
        }
        fixture.call("readData");
        fixture.click("pushButton_disconnect");
        fixture.replyWith(Frames::helloReply());
        QTimer::singleShot(0, &fixture.window, &ThreadClock::release);
        fixture.click("pushButton_connect");
        QVERIFY(fixture.isEnabled("tabWidget"));
        QCOMPARE(fixture.log.statusTexts().filter("_CMD_"),
                 QStringList({"UART_CTRL_CMD_REBOOT Received", "UART_CTRL_CMD_HELLO Received"}));
    }

    void pausesForAFifthOfASecondBetweenRepetitions()
    {
        WindowFixture fixture;
        QVERIFY(fixture.connectCamera());
        ThreadClock clock;
        // None leaves for the line before the event loop runs again.
        QList<qint64> writtenAtPauses;
        clock.atOwnPause = [&] { writtenAtPauses << fixture.port()->bytesToWrite(); };
        QCOMPARE(sendHello(fixture.window, 3), 0);
        QCOMPARE(clock.ownPauses(), QList<unsigned long>({200, 200}));
        QCOMPARE(writtenAtPauses, QList<qint64>({13, 26})); // frames of 13 bytes; no pause last
        QTRY_COMPARE(fixture.line.received().toHex(), Frames::helloRequest().repeated(3).toHex());
    }

    void repeatingZeroTimesMeans256()
    {
        WindowFixture fixture;
        QVERIFY(fixture.connectCamera());
        ThreadClock clock;
        QCOMPARE(sendHello(fixture.window, 0), 0);
        QCOMPARE(clock.ownPauses().size(), 255);
        QTRY_COMPARE(fixture.line.received().size(), 256 * 13);
        QCOMPARE(fixture.line.received(), Frames::helloRequest().repeated(256));
    }
};

QTEST_MAIN(MainWindowLimitsTest)
#include "tst_mainwindowlimits.moc"
