// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

// A program that knows nothing of the simulator, for the tests to run below it:
//
//     serialhost list          prints the ports as a list of ports shows them
//     serialhost hello PORT    sends a HELLO, prints the reply in hexadecimal
//     serialhost stay PORT     opens the port, prints "open", and "gone" once it fails

#include <QCoreApplication>
#include <QSerialPort>
#include <QSerialPortInfo>
#include <QTextStream>

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
    constexpr int kPatience = 5000; // ms
    port.write(QByteArray::fromHex("FF FF 0A 41 01 06 07 06 09 01 16 00 7F"));
    QByteArray reply;
    while (reply.size() < kReplySize && port.waitForReadyRead(kPatience)) {
        reply += port.readAll();
    }
    out() << reply.toHex(' ').toUpper() << Qt::endl;
    return 0;
}

int stay(QSerialPort &port)
{
    QObject::connect(&port, &QSerialPort::errorOccurred, &port, [&port] {
        port.disconnect();
        out() << "gone" << Qt::endl;
        QCoreApplication::quit();
    });
    out() << "open" << Qt::endl;
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
    QSerialPort port(arguments.value(2));
    port.setBaudRate(QSerialPort::Baud115200);
    if (!port.open(QIODevice::ReadWrite)) {
        out() << "cannot open: " << port.errorString() << Qt::endl;
        return 1;
    }
    return verb == QLatin1String("hello") ? hello(port) : stay(port);
}
