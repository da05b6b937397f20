// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "commandline.h"
#include "preloadlibrary.h"
#include "printabletext.h"
#include "simulator.h"
#include "simulatoroptions.h"
#include "standardstreams.h"

#include <QCoreApplication>

#include <variant>
#include <vector>

namespace {

constexpr int kFailedStatus = 1;

int run(const SimulatorOptions &options)
{
    Simulator simulator(options);
    QObject::connect(&simulator, &Simulator::printed, [&simulator](const QString &text) {
        if (!print(printableText(text) + QLatin1Char('\n'))) {
            // It has been said once, and the run goes on.
            QObject::disconnect(&simulator, &Simulator::printed, nullptr, nullptr);
        }
    });
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
        return kFailedStatus;
    }
    return QCoreApplication::exec();
}

} // namespace

int main(int argc, char *argv[])
{
    // QCoreApplication takes the arguments out that are meant for it.
    std::vector<char *> arguments(argv, argv + argc + 1);
    setUpProgram(QStringLiteral("corvane-simulator"));
    const QCoreApplication application(argc, argv);

    const auto commandLine = parseCommandLine(QCoreApplication::arguments());
    if (const auto *information = std::get_if<Information>(&commandLine)) {
        return report(*information, kFailedStatus);
    }
    if (const auto *error = std::get_if<UsageError>(&commandLine)) {
        return report(*error);
    }
    const auto *options = std::get_if<SimulatorOptions>(&commandLine);
    if (!options->program.isEmpty() && !PreloadLibrary::isLoaded()) {
        complain(PreloadLibrary::restartWith(arguments.data()));
        return kFailedStatus;
    }
    return run(*options);
}
