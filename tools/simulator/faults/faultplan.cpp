// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "faultplan.h"

#include "uartframe.h"

#include <QRegularExpression>
#include <QStringList>

#include <algorithm>
#include <array>

namespace {

constexpr int kMostMilliseconds = 3'600'000;
constexpr int kMostBytes = 1024;
constexpr int kMostFrames = 1'000'000'000;
constexpr int kDecimals = 4; // of a percentage, so that it is a whole number of millionths

constexpr int kLastByte = UARTFrame::kMaximumSize - 1;

constexpr std::optional<int> kRandom = std::nullopt;

const std::array<FaultKind, 27> &kinds()
{
    static const std::array<FaultKind, 27> kKinds{{
        {Fault::Drop, "drop", nullptr, 0, 0, 0, false, "The frame does not arrive."},
        {Fault::DropByte, "drop-byte", nullptr, 0, 0, 0, true, "The byte is missing."},
        {Fault::InsertByte, "insert-byte", "byte", 0, 255, kRandom, true,
         "Another byte comes before the byte."},
        {Fault::Corrupt, "corrupt", "mask", 1, 255, kRandom, true,
         "The byte is combined with the mask by exclusive or."},
        {Fault::Flip, "flip", "bit", 0, 7, kRandom, true, "One bit of the byte is inverted."},
        {Fault::Burst, "burst", "bytes", 1, kMostBytes, 3, true,
         "So many bytes from there on are replaced by random other ones."},
        {Fault::Swap, "swap", nullptr, 0, 0, 0, true, "The byte and the next one change places."},
        {Fault::Truncate, "truncate", nullptr, 0, 0, 0, true,
         "Everything from the byte on is missing."},
        {Fault::Duplicate, "duplicate", "ms", 0, kMostMilliseconds, 0, false,
         "The frame arrives twice, with so much time between."},
        {Fault::Delay, "delay", "ms", 1, kMostMilliseconds, 500, false,
         "The frame arrives so much later."},
        {Fault::Late, "late", "ms", 1, kMostMilliseconds, 6000, false,
         "The frame arrives later than any host waits."},
        {Fault::Split, "split", "ms", 1, kMostMilliseconds, 1, false,
         "The bytes of the frame arrive one by one, that far apart."},
        {Fault::Gap, "gap", "ms", 1, kMostMilliseconds, 50, true,
         "The frame pauses for so long before the byte."},
        {Fault::Join, "join", "ms", 1, kMostMilliseconds, 500, false,
         "The frame waits for the next one to join it, at most so long."},
        {Fault::Noise, "noise", "bytes", 1, kMostBytes, 8, false,
         "So many random bytes come before the frame, but no header."},
        {Fault::FfRun, "ff-run", "bytes", 1, kMostBytes, 5, false,
         "So many bytes of FF come before the frame."},
        {Fault::HalfFrame, "half-frame", nullptr, 0, 0, 0, false,
         "The first half of the frame comes before the frame."},
        {Fault::WrongSum, "wrong-sum", "difference", 1, 255, 1, false,
         "The checksum is so much higher."},
        {Fault::WrongLength, "wrong-length", "byte", 0, 255, kRandom, false,
         "The length byte is another one, and nothing else."},
        {Fault::WrongCommand, "wrong-command", "byte", 0, 255, 0x7E, false,
         "The command is another one, and the checksum right."},
        {Fault::ForeignType, "foreign-type", "byte", 0, 255, 2, false,
         "The communication type is another one, and the checksum right."},
        {Fault::WrongParameter, "wrong-parameter", nullptr, 0, 0, 0, false,
         "The parameter byte is higher by 1, and the checksum right."},
        {Fault::Stale, "stale", nullptr, 0, 0, 0, false,
         "The previous frame of that direction comes again before it."},
        {Fault::Trail, "trail", "bytes", 1, kMostBytes, 8, false,
         "So many random bytes come after the frame, but no header."},
        {Fault::Silence, "silence", nullptr, 0, 0, 0, false,
         "From the frame on, nothing arrives any more in that direction."},
        {Fault::Pause, "pause", "ms", 1, kMostMilliseconds, 1000, false,
         "From the frame on, both directions are held back for so long."},
        {Fault::HangUp, "hang-up", "ms", 1, kMostMilliseconds, 20, true,
         "The line hangs up before the byte, so long after the last one."},
    }};
    return kKinds;
}

const FaultKind *kindNamed(const QString &name)
{
    const auto found = std::find_if(kinds().begin(), kinds().end(), [&name](const FaultKind &kind) {
        return name == QLatin1String(kind.name);
    });
    return found == kinds().end() ? nullptr : &*found;
}

QString nameOf(const FaultKind &kind)
{
    return QString::fromLatin1(kind.name);
}

QString rangeOf(const FaultKind &kind)
{
    return QStringLiteral("%1 to %2").arg(kind.minimum).arg(kind.maximum);
}

// A number without a sign, spaces or leading zeros that would mean octal; nothing when it is above
// the maximum.
std::optional<int> numberFrom(const QString &text, int maximum)
{
    static const QRegularExpression kForm(QStringLiteral("\\A(?:[0-9]+|0x[0-9A-Fa-f]+)\\z"));
    if (!kForm.match(text).hasMatch()) {
        return std::nullopt;
    }
    const bool isHexadecimal = text.startsWith(QLatin1String("0x"));
    bool fits = false;
    const int number = text.toInt(&fits, isHexadecimal ? 16 : 10);
    return fits && number <= maximum ? std::optional(number) : std::nullopt;
}

std::optional<Fault::Place> frameFrom(const QString &text, Fault::Place::Form form)
{
    const auto number =
        text.startsWith(QLatin1String("0x")) ? std::nullopt : numberFrom(text, kMostFrames);
    if (!number || *number < 1) {
        return std::nullopt;
    }
    Fault::Place place;
    place.form = form;
    place.frame = *number;
    return place;
}

std::optional<Fault::Place> chanceFrom(const QString &percentage)
{
    static const QRegularExpression kForm(
        QStringLiteral("\\A([0-9]{1,3})(?:\\.([0-9]{1,%1}))?\\z").arg(kDecimals));
    const QRegularExpressionMatch match = kForm.match(percentage);
    if (!match.hasMatch()) {
        return std::nullopt;
    }
    const QString decimals = match.captured(2).leftJustified(kDecimals, QLatin1Char('0'));
    Fault::Place place;
    place.form = Fault::Place::Chance;
    place.chance = (match.captured(1) + decimals).toInt();
    return place.chance >= 1 && place.chance <= Fault::Place::kCertain ? std::optional(place)
                                                                       : std::nullopt;
}

std::optional<Fault::Place> placeFrom(const QString &text, bool mayHaveByte)
{
    if (text == QLatin1String("all")) {
        return frameFrom(QStringLiteral("1"), Fault::Place::From);
    }
    if (text.endsWith(QLatin1Char('+'))) {
        return frameFrom(text.chopped(1), Fault::Place::From);
    }
    if (text.endsWith(QLatin1Char('%'))) {
        return chanceFrom(text.chopped(1));
    }
    const int dot = text.indexOf(QLatin1Char('.'));
    if (dot < 0) {
        return frameFrom(text, Fault::Place::Once);
    }
    auto place = frameFrom(text.left(dot), Fault::Place::Once);
    const QString offset = text.mid(dot + 1);
    const auto byte =
        offset.startsWith(QLatin1String("0x")) ? std::nullopt : numberFrom(offset, kLastByte);
    if (!mayHaveByte || !place || !byte) {
        return std::nullopt;
    }
    place->byte = byte;
    return place;
}

QString textOf(const Fault::Place &place)
{
    switch (place.form) {
    case Fault::Place::Once:
        return place.byte ? QStringLiteral("%1.%2").arg(place.frame).arg(*place.byte)
                          : QString::number(place.frame);
    case Fault::Place::From:
        return place.frame == 1 ? QStringLiteral("all") : QStringLiteral("%1+").arg(place.frame);
    case Fault::Place::Chance:
        break;
    }
    constexpr int kMillionthsOfOnePercent = 10'000;
    QString text = QString::number(place.chance / kMillionthsOfOnePercent);
    QString decimals = QString::number(place.chance % kMillionthsOfOnePercent)
                           .rightJustified(kDecimals, QLatin1Char('0'));
    while (decimals.endsWith(QLatin1Char('0'))) {
        decimals.chop(1);
    }
    if (!decimals.isEmpty()) {
        text += QLatin1Char('.') + decimals;
    }
    return text + QLatin1Char('%');
}

QString textOf(const Fault &fault)
{
    QString text = nameOf(FaultKind::of(fault.kind));
    if (fault.value) {
        text += QStringLiteral("=%1").arg(*fault.value);
    }
    return QStringLiteral("%1@%2:%3")
        .arg(text, faultDirectionName(fault.direction), textOf(fault.place));
}

std::optional<Fault> refuse(QString *error, const QString &reason)
{
    *error = reason;
    return std::nullopt;
}

// The reasons do not name the fault yet.
std::optional<Fault> faultFrom(const QString &text, QString *error)
{
    static const QRegularExpression kForm(
        QStringLiteral("\\A([^=@:]+)(?:=([^=@:]*))?@([^=@:]*):([^=@:]*)\\z"));
    const QRegularExpressionMatch match = kForm.match(text);
    if (!match.hasMatch()) {
        return refuse(error, QStringLiteral("expected KIND[=VALUE]@DIRECTION:PLACE"));
    }
    const FaultKind *const kind = kindNamed(match.captured(1));
    if (kind == nullptr) {
        return refuse(
            error,
            QStringLiteral("there is no kind '%1', see --faults help").arg(match.captured(1)));
    }
    Fault fault;
    fault.kind = kind->kind;
    if (match.capturedStart(2) >= 0) {
        if (kind->value == nullptr) {
            return refuse(error, QStringLiteral("%1 takes no value").arg(nameOf(*kind)));
        }
        fault.value = numberFrom(match.captured(2), kind->maximum);
        if (!fault.value || *fault.value < kind->minimum) {
            return refuse(
                error,
                QStringLiteral("the value (%1) is %2, not '%3'")
                    .arg(QString::fromLatin1(kind->value), rangeOf(*kind), match.captured(2)));
        }
    }
    if (match.captured(3) != faultDirectionName(Fault::Request)
        && match.captured(3) != faultDirectionName(Fault::Reply)) {
        return refuse(
            error,
            QStringLiteral("the direction is request or reply, not '%1'").arg(match.captured(3)));
    }
    fault.direction =
        match.captured(3) == faultDirectionName(Fault::Request) ? Fault::Request : Fault::Reply;
    const auto place = placeFrom(match.captured(4), kind->actsAtByte);
    if (!place) {
        return refuse(
            error,
            QStringLiteral("the place is a frame N from 1%1, N+, P% or all, not '%2'")
                .arg(kind->actsAtByte
                         ? QStringLiteral(", N.B with a byte B from 0 to %1").arg(kLastByte)
                         : QString(),
                     match.captured(4)));
    }
    fault.place = *place;
    return fault;
}

QString exampleOf(const FaultKind &kind)
{
    Fault fault;
    fault.kind = kind.kind;
    if (kind.value != nullptr) {
        fault.value = kind.fallback.value_or(qMax(kind.minimum, 1));
    }
    fault.direction = Fault::Reply;
    fault.place.frame = 2;
    if (kind.actsAtByte) {
        fault.place.byte = 3;
    }
    return textOf(fault);
}

QString helpOn(const FaultKind &kind)
{
    constexpr int kNameWidth = 16;
    const QString indentation(kNameWidth + 2, QLatin1Char(' '));
    QString text =
        QStringLiteral("  %1%2\n")
            .arg(nameOf(kind).leftJustified(kNameWidth), QString::fromLatin1(kind.effect));
    if (kind.value != nullptr) {
        const QString fallback =
            kind.fallback ? QString::number(*kind.fallback) : QStringLiteral("random");
        text += indentation
            + QStringLiteral("VALUE: %1, %2 (default: %3).\n")
                  .arg(QString::fromLatin1(kind.value), rangeOf(kind), fallback);
    }
    return text + indentation + exampleOf(kind) + QLatin1Char('\n');
}

} // namespace

const FaultKind &FaultKind::of(Fault::Kind kind)
{
    return *std::find_if(kinds().begin(), kinds().end(),
                         [kind](const FaultKind &candidate) { return candidate.kind == kind; });
}

std::optional<FaultPlan> FaultPlan::parse(const QString &text, QString *error)
{
    FaultPlan plan;
    if (text == QLatin1String("none")) {
        return plan;
    }
    const QStringList parts = text.split(QLatin1Char(','));
    for (const QString &part : parts) {
        QString reason;
        const auto fault = faultFrom(part, &reason);
        if (!fault) {
            *error = QStringLiteral("fault '%1': %2").arg(part, reason);
            return std::nullopt;
        }
        plan.m_faults.append(*fault);
    }
    return plan;
}

QString FaultPlan::help()
{
    QString text = QStringLiteral(
        "A plan is none, or faults with commas between: KIND[=VALUE]@DIRECTION:PLACE\n"
        "They are applied to a frame in the order of the plan.\n"
        "\n"
        "DIRECTION:\n"
        "  request         From the host to the camera.\n"
        "  reply           From the camera to the host.\n"
        "\n"
        "PLACE:\n"
        "  N               The Nth frame in that direction, from 1.\n"
        "  N.B             That frame, at its byte B, from 0. For kinds that act at a\n"
        "                  byte; without B, it is a random one.\n"
        "  N+              The Nth frame and every later one.\n"
        "  P%              Each frame with that probability, such as 2.5%.\n"
        "  all             Every frame.\n"
        "\n"
        "KIND:\n");
    for (const FaultKind &kind : kinds()) {
        text += helpOn(kind);
    }
    return text;
}

const QVector<Fault> &FaultPlan::faults() const
{
    return m_faults;
}

bool FaultPlan::isEmpty() const
{
    return m_faults.isEmpty();
}

QString FaultPlan::toString() const
{
    QStringList texts;
    for (const Fault &fault : m_faults) {
        texts << textOf(fault);
    }
    return texts.isEmpty() ? QStringLiteral("none") : texts.join(QLatin1Char(','));
}

QString faultDirectionName(Fault::Direction direction)
{
    return direction == Fault::Request ? QStringLiteral("request") : QStringLiteral("reply");
}

std::optional<quint32> faultSeedFrom(const QString &text)
{
    bool fits = false;
    const quint32 seed = text.toUInt(&fits);
    return fits ? std::optional(seed) : std::nullopt;
}
