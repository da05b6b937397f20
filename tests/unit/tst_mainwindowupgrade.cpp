// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "patience.h"
#include "recordingtranslator.h"
#include "rows.h"
#include "widgetrecorder.h"
#include "windowfixture.h"

#include <QLineEdit>
#include <QProgressBar>
#include <QTabWidget>

#include <utility>

namespace {

const char *const kComplete = "Update is complete. Device auto-rebooting.";
const char *const kVersionLines =
    "Protocol version: 1.2.0.7\nImage version: 1.0.0.6\nCurrent version: 1.0.a.10";

/// A request's frame, put together here once more so that the program's own encoder is not asked.
QByteArray request(int command, int parameter, const QByteArray &payload)
{
    QByteArray counted;
    counted += static_cast<char>(10 + payload.size());
    counted += QByteArray::fromHex("410106070609 01");
    counted += static_cast<char>(command);
    counted += static_cast<char>(parameter);
    counted += payload;
    int sum = 0;
    for (const char byte : std::as_const(counted)) {
        sum += static_cast<unsigned char>(byte);
    }
    return "\xff\xff" + counted + static_cast<char>(sum);
}

QByteArray firmwareOf(int size)
{
    QByteArray firmware(size, '\0');
    for (int i = 0; i < size; ++i) {
        firmware[i] = static_cast<char>(i * 7 + i / 128);
    }
    return firmware;
}

QByteArray imageOf(const QByteArray &firmware)
{
    return ("KVEL" + QByteArray::fromHex("01020007 01000006")).leftJustified(128, '\0')
        + firmware.left(32) + firmware.mid(32).toBase64();
}

/// A window that is connected, an image file chosen in it, and a camera that takes the firmware.
class Upgrade : public QObject, public WindowFixture {
    Q_OBJECT

public:
    explicit Upgrade(int firmwareSize, bool answersDialogs = true)
        : WindowFixture(answersDialogs)
        , firmware(firmwareOf(firmwareSize))
    {
        write(imageOf(firmware));
        if (!connectCamera()) {
            qFatal("not connected");
        }
        child<QTabWidget>("tabWidget")->setCurrentIndex(1);
        enterFirmwarePath(path());
        connect(&line, &PseudoTerminal::bytesReceived, this, &Upgrade::receive);
        limits.clear();
        log.clear();
    }

    QString path() const { return m_directory.filePath("image"); }
    void write(const QByteArray &contents) const
    {
        QFile file(path());
        if (!file.open(QIODevice::WriteOnly) || file.write(contents) != contents.size()) {
            qFatal("cannot write the image");
        }
    }
    void start() { click("pushButton_start_upgrade"); }
    /// Does not answer the frame of that index, and lets the limit pass in the wait for it.
    void letLimitPassAt(int frame)
    {
        instead[frame] = [] {};
        limits.passWhen("the frame is there", [this, frame] { return frames.size() > frame; });
    }

    /// Status lines without those that the acknowledgements cause.
    QStringList ownStatusLines() const
    {
        QStringList lines;
        const auto all = log.statusTexts();
        for (const QString &status : all) {
            if (!status.startsWith("AnalyzeReceiveData ") && !status.endsWith(" Received")) {
                lines << status;
            }
        }
        return lines;
    }
    QString pane() const { return text("textEdit_firmware_info"); }
    int progress() const { return child<QProgressBar>("progressBar_updating")->value(); }
    bool isDisconnected() const
    {
        return !port()->isOpen() && isEnabled("pushButton_connect")
            && !isEnabled("pushButton_disconnect") && !isEnabled("tabWidget");
    }

    QByteArray firmware;
    QList<QByteArray> frames; ///< each request as it arrived
    QByteArray received;      ///< the packets' payloads, joined
    /// What is done about the frame of that index, instead of an acknowledgement.
    QMap<int, std::function<void()>> instead;
    /// Whether acknowledgements skip line and parser, to save their polls.
    bool acknowledgesDirectly = false;

private:
    void receive(const QByteArray &bytes)
    {
        m_unread += bytes;
        while (m_unread.size() >= 3) {
            const int size = static_cast<unsigned char>(m_unread.at(2)) + 3;
            if (m_unread.size() < size) {
                return;
            }
            frames << m_unread.left(size);
            m_unread.remove(0, size);
            answer();
        }
    }
    void answer()
    {
        const int index = frames.size() - 1;
        const bool isPacket = frames.constLast().at(10) == 1;
        if (isPacket) {
            received += frames.constLast().mid(12).chopped(1);
        }
        if (instead.contains(index)) {
            instead[index]();
            return;
        }
        const QByteArray bytes =
            isPacket ? Frames::packetAcknowledgement() : Frames::sizeAcknowledgement();
        if (!acknowledgesDirectly) {
            line.send(bytes);
            return;
        }
        deliverDuringTheWait(bytes);
    }
    void deliverDuringTheWait(const QByteArray &bytes)
    {
        if (limits.asked().size() == frames.size()) {
            deliver(bytes.chopped(1));
        } else {
            QTimer::singleShot(1, &window, [this, bytes] { deliverDuringTheWait(bytes); });
        }
    }

    QTemporaryDir m_directory;
    QByteArray m_unread;
};

/// What changes on the window when an upgrade fails, with what changes on the bar.
QStringList changesOfAFailure(const QStringList &progress)
{
    const QStringList versions = QString(kVersionLines).split('\n');
    return QStringList{"pushButton_disconnect off",
                       "tabWidget off",
                       "textEdit_firmware_info = ",
                       "textEdit_firmware_info = " + versions.mid(0, 1).join('|'),
                       "textEdit_firmware_info = " + versions.mid(0, 2).join('|'),
                       "textEdit_firmware_info = " + versions.join('|')}
    + progress
        + QStringList{"pushButton_connect on", "comboBox_portlist on", "comboBox_baudrate on",
                      "textEdit_device_info = "};
}

} // namespace

class MainWindowUpgradeTest : public QObject {
    Q_OBJECT

private slots:
    // No number is shown with the separators of a language.
    void initTestCase() { QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany)); }

    void putsTheseBytesOnTheWire()
    {
        Upgrade upgrade(33);
        upgrade.write(("KVEL" + QByteArray(8, '\0')).leftJustified(128, '\0')
                      + "0123456789abcdefghijklmnopqrstuvWA==");
        upgrade.start();
        QCOMPARE(upgrade.frames.size(), 2);
        // 14 + 94 + 1 + 16 + 2 + 33 = 160
        QCOMPARE(upgrade.frames.at(0).toHex(), QByteArray("ffff0e41010607060901100002000021a0"));
        // 43 + 94 + 1 + 1 + 1 + 525 for the digits + 2365 for the letters a to v + 88 = 3118
        QCOMPARE(upgrade.frames.at(1).toHex(),
                 QByteArray("ffff2b410106070609010101"
                            "303132333435363738396162636465666768696a6b6c6d6e6f70717273747576"
                            "58"
                            "2e"));
        QCOMPARE(upgrade.pane(), QString(kComplete));
    }

    void uploadsAFirmwareOf_data()
    {
        QTest::addColumn<QByteArray>("size");
        QTest::addColumn<QList<int>>("progress");
        QTest::addColumn<bool>("overTheLine");

        QTest::newRow("0") << QByteArray("000000") << QList<int>{0} << true;
        QTest::newRow("1") << QByteArray("000001") << QList<int>{0, 1} << true;
        QTest::newRow("32") << QByteArray("000020") << QList<int>{0, 32} << true;
        QTest::newRow("33") << QByteArray("000021") << QList<int>{0, 33} << true;
        QTest::newRow("127") << QByteArray("00007f") << QList<int>{0, 127} << true;
        QTest::newRow("128") << QByteArray("000080") << QList<int>{0, 128} << true;
        QTest::newRow("129") << QByteArray("000081") << QList<int>{0, 128, 129} << true;
        QTest::newRow("256") << QByteArray("000100") << QList<int>{0, 128, 256} << true;
        QTest::newRow("300") << QByteArray("00012c") << QList<int>{0, 128, 256, 300} << true;
        for (const int size : {40000, 74565, 128001}) {
            QList<int> offsets;
            for (int offset = 0; offset < size; offset += 128) {
                offsets << offset;
            }
            QTest::addRow("%d", size)
                << (size == 40000 ? QByteArray("009c40")
                                  : QByteArray(size == 74565 ? "012345" : "01f401"))
                << offsets + QList<int>{size} << false;
        }
    }

    void uploadsAFirmwareOf()
    {
        QFETCH(QByteArray, size);
        QFETCH(QList<int>, progress);
        QFETCH(bool, overTheLine);
        const int firmwareSize = QByteArray(QTest::currentDataTag()).toInt();
        Upgrade upgrade(firmwareSize);
        upgrade.acknowledgesDirectly = !overTheLine;
        auto *const bar = upgrade.child<QProgressBar>("progressBar_updating");
        // So that the first value is seen to be set.
        bar->setValue(50);
        const QSignalSpy valueChanges(bar, &QProgressBar::valueChanged);

        upgrade.start();

        QCOMPARE(upgrade.pane(), QString(kComplete));
        QCOMPARE(upgrade.dialogs.texts(), QStringList());
        QCOMPARE(upgrade.received, upgrade.firmware);

        QList<QByteArray> frames{request(16, 0, "\x02" + QByteArray::fromHex(size))};
        QStringList lines{QStringLiteral("firmware size = %1").arg(firmwareSize)};
        for (int index = 0; index * 128 < firmwareSize; ++index) {
            frames << request(1, (index + 1) % 256, upgrade.firmware.mid(index * 128, 128));
            lines << QStringLiteral("UART_CTRL_CMD_UPLOAD_FIRMWARE %1").arg(index);
        }
        QCOMPARE(upgrade.frames.size(), frames.size());
        for (int i = 0; i < frames.size(); ++i) {
            QCOMPARE(upgrade.frames.at(i).toHex(), frames.at(i).toHex());
        }
        QCOMPARE(upgrade.ownStatusLines(), lines + QStringList{"Disconnected"});

        QList<int> values;
        for (const QList<QVariant> &arguments : valueChanges) {
            values << arguments.constFirst().toInt();
        }
        // Setting the range resets a value outside of it, which is a change of its own.
        if (values.value(0) == -1) {
            values.removeFirst();
        }
        QCOMPARE(values, progress);
        QCOMPARE(bar->minimum(), 0);
        QCOMPARE(bar->maximum(), firmwareSize);
        QVERIFY(upgrade.isDisconnected());
    }

    void changesTheWidgetsInOrder()
    {
        Upgrade upgrade(129);
        WidgetRecorder recorder(&upgrade.window);
        connect(&upgrade.window, &MainWindow::receive_fw_info_ack, &recorder,
                [&recorder] { recorder.note("acknowledged"); });
        upgrade.start();
        const QStringList versions = QString(kVersionLines).split('\n');
        QCOMPARE(recorder.changes(),
                 QStringList({
                     "pushButton_disconnect off",
                     "tabWidget off",
                     "textEdit_firmware_info = ",
                     "textEdit_firmware_info = " + versions.mid(0, 1).join('|'),
                     "textEdit_firmware_info = " + versions.mid(0, 2).join('|'),
                     "textEdit_firmware_info = " + versions.join('|'),
                     "acknowledged",
                     "acknowledged",
                     "progressBar_updating = 128",
                     "acknowledged",
                     "progressBar_updating = 129",
                     "textEdit_firmware_info = ",
                     "textEdit_firmware_info = " + QString(kComplete),
                     "pushButton_connect on",
                     "comboBox_portlist on",
                     "comboBox_baudrate on",
                     "textEdit_device_info = ",
                 }));
    }

    void showsTheProgressBehindThePacket()
    {
        Upgrade upgrade(129);
        QList<qint64> unsent;
        connect(upgrade.child<QProgressBar>("progressBar_updating"), &QProgressBar::valueChanged,
                &upgrade, [&upgrade, &unsent] { unsent << upgrade.port()->bytesToWrite(); });
        upgrade.start();
        // The second packet's frame, and nothing when all is acknowledged.
        QCOMPARE(unsent, QList<qint64>({14, 0}));
    }

    void saysWhatItSendsBeforeItSendsIt()
    {
        Upgrade upgrade(129);
        QStringList said;
        upgrade.log.atStatus = [&upgrade, &said](const QString &line) {
            if (line.startsWith("firmware size") || line.startsWith("UART_CTRL_CMD_UPLOAD")) {
                said << line
                        + QStringLiteral(" at %1, %2 unsent, bar %3")
                              .arg(upgrade.pane().count('\n'))
                              .arg(upgrade.port()->bytesToWrite())
                              .arg(upgrade.progress());
            }
        };
        upgrade.start();
        upgrade.log.atStatus = nullptr;
        QCOMPARE(said,
                 QStringList({"firmware size = 129 at 2, 0 unsent, bar 0",
                              "UART_CTRL_CMD_UPLOAD_FIRMWARE 0 at 2, 0 unsent, bar 0",
                              "UART_CTRL_CMD_UPLOAD_FIRMWARE 1 at 2, 0 unsent, bar 0"}));
    }

    // Events that have waited since an acknowledgement see the next packet on its way.
    void deliversEventsAfterThePacketAndItsProgress()
    {
        Upgrade upgrade(300);
        QList<int> bar;
        QTimer timer;
        timer.setSingleShot(true);
        timer.setInterval(0);
        timer.callOnTimeout([&upgrade, &bar] { bar << upgrade.progress(); });
        connect(&upgrade.window, &MainWindow::receive_fw_info_ack, &timer,
                [&timer] { timer.start(); });
        bool isSizeSent = false;
        QMetaObject::invokeMethod(
            &upgrade, [&] { isSizeSent = upgrade.port()->bytesToWrite() > 0; },
            Qt::QueuedConnection);
        upgrade.start();
        QVERIFY(isSizeSent);
        QCOMPARE(bar, QList<int>({0, 128, 256, 300}));
    }

    // A timer that is started while they are delivered belongs to the wait.
    void deliversEventsOnceBeforeTheWait()
    {
        Upgrade upgrade(129);
        upgrade.instead[2] = [] {};
        QTimer timer;
        timer.setSingleShot(true);
        timer.setInterval(0);
        int timeOuts = 0;
        timer.callOnTimeout([&] {
            if (++timeOuts == 2) {
                upgrade.deliver(Frames::packetAcknowledgement().chopped(1));
            } else {
                timer.start();
            }
        });
        connect(upgrade.child<QProgressBar>("progressBar_updating"), &QProgressBar::valueChanged,
                &timer, [&timer](int value) {
                    if (value == 128) {
                        timer.start();
                    }
                });
        upgrade.start();
        QCOMPARE(upgrade.dialogs.texts(), QStringList());
        QCOMPARE(upgrade.pane(), QString(kComplete));
    }

    // So that the operator sees the full bar before the text takes the place of the versions.
    void deliversEventsBetweenTheFullBarAndTheText()
    {
        Upgrade upgrade(129);
        QString paneAtTheFullBar;
        connect(upgrade.child<QProgressBar>("progressBar_updating"), &QProgressBar::valueChanged,
                &upgrade, [&upgrade, &paneAtTheFullBar](int value) {
                    if (value == 129) {
                        QMetaObject::invokeMethod(
                            &upgrade,
                            [&upgrade, &paneAtTheFullBar] { paneAtTheFullBar = upgrade.pane(); },
                            Qt::QueuedConnection);
                    }
                });
        upgrade.start();
        QCOMPARE(upgrade.pane(), QString(kComplete));
        QCOMPARE(paneAtTheFullBar, QString(kVersionLines));
    }

    // Events are delivered once after each packet's progress, and what comes then ends no wait.
    void anAcknowledgementBeforeTheWaitIsLost()
    {
        Upgrade upgrade(300);
        connect(upgrade.child<QProgressBar>("progressBar_updating"), &QProgressBar::valueChanged,
                &upgrade, [&upgrade](int value) {
                    if (value == 128) {
                        QMetaObject::invokeMethod(
                            &upgrade.window, "AnalyzeReceiveData", Qt::QueuedConnection,
                            Q_ARG(QByteArray, Frames::packetAcknowledgement().chopped(1)));
                    }
                });
        upgrade.letLimitPassAt(2);
        upgrade.start();
        QCOMPARE(upgrade.dialogs.texts(), QStringList{"Error: Transmission stop!"});
        QCOMPARE(upgrade.frames.size(), 3);
        QCOMPARE(upgrade.progress(), 128);
    }

    // Beneath the page, which is disabled as a whole.
    void enablesTheStartForTheNextTime()
    {
        Upgrade upgrade(129);
        auto *const start = upgrade.widget("pushButton_start_upgrade");
        upgrade.start();
        QCOMPARE(upgrade.pane(), QString(kComplete));
        QVERIFY(!start->testAttribute(Qt::WA_ForceDisabled));

        QVERIFY(upgrade.connectCamera());
        start->setEnabled(false);
        upgrade.call("on_pushButton_start_upgrade_clicked");
        QCOMPARE(upgrade.pane(), QString(kComplete));
        QVERIFY(!start->testAttribute(Qt::WA_ForceDisabled));
    }

    void readsTheFileAgain()
    {
        Upgrade upgrade(300);
        const QByteArray other = firmwareOf(200).right(150);
        upgrade.write(imageOf(other));
        upgrade.start();
        QCOMPARE(upgrade.received, other);
        QCOMPARE(upgrade.pane(), QString(kComplete));
    }

    void aFileThatHasGoneOnlyDisablesTheStart_data()
    {
        addRows<bool>({"isDirectoryNow"}, {{"deleted", false}, {"a directory now", true}});
    }

    void aFileThatHasGoneOnlyDisablesTheStart()
    {
        QFETCH(bool, isDirectoryNow);
        Upgrade upgrade(300);
        QVERIFY(QFile::remove(upgrade.path()));
        if (isDirectoryNow) {
            QVERIFY(QDir().mkdir(upgrade.path()));
        }
        WidgetRecorder recorder(&upgrade.window);
        upgrade.start();
        QCOMPARE(recorder.changes(),
                 QStringList({"textEdit_firmware_info = ", "pushButton_start_upgrade off"}));
        QCOMPARE(upgrade.frames.size(), 0);
        QVERIFY(upgrade.port()->isOpen());
        QVERIFY(upgrade.isEnabled("tabWidget"));
        QCOMPARE(upgrade.log.statusTexts(), QStringList());
    }

    void aMagicThatHasGoneWrongLeavesEverythingDisabled()
    {
        Upgrade upgrade(300);
        upgrade.write("kvel");
        upgrade.start();
        QCOMPARE(upgrade.pane(), QString("Firmware file error."));
        for (const char *name : {"pushButton_connect", "pushButton_disconnect", "comboBox_portlist",
                                 "comboBox_baudrate", "tabWidget", "pushButton_start_upgrade"}) {
            QVERIFY2(!upgrade.widget(name)->isEnabled(), name);
        }
        QVERIFY(upgrade.port()->isOpen());
        QCOMPARE(upgrade.frames.size(), 0);
        QCOMPARE(upgrade.log.statusTexts(), QStringList());
        // Nothing runs any more, so the window can be closed.
        upgrade.window.show();
        QVERIFY(upgrade.window.close());
    }

    void stopsWhenTheSizeIsNotAcknowledged()
    {
        Upgrade upgrade(300);
        upgrade.letLimitPassAt(0);
        auto *const bar = upgrade.child<QProgressBar>("progressBar_updating");
        bar->setRange(0, 77);
        bar->setValue(33);
        WidgetRecorder recorder(&upgrade.window);
        upgrade.start();
        QCOMPARE(recorder.changes(), changesOfAFailure({}));
        QCOMPARE(upgrade.dialogs.texts(), QStringList{"Error: Connection timeout!"});
        QCOMPARE(upgrade.dialogs.seen().constFirst().icon, QMessageBox::Critical);
        QCOMPARE(upgrade.dialogs.seen().constFirst().buttons, QMessageBox::Ok);
        QCOMPARE(upgrade.frames.size(), 1);
        QCOMPARE(upgrade.pane(), QString(kVersionLines));
        QCOMPARE(upgrade.progress(), 33);
        QCOMPARE(bar->maximum(), 77);
        QCOMPARE(upgrade.ownStatusLines(), QStringList({"firmware size = 300", "Disconnected"}));
        QVERIFY(upgrade.isDisconnected());
    }

    void stopsWhenAPacketIsNotAcknowledged_data()
    {
        addRows<int, int>(
            {"packet", "progress"},
            {{"the first", 1, 0}, {"one in the middle", 2, 128}, {"the last", 3, 256}});
    }

    void stopsWhenAPacketIsNotAcknowledged()
    {
        QFETCH(int, packet);
        Upgrade upgrade(300);
        upgrade.letLimitPassAt(packet);
        WidgetRecorder recorder(&upgrade.window);
        upgrade.start();
        QCOMPARE(recorder.changes(),
                 changesOfAFailure(
                     QStringList({"progressBar_updating = 128", "progressBar_updating = 256"})
                         .mid(0, packet - 1)));
        QCOMPARE(upgrade.dialogs.texts(), QStringList{"Error: Transmission stop!"});
        QCOMPARE(upgrade.dialogs.seen().constFirst().icon, QMessageBox::Critical);
        // Not sent again, and nothing after it.
        QCOMPARE(upgrade.frames.size(), 1 + packet);
        QCOMPARE(upgrade.pane(), QString(kVersionLines));
        QTEST(upgrade.progress(), "progress");
        QVERIFY(upgrade.isDisconnected());
    }

    void anAcknowledgementBehindTheTimeOutStartsNothing()
    {
        Upgrade upgrade(300, false);
        upgrade.letLimitPassAt(2);
        bool isSent = false;
        QTimer poll;
        connect(&poll, &QTimer::timeout, &poll, [&] {
            if (upgrade.dialogs.isOpen() && !isSent) {
                isSent = true;
                upgrade.log.clear();
                upgrade.line.send(Frames::packetAcknowledgement());
            } else if (upgrade.log.statusTexts().contains("UART_CTRL_CMD_RECEIVE_FW_INFO Received")
                       && isSent && upgrade.dialogs.isOpen()) {
                upgrade.dialogs.answer();
            }
        });
        poll.start(50);
        upgrade.start();
        QCOMPARE(upgrade.dialogs.texts(), QStringList{"Error: Transmission stop!"});
        QCOMPARE(upgrade.frames.size(), 3);
        QCOMPARE(upgrade.pane(), QString(kVersionLines));
        QVERIFY(upgrade.isDisconnected());
    }

    // An acknowledgement carries no packet number, so nothing says whose it is.
    void aDoubledAcknowledgementCountsForTheNextPacket()
    {
        Upgrade upgrade(300);
        upgrade.acknowledgesDirectly = true;
        upgrade.instead[1] = [&upgrade] {
            const auto acknowledge = [&upgrade] {
                upgrade.deliver(Frames::packetAcknowledgement().chopped(1));
            };
            QTimer::singleShot(5, &upgrade, acknowledge);
            QTimer::singleShot(100, &upgrade, acknowledge);
        };
        upgrade.instead[2] = [] {};
        upgrade.start();
        QCOMPARE(upgrade.pane(), QString(kComplete));
        QCOMPARE(upgrade.frames.size(), 4);
    }

    void aCorruptedAcknowledgementIsNone()
    {
        Upgrade upgrade(300);
        upgrade.instead[2] = [&upgrade] {
            upgrade.line.send(Frames::packetAcknowledgement().chopped(1) + '\x6f');
        };
        upgrade.letLimitPassAfter("Checksum Error 110");
        upgrade.start();
        QCOMPARE(upgrade.dialogs.texts(), QStringList{"Error: Transmission stop!"});
    }

    void anUnpluggedAdapterStopsTheUpload()
    {
        Upgrade upgrade(300);
        upgrade.instead[2] = [&upgrade] { upgrade.line.hangUp(); };
        upgrade.letLimitPassAfter("Disconnected");
        upgrade.start();
        QCOMPARE(upgrade.dialogs.texts(), QStringList{"Error: Transmission stop!"});
        QCOMPARE(upgrade.ownStatusLines().mid(3), QStringList({"Disconnected", "Disconnected"}));
        QCOMPARE(upgrade.pane(), QString(kVersionLines));
        QVERIFY(upgrade.isDisconnected());
    }

    void declinesToClose()
    {
        Upgrade upgrade(300);
        upgrade.window.show();
        QList<bool> closed;
        for (const int frame : {0, 1, 3}) {
            upgrade.instead[frame] = [&upgrade, &closed, frame] {
                closed << upgrade.window.close();
                upgrade.line.send(frame == 0 ? Frames::sizeAcknowledgement()
                                             : Frames::packetAcknowledgement());
            };
        }
        upgrade.start();
        QCOMPARE(closed, QList<bool>({false, false, false}));
        QVERIFY(upgrade.window.isVisible());
        QCOMPARE(upgrade.received, upgrade.firmware);
        QCOMPARE(upgrade.pane(), QString(kComplete));
        QVERIFY(upgrade.window.close());
    }

    void theEndOfTheProgramClaimsNothing_data()
    {
        QTest::addColumn<int>("frame");
        QTest::newRow("while the size is announced") << 0;
        QTest::newRow("at the first packet") << 1;
        QTest::newRow("at the last packet") << 3;
    }

    void theEndOfTheProgramClaimsNothing()
    {
        QFETCH(int, frame);
        Upgrade upgrade(300);
        upgrade.instead[frame] = [] { QCoreApplication::quit(); };
        QTimer::singleShot(0, &upgrade, [&upgrade] { upgrade.start(); });
        QApplication::exec();
        QCOMPARE(upgrade.frames.size(), frame + 1);
        QCOMPARE(upgrade.dialogs.texts(), QStringList());
        QCOMPARE(upgrade.pane(), QString(kVersionLines));
        QVERIFY(!upgrade.log.statusTexts().contains("Disconnected"));
        QVERIFY(upgrade.port()->isOpen());
    }

    // Disabling the page takes the focus from the path's field, whose check then runs once more.
    void losingTheFocusLeavesPaneAndButton()
    {
        Upgrade upgrade(300);
        upgrade.window.show();
        upgrade.window.activateWindow();
        auto *const field = upgrade.child<QLineEdit>("lineEdit_firmware");
        field->setFocus();
        QTRY_VERIFY(field->hasFocus());
        const QSignalSpy checked(field, &QLineEdit::editingFinished);
        QString paneAtTheFirstPacket;
        upgrade.instead[1] = [&upgrade, &paneAtTheFirstPacket] {
            paneAtTheFirstPacket = upgrade.pane();
            upgrade.line.send(Frames::packetAcknowledgement());
        };
        upgrade.call("on_pushButton_start_upgrade_clicked");
        QCOMPARE(checked.count(), 1);
        QCOMPARE(paneAtTheFirstPacket, QString(kVersionLines));
        QCOMPARE(upgrade.pane(), QString(kComplete));
    }

    void aSecondStartDoesNothing()
    {
        Upgrade upgrade(300);
        upgrade.instead[1] = [&upgrade] {
            QVERIFY(!upgrade.isEnabled("pushButton_start_upgrade"));
            upgrade.call("on_pushButton_start_upgrade_clicked");
            upgrade.line.send(Frames::packetAcknowledgement());
        };
        upgrade.start();
        QCOMPARE(upgrade.frames.size(), 4);
        QCOMPARE(upgrade.received, upgrade.firmware);
        QCOMPARE(upgrade.pane(), QString(kComplete));
    }

    void refusesAFirmwareThatDoesNotFitTheSizeField()
    {
        Upgrade upgrade(300);
        upgrade.write(imageOf(QByteArray(16777216, 'x')));
        {
            RecordingTranslator translator;
            QCoreApplication::installTranslator(&translator);
            upgrade.start();
        }
        QCOMPARE(upgrade.pane(), QString("[Firmware file error.]"));
        QCOMPARE(upgrade.frames.size(), 0);
        QVERIFY(upgrade.widget("pushButton_start_upgrade")->testAttribute(Qt::WA_ForceDisabled));
        QCOMPARE(upgrade.ownStatusLines(),
                 QStringList({"firmware size = 16777216", "Disconnected"}));
        QVERIFY(upgrade.isDisconnected());

        // One byte less is announced.
        QVERIFY(upgrade.connectCamera());
        upgrade.write(imageOf(QByteArray(16777215, 'x')));
        upgrade.frames.clear();
        upgrade.instead[1] = [] { QCoreApplication::quit(); };
        QTimer::singleShot(0, &upgrade,
                           [&upgrade] { upgrade.call("on_pushButton_start_upgrade_clicked"); });
        QApplication::exec();
        QCOMPARE(upgrade.frames.at(0).toHex(),
                 request(16, 0, QByteArray::fromHex("02ffffff")).toHex());
    }
};

QTEST_MAIN(MainWindowUpgradeTest)
#include "tst_mainwindowupgrade.moc"
