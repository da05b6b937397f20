// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "answeringcamera.h"

#include "cameraline.h"
#include "request.h"
#include "versiontext.h"

#include <QCryptographicHash>
#include <QTime>

#include <array>

namespace {

/// Between two parts of one reply, as an adapter's driver hands over what came in meanwhile.
constexpr std::chrono::milliseconds kWritePause(1);

} // namespace

AnsweringCamera::AnsweringCamera(const CameraState &state, const Behaviour &behaviour,
                                 const ExchangeLog &log, CameraLine &line, QObject *parent)
    : CameraEnd(parent)
    , m_camera(state)
    , m_behaviour(behaviour)
    , m_log(log)
    , m_line(line)
    , m_pacer(behaviour.baud)
{
    m_clock.start();
    m_stallTimer.setSingleShot(true);
    m_stallTimer.setInterval(FrameReader::kStall);
    m_rebootTimer.setSingleShot(true);
    m_rebootTimer.setTimerType(Qt::PreciseTimer);
    m_rebootTimer.setInterval(behaviour.rebootTime);
    connect(&m_stallTimer, &QTimer::timeout, this, &AnsweringCamera::dropPartial);
    connect(&m_writeTimer, &LineTimer::timeout, this, &AnsweringCamera::write);
    connect(&m_rebootTimer, &QTimer::timeout, this, &AnsweringCamera::finishReboot);
    connect(&m_line, &CameraLine::bytesReceived, this, &AnsweringCamera::take);
}

void AnsweringCamera::setSilent(bool silent)
{
    m_behaviour.silent = silent;
}

void AnsweringCamera::lineLost()
{
    dropPartial();
    m_pacer.clear();
    write();
}

void AnsweringCamera::take(const QByteArray &bytes)
{
    m_pacer.received(bytes.size(), now());
    handle(m_reader.take(bytes));
    if (m_reader.hasPartial()) {
        m_stallTimer.start();
    } else {
        m_stallTimer.stop();
    }
}

void AnsweringCamera::dropPartial()
{
    m_stallTimer.stop();
    handle(m_reader.dropPartial());
}

void AnsweringCamera::handle(const QVector<FrameReader::Piece> &pieces)
{
    for (const FrameReader::Piece &piece : pieces) {
        if (piece.kind == FrameReader::Frame) {
            handleFrame(piece.bytes);
        } else {
            emit logged(m_log.receivedFaulty(QTime::currentTime(), piece.bytes, piece.fault()));
        }
    }
    write();
}

void AnsweringCamera::handleFrame(const QByteArray &frame)
{
    const QTime time = QTime::currentTime();
    const auto request = Request::fromFrame(frame);
    if (!request) {
        emit logged(m_log.receivedFaulty(time, frame, QStringLiteral("wrong signature")));
        return;
    }
    const bool wasRebooting = m_camera.isRebooting();
    const Answer answer =
        m_behaviour.silent ? Answer::refuse(QStringLiteral("silent")) : m_camera.answer(*request);
    emit logged(m_log.received(time, frame, *request, answer.refusal));
    if (!wasRebooting && m_camera.isRebooting()) {
        noteFirmware();
    }
    for (const QByteArray &reply : answer.frames) {
        m_pacer.send(reply, now(), m_behaviour.delay);
    }
}

void AnsweringCamera::noteFirmware()
{
    const QByteArray &firmware = m_camera.firmware();
    const QByteArray hash = QCryptographicHash::hash(firmware, QCryptographicHash::Sha256);
    note(QStringLiteral("received %1 bytes of firmware, SHA-256 %2")
             .arg(QString::number(firmware.size()), QString::fromLatin1(hash.toHex())));
    emit firmwareReceived(firmware);
}

void AnsweringCamera::write()
{
    const LinePacer::Due due = m_pacer.takeDue(now());
    if (!due.bytes.isEmpty()) {
        m_line.write(due.bytes);
    }
    for (const QByteArray &frame : due.completed) {
        emit logged(m_log.sent(QTime::currentTime(), frame));
    }
    if (m_pacer.isIdle()) {
        m_writeTimer.stop();
        // Not before: what it answered last still goes out.
        if (m_camera.isRebooting() && !m_rebootTimer.isActive()) {
            startReboot();
        }
    } else {
        m_writeTimer.start(m_pacer.nextDue(now(), kWritePause) - now());
    }
}

void AnsweringCamera::startReboot()
{
    note(QStringLiteral("rebooting"));
    m_rebootTimer.start();
}

void AnsweringCamera::finishReboot()
{
    m_camera.finishReboot();
    const std::array<unsigned char, 4> &version = m_camera.state().version;
    note(QStringLiteral("running version ")
         + versionText(QByteArray(reinterpret_cast<const char *>(version.data()),
                                  static_cast<int>(version.size())),
                       0));
}

void AnsweringCamera::note(const QString &text)
{
    emit logged(m_log.notice(QTime::currentTime(), text));
}

LinePacer::Time AnsweringCamera::now() const
{
    return LinePacer::Time(m_clock.nsecsElapsed());
}
