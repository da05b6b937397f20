// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

// Operates the unmodified program with a simulated camera and measures it from outside. Each
// measurement prints one line of JSON; script/bench knows what to make of it.

#include "firmwarepacket.h"
#include "processstatus.h"
#include "programfixture.h"
#include "recording.h"
#include "uartframe.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRandomGenerator>
#include <QThread>

#include <cstdio>
#include <optional>

namespace {

using Result = std::optional<QJsonObject>;

constexpr double kMsPerSecond = 1000;
constexpr int kKeptOutput = 10'000; ///< characters, to show when something fails

/// An unhurried poll of 50 ms, and what the slowest machine may take besides.
int uploadLimitMs(int packets, int speed)
{
    constexpr int kPacketLimitMs = 100;
    constexpr int kStartLimitMs = 20'000;
    return kStartLimitMs + packets * kPacketLimitMs / speed;
}

QByteArray randomBytes(int size, quint32 seed)
{
    QRandomGenerator random(seed);
    QByteArray bytes(size, Qt::Uninitialized);
    for (char &byte : bytes) {
        byte = static_cast<char>(random.generate());
    }
    return bytes;
}

QByteArray firmwareOf(int packets)
{
    return randomBytes(packets * FirmwarePacket::kSize, 1);
}

Result failed(ProgramFixture &fixture)
{
    std::fprintf(stderr, "%s\n", qPrintable(fixture.explanation()));
    return std::nullopt;
}

/// Looks only now and then, because a look costs the program time.
bool waitUntilUploaded(ProgramFixture &fixture, int packets, int speed)
{
    constexpr int kPollMs = 50;
    constexpr int kLookMs = 200;
    fixture.corvane.limitOutput(kKeptOutput);
    fixture.corvane.pause(packets * kPollMs / speed);
    return fixture.corvane.waitUntil(
        "the upgrade is complete",
        [&fixture] {
            fixture.corvane.pause(kLookMs);
            return fixture.corvane.text("textEdit_firmware_info")
                == QLatin1String("Update is complete. Device auto-rebooting.");
        },
        uploadLimitMs(packets, speed));
}

/// When each packet's request reached the camera, in milliseconds.
QVector<double> packetTimes(const QByteArray &recording)
{
    QString error;
    const auto events = Recording::parse(recording, &error);
    QVector<double> times;
    if (!events) {
        return times;
    }
    for (const LineEvent &event : *events) {
        if (event.kind == LineEvent::Host && event.bytes.size() > UARTFrame::kCommandOffset
            && event.bytes.at(UARTFrame::kCommandOffset) == UART_CTRL_CMD_UPLOAD_FIRMWARE) {
            times << static_cast<double>(event.time.count()) / kMsPerSecond;
        }
    }
    return times;
}

bool writeCycles(const QString &path, const QVector<double> &times)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        return false;
    }
    for (int packet = 1; packet < times.size(); ++packet) {
        file.write(QByteArray::number(times.at(packet) - times.at(packet - 1), 'f', 3) + '\n');
    }
    return true;
}

/// @param cyclesFile  gets the time between each two packets in milliseconds, one a line
Result upload(int packets, const QString &cyclesFile)
{
    ProgramFixture fixture;
    if (!fixture.pack(firmwareOf(packets))
        || !fixture.start({"--record", fixture.path("recording")}) || !fixture.connectCamera()) {
        return failed(fixture);
    }
    const qint64 process = fixture.corvane.operatedProcessId();
    if (!fixture.startUpgrade()) {
        return failed(fixture);
    }
    const qint64 before = ProcessStatus::of(process).processorTimeMs;
    QElapsedTimer timer;
    timer.start();
    if (!waitUntilUploaded(fixture, packets, 1)) {
        return failed(fixture);
    }
    const qint64 after = ProcessStatus::of(process).processorTimeMs;
    const auto elapsedMs = static_cast<double>(timer.elapsed());
    const QVector<double> times = packetTimes(fixture.contents("recording"));
    if (times.size() != packets || !writeCycles(cyclesFile, times)) {
        std::fprintf(stderr, "%d packets were recorded, or the cycles cannot be written\n",
                     static_cast<int>(times.size()));
        return std::nullopt;
    }
    const double seconds = (times.last() - times.first()) / kMsPerSecond;
    return QJsonObject{{"packets per second", (packets - 1) / seconds},
                       {"processor share", static_cast<double>(after - before) / elapsedMs}};
}

double processorShare(qint64 process, int seconds)
{
    const qint64 before = ProcessStatus::of(process).processorTimeMs;
    QThread::sleep(static_cast<unsigned long>(seconds));
    const qint64 used = ProcessStatus::of(process).processorTimeMs - before;
    return static_cast<double>(used) / (seconds * kMsPerSecond);
}

Result idle(int seconds)
{
    ProgramFixture fixture;
    if (!fixture.start()) {
        return failed(fixture);
    }
    constexpr unsigned long kSettleSeconds = 2;
    QThread::sleep(kSettleSeconds);
    const qint64 process = fixture.corvane.operatedProcessId();
    const double disconnected = processorShare(process, seconds);
    if (!fixture.connectCamera()) {
        return failed(fixture);
    }
    QThread::sleep(kSettleSeconds);
    return QJsonObject{{"disconnected", disconnected},
                       {"connected", processorShare(process, seconds)}};
}

/// How much memory many packets leave behind, from a connected window on.
Result growth(int packets, int speed)
{
    ProgramFixture fixture;
    fixture.setSpeed(speed);
    if (!fixture.pack(firmwareOf(packets)) || !fixture.start({"--reboot-time", "0"})
        || !fixture.connectCamera()) {
        return failed(fixture);
    }
    const qint64 process = fixture.corvane.operatedProcessId();
    // An upgrade first, for the page, the bar, the fonts and Qt's own code for them to be there.
    constexpr int kFirstPackets = 1000;
    const ProcessStatus connected = ProcessStatus::of(process);
    if (!fixture.pack(firmwareOf(kFirstPackets)) || !fixture.startUpgrade()
        || !waitUntilUploaded(fixture, kFirstPackets, speed)
        || !fixture.corvane.waitForEnabled("pushButton_connect")) {
        return failed(fixture);
    }
    const ProcessStatus first = ProcessStatus::of(process);
    if (!fixture.pack(firmwareOf(packets)) || !fixture.connectCamera() || !fixture.startUpgrade()
        || !waitUntilUploaded(fixture, packets, speed)
        || !fixture.corvane.waitForEnabled("pushButton_connect")) {
        return failed(fixture);
    }
    const ProcessStatus last = ProcessStatus::of(process);
    return QJsonObject{{"connected resident KiB", connected.residentKiB},
                       {"connected private KiB", connected.privateKiB},
                       {"after the first upgrade resident KiB", first.residentKiB},
                       {"after the first upgrade private KiB", first.privateKiB},
                       {"after all packets resident KiB", last.residentKiB},
                       {"after all packets private KiB", last.privateKiB}};
}

Result gapsDuring(ProgramFixture &fixture, const std::function<bool()> &situation)
{
    if (!fixture.corvane.watchEventLoop() || !situation()) {
        return failed(fixture);
    }
    const QJsonObject gaps = fixture.corvane.eventLoopGaps();
    return gaps.isEmpty() ? failed(fixture) : gaps;
}

Result gapsOfUpload()
{
    constexpr int kPackets = 200;
    ProgramFixture fixture;
    if (!fixture.pack(firmwareOf(kPackets)) || !fixture.start() || !fixture.connectCamera()
        || !fixture.startUpgrade()) {
        return failed(fixture);
    }
    return gapsDuring(fixture, [&fixture] { return waitUntilUploaded(fixture, kPackets, 1); });
}

Result gapsOfDeadDevice()
{
    ProgramFixture fixture;
    if (!fixture.start({"--silent"})) {
        return failed(fixture);
    }
    return gapsDuring(fixture, [&fixture] {
        return fixture.corvane.click("pushButton_connect")
            && fixture.corvane.waitForDialog("Error: Connection fail!");
    });
}

Result gapsOfVanishedPort()
{
    ProgramFixture fixture;
    if (!fixture.start() || !fixture.connectCamera()) {
        return failed(fixture);
    }
    return gapsDuring(fixture, [&fixture] {
        return fixture.tell("unplug") && fixture.corvane.waitForEnabled("pushButton_connect");
    });
}

Result gapsOfLargeImage()
{
    ProgramFixture fixture;
    if (!fixture.pack(randomBytes(FirmwarePacket::kMaximumFirmwareSize, 1)) || !fixture.start()
        || !fixture.connectCamera() || !fixture.tell("silent on")
        || !fixture.corvane.choose("tabWidget", 1)) {
        return failed(fixture);
    }
    return gapsDuring(fixture, [&fixture] {
        return fixture.startUpgrade()
            && fixture.corvane.waitForDialog("Error: Connection timeout!");
    });
}

/// A recording of a camera that answers HELLO and then sends anything, as fast as 3 Mbaud carry it.
QByteArray floodRecording()
{
    constexpr int kBytesPerMs = 300;
    constexpr int kFloodMs = 5000;
    QByteArray recording = Recording::header();
    recording += "0.000000 plugged\n"
                 "1.000000 host FF FF 0A 41 01 06 07 06 09 01 16 00 7F\n"
                 "1.010000 camera FF FF 17 41 01 06 07 06 09 05 16 00"
                 " 01 00 0A 10 03 00 00 01 01 01 00 00 03 B4\n";
    const QByteArray garbage = randomBytes(kBytesPerMs * kFloodMs, 1);
    for (int ms = 0; ms < kFloodMs; ++ms) {
        LineEvent event;
        event.kind = LineEvent::Camera;
        event.time = std::chrono::milliseconds(2000 + ms);
        event.bytes = garbage.mid(ms * kBytesPerMs, kBytesPerMs);
        recording += Recording::line(event);
    }
    return recording;
}

Result gapsOfFlood()
{
    ProgramFixture fixture;
    QFile file(fixture.path("flood"));
    if (!file.open(QIODevice::WriteOnly) || file.write(floodRecording()) < 0 || !file.flush()
        || !fixture.start({"--replay", file.fileName()}) || !fixture.connectCamera()) {
        return failed(fixture);
    }
    return gapsDuring(fixture, [&fixture] {
        constexpr int kFloodMs = 6000;
        fixture.corvane.pause(kFloodMs);
        return true;
    });
}

Result eventLoop()
{
    QJsonObject gaps;
    for (const auto &[name, measure] :
         {std::pair{"upload", &gapsOfUpload}, std::pair{"dead device", &gapsOfDeadDevice},
          std::pair{"vanished port", &gapsOfVanishedPort},
          std::pair{"16 MiB image", &gapsOfLargeImage}, std::pair{"flood", &gapsOfFlood}}) {
        const Result result = measure();
        if (!result) {
            return std::nullopt;
        }
        gaps[QLatin1String(name)] = *result;
    }
    return gaps;
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(
        "Measures the running program.\n\n"
        "upload PACKETS FILE    rate, processor share; the cycles go to FILE\n"
        "idle SECONDS           processor share, connected and not\n"
        "growth PACKETS SPEED   memory, at so many times the speed\n"
        "eventloop              gaps of the event loop");
    parser.addHelpOption();
    parser.addPositionalArgument("MEASUREMENT", "Which one.");
    parser.process(application);
    const QStringList arguments = parser.positionalArguments();
    const QString measurement = arguments.value(0);
    const int count = arguments.value(1).toInt();

    Result result;
    if (measurement == "upload" && count > 1) {
        result = upload(count, arguments.value(2));
    } else if (measurement == "idle" && count > 0) {
        result = idle(count);
    } else if (measurement == "growth" && count > 0) {
        result = growth(count, qMax(1, arguments.value(2).toInt()));
    } else if (measurement == "eventloop") {
        result = eventLoop();
    } else {
        parser.showHelp(2);
    }
    if (!result) {
        return 1;
    }
    std::puts(QJsonDocument(*result).toJson(QJsonDocument::Compact).constData());
    return 0;
}
