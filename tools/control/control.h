// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "camerajob.h"
#include "controlcommand.h"
#include "jsonreport.h"
#include "output.h"
#include "serialline.h"
#include "terminaldisplay.h"
#include "terminationsignals.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <memory>
#include <vector>

/// One run of the program, from the ports to the exit code.
class Control : public QObject {
    Q_OBJECT

public:
    explicit Control(const ControlCommand &command, QObject *parent = nullptr);

    void start();

signals:
    /// The run is over. To be connected as queued: it may come out of start().
    void finished(int exitCode);

private:
    /// A camera, or a port where one may be.
    struct Camera {
        PortDescription port;
        std::unique_ptr<SerialLine> line;
        std::unique_ptr<CameraJob> job; ///< null when the port could not be used
        CameraResult result;            ///< once it has ended
    };

    bool readFile();
    bool readImage();
    bool readSettings();
    bool canSave();
    bool findPorts();
    void openPorts();
    void refuseSharedPorts(QVector<PortFinding> *findings);
    void startJobs(const QVector<PortFinding> &findings);
    void follow(Camera &camera);
    void save(Camera &camera);
    void handleSignal(int number);
    void endWhenNothingIsUploading(int exitCode);
    void endIfDue();
    void abandon();
    bool isUploading() const;
    int uploadCount() const;
    void showProgress();
    void redraw();
    void draw();
    void note(const QString &text);
    void complainAbout(const QString &text);
    bool isShown(const Camera &camera) const;
    void finish();
    RunSummary summary() const;
    void report(const Camera &camera);
    void refuse(int exitCode, const QString &reason);

    CameraOrder m_order;
    const ControlCommand &m_command; ///< that of the order
    std::vector<Camera> m_cameras;
    int m_running = 0; ///< jobs
    Output m_output;
    bool m_isTerminal; ///< with lines that are redrawn in place
    TerminalDisplay m_display;
    bool m_isDirty = false; ///< the lines show something old
    QTimer m_displayTimer;
    QElapsedTimer m_interrupted; ///< since the first Ctrl+C
    int m_endCode =
        0; ///< with which to end as soon as nothing is uploading; 0 when that is not due
    bool m_isFinished = false;
    TerminationSignals m_signals;
};
