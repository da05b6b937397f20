// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

// Before Qt: its headers have a member named like a Qt keyword.
#include <umockdev.h>

#include "patience.h"
#include "serialportcombobox.h"

#include "mainwindow.h"

#include <QAbstractItemView>
#include <QMessageBox>
#include <QSerialPort>
#include <QSerialPortInfo>

namespace {

/// A machine on which only those serial ports exist that the test plugs in.
class MockedMachine {
public:
    MockedMachine()
        : m_testbed(umockdev_testbed_new())
    {
        // With no terminal at all to be found the library would look through the real /dev.
        add("P: /devices/virtual/tty/tty0\nE: SUBSYSTEM=tty\nE: DEVNAME=/dev/tty0\n");
    }
    MockedMachine(const MockedMachine &) = delete;
    MockedMachine &operator=(const MockedMachine &) = delete;
    ~MockedMachine() { g_object_unref(m_testbed); }

    /// A USB adapter. The model is in udev's form, with "_" for a blank, or is empty.
    void plug(const QByteArray &name, const QByteArray &model)
    {
        const QByteArray device = "/devices/" + name + "-adapter";
        QByteArray description = "P: " + device + "\nE: SUBSYSTEM=usb-serial\nE: DRIVER=generic\n"
            + "L: driver=../../bus/usb-serial/drivers/generic\n\n" + "P: " + device + "/tty/" + name
            + "\nE: SUBSYSTEM=tty\nE: DEVNAME=/dev/" + name + "\n";
        if (!model.isEmpty()) {
            description += "E: ID_BUS=usb\nE: ID_MODEL=" + model + "\n";
        }
        add(description);
    }

private:
    void add(const QByteArray &description)
    {
        if (umockdev_testbed_add_from_string(m_testbed, description.constData(), nullptr) == 0) {
            qFatal("cannot mock %s", description.constData());
        }
    }

    UMockdevTestbed *m_testbed;
};

QStringList itemsOf(const QComboBox &combo)
{
    QStringList items;
    for (int i = 0; i < combo.count(); ++i) {
        items << combo.itemText(i);
    }
    return items;
}

} // namespace

class SerialPortComboBoxTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase()
    {
        const MockedMachine machine;
        QVERIFY2(umockdev_in_mock_environment(), "to be run under umockdev-wrapper");
    }

    void addsNothingToTheInterfaceOfAComboBox()
    {
        const QMetaObject &meta = SerialPortComboBox::staticMetaObject;
        QCOMPARE(meta.superClass()->className(), "QComboBox");
        QCOMPARE(meta.methodCount(), meta.methodOffset());
        QCOMPARE(meta.propertyCount(), meta.propertyOffset());
    }

    void withoutPortsItIsEmpty()
    {
        const MockedMachine machine;
        const SerialPortComboBox ports;
        QCOMPARE(ports.count(), 0);
        QCOMPARE(ports.currentIndex(), -1);
        QCOMPARE(ports.currentText(), QString());
    }

    void listsPortsAsNameAndDescription()
    {
        MockedMachine machine;
        machine.plug("ttyUSB0", "USB_Serial");
        machine.plug("ttyUSB1", "");
        const SerialPortComboBox ports;
        QStringList items = itemsOf(ports);
        items.sort();
        QCOMPARE(items, QStringList({"ttyUSB0 (USB Serial)", "ttyUSB1 ()"}));
        QCOMPARE(ports.currentIndex(), 0);
    }

    void listsPortsInTheSystemsOrder()
    {
        MockedMachine machine;
        for (const char *name : {"ttyUSB3", "ttyACM0", "ttyUSB1", "ttyUSB0", "ttyACM7"}) {
            machine.plug(name, "Same_Model");
        }
        const SerialPortComboBox ports;
        QStringList expected;
        const auto available = QSerialPortInfo::availablePorts();
        for (const QSerialPortInfo &port : available) {
            expected << port.portName() + " (Same Model)";
        }
        QCOMPARE(expected.size(), 5);
        QCOMPARE(itemsOf(ports), expected);
    }

    void itemsCarryNeitherDataNorIcon()
    {
        MockedMachine machine;
        machine.plug("ttyUSB0", "USB_Serial");
        const SerialPortComboBox ports;
        QVERIFY(!ports.itemData(0).isValid());
        QVERIFY(ports.itemIcon(0).isNull());
    }

    void aNewPortShowsWhenThePopupOpens()
    {
        MockedMachine machine;
        machine.plug("ttyUSB0", "USB_Serial");
        SerialPortComboBox ports;
        ports.show();
        machine.plug("ttyUSB1", "USB_Serial");
        QCOMPARE(ports.count(), 1);
        QTest::mouseClick(&ports, Qt::LeftButton);
        QTRY_COMPARE(ports.count(), 2);
        QCOMPARE(ports.currentIndex(), 0);
        ports.hidePopup();
    }

    void thePopupIsLargeEnoughForANewPort()
    {
        MockedMachine machine;
        machine.plug("ttyUSB0", "USB_Serial");
        SerialPortComboBox ports;
        ports.show();
        for (const char *name : {"ttyUSB1", "ttyUSB2", "ttyUSB3"}) {
            machine.plug(name, "USB_Serial");
        }
        ports.showPopup();
        QCOMPARE(ports.count(), 4);
        const QAbstractItemView *const list = ports.view();
        const QRect last = list->visualRect(list->model()->index(3, 0));
        QVERIFY(last.isValid());
        QVERIFY2(last.bottom() < list->viewport()->height(),
                 qPrintable(QStringLiteral("%1, but there are %2 rows of pixels")
                                .arg(last.bottom())
                                .arg(list->viewport()->height())));
        ports.hidePopup();
    }

    void openingThePopupSelectsTheFirstPort()
    {
        MockedMachine machine;
        for (const char *name : {"ttyUSB0", "ttyUSB1", "ttyUSB2"}) {
            machine.plug(name, "USB_Serial");
        }
        SerialPortComboBox ports;
        ports.show();
        ports.setCurrentIndex(2);
        ports.showPopup();
        QCOMPARE(ports.currentIndex(), 0);
        ports.hidePopup();
        QCOMPARE(ports.currentIndex(), 0);
    }

    void rebuildingChangesTheIndexTwice()
    {
        MockedMachine machine;
        machine.plug("ttyUSB0", "USB_Serial");
        machine.plug("ttyUSB1", "USB_Serial");
        SerialPortComboBox ports;
        const QSignalSpy indices(&ports, SIGNAL(currentIndexChanged(int)));
        ports.updatePortList();
        QCOMPARE(indices.count(), 2);
        QCOMPARE(indices.at(0).constFirst().toInt(), -1);
        QCOMPARE(indices.at(1).constFirst().toInt(), 0);
    }

    // Which name the window would open is seen by having it try: the mocked ports have no device.
    void theWindowFollowsTheList()
    {
        MockedMachine machine;
        machine.plug("ttyUSB0", "USB_Serial");
        machine.plug("ttyUSB1", "");
        MainWindow window;
        window.show();
        auto *const ports = window.findChild<SerialPortComboBox *>("comboBox_portlist");
        const auto *const port = window.findChild<QSerialPort *>();
        const auto nameTried = [&window, port] {
            QTimer::singleShot(0, &window, [] { QApplication::activeModalWidget()->close(); });
            QMetaObject::invokeMethod(&window, "on_pushButton_connect_clicked");
            return port->portName();
        };
        QCOMPARE(nameTried(), ports->itemText(0).section(' ', 0, 0));
        ports->setCurrentIndex(1);
        QCOMPARE(nameTried(), ports->itemText(1).section(' ', 0, 0));
        ports->showPopup();
        ports->hidePopup();
        QCOMPARE(nameTried(), ports->itemText(0).section(' ', 0, 0));
        QVERIFY(nameTried().startsWith("ttyUSB"));
    }

    void withoutPortsConnectingFails()
    {
        const MockedMachine machine;
        MainWindow window;
        QString text;
        QTimer::singleShot(0, &window, [&text] {
            auto *const box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
            text = box->windowTitle() + ": " + box->text();
            box->close();
        });
        QMetaObject::invokeMethod(&window, "on_pushButton_connect_clicked");
        const auto *const port = window.findChild<QSerialPort *>();
        QCOMPARE(port->portName(), QString());
        QVERIFY(!port->isOpen());
        QCOMPARE(text, "Error: " + port->errorString());
        QVERIFY(window.findChild<QWidget *>("pushButton_connect")->isEnabled());
    }
};

QTEST_MAIN(SerialPortComboBoxTest)
#include "tst_serialportcombobox.moc"
