// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

// The least that an upload can be: each packet is written, and then what comes back is counted.
//
//   corvane-bench-bareupload PORT PACKETS
//
// Prints packets a second.

#include "requestpayload.h"
#include "uartframe.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QSerialPort>

#include <cstdio>
#include <cstdlib>

namespace {

constexpr int kPacketSize = 128;

/// Sends a request and waits for its acknowledgement.
bool exchange(QSerialPort &port, UARTControlCommand command, int number, const QByteArray &payload)
{
    constexpr int kAcknowledgementSize = 13;
    constexpr int kPatience = 5000; // milliseconds
    const auto frame =
        UARTFrame::build(UART_COMM_TYPE_REQUEST, command, static_cast<unsigned char>(number),
                         reinterpret_cast<const unsigned char *>(payload.constData()),
                         static_cast<unsigned char>(payload.size()));
    port.write(*frame);
    int received = 0;
    while (received < kAcknowledgementSize) {
        if (!port.waitForReadyRead(kPatience)) {
            return false;
        }
        received += port.readAll().size();
    }
    return true;
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const int packets = arguments.value(2).toInt();
    QSerialPort port(arguments.value(1));
    port.setBaudRate(QSerialPort::Baud115200);
    if (packets <= 0 || !port.open(QIODevice::ReadWrite)
        || !exchange(port, UART_CTRL_CMD_RECEIVE_FW_INFO, 0,
                     firmwareSizePayload(packets * kPacketSize))) {
        std::fprintf(stderr, "no camera\n");
        return EXIT_FAILURE;
    }
    const QByteArray payload(kPacketSize, 'x');
    QElapsedTimer clock;
    clock.start();
    for (int i = 1; i <= packets; ++i) {
        if (!exchange(port, UART_CTRL_CMD_UPLOAD_FIRMWARE, i, payload)) {
            std::fprintf(stderr, "no acknowledgement of packet %d\n", i);
            return EXIT_FAILURE;
        }
    }
    constexpr double kNanosecondsPerSecond = 1e9;
    std::printf("%.3f\n",
                packets * kNanosecondsPerSecond / static_cast<double>(clock.nsecsElapsed()));
    return EXIT_SUCCESS;
}
