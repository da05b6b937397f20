// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "recordedhost.h"

#include "printabletext.h"

#include <algorithm>
#include <iterator>

RecordedHost::RecordedHost(const QVector<LineEvent> &recording)
{
    std::copy_if(recording.begin(), recording.end(), std::back_inserter(m_events),
                 [](const LineEvent &event) { return event.kind == LineEvent::Host; });
}

QStringList RecordedHost::take(const QByteArray &bytes)
{
    QStringList differences;
    QByteArray rest = bytes;
    while (!rest.isEmpty()) {
        const bool isPastEnd = m_event == m_events.size();
        const QByteArray recorded =
            isPastEnd ? QByteArray() : m_events.at(m_event).bytes.mid(m_offset, rest.size());
        const QByteArray sent = isPastEnd ? rest : rest.left(recorded.size());
        if (sent != recorded && !m_isSaid) {
            differences << difference(sent, recorded);
            m_isSaid = true;
        }
        m_offset += sent.size();
        m_position += sent.size();
        rest.remove(0, sent.size());
        if (!isPastEnd && m_offset == m_events.at(m_event).bytes.size()) {
            ++m_event;
            m_offset = 0;
            m_isSaid = false;
        }
    }
    return differences;
}

QString RecordedHost::difference(const QByteArray &sent, const QByteArray &recorded) const
{
    const auto same = std::mismatch(sent.begin(), sent.end(), recorded.begin(), recorded.end());
    const auto offset = static_cast<int>(std::distance(sent.begin(), same.first));
    // Counted from 1, as people do.
    const QString place = QStringLiteral("from byte %1 on the host sends %2")
                              .arg(m_position + offset + 1)
                              .arg(hexadecimalText(sent.mid(offset)));
    return m_event == m_events.size() ? place + QStringLiteral(", where nothing more is recorded")
                                      : place
            + QStringLiteral(" instead of %1, recorded at %2")
                  .arg(hexadecimalText(recorded.mid(offset)),
                       Recording::timeText(m_events.at(m_event).time));
}
