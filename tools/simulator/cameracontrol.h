// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QObject>
#include <QString>

class CameraEnd;
class CameraLine;
class FaultyLine;

/// Plugs, unplugs and disturbs one camera, as a control socket, a recording or a fault demands.
class CameraControl : public QObject {
    Q_OBJECT

public:
    /// The line and the camera must outlive this object.
    /// @param wire  the line as the host has it
    /// @param line  the same with faults, as the camera has it
    /// @param seed  of faults that are demanded without one
    CameraControl(CameraLine &wire, FaultyLine &line, CameraEnd &camera, quint32 seed,
                  QObject *parent = nullptr);

    /// @param error  set to the reason when the result is false; not null
    bool plug(QString *error);

    /// Obeys a command such as "unplug"; controlHelp() lists them.
    /// @return why it could not, or an empty text
    QString obey(const QString &command);

signals:
    /// The line is plugged now, as the pseudo-terminal of this @p name.
    void terminalPlugged(const QString &name);
    /// Something happened to the line or the camera, such as "unplugged".
    void noted(const QString &text);
    /// The line could not be plugged when it was due.
    void failed(const QString &reason);

private:
    void plugIfNot();
    void unplugIfPlugged();
    void lineLost();
    QString setFaults(const QString &planAndSeed);
    QString setSilent(bool silent);

    CameraLine &m_wire;
    FaultyLine &m_line;
    CameraEnd &m_camera;
    quint32 m_seed;
};
