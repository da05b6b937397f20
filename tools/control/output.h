// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "terminaldisplay.h"

#include <QByteArray>
#include <QObject>

#include <memory>
#include <optional>

/// The standard output, which never keeps the program waiting: a terminal that is held with Ctrl+S,
/// or a reader that has stopped reading, must not stop an upload.
class Output : public QObject {
    Q_OBJECT

public:
    explicit Output(QObject *parent = nullptr);
    ~Output() override;

    /// The terminal at this moment; nothing when it is no terminal with lines that can be redrawn.
    static std::optional<TerminalDisplay::Screen> screen();

    /// Writes as much as goes at once, and the rest as soon as possible.
    void write(const QByteArray &bytes);
    /// Whether something is still to be written.
    bool isBehind() const;
    /// Waits until all is written.
    /// @return false when the output has failed
    bool finish();

signals:
    /// Nothing can be written any more. It has been said on the standard error.
    void failed();

private:
    class Writer;
    std::unique_ptr<Writer> m_writer;
};
