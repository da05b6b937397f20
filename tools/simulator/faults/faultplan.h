// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>
#include <QVector>

#include <optional>

/// One fault on the line: what happens, to which frames.
struct Fault {
    enum Kind {
        Drop,
        DropByte,
        InsertByte,
        Corrupt,
        Flip,
        Burst,
        Swap,
        Truncate,
        Duplicate,
        Delay,
        Late,
        Split,
        Gap,
        Join,
        Noise,
        FfRun,
        HalfFrame,
        WrongSum,
        WrongLength,
        WrongCommand,
        ForeignType,
        WrongParameter,
        Stale,
        Trail,
        Silence,
        Pause,
        HangUp,
    };
    enum Direction {
        Request, ///< from the host to the camera
        Reply,   ///< from the camera to the host
    };
    /// Which frames of the direction, and where in them.
    struct Place {
        enum Form { Once, From, Chance };
        static constexpr int kCertain = 1'000'000;

        Form form = Once;
        int frame = 1;           ///< Once and From: the only or the first one, counted from 1
        std::optional<int> byte; ///< Once: the offset in the frame; nothing for a random one
        int chance = 0;          ///< Chance: in millionths, 1 to kCertain
    };

    Kind kind = Drop;
    std::optional<int> value; ///< what FaultKind says; nothing for its default
    Direction direction = Request;
    Place place;
};

/// What there is to say about a kind of fault: how it is written, and what its value means.
struct FaultKind {
    Fault::Kind kind = Fault::Drop;
    const char *name = nullptr;
    const char *value = nullptr; ///< what its value is, such as "ms"; null when it has none
    int minimum = 0;             ///< of the value
    int maximum = 0;
    std::optional<int> fallback; ///< the value when none is given; nothing for a random one
    bool actsAtByte = false;
    const char *effect = nullptr; ///< in one sentence

    static const FaultKind &of(Fault::Kind kind);
};

/// The faults that a line has, in the order in which they are applied to a frame.
///
///     PLAN      = "none" | FAULT {"," FAULT}
///     FAULT     = KIND ["=" VALUE] "@" DIRECTION ":" PLACE
///     DIRECTION = "request" | "reply"
///     PLACE     = N        the Nth frame in that direction, from 1
///               | N "." B  that frame, at its byte B, from 0
///               | N "+"    the Nth and every later one
///               | P "%"    each frame with that probability, with up to four decimals
///               | "all"    the same as 1+
///
/// A VALUE is decimal, or hexadecimal with 0x in front.
class FaultPlan {
public:
    /// @param error  set to the reason, with the fault that is wrong, when the result is nothing;
    ///               not null
    static std::optional<FaultPlan> parse(const QString &text, QString *error);
    /// All kinds with their values and an example each, for the user.
    static QString help();

    const QVector<Fault> &faults() const;
    bool isEmpty() const;
    /// The same plan as a text, with every number in decimal; "none" when it is empty.
    QString toString() const;

private:
    QVector<Fault> m_faults;
};

/// "request" or "reply".
QString faultDirectionName(Fault::Direction direction);

/// Reads the seed of the random numbers, 0 to 4294967295.
std::optional<quint32> faultSeedFrom(const QString &text);
