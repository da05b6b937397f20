// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

// How many frames a second make it from the port to AnalyzeReceiveData(), with the log in a file as
// an operator would keep it. The line carries 886 of these frames a second.

#include "frames.h"
#include "mainwindow.h"
#include "pseudoterminal.h"

#include <QApplication>
#include <QComboBox>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QPushButton>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <thread>

namespace {

/// So many that the one poll for which the parser sleeps at the beginning does not count.
constexpr int kFrames = 200'000;

/// @return the seconds that it takes all frames to arrive
double exchange(const PseudoTerminal &line, const MainWindow &window)
{
    const QByteArray frames = Frames::packetAcknowledgement().repeated(kFrames);
    QEventLoop loop;
    int arrived = 0;
    QObject::connect(&window, &MainWindow::receive_fw_info_ack, &loop, [&loop, &arrived] {
        if (++arrived == kFrames) {
            loop.quit();
        }
    });
    QElapsedTimer timer;
    timer.start();
    // The camera's side does not take the window's time.
    std::thread camera([&line, &frames] { line.sendAll(frames); });
    loop.exec();
    const qint64 elapsed = timer.nsecsElapsed();
    camera.join();
    constexpr double kNsPerSecond = 1e9;
    return static_cast<double>(elapsed) / kNsPerSecond;
}

bool connectWindow(MainWindow &window, PseudoTerminal &line)
{
    auto *const ports = window.findChild<QComboBox *>(QStringLiteral("comboBox_portlist"));
    ports->addItem(line.portName() + " (benchmark)");
    ports->setCurrentIndex(ports->count() - 1);
    QObject::connect(&line, &PseudoTerminal::bytesReceived, &line,
                     [&line] { line.send(Frames::helloReply()); });
    window.findChild<QPushButton *>("pushButton_connect")->click();
    return window.findChild<QWidget *>("tabWidget")->isEnabled();
}

void receiving(benchmark::State &state)
{
    PseudoTerminal line;
    MainWindow window;
    window.show();
    if (!connectWindow(window, line)) {
        state.SkipWithError("the window does not connect");
        return;
    }
    while (state.KeepRunning()) {
        state.SetIterationTime(exchange(line, window));
    }
    state.SetItemsProcessed(state.iterations() * kFrames);
}

} // namespace

int main(int argc, char *argv[])
{
    const QApplication application(argc, argv);
    const QTemporaryDir folder;
    if (std::freopen(qPrintable(folder.filePath("log")), "w", stderr) == nullptr) {
        return 1;
    }
    constexpr int kRuns = 5;
    benchmark::RegisterBenchmark("receiving", receiving)
        ->UseManualTime()
        ->Iterations(kRuns)
        ->Unit(benchmark::kMillisecond);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
