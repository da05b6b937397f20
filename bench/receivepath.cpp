// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

// How many frames a second make it from the port to AnalyzeReceiveData(), with the log in a file as
// an operator would keep it. The line carries 886 of these frames a second.

#include "acknowledgements.h"
#include "mainwindow.h"
#include "pseudoterminal.h"

#include <QApplication>
#include <QComboBox>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTimer>

#include <benchmark/benchmark.h>

#include <cstdio>

namespace {

constexpr int kFrames = 20'000;
constexpr int kFramesAtOnce = 64;     ///< what the pseudo-terminal takes without waiting
constexpr int kFramesUnderWay = 1024; ///< sent, but not arrived

/// Sends while frames arrive, so that neither side waits for the other.
class Exchange : public QObject {
public:
    Exchange(PseudoTerminal &line, const MainWindow &window)
        : m_line(line)
    {
        connect(&window, &MainWindow::receive_fw_info_ack, this, [this] {
            ++m_arrived;
            proceed();
        });
    }

    double run()
    {
        QElapsedTimer timer;
        timer.start();
        QTimer::singleShot(0, this, [this] { proceed(); });
        m_loop.exec();
        constexpr double kNsPerSecond = 1e9;
        return static_cast<double>(timer.nsecsElapsed()) / kNsPerSecond;
    }

private:
    void proceed()
    {
        if (m_arrived == kFrames) {
            m_loop.quit();
        }
        while (m_sent < kFrames && m_sent - m_arrived <= kFramesUnderWay - kFramesAtOnce) {
            const int count = qMin(kFramesAtOnce, kFrames - m_sent);
            m_line.send(Acknowledgements::many(count));
            m_sent += count;
        }
    }

    PseudoTerminal &m_line;
    QEventLoop m_loop;
    int m_sent = 0;
    int m_arrived = 0;
};

bool connectWindow(MainWindow &window, PseudoTerminal &line)
{
    auto *const ports = window.findChild<QComboBox *>(QStringLiteral("comboBox_portlist"));
    ports->addItem(line.portName() + QStringLiteral(" (benchmark)"));
    ports->setCurrentIndex(ports->count() - 1);
    QObject::connect(&line, &PseudoTerminal::bytesReceived, &line, [&line] {
        line.send(
            QByteArray::fromHex("ffff17410106070609051600 01000a10 03 0000 0101 0100 00 03 b4"));
    });
    window.findChild<QPushButton *>(QStringLiteral("pushButton_connect"))->click();
    return window.findChild<QWidget *>(QStringLiteral("tabWidget"))->isEnabled();
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
        Exchange exchange(line, window);
        state.SetIterationTime(exchange.run());
    }
    state.SetItemsProcessed(state.iterations() * kFrames);
}

} // namespace

int main(int argc, char *argv[])
{
    const QApplication application(argc, argv);
    const QTemporaryDir folder;
    if (std::freopen(qPrintable(folder.filePath(QStringLiteral("log"))), "w", stderr) == nullptr) {
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
