// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "cameracontrol.h"
#include "childprogram.h"
#include "controlsocket.h"
#include "faultyline.h"
#include "furthercamera.h"
#include "simulatoroptions.h"
#include "terminationsignals.h"

#include <QObject>
#include <QString>

#include <csignal>
#include <memory>
#include <vector>

class CameraLine;
class RecordingLine;

/// One run of the simulator: the camera, its line, the program on the other end of that if there is
/// one, and those who may end the run.
class Simulator : public QObject {
    Q_OBJECT

public:
    explicit Simulator(const SimulatorOptions &options, QObject *parent = nullptr);
    ~Simulator() override;

    /// Makes the line and starts the program.
    /// @param error  set to the reason when the result is false; not null
    bool start(QString *error);

signals:
    /// A line of text for the user, without a line feed.
    void printed(const QString &text);
    /// Something failed for this @p reason, and the run goes on.
    void complained(const QString &reason);
    /// The run is over. To be connected as queued: it may come out of start(), and before the
    /// command that brought it about is answered.
    /// @param fault  why it was not successful, if not already said by the program; or empty
    void finished(int exitCode, const QString &fault);

private:
    bool makeLine(QString *error);
    bool makeCamera(QString *error);
    bool makeFurtherCameras(QString *error);
    bool makeAnsweringCamera(QString *error);
    bool makeReplayingCamera(QString *error);
    bool makeForwardingCamera(QString *error);
    void saveFirmware(const QByteArray &firmware);
    QString cannotSave(const QString &reason) const;
    QString obey(const QString &command);
    void printPort(const QString &name);
    void note(const QString &text);
    void noteFailure(const QString &reason);
    void end(int signalNumber);

    TerminationSignals m_signals; ///< before all that has to be tidied up
    SimulatorOptions m_options;
    ExchangeLog m_log;
    std::unique_ptr<CameraLine> m_wire;             ///< the line as the host has it
    std::unique_ptr<RecordingLine> m_recordingLine; ///< null when nothing is recorded
    std::unique_ptr<FaultyLine> m_faultyLine;       ///< as the camera has it; null before start()
    std::unique_ptr<CameraEnd> m_camera;            ///< null before start()
    std::unique_ptr<CameraControl> m_cameraControl; ///< null before start()
    std::vector<std::unique_ptr<FurtherCamera>> m_furtherCameras;
    ChildProgram m_program;
    ControlSocket m_control;
};
