// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

// A program that knows nothing of the simulator, for the tests to run below it:
//
//     serialhost list          prints the ports as a list of ports shows them
//     serialhost hello PORT    sends a HELLO, prints the reply in hexadecimal
//     serialhost stay PORT     opens the port, prints "open", and once it fails "gone" or, if its
//                              device is still there, "failed"
//     serialhost hang-up PORT  takes the port as its terminal and hangs up its line; for root
//     serialhost watch         prints "watching", then what udev says about terminals, until ended

#include "frames.h"
#include "hangupdetector.h"
#include "patience.h"

#include <QCoreApplication>
#include <QFile>
#include <QLibrary>
#include <QSerialPort>
#include <QSerialPortInfo>
#include <QSocketNotifier>
#include <QTextStream>

#include <csignal>

#include <fcntl.h>
#include <unistd.h>

namespace {

QTextStream &out()
{
    static QTextStream stream(stdout);
    return stream;
}

int list()
{
    const QList<QSerialPortInfo> ports = QSerialPortInfo::availablePorts();
    for (const QSerialPortInfo &port : ports) {
        out() << port.portName() << " (" << port.description() << ")" << Qt::endl;
    }
    return 0;
}

int hello(QSerialPort &port)
{
    constexpr int kReplySize = 26;
    port.write(QByteArray::fromHex(Hex::hello()));
    QByteArray reply;
    while (reply.size() < kReplySize && port.waitForReadyRead(kPatience)) {
        reply += port.readAll();
    }
    out() << reply.toHex(' ').toUpper() << Qt::endl;
    return 0;
}

int stay(QSerialPort &port)
{
    new HangUpDetector(&port);
    QObject::connect(&port, &QSerialPort::errorOccurred, &port, [&port] {
        port.disconnect();
        const bool isThere = QFile::exists(QStringLiteral("/dev/") + port.portName());
        out() << (isThere ? "failed" : "gone") << Qt::endl;
        QCoreApplication::quit();
    });
    out() << "open" << Qt::endl;
    return QCoreApplication::exec();
}

int hangUp(const QString &port)
{
    ::signal(SIGHUP, SIG_IGN); // which the terminal's owner gets as well
    const bool isHungUp = ::setsid() >= 0
        && ::open(QFile::encodeName(port).constData(), O_RDWR | O_CLOEXEC) >= 0 && ::vhangup() == 0;
    return isHungUp ? 0 : 1;
}

// Resolved at run time, as the serial port library does, so that no development package is needed.
template <typename Function> Function *resolved(QLibrary &library, const char *name)
{
    return reinterpret_cast<Function *>(library.resolve(name));
}

int watch()
{
    QLibrary library(QStringLiteral("udev"), 1);
    const auto makeContext = resolved<void *()>(library, "udev_new");
    const auto makeMonitor =
        resolved<void *(void *, const char *)>(library, "udev_monitor_new_from_netlink");
    const auto filter = resolved<int(void *, const char *, const char *)>(
        library, "udev_monitor_filter_add_match_subsystem_devtype");
    const auto enable = resolved<int(void *)>(library, "udev_monitor_enable_receiving");
    const auto descriptorOf = resolved<int(void *)>(library, "udev_monitor_get_fd");
    const auto receive = resolved<void *(void *)>(library, "udev_monitor_receive_device");
    const auto actionOf = resolved<const char *(void *)>(library, "udev_device_get_action");
    const auto nodeOf = resolved<const char *(void *)>(library, "udev_device_get_devnode");
    if (nodeOf == nullptr) {
        out() << "no libudev: " << library.errorString() << Qt::endl;
        return 1;
    }
    void *const monitor = makeMonitor(makeContext(), "udev");
    filter(monitor, "tty", nullptr);
    enable(monitor);
    const QSocketNotifier notifier(descriptorOf(monitor), QSocketNotifier::Read);
    QObject::connect(&notifier, &QSocketNotifier::activated, [&] {
        if (void *const device = receive(monitor)) {
            out() << actionOf(device) << ' ' << nodeOf(device) << Qt::endl;
        }
    });
    out() << "watching" << Qt::endl;
    return QCoreApplication::exec();
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const QString verb = arguments.value(1);
    if (verb == QLatin1String("list")) {
        return list();
    }
    if (verb == QLatin1String("watch")) {
        return watch();
    }
    if (verb == QLatin1String("hang-up")) {
        return hangUp(arguments.value(2));
    }
    QSerialPort port(arguments.value(2));
    port.setBaudRate(QSerialPort::Baud115200);
    if (!port.open(QIODevice::ReadWrite)) {
        out() << "cannot open: " << port.errorString() << Qt::endl;
        return 1;
    }
    return verb == QLatin1String("hello") ? hello(port) : stay(port);
}
