// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QString>
#include <QVector>

#include <chrono>
#include <optional>

/// Something that happened on a line.
struct LineEvent {
    enum Kind {
        Plugged,
        Unplugged,
        Host,   ///< bytes came from the host
        Camera, ///< bytes went to the host
    };
    std::chrono::microseconds time{0}; ///< since the start of the recording
    Kind kind = Plugged;
    QByteArray bytes; ///< of Host and Camera: at least one; of the others: none
};

/// The text in which a recording of a line is kept, made to be read and edited by people:
///
///     # Corvane line recording 1
///     0.000000 plugged
///     1.203451 host   FF FF 0A 41 01 06 07 06 09 01 16 00 7F
///     1.204702 camera FF FF 17 41
///     9.000210 unplugged
///
/// One event a line: the seconds since the start, what happened, and the bytes in hexadecimal.
/// Anything may follow a #.
namespace Recording {

/// The line that each recording starts with, and that names the format; with a line feed.
QByteArray header();

/// The time as written in a line, such as 1.203451.
QString timeText(std::chrono::microseconds time);

/// @p event as a line, with a line feed.
QByteArray line(const LineEvent &event);

/// Reads a whole recording.
///
/// Times may have fewer than six decimals and hexadecimal digits may be small. Nothing passes while
/// the line is unplugged, and it starts plugged, also where no event says so.
/// A byte-order mark is skipped. A last line without a line feed was cut off when the computer
/// failed: it is left out if it makes no sense.
/// @param error  set to the number of the first bad line and what is expected there when the result
///               is nothing, and to what was left out otherwise; not null
/// @return the events in their order, which is that of their times
std::optional<QVector<LineEvent>> parse(const QByteArray &text, QString *error);

} // namespace Recording
