// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "frameassembler.h"

#include "frames.h"
#include "referenceparser.h"

#include <QtTest>

#include <algorithm>
#include <array>
#include <future>
#include <vector>

using ReferenceParser::Kind;

/// All that decides how the receiver takes the next bytes: its members except the frame store,
/// which only holds what it hands on. The high bits of the sum decide nothing either.
class FrameAssemblerState {
public:
    bool isHeadReady = false;
    bool isCollecting = false;
    quint8 headBytes = 0;
    quint32 offset = 0;
    quint32 length = 0;
    qint32 sum = 0;

    using Store = decltype(FrameAssembler::command_buf);
    static Store &store(FrameAssembler &assembler) { return assembler.command_buf; }

    Q_ALWAYS_INLINE void enter(FrameAssembler &assembler) const
    {
        assembler.data_step_head_ready = isHeadReady;
        assembler.data_step_get_data = isCollecting;
        assembler.head_byte_count = headBytes;
        assembler.data_offest = offset;
        assembler.data_length = length;
        assembler.checksum = sum;
    }
    Q_ALWAYS_INLINE bool isOf(const FrameAssembler &assembler) const
    {
        return assembler.data_offest == offset && assembler.checksum == sum
            && assembler.data_length == length && assembler.data_step_head_ready == isHeadReady
            && assembler.data_step_get_data == isCollecting
            && assembler.head_byte_count == headBytes;
    }
};

namespace {

using State = FrameAssemblerState;

constexpr int kBytes = 256;
constexpr int kLongest = 138;
constexpr quint32 kFirstOffset = 3;

/// What one byte leads to, in order: at most the end of one frame and the announcement of another.
/// In one number, because billions of them are compared.
class Reports {
public:
    Q_ALWAYS_INLINE void add(Kind kind, int value)
    {
        m_packed =
            m_packed << 20 | (static_cast<quint64>(kind) + 1) << 16 | static_cast<quint64>(value);
    }
    Q_ALWAYS_INLINE bool operator==(const Reports &other) const
    {
        return m_packed == other.m_packed;
    }

private:
    quint64 m_packed = 0;
};

/// The rules once more, a byte at a time. They are compared with the reference parser, and the
/// receiver with them.
/// @param state  from the one before the byte to the one after it
Q_ALWAYS_INLINE void follow(State &state, unsigned char byte, Reports &reports)
{
    const State before = state;
    if (before.isCollecting) {
        ++state.offset;
        if (state.offset < kFirstOffset + before.length) {
            state.sum += byte;
        } else {
            state.isCollecting = false;
            if (before.length == 0) {
                reports.add(Kind::LengthRejected, 0);
            } else if ((before.sum & 0xFF) == byte) {
                reports.add(Kind::FrameAccepted, static_cast<int>(before.length));
            } else {
                reports.add(Kind::ChecksumWrong, before.sum);
            }
        }
    }
    if (before.isHeadReady) {
        state = {false, byte <= kLongest, before.headBytes, kFirstOffset, byte, byte};
        reports.add(Kind::LengthAnnounced, byte);
    }
    const bool completesPair = byte == 0xFF && before.headBytes == 1;
    state.isHeadReady = state.isHeadReady || completesPair;
    state.headBytes = byte == 0xFF && !completesPair ? 1 : 0;
}

/// The receiver under test, with what lies around it in memory in view.
class Receiver : public FrameAssembler::Listener {
public:
    Receiver()
    {
        m_before.fill(0xE1);
        m_behind.fill(0xE2);
        for (std::size_t i = 0; i < m_untouched.size(); ++i) {
            m_untouched[i] = static_cast<unsigned char>(0x5A + i);
        }
        State::store(m_assembler) = m_untouched;
    }

    /// Whether each of the 256 bytes does in a state what the rules say, and nothing else.
    bool takesEveryByteIn(const State &state)
    {
        // Within a frame, a byte other than FF is only added to the sum. Most steps are of that
        // kind, and are compared faster so.
        const bool isWithin = state.isCollecting && !state.isHeadReady
            && state.offset + 1 < kFirstOffset + state.length;
        if (isWithin && !addsEveryByteIn(state)) {
            return false;
        }
        for (int byte = isWithin ? 0xFF : 0; byte < kBytes; ++byte) {
            if (!takes(state, static_cast<unsigned char>(byte))) {
                return false;
            }
        }
        m_steps += kBytes;
        return hasOnlyTouched(state);
    }

    /// Whether a frame is received that follows upon a state. The first header byte may complete a
    /// pair with an FF before it; then that frame is lost, and the next one is received.
    bool recoversFrom(const State &state)
    {
        state.enter(m_assembler);
        const bool isFirstLost = state.headBytes == 1;
        bool isRight = feedFrame() != isFirstLost;
        if (isFirstLost) {
            isRight = feedFrame() && isRight;
        }
        State::store(m_assembler) = m_untouched;
        return isRight && isIntactAround();
    }

    quint64 steps() const { return m_steps; }

    void lengthReceived(quint32 length) override
    {
        m_reports.add(Kind::LengthAnnounced, static_cast<int>(length));
    }
    void frameAccepted(std::string_view frame, quint32 length) override
    {
        m_reports.add(Kind::FrameAccepted, static_cast<int>(length));
        m_frame = frame;
        const auto *const start = reinterpret_cast<const char *>(State::store(m_assembler).data());
        m_areFramesWhole = m_areFramesWhole && frame.data() == start && frame.size() == length + 2;
    }
    void checksumFailed(qint32 sum) override { m_reports.add(Kind::ChecksumWrong, sum); }
    void lengthRejected(quint32 length) override
    {
        m_reports.add(Kind::LengthRejected, static_cast<int>(length));
    }

private:
    Q_ALWAYS_INLINE bool takes(const State &state, unsigned char byte)
    {
        state.enter(m_assembler);
        m_reports = {};
        m_assembler.take(byte, *this);

        State expected = state;
        Reports due;
        follow(expected, byte, due);
        return expected.isOf(m_assembler) && m_reports == due
            && (!state.isCollecting || State::store(m_assembler)[state.offset] == byte);
    }

    bool addsEveryByteIn(const State &state)
    {
        State expected = state;
        Reports due;
        follow(expected, 0, due);
        bool isRight = due == Reports();
        m_reports = {};
        for (int byte = 0; byte < 0xFF; ++byte) {
            state.enter(m_assembler);
            m_assembler.take(static_cast<unsigned char>(byte), *this);
            expected.sum = state.sum + byte;
            isRight = expected.isOf(m_assembler) && State::store(m_assembler)[state.offset] == byte
                && isRight;
        }
        return isRight && m_reports == Reports();
    }

    /// After all bytes: the store has only the last one where it belongs, and the header.
    bool hasOnlyTouched(const State &state)
    {
        State::Store expected = m_untouched;
        if (state.isCollecting) {
            expected[state.offset] = kBytes - 1;
        }
        if (state.isHeadReady) {
            expected[0] = expected[1] = 0xFF;
            expected[2] = kBytes - 1;
        }
        const bool isRight = State::store(m_assembler) == expected;
        State::store(m_assembler) = m_untouched;
        return isRight && isIntactAround();
    }

    bool isIntactAround() const
    {
        return m_areFramesWhole
            && std::all_of(m_before.begin(), m_before.end(), [](auto each) { return each == 0xE1; })
            && std::all_of(m_behind.begin(), m_behind.end(),
                           [](auto each) { return each == 0xE2; });
    }

    /// @return whether the frame was received, with its last byte
    bool feedFrame()
    {
        for (const char byte : m_validFrame) {
            m_frame = {};
            m_assembler.take(static_cast<unsigned char>(byte), *this);
            ++m_steps;
        }
        return m_frame
            == std::string_view(m_validFrame.constData(),
                                static_cast<size_t>(m_validFrame.size()) - 1);
    }

    const QByteArray m_validFrame = Frames::settingsAcknowledgement();
    std::array<unsigned char, 64> m_before{};
    FrameAssembler m_assembler;
    std::array<unsigned char, 64> m_behind{};
    State::Store m_untouched{};
    Reports m_reports;
    std::string_view m_frame;     ///< the last that was accepted
    bool m_areFramesWhole = true; ///< from the start of the store on, without the checksum
    quint64 m_steps = 0;
};

/// The states in which a frame of one length is being collected, and a stream that leads to each.
class Collection {
public:
    static constexpr int kFlags = 3; ///< no FF before, one, or a pair
    static constexpr int kPlaces = kFlags * kBytes;

    explicit Collection(int length)
        : m_length(length)
        , m_layers(static_cast<std::size_t>(std::max(length, 1)))
    {
        m_layers.front()[static_cast<std::size_t>(length)].sum = length;
        for (int layer = 0; layer + 1 < layers(); ++layer) {
            fillNext(layer);
        }
    }

    /// One for each byte that may come next, the checksum included.
    int layers() const { return static_cast<int>(m_layers.size()); }
    bool has(int layer, int place) const { return at(layer, place).sum >= 0; }
    State state(int layer, int place) const
    {
        const int flags = place / kBytes;
        return {flags == 2,
                true,
                static_cast<quint8>(flags == 1 ? 1 : 0),
                kFirstOffset + static_cast<quint32>(layer),
                static_cast<quint32>(m_length),
                at(layer, place).sum};
    }
    std::vector<unsigned char> stream(int layer, int place) const
    {
        std::vector<unsigned char> bytes;
        for (; layer > 0; place = at(layer--, place).from) {
            bytes.insert(bytes.begin(), at(layer, place).byte);
        }
        bytes.insert(bytes.begin(), {0xFF, 0xFF, static_cast<unsigned char>(m_length)});
        return bytes;
    }

private:
    /// How the first stream came here that did.
    struct Arrival {
        int sum = -1; ///< not yet
        int from = 0;
        unsigned char byte = 0;
    };
    using Layer = std::array<Arrival, kPlaces>;

    const Arrival &at(int layer, int place) const
    {
        return m_layers[static_cast<std::size_t>(layer)][static_cast<std::size_t>(place)];
    }

    void fillNext(int layer)
    {
        Layer &next = m_layers[static_cast<std::size_t>(layer) + 1];
        int missing = kPlaces;
        // After a pair, the next byte begins another frame. FF first, because only it leads to two
        // thirds of the places.
        for (int byte = kBytes - 1; byte >= 0 && missing > 0; --byte) {
            for (int place = 0; place < 2 * kBytes; ++place) {
                if (has(layer, place)) {
                    State after = state(layer, place);
                    Reports reports;
                    follow(after, static_cast<unsigned char>(byte), reports);
                    const int flags = after.isHeadReady ? 2 : after.headBytes;
                    const int nextPlace = flags * kBytes + after.sum % kBytes;
                    Arrival &arrival = next[static_cast<std::size_t>(nextPlace)];
                    if (arrival.sum < 0) {
                        arrival = {after.sum, place, static_cast<unsigned char>(byte)};
                        --missing;
                    }
                }
            }
        }
    }

    int m_length;
    std::vector<Layer> m_layers;
};

/// The states that a state without a frame is followed by: after no FF, one, or a pair.
std::array<State, Collection::kFlags> waitingFrom(State state)
{
    state.isCollecting = false;
    std::array<State, Collection::kFlags> states{state, state, state};
    states[1].headBytes = 1;
    states[2].isHeadReady = true;
    states[0].headBytes = states[2].headBytes = 0;
    states[0].isHeadReady = states[1].isHeadReady = false;
    return states;
}

/// Every state that can be reached with a length in the members. What is left there from the frame
/// before is a part of a state.
template <typename Visit> void visitStates(int length, const Visit &visit)
{
    const auto visitWaiting = [&visit](const State &last) {
        for (const State &state : waitingFrom(last)) {
            visit(state);
        }
    };
    if (length > kLongest) {
        visitWaiting({false, false, 0, kFirstOffset, static_cast<quint32>(length), length});
        return;
    }
    if (length == 0) {
        visitWaiting(State());
    }
    const Collection collection(length);
    for (int layer = 0; layer < collection.layers(); ++layer) {
        for (int place = 0; place < Collection::kPlaces; ++place) {
            if (collection.has(layer, place)) {
                visit(collection.state(layer, place));
            }
        }
    }
    // With the last byte the frame is over, and its sum is left.
    const int last = collection.layers() - 1;
    for (int sum = 0; sum < kBytes; ++sum) {
        const int place = collection.has(last, sum) ? sum : kBytes + sum;
        if (collection.has(last, place)) {
            State state = collection.state(last, place);
            ++state.offset;
            visitWaiting(state);
        }
    }
}

QByteArray described(const State &state)
{
    return QStringLiteral("head %1, collecting %2, FF %3, offset %4, length %5, sum %6")
        .arg(state.isHeadReady)
        .arg(state.isCollecting)
        .arg(state.headBytes)
        .arg(state.offset)
        .arg(state.length)
        .arg(state.sum)
        .toLatin1();
}

struct Tally {
    quint64 states = 0;
    quint64 steps = 0;
    QByteArray wrong; ///< the first state that is not as it should be
};

/// Visits all states, on several processors. The check is a member function of Receiver.
template <typename Check> Tally visitEveryState(const Check &check)
{
    constexpr int kThreads = 4;
    const auto visitPart = [&check](int part) {
        Receiver receiver;
        Tally tally;
        for (int length = part; length < kBytes; length += kThreads) {
            visitStates(length, [&](const State &state) {
                ++tally.states;
                if (tally.wrong.isEmpty() && !(receiver.*check)(state)) {
                    tally.wrong = described(state);
                }
            });
        }
        tally.steps = receiver.steps();
        return tally;
    };
    std::vector<std::future<Tally>> parts;
    parts.reserve(kThreads);
    for (int part = 0; part < kThreads; ++part) {
        parts.push_back(std::async(std::launch::async, visitPart, part));
    }
    Tally whole;
    for (auto &part : parts) {
        const Tally tally = part.get();
        whole.states += tally.states;
        whole.steps += tally.steps;
        if (whole.wrong.isEmpty()) {
            whole.wrong = tally.wrong;
        }
    }
    return whole;
}

/// The comparison of the rules with the reference parser.
class RulesComparison {
public:
    QByteArray wrong;
    quint64 count = 0;

    /// In every place of a frame of that length with every byte, and at its last byte with every
    /// sum too: nowhere else does the sum decide.
    void compareLength(int length)
    {
        std::vector<unsigned char> ended{0xFF, 0xFF, static_cast<unsigned char>(length)};
        if (length <= kLongest) {
            const Collection collection(length);
            const int last = collection.layers() - 1;
            for (int layer = 0; layer <= last; ++layer) {
                for (int flags = 0; flags < Collection::kFlags; ++flags) {
                    compareSums(collection, layer, flags, layer == last ? kBytes : 1);
                }
            }
            ended = collection.stream(last, collection.has(last, length) ? length : 0);
        }
        ended.push_back(0);
        State state;
        state.length = static_cast<quint32>(length);
        for (const State &waiting : waitingFrom(state)) {
            compare(ended, waiting);
            ended.push_back(0xFF);
        }
    }

private:
    void compareSums(const Collection &collection, int layer, int flags, int atMost)
    {
        for (int sum = 0; sum < kBytes && atMost > 0; ++sum) {
            const int place = flags * kBytes + sum;
            if (collection.has(layer, place)) {
                compare(collection.stream(layer, place), collection.state(layer, place));
                --atMost;
            }
        }
    }

    /// What the parser finds with the last byte of a stream and one more, any, is due.
    void compare(std::vector<unsigned char> stream, const State &state)
    {
        stream.push_back(0);
        for (int byte = 0; byte < kBytes && wrong.isEmpty(); ++byte) {
            stream.back() = static_cast<unsigned char>(byte);
            ReferenceParser::parse(stream.data(), stream.size(), m_events);
            Reports found;
            for (const auto &event : m_events) {
                if (event.position == stream.size() - 1) {
                    found.add(event.kind, event.value);
                }
            }
            State after = state;
            Reports due;
            follow(after, stream.back(), due);
            if (!(found == due)) {
                wrong = described(state);
            }
            ++count;
        }
    }

    std::vector<ReferenceParser::Event> m_events;
};

} // namespace

/// Not a sample: every state, every byte.
class FrameAssemblerStatesTest : public QObject {
    Q_OBJECT

private slots:
    void startsInTheFirstState() { QVERIFY(State().isOf(FrameAssembler())); }

    void everyByteDoesInEveryStateWhatTheRulesSay()
    {
        const Tally tally = visitEveryState(&Receiver::takesEveryByteIn);
        QCOMPARE(tally.wrong, QByteArray());
        QCOMPARE(tally.steps, tally.states * kBytes);
        qInfo("%llu states, %llu steps", tally.states, tally.steps);
    }

    void afterEveryStateAFrameIsReceivedAgain()
    {
        const Tally tally = visitEveryState(&Receiver::recoversFrom);
        QCOMPARE(tally.wrong, QByteArray());
        qInfo("%llu states, %llu steps", tally.states, tally.steps);
    }

    void theRulesAreThoseOfTheReferenceParser()
    {
        RulesComparison comparison;
        for (int length = 0; length < kBytes; ++length) {
            comparison.compareLength(length);
        }
        QCOMPARE(comparison.wrong, QByteArray());
        qInfo("%llu comparisons", comparison.count);
    }
};

QTEST_APPLESS_MAIN(FrameAssemblerStatesTest)
#include "tst_frameassemblerstates.moc"
