// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "dialogwatcher.h"
#include "frames.h"
#include "hangupdetector.h"
#include "logcapture.h"
#include "mainwindow.h"
#include "pseudoterminal.h"
#include "waitlimits.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QLineEdit>
#include <QTemporaryFile>
#include <QTextEdit>
#include <QTimer>

/// An image in a file; it is not more than its versions by default.
class ImageFile : public QTemporaryFile {
public:
    explicit ImageFile(const QByteArray &contents = versionsAlone())
        : QTemporaryFile(QDir::tempPath() + "/XXXXXX.img")
    {
        if (!open() || write(contents) != contents.size() || !flush()) {
            qFatal("cannot write the image");
        }
    }

    static QByteArray versionsAlone() { return "KVEL" + QByteArray::fromHex("01020aff 05060708"); }
    static QString versions() { return "Protocol version: 1.2.a.-1\nImage version: 5.6.7.8"; }
};

/// A main window whose chosen port is the near end of a pseudo-terminal, with the test as camera.
class WindowFixture {
public:
    /// @param answersDialogs  whether message boxes are answered at once, or by the test
    explicit WindowFixture(bool answersDialogs = true)
        : dialogs(answersDialogs)
    {
        choosePort(line.portName() + " (test line)");
        QObject::connect(&line, &PseudoTerminal::bytesReceived, &line, [this] { reply(); });
        log.clear();
    }

    /// What the camera sends when the next bytes arrive from the window.
    void replyWith(const QByteArray &bytes, int afterMs = 0)
    {
        m_reply = bytes;
        m_replyAfterMs = afterMs;
    }

    /// Lets the limit of the next wait pass, once its request has left.
    void letLimitPass()
    {
        limits.passWhen("the request has left", [this] { return port()->bytesToWrite() == 0; });
    }
    /// The same, once the log has that line too.
    void letLimitPassAfter(const QString &logLine)
    {
        limits.passWhen("the log has " + logLine, [this, logLine] {
            return port()->bytesToWrite() == 0 && log.texts().contains(logLine);
        });
    }

    /// Goes through the handshake. @return whether the window is connected then
    bool connectCamera()
    {
        replyWith(Frames::helloReply());
        click("pushButton_connect");
        replyWith({});
        line.forgetReceived();
        log.clear();
        return isEnabled("tabWidget");
    }

    /// Presses a button that is enabled. Comes back when the button's slot does.
    void click(const char *button) { child<QAbstractButton>(button)->click(); }

    /// Calls a slot of the window, whether or not its widget is enabled.
    template <typename... Argument> void call(const char *slot, const Argument &...argument)
    {
        if (!QMetaObject::invokeMethod(&window, slot, argument...)) {
            qFatal("no slot %s", slot);
        }
    }
    /// Hands over a frame as the parser does, which leaves out the checksum.
    void deliver(const QByteArray &frame) { call("AnalyzeReceiveData", Q_ARG(QByteArray, frame)); }
    void choosePort(const QString &item)
    {
        auto *const ports = combo("comboBox_portlist");
        ports->addItem(item);
        ports->setCurrentIndex(ports->count() - 1);
    }
    void enterFirmwarePath(const QString &path)
    {
        child<QLineEdit>("lineEdit_firmware")->setText(path);
        call("on_lineEdit_firmware_editingFinished");
    }

    template <typename Type> Type *child(const char *name) const
    {
        auto *const found = window.findChild<Type *>(QLatin1String(name));
        if (found == nullptr) {
            qFatal("no widget %s", name);
        }
        return found;
    }
    QWidget *widget(const char *name) const { return child<QWidget>(name); }
    bool isEnabled(const char *name) const { return widget(name)->isEnabled(); }
    QComboBox *combo(const char *name) const { return child<QComboBox>(name); }
    QString text(const char *textEdit) const { return child<QTextEdit>(textEdit)->toPlainText(); }
    QSerialPort *port() const { return window.findChild<QSerialPort *>(); }
    /// Makes the port signal an error. @return whether it has
    bool raise(QSerialPort::SerialPortError error) const
    {
        // Without the code in front and the argument.
        const QByteArray name = QByteArray(serialPortErrorSignal() + 1).split('(').first();
        return QMetaObject::invokeMethod(port(), name.constData(),
                                         Q_ARG(QSerialPort::SerialPortError, error));
    }

    LogCapture log;
    WaitLimits limits;
    DialogWatcher dialogs;
    PseudoTerminal line;
    MainWindow window;

private:
    void reply()
    {
        if (m_reply.isEmpty()) {
            return;
        }
        const QByteArray bytes = m_reply;
        m_reply.clear();
        QTimer::singleShot(m_replyAfterMs, &line, [this, bytes] { line.send(bytes); });
    }

    QByteArray m_reply;
    int m_replyAfterMs = 0;
};
