// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QObject>
#include <QSocketNotifier>

/// The standard output, which never keeps the program waiting: a terminal that is held with Ctrl+S,
/// or a reader that has stopped reading, must not stop an upload.
class Output : public QObject {
    Q_OBJECT

public:
    explicit Output(QObject *parent = nullptr);
    ~Output() override;

    /// Writes as much as goes at once, and the rest as soon as possible.
    void write(const QByteArray &bytes);
    /// Whether something is still to be written.
    bool isBehind() const { return !m_pending.isEmpty(); }
    /// Waits until all is written.
    /// @return false when the output has failed
    bool finish();

signals:
    /// Nothing can be written any more. It has been said on the standard error.
    void failed();

private:
    void writePending(bool untilAllIsWritten);

    const int m_descriptor;
    QByteArray m_pending;
    QSocketNotifier m_notifier;
    bool m_hasFailed = false;
};
