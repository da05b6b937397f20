// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

// Whatever is to be sent: the frame that UARTFrame builds has every byte in its place, and
// FrameAssembler takes it for one frame, unless it has two FF inside.

#include "frameassembler.h"
#include "fuzztarget.h"
#include "require.h"
#include "uartframe.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace {

/// The request that an input describes: type, command, parameter and a flag for a missing payload,
/// one byte each, then the payload.
struct Request {
    unsigned char type = 0;
    unsigned char command = 0;
    unsigned char parameter = 0;
    const unsigned char *payload = nullptr;
    unsigned char length = 0;
};

constexpr std::size_t kFields = 4;

Request requestFrom(const std::uint8_t *data, std::size_t size)
{
    Request request;
    request.type = data[0];
    request.command = data[1];
    request.parameter = data[2];
    request.payload = data[3] == 0xEE ? nullptr : data + kFields;
    request.length = static_cast<unsigned char>(std::min<std::size_t>(size - kFields, 255));
    return request;
}

void checkBytes(const unsigned char *frame, std::size_t size, const Request &request)
{
    static constexpr std::array<unsigned char, 6> kFixed{0x41, 0x01, 0x06, 0x07, 0x06, 0x09};
    require(size == 13U + request.length, "a frame is 13 bytes longer than its payload");
    require(frame[0] == 0xFF && frame[1] == 0xFF, "a frame starts with FF FF");
    require(frame[2] == request.length + 10, "the length byte counts what follows it");
    require(std::equal(kFixed.begin(), kFixed.end(), frame + 3), "the signature follows");
    require(frame[9] == request.type, "byte 9 is the type");
    require(frame[10] == request.command, "byte 10 is the command");
    require(frame[11] == request.parameter, "byte 11 is the parameter");
    require(request.length == 0 || std::memcmp(frame + 12, request.payload, request.length) == 0,
            "the payload starts at byte 12");

    // The signature's bytes add up to 94.
    unsigned int sum = 94U + request.type + request.command + request.parameter + frame[2];
    for (unsigned int i = 0; i < request.length; ++i) {
        sum += request.payload[i];
    }
    require(frame[size - 1] == sum % 256, "the checksum ends it");
}

/// Keeps the frames that are accepted.
class Receiver : public FrameAssembler::Listener {
public:
    void lengthReceived(quint32) override { ++lengths; }
    void frameAccepted(std::string_view frame, quint32) override
    {
        ++frames;
        last = QByteArray(frame.data(), static_cast<int>(frame.size()));
    }
    void checksumFailed(qint32) override { ++failures; }
    void lengthRejected(quint32) override { ++failures; }

    int lengths = 0;
    int frames = 0;
    int failures = 0;
    QByteArray last;
};

/// Whether two FF are where a receiver cannot but take them for the next header: the byte after
/// them belongs to the frame too, and is not yet its checksum.
bool isCutShort(const unsigned char *frame, std::size_t size)
{
    constexpr unsigned char kHeaderByte = 0xFF;
    const unsigned char *const end = frame + size - 2;
    return std::search_n(frame + 3, end, 2, kHeaderByte) != end;
}

void checkReception(const unsigned char *frame, std::size_t size)
{
    Receiver receiver;
    FrameAssembler assembler;
    for (std::size_t i = 0; i < size; ++i) {
        assembler.take(frame[i], receiver);
    }
    if (isCutShort(frame, size)) {
        require(receiver.lengths > 1, "FF FF inside a frame announces another one");
        return;
    }
    require(receiver.frames == 1 && receiver.failures == 0, "what was built is accepted, once");
    require(static_cast<std::size_t>(receiver.last.size()) == size - 1
                && std::memcmp(receiver.last.constData(), frame, size - 1) == 0,
            "what is accepted is what was built, without its checksum");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    if (size < kFields) {
        return 0;
    }
    const Request request = requestFrom(data, size);
    const std::optional<QByteArray> frame =
        UARTFrame::build(static_cast<UARTCommunicationType_t>(request.type), request.command,
                         request.parameter, request.payload, request.length);
    const bool isPossible =
        request.length <= 128 && (request.length == 0 || request.payload != nullptr);
    require(frame.has_value() == isPossible, "a payload that is too long or missing is refused");
    if (frame) {
        const auto *const bytes = reinterpret_cast<const unsigned char *>(frame->constData());
        const auto frameSize = static_cast<std::size_t>(frame->size());
        checkBytes(bytes, frameSize, request);
        checkReception(bytes, frameSize);
    }
    return 0;
}
