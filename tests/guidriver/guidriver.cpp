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
    const QString socketPath = m_directory.filePath(QStringLiteral("guidriver"));
    if (!m_server.listen(socketPath)) {
        return fail(m_server.errorString());
    }
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("QT_PLUGIN_PATH"), QStringLiteral(CORVANE_PLUGIN_PATH));
    environment.insert(QStringLiteral("QT_QPA_GENERIC_PLUGINS"),
                       QStringLiteral("corvaneguidriver:") + socketPath);
    environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), m_directory.path());
    m_process.setProcessEnvironment(environment);
    m_process.start(program, arguments);
    if (!m_process.waitForStarted(kPatience)) {
        return fail(m_process.errorString());
    }
    const QDeadlineTimer deadline(kPatience);
    while (!m_server.waitForNewConnection(kPollMs)) {
        readOutput();
        if (deadline.hasExpired() || m_process.state() == QProcess::NotRunning) {
            return fail(QStringLiteral("the program did not report: ") + output());
        }
    }
    m_socket = m_server.nextPendingConnection();
    return waitUntil(QStringLiteral("the main window is there"),
                     [this] { return state()[QStringLiteral("widgets")].toObject().size() > 1; });
}

bool GuiDriver::waitUntilEnded(int limitMs)
{
    if (m_process.state() != QProcess::NotRunning && !m_process.waitForFinished(limitMs)) {
        return fail(QStringLiteral("the program has not ended"));
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

qint64 GuiDriver::operatedProcessId()
{
    return state()[QStringLiteral("process")].toInt(-1);
}

bool GuiDriver::click(const QString &widget)
{
    return order({{"do", "click"}, {"widget", widget}});
}

bool GuiDriver::hover(const QString &widget)
{
    return order({{"do", "hover"}, {"widget", widget}});
}

bool GuiDriver::press(const QString &widget)
{
    return order({{"do", "press"}, {"widget", widget}});
}

bool GuiDriver::release(const QString &widget)
{
    return order({{"do", "release"}, {"widget", widget}});
}

bool GuiDriver::openList(const QString &widget)
{
    return order({{"do", "open list"}, {"widget", widget}});
}

bool GuiDriver::choose(const QString &widget, int index)
{
    return order({{"do", "choose"}, {"widget", widget}, {"index", index}});
}

bool GuiDriver::closeList()
{
    return order({{"do", "close list"}});
}

bool GuiDriver::type(const QString &widget, const QString &text)
{
    return order({{"do", "type"}, {"widget", widget}, {"text", text}});
}

bool GuiDriver::answerDialog()
{
    return order({{"do", "answer"}});
}

bool GuiDriver::dismiss()
{
    return order({{"do", "dismiss"}});
}

bool GuiDriver::close()
{
    return order({{"do", "close"}});
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
    const QJsonObject widgets = state()[QStringLiteral("widgets")].toObject();
    for (auto widget = widgets.begin(); widget != widgets.end(); ++widget) {
        const QJsonObject of = widget->toObject();
        if (of[QStringLiteral("enabled")].toBool() && of[QStringLiteral("visible")].toBool()) {
            names << widget.key();
        }
    }
    return names;
}

QString GuiDriver::text(const QString &widget)
{
    return stateOf(widget, QStringLiteral("text")).toString();
}

int GuiDriver::index(const QString &widget)
{
    return stateOf(widget, QStringLiteral("index")).toInt(-1);
}

int GuiDriver::value(const QString &widget)
{
    return stateOf(widget, QStringLiteral("value")).toInt(-1);
}

bool GuiDriver::isChecked(const QString &widget)
{
    return stateOf(widget, QStringLiteral("checked")).toBool();
}

bool GuiDriver::isEnabled(const QString &widget)
{
    return stateOf(widget, QStringLiteral("enabled")).toBool();
}

bool GuiDriver::isListOpen()
{
    return state()[QStringLiteral("list")].toBool();
}

QString GuiDriver::dialog()
{
    return state()[QStringLiteral("dialog")].toString();
}

bool GuiDriver::isBlocked()
{
    return state()[QStringLiteral("blocked")].toBool();
}

bool GuiDriver::watchEventLoop()
{
    return order({{"do", "watch event loop"}});
}

QJsonObject GuiDriver::eventLoopGaps()
{
    return order({{"do", "event loop gaps"}}) ? m_answer : QJsonObject();
}

bool GuiDriver::holdLimits(bool holds)
{
    return order({{"do", "hold limits"}, {"holds", holds}});
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
            return fail(QStringLiteral("waited in vain until ") + description);
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
        widget + (enabled ? QLatin1String(" is enabled") : QLatin1String(" is disabled")),
        [this, widget, enabled] { return isEnabled(widget) == enabled; }, limitMs);
}

bool GuiDriver::order(const QJsonObject &order)
{
    if (m_socket == nullptr || !m_socket->isOpen()) {
        return fail(QStringLiteral("the program is not there"));
    }
    m_socket->write(QJsonDocument(order).toJson(QJsonDocument::Compact) + '\n');
    while (!m_socket->canReadLine()) {
        if (!m_socket->waitForReadyRead(kPatience)) {
            return fail(QStringLiteral("no answer from the program"));
        }
    }
    m_answer = QJsonDocument::fromJson(m_socket->readLine()).object();
    return m_answer[QStringLiteral("ok")].toBool()
        || fail(m_answer[QStringLiteral("error")].toString());
}

QJsonObject GuiDriver::state()
{
    return order({{"do", "state"}}) ? m_answer : QJsonObject();
}

QJsonValue GuiDriver::stateOf(const QString &widget, const QString &key)
{
    return state()[QStringLiteral("widgets")].toObject()[widget].toObject()[key];
}

// To be called again and again: a program whose output nobody reads comes to a halt.
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
