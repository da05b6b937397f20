// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "diagnosis.h"

#include "printabletext.h"
#include "settingstext.h"

#include <QSet>

#include <algorithm>
#include <array>
#include <utility>

namespace {

using Kind = PortFinding::Kind;
using Status = DiagnosisStatus;
using std::chrono::milliseconds;

/// Corvane waits no longer for the answer to HELLO.
constexpr milliseconds kCorvaneLimit(5000);
/// From here on an answer counts as late.
constexpr milliseconds kLate(1000);

struct Case {
    const PortFinding &finding;
    const LineRecord &line;
    milliseconds wait;
};

template <Kind kind> bool is(const Case &of)
{
    return of.finding.kind == kind;
}

bool isAnswered(const Case &of)
{
    return of.line.answer.has_value();
}

struct Rule {
    const char *id;
    Status status;
    bool (*applies)(const Case &of);
    const char *sentence; ///< with names in braces, see filled()
    const char *remedy;   ///< likewise
};

/// The first rule that applies gives the verdict; if that is a warning, each further warning that
/// applies is given as well. After the rules for ports, the port is open; after those for
/// answers, there is none.
const std::array<Rule, 29> kRules{{
    {"no-device", Status::BadPort, is<Kind::NoDevice>, "There is no serial port {port}.",
     "{ports} If the adapter is plugged in and not among them, the end of what \"sudo dmesg\" "
     "prints says why."},
    {"not-serial", Status::BadPort, is<Kind::NotSerial>, "{port} is not a serial port but {thing}.",
     "Give the name of a port, such as ttyUSB0. {ports}"},
    {"not-in-group", Status::BadPort, is<Kind::NotInGroup>,
     "You may not open {port}: it is for the group {group}, and {user} is not in it.",
     "Join the group with \"sudo adduser {user} {group}\", then log out and in again."},
    {"login-missing", Status::BadPort, is<Kind::LoginMissing>,
     "You may not open {port} yet: {user} has joined the group {group}, but not logged in since.",
     "Log out of the whole desktop and in again, or restart the computer."},
    {"not-permitted", Status::BadPort, is<Kind::NotPermitted>,
     "You may not open {port}: it belongs to {owner}, and joining a group would not help.",
     "Ask whoever looks after this computer. \"ls -l {device}\" shows who may open it; a serial "
     "adapter usually belongs to root and the group dialout, and the group may read and write."},
    {"console", Status::BadPort, is<Kind::Console>,
     "{port} is a console of this computer, for its messages and for logging in.",
     "The camera is on another port. {ports}"},
    {"held", Status::BadPort,
     [](const Case &of) { return is<Kind::Held>(of) && !of.finding.holders.isEmpty(); },
     "Another program has {port} open: {holders}.",
     "Close that program and try again; to ask the camera now would disturb it."},
    {"held-unseen", Status::BadPort, is<Kind::Held>,
     "Another program has {port} open, but you may not see which.",
     "\"sudo corvane-diagnose {port}\" names it. It may be ModemManager, which tries a new adapter "
     "for up to half a minute, depending on its version and the adapter."},
    {"stale-lock", Status::BadPort, is<Kind::StaleLock>,
     "{port} is locked by a program that has ended without removing its lock file {lock}.",
     "Remove it with \"sudo rm {lock}\" and try again."},
    {"cannot-open", Status::BadPort, is<Kind::CannotOpen>, "{port} cannot be opened: {system}.",
     "Pull the adapter out, plug it in again and try again. A port that the computer itself "
     "provides may be in the list without having a socket."},
    {"hung-up", Status::BadPort, is<Kind::HungUp>,
     "{port} failed while the camera was asked: {system}.",
     "The adapter was pulled out or has lost its power: look at its plug and at the hub, and try "
     "another USB socket."},
    {"hung-up-by-program", Status::BadPort, is<Kind::LineHungUp>,
     "The line of {port} was hung up while the camera was asked, but the port is still there.",
     "A program that had {port} as its terminal has ended, which hangs up the line for all others. "
     "Try again; if it happens again, \"sudo corvane-diagnose {port}\" names the program."},

    {"answer-too-late", Status::NoAnswer,
     [](const Case &of) { return isAnswered(of) && of.line.answer->time > kCorvaneLimit; },
     "The camera answered after {seconds} s, but Corvane waits for 5 s only and says \"Connection "
     "fail!\".",
     "Was the camera just starting? Try again in a minute. If it stays that slow, something "
     "between the computer and the camera holds the bytes back."},
    {"answer-short", Status::Warning,
     [](const Case &of) { return isAnswered(of) && !isWholeReport(of.line.answer->frame); },
     "The camera answered, but its answer is too short: {size} instead of 26. Corvane "
     "connects and takes for 0 what is missing.",
     "The camera's firmware is older or newer than Corvane knows. Press neither Apply nor Upgrade "
     "before you know which; do not trust the settings shown."},
    {"answer-shared", Status::Warning,
     [](const Case &of) { return isAnswered(of) && !of.finding.holders.isEmpty(); },
     "The camera answered, but another program has {port} open as well: {holders}. Each gets only "
     "a part of what comes.",
     "Close that program."},
    {"answer-sum-ff", Status::Warning,
     [](const Case &of) { return isAnswered(of) && of.line.answer->sumIsHeaderByte; },
     "The camera answered, and the checksum of its answer is FF. Corvane connects, but cannot make "
     "out the next reply after that.",
     "The first Apply, Zoom or Upgrade after connecting fails, the second one works: press Apply "
     "once before an upgrade. Other settings or another version have another checksum."},
    {"answer-among-others", Status::Warning,
     [](const Case &of) { return isAnswered(of) && of.line.frames > 1; },
     "The camera answered, but other frames came as well: {others}.",
     "Something else talks on the line, or it repeats what is sent. Let only this computer and one "
     "camera be connected."},
    {"answer-amid-noise", Status::Warning,
     [](const Case &of) { return isAnswered(of) && of.line.strayBytes > 0; },
     "The camera answered, but {stray} came outside whole frames.",
     "Look at the cable, its shield and its ground; keep it short and away from power lines. An "
     "upgrade does not tolerate any error on the line."},
    {"answer-late", Status::Warning,
     [](const Case &of) { return isAnswered(of) && of.line.answer->time > kLate; },
     "The camera answered, but only after {seconds} s; Corvane waits for 5 s.",
     "Was the camera just starting or busy? Try again in a minute. Zoom and upgrade wait for 2 s "
     "only."},
    {"answer", Status::Answer, isAnswered, "The camera answered after {seconds} s.", ""},

    {"shared", Status::NoAnswer, [](const Case &of) { return !of.finding.holders.isEmpty(); },
     "No answer came, and another program has {port} open as well: {holders}. It may have taken "
     "the answer away.",
     "Close that program and try again."},
    {"shared-unseen", Status::NoAnswer, [](const Case &of) { return of.finding.isReadByOthers; },
     "No answer came, and another program has taken bytes away, but you may not see which.",
     "\"sudo corvane-diagnose {port}\" names it. Close that program and try again."},
    {"silent", Status::NoAnswer, [](const Case &of) { return of.line.bytes == 0; },
     "Nothing at all came back within {wait} s.",
     "Is the camera on? Is {port} the right adapter? Is the cable plugged in at both ends? The "
     "computer's TX belongs to the camera's RX and the other way round: swap them if unsure. "
     "{ports}{unseen}"},
    {"other-acknowledgements", Status::NoAnswer,
     [](const Case &of) { return of.line.otherAcknowledgements > 0; },
     "Acknowledgements came, but of other commands ({commands}) and none of HELLO.",
     "They are late replies, or replies to somebody else. Close every other program that talks to "
     "the camera, wait ten seconds and try again."},
    {"foreign-frames", Status::NoAnswer, [](const Case &of) { return of.line.foreignFrames > 0; },
     "Frames came, but of other types ({types}) and no acknowledgement.",
     "Something else talks on the line: another computer's requests (type 1), or a device that is "
     "no camera of this kind. Let only this computer and one camera be connected."},
    {"echo", Status::NoAnswer, [](const Case &of) { return of.line.ownRequests > 0; },
     "The own request came back, and no answer.",
     "TX and RX are connected with each other, or the adapter echoes and no camera is connected. "
     "Look at the wiring, and whether the camera is on."},
    {"wrong-sums", Status::NoAnswer, [](const Case &of) { return of.line.wrongSums > 0; },
     "Frames came, but damaged: {sums} with a wrong sum.",
     "There is interference on the line. Look at the ground wire, the shield and the plugs, take a "
     "shorter cable, and keep it away from power lines."},
    {"broken-off", Status::NoAnswer, [](const Case &of) { return of.line.brokenOff > 0; },
     "Frames came, but incomplete: {broken} broken off.",
     "Bytes get lost: look for a loose contact, take another adapter or USB socket, and see "
     "whether the camera's power supply is strong enough.{unseen}"},
    {"no-frame", Status::NoAnswer, [](const Case & /*of*/) { return true; },
     "{bytes} came, but no frame. The first: {first}.",
     "The camera or the adapter has another baud rate than 115200 (8N1), the levels are wrong "
     "(RS-232 against TTL), or this is another device. {ports}{unseen}"},
}};

QString secondsText(milliseconds time)
{
    return QString::number(static_cast<double>(time.count()) / 1000.0, 'g', 4);
}

QString holdersText(const QVector<PortHolder> &holders)
{
    constexpr int kShown = 5;
    const QVector<PortHolder> shown = holders.mid(0, kShown);
    QStringList texts;
    for (const PortHolder &holder : shown) {
        texts += QStringLiteral("%1 (process %2)").arg(holder.name, QString::number(holder.pid));
    }
    if (holders.size() > kShown) {
        texts += QStringLiteral("and %1 more").arg(holders.size() - kShown);
    }
    return texts.join(QStringLiteral(", "));
}

QString portsText(const QStringList &ports)
{
    return ports.isEmpty()
        ? QStringLiteral("This computer has no serial port at all.")
        : QStringLiteral("The ports that there are: %1.").arg(ports.join(QStringLiteral(", ")));
}

/// Follows a remedy for what another program's reading could have caused as well.
QString unseenText(const PortFinding &finding)
{
    return finding.seesEveryHolder
        ? QString()
        : QStringLiteral(" Another user's program may take the answers: \"sudo corvane-diagnose "
                         "%1\" shows it.")
              .arg(finding.port);
}

QString numbersText(const QSet<int> &numbers)
{
    QList<int> sorted = numbers.values();
    std::sort(sorted.begin(), sorted.end());
    QStringList texts;
    for (const int number : std::as_const(sorted)) {
        texts += QString::number(number);
    }
    return texts.join(QStringLiteral(", "));
}

QString otherFramesText(const LineRecord &line)
{
    QStringList texts;
    const auto add = [&texts](qint64 count, const QString &what) {
        if (count > 0) {
            texts += QStringLiteral("%1 %2").arg(QString::number(count), what);
        }
    };
    add(line.answers - 1, QStringLiteral("more of the same"));
    add(line.ownRequests, QStringLiteral("of the own request"));
    add(line.otherAcknowledgements, QStringLiteral("acknowledging another command"));
    add(line.foreignFrames, QStringLiteral("of another type"));
    return texts.join(QStringLiteral(", "));
}

QString bytesText(qint64 count)
{
    return count == 1 ? QStringLiteral("1 byte") : QStringLiteral("%1 bytes").arg(count);
}

QString firstBytesText(const QByteArray &bytes)
{
    const QString hexadecimal = hexadecimalText(bytes);
    const bool isText = std::all_of(bytes.begin(), bytes.end(), [](char byte) {
        return (byte >= ' ' && byte <= '~') || byte == '\r' || byte == '\n' || byte == '\t';
    });
    return isText ? QStringLiteral("%1, as text \"%2\"")
                        .arg(hexadecimal, printableText(QString::fromLatin1(bytes)))
                  : hexadecimal;
}

/// Puts what belongs there for each name in braces.
QString filled(const char *text, const Case &of)
{
    const PortFinding &finding = of.finding;
    const LineRecord &line = of.line;
    const std::array<std::pair<const char *, QString>, 22> values{{
        {"port", finding.port},
        {"device", finding.devicePath},
        {"ports", portsText(finding.ports)},
        {"thing", finding.thing},
        {"group", finding.group},
        {"user", finding.user},
        {"owner", finding.owner},
        {"lock", finding.lockFile},
        {"system", finding.systemText},
        {"holders", holdersText(finding.holders)},
        {"unseen", unseenText(finding)},
        {"seconds", line.answer ? secondsText(line.answer->time) : QString()},
        {"wait", secondsText(of.wait)},
        {"size", line.answer ? bytesText(line.answer->frame.size() + 1) : QString()},
        {"others", otherFramesText(line)},
        {"stray", bytesText(line.strayBytes)},
        {"commands", numbersText(line.otherCommands)},
        {"types", numbersText(line.foreignTypes)},
        {"sums", QString::number(line.wrongSums)},
        {"broken", QString::number(line.brokenOff)},
        {"bytes", bytesText(line.bytes)},
        {"first", firstBytesText(line.firstBytes)},
    }};
    QString result;
    const QString pattern = QString::fromUtf8(text);
    int from = 0;
    // In one pass, as a value may have braces of its own.
    for (int open = pattern.indexOf(QLatin1Char('{')); open >= 0;
         open = pattern.indexOf(QLatin1Char('{'), from)) {
        const int close = pattern.indexOf(QLatin1Char('}'), open);
        const QString name = pattern.mid(open + 1, close - open - 1);
        const auto value = std::find_if(values.begin(), values.end(), [&name](const auto &each) {
            return name == QLatin1String(each.first);
        });
        Q_ASSERT(value != values.end());
        result += pattern.mid(from, open - from) + value->second;
        from = close + 1;
    }
    return result + pattern.mid(from);
}

Verdict verdictOf(const Rule &rule, const Case &of)
{
    return {QString::fromLatin1(rule.id), filled(rule.sentence, of), filled(rule.remedy, of)};
}

} // namespace

Diagnosis diagnose(const PortFinding &finding, const LineRecord &line, milliseconds wait)
{
    const Case given{finding, line, wait};
    const auto *rule = std::find_if(kRules.begin(), kRules.end(),
                                    [&given](const Rule &each) { return each.applies(given); });
    Diagnosis diagnosis{rule->status, verdictOf(*rule, given), {}};
    if (rule->status == Status::Warning) {
        for (++rule; rule->status == Status::Warning; ++rule) {
            if (rule->applies(given)) {
                diagnosis.furtherWarnings += verdictOf(*rule, given);
            }
        }
    }
    return diagnosis;
}

QStringList verdictsOf(DiagnosisStatus status)
{
    QStringList ids;
    for (const Rule &rule : kRules) {
        if (rule.status == status) {
            ids += QString::fromLatin1(rule.id);
        }
    }
    return ids;
}
