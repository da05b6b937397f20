// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "answeringcamera.h"
#include "cameracontrol.h"
#include "exchangelog.h"
#include "faultyline.h"
#include "simulatoroptions.h"

#include <QObject>
#include <QString>

#include <memory>

class CameraLine;

/// The line of a camera as the host has it: an adapter when there is a program, otherwise a
/// pseudo-terminal.
/// @param number  1 for the first camera
std::unique_ptr<CameraLine> makeWire(const SimulatorOptions &options, int number);

/// A camera beside the first one, on a line of its own. It has its options, and a seed of its own.
class FurtherCamera : public QObject {
    Q_OBJECT

public:
    /// @param number  2 and up
    FurtherCamera(const SimulatorOptions &options, int number, QObject *parent = nullptr);
    ~FurtherCamera() override;

    /// Makes the line, if the firmware can be saved.
    /// @param error  set to the reason when the result is false; not null
    bool plug(QString *error);
    /// Obeys a command, see CameraControl.
    QString obey(const QString &command);

signals:
    /// The line is plugged now, as the pseudo-terminal of this @p name.
    void terminalPlugged(const QString &name);
    /// A line of text for the user, without a line feed.
    void printed(const QString &text);
    /// Something failed for this @p reason, and the run goes on.
    void complained(const QString &reason);

private:
    void saveFirmware(const QByteArray &firmware);
    QString cannotSave(const QString &reason) const;
    void note(const QString &text);

    QString m_firmwarePath;
    ExchangeLog m_log;
    std::unique_ptr<CameraLine> m_wire;
    FaultyLine m_line;
    AnsweringCamera m_camera;
    CameraControl m_control;
};
