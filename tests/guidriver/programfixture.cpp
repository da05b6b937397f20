// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "programfixture.h"

#include <QCoreApplication>
#include <QFile>

#include <atomic>
#include <cstdio>

namespace {

// Opening a port locks its name for the whole machine, on which other fixtures may run.
QString uniquePort()
{
    static std::atomic<int> count{0};
    return QStringLiteral("ttyUSB%1x%2").arg(QCoreApplication::applicationPid()).arg(++count);
}

} // namespace

ProgramFixture::ProgramFixture()
    : m_port(uniquePort())
{
}

ProgramFixture::~ProgramFixture()
{
    // The GUI driver can only end what it has started, which may be the program that speeds time
    // up.
    if (tell("quit")) {
        corvane.waitUntilEnded();
    }
}

bool ProgramFixture::start(const QStringList &simulatorOptions)
{
    const QStringList wrapper =
        qEnvironmentVariable("CORVANE_WRAPPER").split(QLatin1Char(' '), Qt::SkipEmptyParts);
    QStringList command;
    // With Clang's address sanitizer in it, the program hangs at its start when time is faked.
    if (m_speed > 1 && !qEnvironmentVariableIsSet("CORVANE_REAL_TIME")) {
        command << "faketime"
                << "-f" << QStringLiteral("+0 x%1").arg(m_speed);
    }
    command << CORVANE_SIMULATOR << "--hex"
            << "--control" << controlSocket() << "--port" << m_port << simulatorOptions << "--"
            << wrapper << CORVANE_PROGRAM;
    const QString first = command.takeFirst();
    return corvane.start(first, command);
}

bool ProgramFixture::pack(const QByteArray &firmware)
{
    QFile file(path("firmware"));
    return file.open(QIODevice::WriteOnly) && file.write(firmware) == firmware.size()
        && file.flush()
        && QProcess::execute(CORVANE_IMAGE,
                             {"pack", "--protocol-version", "1.2.0.7", "--image-version", "1.0.0.6",
                              file.fileName(), path("image")})
        == 0;
}

bool ProgramFixture::startUpgrade()
{
    return corvane.choose("tabWidget", 1)
        && corvane.waitUntil("the page is shown",
                             [this] { return corvane.index("tabWidget") == 1; })
        && corvane.type("lineEdit_firmware", path("image"))
        && corvane.waitUntil("the upgrade can start, or the line is lost",
                             [this] {
                                 return corvane.isEnabled("pushButton_start_upgrade")
                                     || corvane.isEnabled("pushButton_connect");
                             })
        && corvane.isEnabled("pushButton_start_upgrade")
        && corvane.click("pushButton_start_upgrade");
}

bool ProgramFixture::waitUntilComplete()
{
    return corvane.waitUntil("the upgrade is complete", [this] {
        return corvane.text("textEdit_firmware_info")
            == QLatin1String("Update is complete. Device auto-rebooting.");
    }) && corvane.waitForEnabled("pushButton_connect");
}

QByteArray ProgramFixture::contents(const QString &name) const
{
    QFile file(path(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QStringList ProgramFixture::frames()
{
    constexpr int kArrowOffset = 14; // after the time, "12:00:01.234  "
    QStringList frames;
    const QStringList lines = corvane.output().split(QLatin1Char('\n'));
    for (const QString &line : lines) {
        const int bytes = line.indexOf(" | ");
        const QString arrow = line.mid(kArrowOffset, 2);
        if (bytes >= 0 && (arrow == "<-" || arrow == "->")) {
            frames << arrow + QLatin1Char(' ') + line.mid(bytes + 3);
        }
    }
    return frames;
}

QString ProgramFixture::explanation()
{
    const QString error = corvane.errorText();
    std::fputs(qPrintable(corvane.output()), stderr);
    return error + "; open message box: " + corvane.dialog();
}
