// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "control.h"
#include "controlcommand.h"
#include "jsonreport.h"
#include "standardstreams.h"

#include <QCoreApplication>

#include <variant>

namespace {

constexpr int kOutputErrorStatus = 4;

} // namespace

int main(int argc, char *argv[])
{
    setUpProgram(QStringLiteral("corvanectl"));
    const QCoreApplication application(argc, argv);

    const QStringList arguments = QCoreApplication::arguments();
    const auto commandLine = parseControlCommandLine(arguments);
    if (const auto *information = std::get_if<Information>(&commandLine)) {
        return report(*information, kOutputErrorStatus);
    }
    if (const auto *error = std::get_if<UsageError>(&commandLine)) {
        if (arguments.contains(QStringLiteral("--json"))) {
            RunSummary counts;
            counts.exitCode = kUsageErrorStatus;
            print(JsonReport::note(error->reason) + JsonReport::end(counts));
        }
        return report(*error);
    }
    Control control(*std::get_if<ControlCommand>(&commandLine));
    QObject::connect(&control, &Control::finished, QCoreApplication::instance(),
                     &QCoreApplication::exit, Qt::QueuedConnection);
    control.start();
    return QCoreApplication::exec();
}
