// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "guidriver.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QJsonDocument>
#include <QLocalSocket>
#include <QThread>

namespace {

constexpr int kPollMs = 20;
constexpr unsigned long kSettleMs = 150;

} // namespace

bool tellSimulator(const QString &controlSocket, const QByteArray &command)
{
    QLocalSocket socket;
    socket.connectToServer(controlSocket);
    if (!socket.waitForConnected(kPatience)) {
        return false;
    }
    socket.write(command + '\n');
    while (!socket.canReadLine()) {
        if (!socket.waitForReadyRead(kPatience)) {
            return false;
        }
    }
    return socket.readLine().trimmed() == "ok";
}

GuiDriver::GuiDriver()
{
    m_process.setProcessChannelMode(QProcess::MergedChannels);
    // Stays the child's standard input, so that a program that reads it does not see its end.
    m_process.setInputChannelMode(QProcess::ManagedInputChannel);
}

GuiDriver::~GuiDriver()
{
    if (m_process.state() != QProcess::NotRunning) {
        m_process.terminate();
        if (!m_process.waitForFinished(kPatience)) {
            m_process.kill();
            m_process.waitForFinished();
        }
    }
}

bool GuiDriver::start(const QString &program, const QStringList &arguments)
{
    const QString socketPath = m_directory.filePath("guidriver");
    if (!m_server.listen(socketPath)) {
        return fail(m_server.errorString());
    }
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("QT_PLUGIN_PATH", QStringLiteral(CORVANE_PLUGIN_PATH));
    environment.insert("QT_QPA_GENERIC_PLUGINS", "corvaneguidriver:" + socketPath);
    environment.insert("LD_PRELOAD", CORVANE_PLUGIN ":" + environment.value("LD_PRELOAD"));
    environment.insert("XDG_RUNTIME_DIR", m_directory.path());
    m_process.setProcessEnvironment(environment);
    m_process.start(program, arguments);
    if (!m_process.waitForStarted(kPatience)) {
        return fail(m_process.errorString());
    }
    const QDeadlineTimer deadline(kPatience);
    while (!m_server.waitForNewConnection(kPollMs)) {
        readOutput();
        if (deadline.hasExpired() || m_process.state() == QProcess::NotRunning) {
            return fail("the program did not report: " + output());
        }
    }
    m_socket = m_server.nextPendingConnection();
    return waitUntil("the main window is there",
                     [this] { return state()["widgets"].toObject().size() > 1; });
}

bool GuiDriver::waitUntilEnded(int limitMs)
{
    if (m_process.state() != QProcess::NotRunning && !m_process.waitForFinished(limitMs)) {
        return fail("the program has not ended");
    }
    return true;
}

int GuiDriver::exitCode() const
{
    const bool ended =
        m_process.state() == QProcess::NotRunning && m_process.exitStatus() == QProcess::NormalExit;
    return ended ? m_process.exitCode() : -1;
}

QString GuiDriver::output()
{
    readOutput();
    return m_output;
}

bool GuiDriver::picture(const QString &path)
{
    // What is to be painted is on the screen when the program's event loop has gone round. Slept
    // here, because the program's time may be running faster than that of the screen.
    QThread::msleep(kSettleMs);
    return order({{"do", "picture"}, {"path", path}});
}

QStringList GuiDriver::usableWidgets()
{
    QStringList names;
    const QJsonObject widgets = state()["widgets"].toObject();
    for (auto widget = widgets.begin(); widget != widgets.end(); ++widget) {
        const QJsonObject of = widget->toObject();
        if (of["enabled"].toBool() && of["visible"].toBool()) {
            names << widget.key();
        }
    }
    return names;
}

void GuiDriver::pause(int ms)
{
    // A pipe holds 64 KiB, and no program here prints that much in so short a time.
    constexpr qint64 kReadMs = 100;
    const QDeadlineTimer deadline(ms);
    while (!deadline.hasExpired()) {
        readOutput();
        QThread::msleep(static_cast<unsigned long>(qMin(kReadMs, deadline.remainingTime())));
    }
}

bool GuiDriver::waitUntil(const QString &description, const std::function<bool()> &condition,
                          int limitMs)
{
    const QDeadlineTimer deadline(limitMs);
    while (!condition()) {
        if (deadline.hasExpired() || m_process.state() == QProcess::NotRunning) {
            return fail("waited in vain until " + description);
        }
        readOutput();
        QThread::msleep(kPollMs);
    }
    return true;
}

bool GuiDriver::waitForDialog(const QString &titleAndText, int limitMs)
{
    return waitUntil(
        QStringLiteral("the box \"%1\" is open").arg(titleAndText),
        [this, titleAndText] { return dialog() == titleAndText; }, limitMs);
}

bool GuiDriver::waitForEnabled(const QString &widget, bool enabled, int limitMs)
{
    return waitUntil(
        widget + (enabled ? " is enabled" : " is disabled"),
        [this, widget, enabled] { return isEnabled(widget) == enabled; }, limitMs);
}

bool GuiDriver::waitForText(const QString &widget, const QString &text)
{
    return waitUntil(QStringLiteral("%1 shows '%2'").arg(widget, text),
                     [this, widget, text] { return this->text(widget) == text; });
}

bool GuiDriver::order(const QJsonObject &order)
{
    if (m_socket == nullptr || !m_socket->isOpen()) {
        return fail("the program is not there");
    }
    m_socket->write(QJsonDocument(order).toJson(QJsonDocument::Compact) + '\n');
    while (!m_socket->canReadLine()) {
        if (!m_socket->waitForReadyRead(kPatience)) {
            return fail("no answer from the program");
        }
    }
    m_answer = QJsonDocument::fromJson(m_socket->readLine()).object();
    return m_answer["ok"].toBool() || fail(m_answer["error"].toString());
}

// To be called again and again: a program whose output is not read comes to a halt.
void GuiDriver::readOutput()
{
    m_process.waitForReadyRead(0);
    m_output += QString::fromUtf8(m_process.readAll());
    if (m_output.size() > m_outputLimit) {
        m_output = m_output.right(m_outputLimit);
    }
}

bool GuiDriver::fail(const QString &text)
{
    m_errorText = text;
    return false;
}
