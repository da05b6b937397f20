// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>

/// A serial line with the camera at this end and a program, the host, at the other.
///
/// It starts unplugged.
class CameraLine : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

    /// Makes the line appear to the host.
    /// @param error  set to the reason when the result is false; not null
    virtual bool plug(QString *error) = 0;
    /// Makes the line vanish: a host that has it open is hung up on.
    virtual void unplug() = 0;
    virtual bool isPlugged() const = 0;
    /// Sends @p bytes. They are lost while the line is unplugged, while no host has it open, and
    /// when a host that has it open does not fetch what came before.
    virtual void write(const QByteArray &bytes) = 0;

signals:
    /// @p bytes came from the host.
    void bytesReceived(const QByteArray &bytes);
};
