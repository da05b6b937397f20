// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "faultyframe.h"

#include "printabletext.h"
#include "seededrandom.h"
#include "uartframe.h"

#include <utility>

namespace {

constexpr int kByteValues = 256;
constexpr int kHeaderByte = UARTFrame::kHeaderByte;

QString hexadecimalText(int byte)
{
    return hexadecimalText(QByteArray(1, static_cast<char>(byte)));
}

} // namespace

FaultyFrame::FaultyFrame(QByteArray frame, QByteArray previous, SeededRandom &random)
    : m_frame(std::move(frame))
    , m_previous(std::move(previous))
    , m_random(random)
{
}

bool FaultyFrame::isSilent() const
{
    return m_isSilent;
}

QString FaultyFrame::apply(const Fault &fault)
{
    const FaultKind &kind = FaultKind::of(fault.kind);
    const auto value = fault.value ? fault.value : kind.fallback;
    if (kind.actsAtByte) {
        const auto byte = chooseByte(fault);
        const int last = m_frame.size() - (fault.kind == Fault::Swap ? 2 : 1);
        if (!byte || *byte > last) {
            return QStringLiteral("too short for %1").arg(QString::fromLatin1(kind.name));
        }
        return applyAtByte(fault.kind, *byte, value);
    }
    switch (fault.kind) {
    case Fault::WrongLength:
        return setLength(value);
    case Fault::WrongSum:
    case Fault::WrongCommand:
    case Fault::ForeignType:
    case Fault::WrongParameter:
        return applyToFields(fault.kind, *value);
    case Fault::Drop:
    case Fault::Duplicate:
    case Fault::Noise:
    case Fault::FfRun:
    case Fault::HalfFrame:
    case Fault::Stale:
    case Fault::Trail:
        return applyAround(fault.kind, *value);
    default:
        return applyToTime(fault.kind, *value);
    }
}

QVector<Delivery> FaultyFrame::deliveries() const
{
    if (m_isSilent) {
        return {};
    }
    QVector<Delivery> result{{m_ahead, m_delay, false, false, m_standstill}};
    const auto add = [&result, this](const QByteArray &bytes, Milliseconds pause) {
        // What is to wait for the next frame has no pauses inside.
        if (pause == Milliseconds::zero() || m_wait) {
            result.last().bytes += bytes;
        } else if (result.size() == 1 && result.first().bytes.isEmpty()) {
            result.first().bytes = bytes;
            result.first().pause += pause;
        } else {
            result.append({bytes, pause, false, false, Milliseconds::zero()});
        }
    };
    for (int i = 0; i < m_frame.size() && i != m_hangUpByte; ++i) {
        add(m_frame.mid(i, 1), m_pauses.value(i) + (i > 0 ? m_spacing : Milliseconds::zero()));
    }
    if (m_hangUpByte) {
        result.append({{}, m_hangUpPause, true, false, Milliseconds::zero()});
        return result;
    }
    for (const Delivery &delivery : m_behind) {
        add(delivery.bytes, delivery.pause);
    }
    if (m_wait) {
        result.last().pause += *m_wait;
        result.last().awaitsNext = true;
    }
    const bool isNothing = result.size() == 1 && result.first().bytes.isEmpty()
        && m_standstill == Milliseconds::zero();
    return isNothing ? QVector<Delivery>() : result;
}

// A random byte is one where the fault makes a difference.
std::optional<int> FaultyFrame::chooseByte(const Fault &fault)
{
    if (fault.place.byte) {
        return fault.place.byte;
    }
    const bool isInside =
        fault.kind == Fault::Truncate || fault.kind == Fault::Gap || fault.kind == Fault::HangUp;
    QVector<int> candidates;
    for (int i = isInside ? 1 : 0; i < m_frame.size(); ++i) {
        const bool isEqualPair = i + 1 >= m_frame.size() || m_frame.at(i) == m_frame.at(i + 1);
        if (fault.kind != Fault::Swap || !isEqualPair) {
            candidates.append(i);
        }
    }
    if (candidates.isEmpty()) {
        return std::nullopt;
    }
    return candidates.at(m_random.below(candidates.size()));
}

QString FaultyFrame::applyAtByte(Fault::Kind kind, int byte, std::optional<int> value)
{
    switch (kind) {
    case Fault::DropByte:
        return dropByte(byte);
    case Fault::InsertByte:
        return insertByte(byte, value ? *value : m_random.below(kByteValues));
    case Fault::Corrupt:
        return changeByte(QStringLiteral("corrupted"), byte,
                          value ? *value : m_random.between(1, kByteValues - 1));
    case Fault::Flip: {
        const int bit = value ? *value : m_random.below(8);
        return changeByte(QStringLiteral("flipped bit %1 of").arg(bit), byte, 1 << bit);
    }
    case Fault::Burst:
        return burst(byte, *value);
    case Fault::Swap:
        return swap(byte);
    case Fault::Truncate:
        m_frame.truncate(byte);
        return QStringLiteral("cut off from byte %1 on").arg(byte);
    case Fault::Gap:
        m_pauses[byte] += Milliseconds(*value);
        return QStringLiteral("paused for %1 ms before byte %2").arg(*value).arg(byte);
    default: // HangUp, the only other one that acts at a byte
        m_hangUpByte = byte;
        m_hangUpPause = Milliseconds(*value);
        return QStringLiteral("hung up before byte %1").arg(byte);
    }
}

QString FaultyFrame::applyToFields(Fault::Kind kind, int value)
{
    switch (kind) {
    case Fault::WrongCommand:
        return setField(QStringLiteral("command"), UARTFrame::kCommandOffset, value, true);
    case Fault::ForeignType:
        return setField(QStringLiteral("type"), UARTFrame::kTypeOffset, value, true);
    case Fault::WrongParameter:
        return setField(QStringLiteral("parameter byte"), UARTFrame::kParameterOffset,
                        byteAt(UARTFrame::kParameterOffset) + 1, true);
    default: // WrongSum
        return setField(QStringLiteral("checksum"), m_frame.size() - 1,
                        byteAt(m_frame.size() - 1) + value, false);
    }
}

QString FaultyFrame::applyAround(Fault::Kind kind, int value)
{
    switch (kind) {
    case Fault::Drop:
        m_frame.clear();
        return QStringLiteral("dropped");
    case Fault::Duplicate:
        return duplicate(value);
    case Fault::Noise: {
        const QByteArray bytes = noise(value);
        m_ahead += bytes;
        return QStringLiteral("put noise before it, ") + hexadecimalText(bytes);
    }
    case Fault::FfRun:
        m_ahead += QByteArray(value, static_cast<char>(kHeaderByte));
        return QStringLiteral("put %1 bytes of FF before it").arg(value);
    case Fault::HalfFrame:
        m_ahead += m_frame.left(m_frame.size() / 2);
        return QStringLiteral("put its first %1 bytes before it").arg(m_frame.size() / 2);
    case Fault::Stale:
        m_ahead += m_previous;
        return m_previous.isEmpty() ? QStringLiteral("no previous frame to put before it")
                                    : QStringLiteral("put the previous frame before it");
    default: { // Trail
        const QByteArray bytes = noise(value);
        addBehind(bytes, Milliseconds::zero());
        return QStringLiteral("put noise after it, ") + hexadecimalText(bytes);
    }
    }
}

QString FaultyFrame::applyToTime(Fault::Kind kind, int value)
{
    const Milliseconds time(value);
    switch (kind) {
    case Fault::Split:
        m_spacing = time;
        return QStringLiteral("sent byte by byte, %1 ms apart").arg(value);
    case Fault::Join:
        m_wait = time;
        return QStringLiteral("held back for the next one, at most %1 ms").arg(value);
    case Fault::Pause:
        m_standstill += time;
        return QStringLiteral("line at a standstill for %1 ms").arg(value);
    case Fault::Silence:
        m_isSilent = true;
        return QStringLiteral("silence from here on");
    default: // Delay, Late
        m_delay += time;
        return QStringLiteral("delayed by %1 ms").arg(value);
    }
}

QString FaultyFrame::dropByte(int byte)
{
    const int old = byteAt(byte);
    m_frame.remove(byte, 1);
    return QStringLiteral("dropped byte %1, %2").arg(QString::number(byte), hexadecimalText(old));
}

QString FaultyFrame::insertByte(int byte, int value)
{
    m_frame.insert(byte, static_cast<char>(value));
    return QStringLiteral("inserted %1 before byte %2")
        .arg(hexadecimalText(value), QString::number(byte));
}

QString FaultyFrame::changeByte(const QString &what, int byte, int mask)
{
    const int old = byteAt(byte);
    m_frame[byte] = static_cast<char>(old ^ mask);
    return QStringLiteral("%1 byte %2, %3 became %4")
        .arg(what, QString::number(byte), hexadecimalText(old), hexadecimalText(byteAt(byte)));
}

QString FaultyFrame::burst(int byte, int count)
{
    const QByteArray old = m_frame.mid(byte, count);
    for (int i = byte; i < byte + old.size(); ++i) {
        m_frame[i] = static_cast<char>(byteAt(i) ^ m_random.between(1, kByteValues - 1));
    }
    return QStringLiteral("replaced %1 bytes from byte %2 on, %3 became %4")
        .arg(QString::number(old.size()), QString::number(byte), hexadecimalText(old),
             hexadecimalText(m_frame.mid(byte, old.size())));
}

QString FaultyFrame::swap(int byte)
{
    const QByteArray old = m_frame.mid(byte, 2);
    m_frame[byte] = old.at(1);
    m_frame[byte + 1] = old.at(0);
    return QStringLiteral("swapped bytes %1 and %2, %3")
        .arg(QString::number(byte), QString::number(byte + 1), hexadecimalText(old));
}

QString FaultyFrame::setField(const QString &name, int offset, int value, bool withChecksum)
{
    if (m_frame.size() < UARTFrame::kSizeWithoutPayload) {
        return QStringLiteral("too short to change the ") + name;
    }
    const int old = byteAt(offset);
    m_frame[offset] = static_cast<char>(value);
    if (withChecksum) {
        m_frame[m_frame.size() - 1] = static_cast<char>(UARTFrame::checksum(m_frame.chopped(1)));
    }
    return QStringLiteral("changed the %1, %2 became %3")
        .arg(name, hexadecimalText(old), hexadecimalText(value));
}

QString FaultyFrame::setLength(std::optional<int> value)
{
    const int length =
        value ? *value : byteAt(UARTFrame::kLengthOffset) ^ m_random.between(1, kByteValues - 1);
    return setField(QStringLiteral("length"), UARTFrame::kLengthOffset, length, false);
}

QString FaultyFrame::duplicate(int pause)
{
    addBehind(m_frame, Milliseconds(pause));
    return QStringLiteral("repeated after %1 ms").arg(pause);
}

// Bytes that make no header, neither among themselves nor with the bytes on either side.
QByteArray FaultyFrame::noise(int count)
{
    QByteArray bytes;
    for (int i = 0; i < count; ++i) {
        const bool mayBeHeaderByte =
            i > 0 && i + 1 < count && static_cast<unsigned char>(bytes.back()) != kHeaderByte;
        bytes += static_cast<char>(m_random.below(mayBeHeaderByte ? kByteValues : kHeaderByte));
    }
    return bytes;
}

int FaultyFrame::byteAt(int offset) const
{
    return offset >= 0 && offset < m_frame.size() ? static_cast<unsigned char>(m_frame.at(offset))
                                                  : 0;
}

void FaultyFrame::addBehind(const QByteArray &bytes, Milliseconds pause)
{
    m_behind.append({bytes, pause, false, false, Milliseconds::zero()});
}
