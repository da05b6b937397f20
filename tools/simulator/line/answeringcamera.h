// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "camera.h"
#include "cameraend.h"
#include "exchangelog.h"
#include "framereader.h"
#include "linepacer.h"
#include "linetimer.h"

#include <QByteArray>
#include <QElapsedTimer>
#include <QString>
#include <QTimer>

#include <chrono>

class CameraLine;

/// Connects the camera to a line: bytes in, answers out at the speed of the line, and a line of
/// text for each of them.
class AnsweringCamera : public CameraEnd {
    Q_OBJECT

public:
    /// How it answers.
    struct Behaviour {
        int baud = 115200;                  ///< bits a second; 0 is as fast as possible
        std::chrono::milliseconds delay{0}; ///< before each reply, on top of the line's own time
        /// From the acknowledgement of a firmware's last byte to the next answer.
        std::chrono::milliseconds rebootTime{3000};
        bool silent = false; ///< as if switched off: no answers, and no request has an effect
    };

    /// @param line  not owned, must outlive this object
    AnsweringCamera(const CameraState &state, const Behaviour &behaviour, const ExchangeLog &log,
                    CameraLine &line, QObject *parent = nullptr);

    void setSilent(bool silent);
    void lineLost() override;

signals:
    /// A firmware has come in completely. Its last packet is acknowledged after this.
    void firmwareReceived(const QByteArray &firmware);

private:
    void take(const QByteArray &bytes);
    void dropPartial();
    void handle(const QVector<FrameReader::Piece> &pieces);
    void handleFrame(const QByteArray &frame);
    void noteFirmware();
    void write();
    void startReboot();
    void finishReboot();
    void note(const QString &text);
    LinePacer::Time now() const;

    Camera m_camera;
    Behaviour m_behaviour;
    ExchangeLog m_log;
    CameraLine &m_line;
    FrameReader m_reader;
    LinePacer m_pacer;
    QElapsedTimer m_clock;
    QTimer m_stallTimer;    ///< runs while part of a frame is there
    LineTimer m_writeTimer; ///< runs while replies are on their way
    QTimer m_rebootTimer;
};
