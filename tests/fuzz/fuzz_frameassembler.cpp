// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

// Whatever bytes are received: FrameAssembler reports what the reference parser finds, in the same
// order, with the same byte.

#include "frameassembler.h"
#include "fuzztarget.h"
#include "referenceparser.h"
#include "require.h"

#include <cstring>

namespace {

using ReferenceParser::Event;
using ReferenceParser::Kind;

/// Compares each report with the next one that is due.
class Comparison : public FrameAssembler::Listener {
public:
    explicit Comparison(const std::vector<Event> &expected)
        : m_next(expected.data())
        , m_end(expected.data() + expected.size())
    {
    }

    void startByte(std::size_t position) { m_position = position; }
    void finish() const { require(m_next == m_end, "everything that is due is reported"); }

    void lengthReceived(quint32 length) override { take(Kind::LengthAnnounced, length); }
    void frameAccepted(std::string_view frame, quint32 length) override
    {
        const Event &event = take(Kind::FrameAccepted, length);
        require(frame.size() == event.frameSize, "a frame has the size that is due");
        require(std::memcmp(frame.data(), event.frame, frame.size()) == 0,
                "a frame has the bytes that are due");
    }
    void checksumFailed(qint32 sum) override
    {
        take(Kind::ChecksumWrong, static_cast<quint32>(sum));
    }
    void lengthRejected(quint32 length) override { take(Kind::LengthRejected, length); }

private:
    const Event &take(Kind kind, quint32 value)
    {
        require(m_next != m_end, "nothing is reported that is not due");
        const Event &event = *m_next++;
        require(kind == event.kind, "a report is of the kind that is due");
        require(value == static_cast<quint32>(event.value), "a report has the value that is due");
        require(m_position == event.position, "a report comes with the byte with which it is due");
        return event;
    }

    const Event *m_next;
    const Event *const m_end;
    std::size_t m_position = 0;
};

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static std::vector<Event> expected;
    ReferenceParser::parse(data, size, expected);

    Comparison comparison(expected);
    FrameAssembler assembler;
    for (std::size_t i = 0; i < size; ++i) {
        comparison.startByte(i);
        assembler.take(data[i], comparison);
    }
    comparison.finish();
    return 0;
}
