// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "cameraline.h"
#include "recording.h"

#include <QElapsedTimer>
#include <QFile>
#include <QString>

#include <memory>

/// A line that passes everything on to another one, and keeps what happens on that in a file.
///
/// Each event is written at once, so that it outlives a crash of this process. Bytes that are
/// written to an unplugged line have not passed and are not kept. That no program has the line open
/// cannot be seen from here: what is written then is kept.
class RecordingLine : public CameraLine {
    Q_OBJECT

public:
    /// Starts a recording. The time in it counts from its first event.
    /// @param line   not owned, must outlive the result
    /// @param path   of the file to make; one that exists is left alone
    /// @param error  set to the reason when the result is null; not null
    static std::unique_ptr<RecordingLine> create(CameraLine &line, const QString &path,
                                                 QString *error);

    bool plug(QString *error) override;
    void unplug() override;
    bool isPlugged() const override;
    void write(const QByteArray &bytes) override;

signals:
    /// The file cannot be written any more, for that @p reason, and ends with the event before.
    void failed(const QString &reason);

private:
    RecordingLine(CameraLine &line, const QString &path);

    void keep(LineEvent::Kind kind, const QByteArray &bytes = {});
    bool append(const QByteArray &text);

    CameraLine &m_line;
    QFile m_file; ///< closed once writing has failed
    QElapsedTimer m_clock;
};
