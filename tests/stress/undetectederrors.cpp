// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "stresstests.h"

#include "frameassembler.h"
#include "randomfirmware.h"
#include "uartframe.h"

#include <QRandomGenerator>

#include <algorithm>
#include <array>
#include <cmath>

namespace {

constexpr int kFirstHit = UARTFrame::kLengthOffset + 1;
constexpr int kBits = 8;

/// Notices when a frame of the right length is accepted. An error that makes FF FF can make
/// another, shorter one of what follows it; that is no undetected error in this one.
class Acceptance : public FrameAssembler::Listener {
public:
    explicit Acceptance(int size)
        : m_size(size)
    {
    }
    void lengthReceived(quint32 length) override { Q_UNUSED(length) }
    void frameAccepted(std::string_view frame, quint32 length) override
    {
        Q_UNUSED(length)
        // It comes without its checksum.
        hasAccepted = hasAccepted || static_cast<int>(frame.size()) + 1 == m_size;
    }
    void checksumFailed(qint32 sum) override { Q_UNUSED(sum) }
    void lengthRejected(quint32 length) override { Q_UNUSED(length) }

    bool hasAccepted = false;

private:
    int m_size; ///< bytes
};

bool isAccepted(const QByteArray &frame)
{
    FrameAssembler assembler;
    Acceptance acceptance(frame.size());
    for (const char byte : frame) {
        assembler.take(static_cast<unsigned char>(byte), acceptance);
    }
    return acceptance.hasAccepted;
}

int randomOffset(const QByteArray &frame, QRandomGenerator &random, int bytes = 1)
{
    return kFirstHit + random.bounded(frame.size() - kFirstHit - bytes + 1);
}

void flip(QByteArray &frame, int bit)
{
    char &byte = frame.data()[kFirstHit + bit / kBits];
    byte = static_cast<char>(byte ^ (1 << (bit % kBits)));
}

void flipTwoBits(QByteArray &frame, QRandomGenerator &random)
{
    const int bits = (frame.size() - kFirstHit) * kBits;
    const int first = random.bounded(bits);
    const int other = random.bounded(bits - 1);
    flip(frame, first);
    flip(frame, other < first ? other : other + 1);
}

void flipOneBit(QByteArray &frame, QRandomGenerator &random)
{
    flip(frame, random.bounded((frame.size() - kFirstHit) * kBits));
}

template <int Bytes> void overwrite(QByteArray &frame, QRandomGenerator &random)
{
    const int offset = randomOffset(frame, random, Bytes);
    frame.replace(offset, Bytes, randomFirmware(Bytes, random));
}

void swapNeighbours(QByteArray &frame, QRandomGenerator &random)
{
    const int offset = randomOffset(frame, random, 2);
    std::swap(frame.data()[offset], frame.data()[offset + 1]);
}

struct ErrorClass {
    const char *name;
    void (*apply)(QByteArray &, QRandomGenerator &);
};

constexpr std::array<ErrorClass, 7> kClasses{{
    {"one bit", &flipOneBit},
    {"one byte", &overwrite<1>},
    {"two bits", &flipTwoBits},
    {"burst of 2 bytes", &overwrite<2>},
    {"burst of 4 bytes", &overwrite<4>},
    {"burst of 8 bytes", &overwrite<8>},
    {"neighbouring bytes swapped", &swapNeighbours},
}};

QByteArray randomFrame(int payloadSize, QRandomGenerator &random)
{
    const QByteArray payload = randomFirmware(payloadSize, random);
    return *UARTFrame::build(UART_COMM_TYPE_ACK, UART_CTRL_CMD_UPLOAD_FIRMWARE, 0,
                             reinterpret_cast<const unsigned char *>(payload.constData()),
                             static_cast<unsigned char>(payloadSize));
}

// Two bits in different bytes cancel out in the sum when they are in the same place and one rises
// while the other falls, which is every second such pair; in the highest place every pair does.
double twoBitShare(int payloadSize)
{
    const double bytes = UARTFrame::kSizeWithoutPayload + payloadSize - kFirstHit;
    const double pairsOfBytes = bytes * (bytes - 1) / 2;
    const double bits = bytes * kBits;
    return pairsOfBytes * ((kBits - 1) / 2.0 + 1) / (bits * (bits - 1) / 2);
}

void measure(Tally &tally, const char *frameName, int payloadSize, const StressOptions &options)
{
    constexpr double kPercent = 100;
    for (const ErrorClass &errorClass : kClasses) {
        QRandomGenerator random(options.seed);
        int tried = 0;
        int passed = 0;
        while (tried < options.count) {
            const QByteArray frame = randomFrame(payloadSize, random);
            QByteArray hit = frame;
            errorClass.apply(hit, random);
            // Random bytes may be what was there; FF FF in it takes the sound frame apart as well.
            if (hit == frame || !isAccepted(frame)) {
                continue;
            }
            ++tried;
            passed += isAccepted(hit) ? 1 : 0;
        }
        tally.remark(QStringLiteral("%1  %2 %3 of %4 passed, %5 %")
                         .arg(QLatin1String(frameName), -16)
                         .arg(QLatin1String(errorClass.name), -28)
                         .arg(passed, 8)
                         .arg(tried)
                         .arg(kPercent * passed / tried, 0, 'f', 3));
    }
    tally.remark(QStringLiteral("%1  expected of random content: two bits %2 %, bursts %3 %")
                     .arg(QLatin1String(frameName), -16)
                     .arg(kPercent * twoBitShare(payloadSize), 0, 'f', 3)
                     .arg(kPercent / 256, 0, 'f', 3));
}

// What it means for a firmware of 1 MiB when bits are wrong independently of each other.
void extrapolate(Tally &tally, double bitErrorRate)
{
    constexpr double kPackets = 8192;
    constexpr double kPacketBits = kBits * UARTFrame::kMaximumSize;
    constexpr double kAcknowledgementBits = kBits * UARTFrame::kSizeWithoutPayload;
    const double hitBits = kPacketBits - kBits * kFirstHit;
    const double complete =
        std::exp(-bitErrorRate * kPackets * (kPacketBits + kAcknowledgementBits));
    const double wrong = kPackets * hitBits * (hitBits - 1) / 2 * bitErrorRate * bitErrorRate
        * twoBitShare(UARTFrame::kMaximumPayloadSize);
    tally.remark(QStringLiteral("1 MiB at a bit error rate of %1: %2 of uploads come to their end, "
                                "%3 of those with a wrong byte")
                     .arg(bitErrorRate, 0, 'e', 0)
                     .arg(complete, 0, 'g', 3)
                     .arg(wrong, 0, 'g', 2));
}

} // namespace

Tally undetectedErrorsTest(const StressOptions &options)
{
    Tally tally;
    measure(tally, "firmware packet", UARTFrame::kMaximumPayloadSize, options);
    measure(tally, "acknowledgement", 0, options);
    for (const double bitErrorRate : {1e-9, 1e-8, 1e-7, 1e-6}) {
        extrapolate(tally, bitErrorRate);
    }
    return tally;
}
