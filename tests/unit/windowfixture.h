// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "dialogwatcher.h"
#include "logcapture.h"
#include "mainwindow.h"
#include "pseudoterminal.h"
#include "waitlimits.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QTextEdit>
#include <QTimer>

/// A main window whose chosen port is the near end of a pseudo-terminal, with the test as camera.
class WindowFixture {
public:
    // The reply of a camera of version 1.0.a.10 that tracks by panning, with target missing on
    // preset 1, upside down, without auto zoom, and with a custom zoom offset.
    static QByteArray helloReply()
    {
        return QByteArray::fromHex("ffff17410106070609051600 01000a10 03 0000 0101 0100 00 03 b4");
    }
    static QByteArray helloRequest() { return QByteArray::fromHex("ffff0a4101060706090116007f"); }

    /// @param answersDialogs  whether message boxes are answered at once, or by the test
    explicit WindowFixture(bool answersDialogs = true)
        : dialogs(answersDialogs)
    {
        auto *const ports = combo("comboBox_portlist");
        ports->addItem(line.portName() + " (test line)");
        ports->setCurrentIndex(ports->count() - 1);
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
        replyWith(helloReply());
        click("pushButton_connect");
        replyWith({});
        line.forgetReceived();
        log.clear();
        return widget("tabWidget")->isEnabled();
    }

    /// Presses a button that is enabled. Comes back when the button's slot does.
    void click(const char *button) { child<QAbstractButton>(button)->click(); }

    template <typename Type> Type *child(const char *name) const
    {
        auto *const found = window.findChild<Type *>(QLatin1String(name));
        if (found == nullptr) {
            qFatal("no widget %s", name);
        }
        return found;
    }
    QWidget *widget(const char *name) const { return child<QWidget>(name); }
    QComboBox *combo(const char *name) const { return child<QComboBox>(name); }
    QString text(const char *textEdit) const { return child<QTextEdit>(textEdit)->toPlainText(); }
    QSerialPort *port() const { return window.findChild<QSerialPort *>(); }

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
