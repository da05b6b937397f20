// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

// How long the window really waits for a silent camera: prints, for each of its time-outs, the
// milliseconds from the click to what the window says then, one a line after the nominal time.

#include "dialogwatcher.h"
#include "frames.h"
#include "mainwindow.h"
#include "pseudoterminal.h"

#include <QApplication>
#include <QComboBox>
#include <QElapsedTimer>
#include <QPushButton>

#include <cstdio>
#include <cstdlib>

namespace {

constexpr int kReplyLimitMs = 5000;
constexpr int kCustomZoomLimitMs = 2000;

class SilentDesk {
public:
    SilentDesk()
    {
        auto *const ports = m_window.findChild<QComboBox *>(QStringLiteral("comboBox_portlist"));
        ports->addItem(m_line.portName() + " (benchmark)");
        ports->setCurrentIndex(ports->count() - 1);
        m_window.show();
    }

    /// Answers the first request only.
    bool connectCamera()
    {
        const auto answering = QObject::connect(&m_line, &PseudoTerminal::bytesReceived, &m_line,
                                                [this] { m_line.send(Frames::helloReply()); });
        button("pushButton_connect")->click();
        QObject::disconnect(answering);
        return m_window.findChild<QWidget *>("tabWidget")->isEnabled();
    }

    /// The click comes back when the wait is over, its message box shown and answered.
    void measure(const char *name, int nominalMs)
    {
        constexpr double kNsPerMs = 1e6;
        QElapsedTimer timer;
        timer.start();
        button(name)->click();
        std::printf("%d %.3f\n", nominalMs, static_cast<double>(timer.nsecsElapsed()) / kNsPerMs);
        std::fflush(stdout);
    }

private:
    QPushButton *button(const char *name) const
    {
        return m_window.findChild<QPushButton *>(QLatin1String(name));
    }

    const DialogWatcher m_dialogs;
    PseudoTerminal m_line;
    MainWindow m_window;
};

} // namespace

int main(int argc, char *argv[])
{
    const QApplication application(argc, argv);
    const int count = argc == 2 ? std::atoi(argv[1]) : 0;
    if (count < 1) {
        std::fputs("usage: corvane-bench-timeouts COUNT\n", stderr);
        return 2;
    }
    SilentDesk fixture;
    for (int run = 0; run < count; ++run) {
        fixture.measure("pushButton_connect", kReplyLimitMs);
    }
    if (!fixture.connectCamera()) {
        std::fputs("the window does not connect\n", stderr);
        return 1;
    }
    for (int run = 0; run < count; ++run) {
        fixture.measure("pushButton_custom_zoom_1", kCustomZoomLimitMs);
    }
    return 0;
}
