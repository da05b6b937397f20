// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

// Before Qt: its headers have a member named like a Qt keyword.
#include <umockdev.h>

#include "mockedadapterline.h"

#include "cameraterminal.h"
#include "testbedmark.h"

#include <QByteArray>
#include <QDir>
#include <QFile>

#include <utility>

namespace {

// What is plugged, from the hub outwards: the device, its only interface, the serial port on that,
// and the terminal. The list of ports shows the terminal's ID_MODEL, with blanks for underscores.
// Vendor and product number are the ones that https://pid.codes/ keeps free for tests.
constexpr const char *kDescription = R"(P: /devices/usb1/1-%SOCKET%
E: SUBSYSTEM=usb
E: DEVTYPE=usb_device
E: PRODUCT=1209/1/100
A: idVendor=1209
A: idProduct=0001
A: product=USB Serial

P: /devices/usb1/1-%SOCKET%/1-%SOCKET%:1.0
E: SUBSYSTEM=usb
E: DEVTYPE=usb_interface

P: /devices/usb1/1-%SOCKET%/1-%SOCKET%:1.0/%PORT%
E: SUBSYSTEM=usb-serial
E: DRIVER=generic
L: driver=../../../../../bus/usb-serial/drivers/generic

P: /devices/usb1/1-%SOCKET%/1-%SOCKET%:1.0/%PORT%/tty/%PORT%
E: SUBSYSTEM=tty
E: DEVNAME=/dev/%PORT%
E: MAJOR=188
E: MINOR=%MINOR%
E: ID_BUS=usb
E: ID_MODEL=USB_Serial
E: ID_MODEL_ENC=USB\x20Serial
E: ID_VENDOR_ID=1209
E: ID_MODEL_ID=0001
A: dev=188:%MINOR%
)";

} // namespace

/// The folder of made-up devices, for as long as this object lives.
class MockedAdapterLine::Testbed {
public:
    Testbed()
        : m_testbed(umockdev_testbed_new())
    {
        gchar *const root = umockdev_testbed_get_root_dir(m_testbed);
        m_root = QFile::decodeName(root);
        g_free(root);
        m_mark = std::make_unique<TestbedMark>(m_root);
    }
    Testbed(const Testbed &) = delete;
    Testbed &operator=(const Testbed &) = delete;
    ~Testbed()
    {
        // The folder goes with the testbed.
        m_mark.reset();
        g_object_unref(m_testbed);
    }

    /// The environment names only one folder.
    static std::shared_ptr<Testbed> shared()
    {
        static std::weak_ptr<Testbed> existing;
        auto testbed = existing.lock();
        if (testbed == nullptr) {
            testbed = std::make_shared<Testbed>();
            existing = testbed;
        }
        return testbed;
    }

    const QString &root() const { return m_root; }
    /// Adds devices, innermost last, and announces them.
    bool add(const QByteArray &description, QString *error)
    {
        GError *fault = nullptr;
        if (umockdev_testbed_add_from_string(m_testbed, description.constData(), &fault) != 0) {
            return true;
        }
        *error = QStringLiteral("cannot make the adapter: ") + QString::fromUtf8(fault->message);
        g_error_free(fault);
        return false;
    }
    void remove(const QByteArray &device)
    {
#ifdef CORVANE_ANNOUNCE_REMOVAL
        umockdev_testbed_uevent(m_testbed, device.constData(), "remove");
#endif
        umockdev_testbed_remove_device(m_testbed, device.constData());
    }

private:
    UMockdevTestbed *m_testbed;
    QString m_root;
    std::unique_ptr<TestbedMark> m_mark;
};

MockedAdapterLine::MockedAdapterLine(QString portName, int place, QObject *parent)
    : CameraLine(parent)
    , m_portName(std::move(portName))
    , m_place(place)
    , m_testbed(Testbed::shared())
{
}

MockedAdapterLine::~MockedAdapterLine()
{
    MockedAdapterLine::unplug();
}

bool MockedAdapterLine::plug(QString *error)
{
    auto terminal = CameraTerminal::create(error);
    if (terminal == nullptr) {
        return false;
    }
    // In place before the device is announced, as the real one.
    if (!QDir().mkpath(m_testbed->root() + QLatin1String("/dev"))
        || !QFile::link(terminal->hostPath(), devicePath())) {
        *error = QStringLiteral("cannot make %1").arg(devicePath());
        return false;
    }
    if (!m_testbed->add(inserted(kDescription), error)) {
        QFile::remove(devicePath());
        return false;
    }
    m_terminal = std::move(terminal);
    connect(m_terminal.get(), &CameraTerminal::bytesReceived, this, &CameraLine::bytesReceived);
    return true;
}

void MockedAdapterLine::unplug()
{
    if (m_terminal == nullptr) {
        return;
    }
    // The device first: a host that is hung up on may look whether it is still there.
    QFile::remove(devicePath());
    m_terminal.reset();
    for (const char *device : {
             "/sys/devices/usb1/1-%SOCKET%/1-%SOCKET%:1.0/%PORT%/tty/%PORT%",
             "/sys/devices/usb1/1-%SOCKET%/1-%SOCKET%:1.0/%PORT%",
             "/sys/devices/usb1/1-%SOCKET%/1-%SOCKET%:1.0",
             "/sys/devices/usb1/1-%SOCKET%",
         }) {
        m_testbed->remove(inserted(device));
    }
}

bool MockedAdapterLine::isPlugged() const
{
    return m_terminal != nullptr;
}

void MockedAdapterLine::write(const QByteArray &bytes)
{
    if (m_terminal != nullptr) {
        m_terminal->write(bytes);
    }
}

QByteArray MockedAdapterLine::inserted(const char *text) const
{
    return QByteArray(text)
        .replace("%PORT%", m_portName.toLocal8Bit())
        .replace("%SOCKET%", QByteArray::number(m_place + 1))
        .replace("%MINOR%", QByteArray::number(m_place));
}

QString MockedAdapterLine::devicePath() const
{
    return m_testbed->root() + QLatin1String("/dev/") + m_portName;
}
