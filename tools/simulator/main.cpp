// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "preloadlibrary.h"
#include "simulator.h"
#include "simulatoroptions.h"

#include <QCoreApplication>

#include <cstdio>
#include <cstdlib>
#include <variant>
#include <vector>

namespace {

constexpr int kNoLineStatus = 1;
constexpr int kBadUsageStatus = 2;

void print(std::FILE *stream, const QString &text)
{
    std::fputs(text.toLocal8Bit().constData(), stream);
    // Whoever reads it, tests among them, waits for it.
    std::fflush(stream);
}

void complain(const QString &text)
{
    print(stderr, QStringLiteral("%1: %2\n").arg(QCoreApplication::applicationName(), text));
}

int run(const SimulatorOptions &options)
{
    Simulator simulator(options);
    QObject::connect(&simulator, &Simulator::printed,
                     [](const QString &text) { print(stdout, text + QLatin1Char('\n')); });
    QObject::connect(&simulator, &Simulator::complained, &complain);
    QObject::connect(
        &simulator, &Simulator::finished, QCoreApplication::instance(),
        [](int status, const QString &fault) {
            if (!fault.isEmpty()) {
                complain(fault);
            }
            QCoreApplication::exit(status);
        },
        Qt::QueuedConnection);
    QString error;
    if (!simulator.start(&error)) {
        complain(error);
        return kNoLineStatus;
    }
    return QCoreApplication::exec();
}

} // namespace

int main(int argc, char *argv[])
{
    // QCoreApplication takes the arguments out that are meant for it.
    std::vector<char *> arguments(argv, argv + argc + 1);
    const QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("corvane-simulator"));
    QCoreApplication::setApplicationVersion(QStringLiteral(CORVANE_VERSION));

    const auto commandLine = parseCommandLine(QCoreApplication::arguments());
    if (const auto *information = std::get_if<Information>(&commandLine)) {
        print(stdout, information->text);
        return EXIT_SUCCESS;
    }
    if (const auto *badUsage = std::get_if<BadUsage>(&commandLine)) {
        complain(badUsage->reason);
        print(stderr, QStringLiteral("Try --help.\n"));
        return kBadUsageStatus;
    }
    const auto *options = std::get_if<SimulatorOptions>(&commandLine);
    if (!options->program.isEmpty() && !PreloadLibrary::isLoaded()) {
        complain(PreloadLibrary::restartWith(arguments.data()));
        return kNoLineStatus;
    }
    return run(*options);
}
