// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QObject>
#include <QSocketNotifier>

#include <chrono>

/// A single shot to the microsecond: QTimer counts whole milliseconds, in which the line moves a
/// dozen bytes.
class LineTimer : public QObject {
    Q_OBJECT

public:
    explicit LineTimer(QObject *parent = nullptr);
    LineTimer(const LineTimer &) = delete;
    LineTimer &operator=(const LineTimer &) = delete;
    ~LineTimer() override;

    /// Emits timeout() once, @p time from now, and at once if that is not positive. Replaces what
    /// was started before.
    void start(std::chrono::nanoseconds time);
    void stop();

signals:
    void timeout();

private:
    int m_descriptor;
    QSocketNotifier m_notifier;
};
