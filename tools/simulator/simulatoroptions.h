// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "answeringcamera.h"
#include "camera.h"
#include "commandline.h"
#include "faultplan.h"

#include <QString>
#include <QStringList>

#include <variant>

/// What the command line asks for.
struct SimulatorOptions {
    CameraState camera;
    AnsweringCamera::Behaviour behaviour;
    QString program;       ///< empty: a pseudo-terminal instead of an adapter and a program
    QStringList arguments; ///< of the program
    QString portName = QStringLiteral("ttyUSB0"); ///< of the adapter
    QString controlPath;                          ///< empty: no control socket
    QString firmwarePath;                         ///< where to save a firmware; empty: nowhere
    FaultPlan faults;                             ///< on the line
    quint32 seed = 0;                             ///< of the faults' random numbers
    QString recordingPath;                        ///< of the file to record in; empty: none
    QString throughPort; ///< a real port with the camera to use; empty: none
    QString replayPath;  ///< of a recording to play instead of the camera; empty: none
    int cameras = 1;     ///< each with a port of its own
    bool withHex = false;
    bool quiet = false;
};

/// The commands of the control socket, one a line.
QString controlHelp();

/// Reads the command line.
/// @param arguments  with the program's name in front
std::variant<SimulatorOptions, Information, UsageError>
parseCommandLine(const QStringList &arguments);
