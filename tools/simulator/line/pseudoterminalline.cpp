// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "pseudoterminalline.h"

#include "cameraterminal.h"

PseudoTerminalLine::PseudoTerminalLine(QObject *parent)
    : CameraLine(parent)
{
}

PseudoTerminalLine::~PseudoTerminalLine() = default;

bool PseudoTerminalLine::plug(QString *error)
{
    m_terminal = CameraTerminal::create(error);
    if (m_terminal == nullptr) {
        return false;
    }
    connect(m_terminal.get(), &CameraTerminal::bytesReceived, this, &CameraLine::bytesReceived);
    return true;
}

void PseudoTerminalLine::unplug()
{
    m_terminal.reset();
}

bool PseudoTerminalLine::isPlugged() const
{
    return m_terminal != nullptr;
}

void PseudoTerminalLine::write(const QByteArray &bytes)
{
    if (m_terminal != nullptr) {
        m_terminal->write(bytes);
    }
}

QString PseudoTerminalLine::portName() const
{
    return m_terminal != nullptr ? m_terminal->hostPath() : QString();
}
