// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "recordingline.h"

#include <QDateTime>

#include <chrono>

std::unique_ptr<RecordingLine> RecordingLine::create(CameraLine &line, const QString &path,
                                                     QString *error)
{
    std::unique_ptr<RecordingLine> recording(new RecordingLine(line, path));
    QFile &file = recording->m_file;
    const auto refuse = [&](const QString &reason) {
        *error = QStringLiteral("cannot record in %1: %2").arg(path, reason);
        return nullptr;
    };
    if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered)) {
        return refuse(file.exists() ? QStringLiteral("it exists, and what is in it would be lost")
                                    : file.errorString());
    }
    const QString time = QDateTime::currentDateTime().toOffsetFromUtc(0).toString(Qt::ISODate);
    if (!recording->append(Recording::header() + "# started " + time.toUtf8() + '\n')) {
        const QString reason = file.errorString();
        file.remove();
        return refuse(reason);
    }
    return recording;
}

RecordingLine::RecordingLine(CameraLine &line, const QString &path)
    : m_line(line)
    , m_file(path)
{
    connect(&m_line, &CameraLine::bytesReceived, this, [this](const QByteArray &bytes) {
        // Before the camera answers them.
        keep(LineEvent::Host, bytes);
        emit bytesReceived(bytes);
    });
}

bool RecordingLine::plug(QString *error)
{
    if (!m_line.plug(error)) {
        return false;
    }
    keep(LineEvent::Plugged);
    return true;
}

void RecordingLine::unplug()
{
    if (m_line.isPlugged()) {
        m_line.unplug();
        keep(LineEvent::Unplugged);
    }
}

bool RecordingLine::isPlugged() const
{
    return m_line.isPlugged();
}

void RecordingLine::write(const QByteArray &bytes)
{
    if (!bytes.isEmpty() && m_line.isPlugged()) {
        keep(LineEvent::Camera, bytes);
        m_line.write(bytes);
    }
}

void RecordingLine::keep(LineEvent::Kind kind, const QByteArray &bytes)
{
    if (!m_file.isOpen()) {
        return;
    }
    std::chrono::nanoseconds elapsed(0);
    if (m_clock.isValid()) {
        elapsed = std::chrono::nanoseconds(m_clock.nsecsElapsed());
    } else {
        m_clock.start();
    }
    const auto time = std::chrono::duration_cast<std::chrono::microseconds>(elapsed);
    const qint64 sizeBefore = m_file.pos();
    if (append(Recording::line({time, kind, bytes}))) {
        return;
    }
    const QString reason = QStringLiteral("cannot go on recording in %1: %2")
                               .arg(m_file.fileName(), m_file.errorString());
    // Half an event would be refused when the recording is read.
    m_file.resize(sizeBefore);
    m_file.close();
    emit failed(reason);
}

bool RecordingLine::append(const QByteArray &text)
{
    // What does not fit completely is written in part, and only the next attempt says why.
    qint64 written = 0;
    while (written < text.size()) {
        const qint64 count = m_file.write(text.constData() + written, text.size() - written);
        if (count <= 0) {
            return false;
        }
        written += count;
    }
    return true;
}
