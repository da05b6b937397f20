// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "cameraline.h"

#include <memory>

class CameraTerminal;

/// A line that the host reaches by the name of a pseudo-terminal.
class PseudoTerminalLine : public CameraLine {
    Q_OBJECT

public:
    explicit PseudoTerminalLine(QObject *parent = nullptr);
    ~PseudoTerminalLine() override;

    bool plug(QString *error) override;
    void unplug() override;
    bool isPlugged() const override;
    void write(const QByteArray &bytes) override;

    /// The device to open, such as /dev/pts/3; another one each time the line is plugged. Empty
    /// while it is not.
    QString portName() const;

private:
    std::unique_ptr<CameraTerminal> m_terminal; ///< null while unplugged
};
