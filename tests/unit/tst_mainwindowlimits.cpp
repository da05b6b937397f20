// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "patience.h"
#include "rows.h"
#include "windowfixture.h"

namespace {

/// The pauses of the GUI thread.
struct Asked {
    QList<unsigned long> pauses; ///< how long they were meant to last, in milliseconds
    /// Bytes that have been written to the port, when there is one, at each of the pauses. None
    /// leaves for the line before the event loop runs again.
    QList<qint64> writtenAtPauses;
    const QSerialPort *port = nullptr;
};

Asked &asked()
{
    static Asked all;
    return all;
}

bool isGuiThread()
{
    return QThread::currentThread() == QCoreApplication::instance()->thread();
}

} // namespace

// The linker prefers this one to that in Qt's library. How long a pause really takes is the
// machine's affair, so the test looks at what is asked for.
void QThread::msleep(unsigned long msec)
{
    if (isGuiThread()) {
        asked().pauses << msec;
        if (asked().port != nullptr) {
            asked().writtenAtPauses << asked().port->bytesToWrite();
        }
    }
    usleep(1000);
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
        fixture.call(slot);
        QCOMPARE(fixture.limits.asked(), QList<int>{limit});
    }

    void waitsForTheReplyToAConnectionAtMostFiveSeconds()
    {
        WindowFixture fixture;
        const Acknowledger acknowledger(&fixture.window, "receive_hello_ack");
        fixture.limits.clear();
        fixture.click("pushButton_connect");
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
        fixture.call("on_pushButton_start_upgrade_clicked");
        QCOMPARE(fixture.limits.asked(), QList<int>({5000, 2000, 2000}));
    }

    void pausesForAFifthOfASecondBetweenRepetitions()
    {
        WindowFixture fixture;
        QVERIFY(fixture.connectCamera());
        asked() = {};
        asked().port = fixture.port();
        QCOMPARE(sendHello(fixture.window, 3), 0);
        asked().port = nullptr;
        QCOMPARE(asked().pauses, QList<unsigned long>({200, 200}));
        QCOMPARE(asked().writtenAtPauses,
                 QList<qint64>({13, 26})); // frames of 13 bytes; no pause last
        QTRY_COMPARE(fixture.line.received().toHex(), Frames::helloRequest().repeated(3).toHex());
    }

    void repeatingZeroTimesMeans256()
    {
        WindowFixture fixture;
        QVERIFY(fixture.connectCamera());
        asked() = {};
        QCOMPARE(sendHello(fixture.window, 0), 0);
        QCOMPARE(asked().pauses.size(), 255);
        QTRY_COMPARE(fixture.line.received().size(), 256 * 13);
        QCOMPARE(fixture.line.received(), Frames::helloRequest().repeated(256));
    }
};

QTEST_MAIN(MainWindowLimitsTest)
#include "tst_mainwindowlimits.moc"
