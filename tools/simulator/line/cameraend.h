// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QObject>
#include <QString>

/// What is at the camera's end of a line: the simulated camera, or what plays its part.
class CameraEnd : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

    /// The line has been plugged for the first time.
    virtual void start() {}
    /// The line is gone, and with it whatever was on its way.
    virtual void lineLost() = 0;

signals:
    /// One line of the log, without a line feed.
    void logged(const QString &text);
    /// The line is to be plugged now, if it is not.
    void plugDue();
    /// The line is to be unplugged now, if it is plugged.
    void unplugDue();
};
