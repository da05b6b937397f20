// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

// How fast frames are found in memory, beside the least that anybody has to do for it: to look for
// the header with memchr and add up the bytes.

#include "frameassembler.h"
#include "frames.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstring>
#include <vector>

namespace {

constexpr int kMebibyte = 1024 * 1024;
constexpr int kBlock = kMebibyte;

class CountingListener : public FrameAssembler::Listener {
public:
    void lengthReceived(quint32 length) override { benchmark::DoNotOptimize(length); }
    void frameAccepted(std::string_view frame, quint32 length) override
    {
        benchmark::DoNotOptimize(frame.data());
        benchmark::DoNotOptimize(length);
        ++accepted;
    }
    void checksumFailed(qint32 sum) override { benchmark::DoNotOptimize(sum); }
    void lengthRejected(quint32 length) override { benchmark::DoNotOptimize(length); }

    qint64 accepted = 0;
};

QByteArray blockOf(const QByteArray &pattern)
{
    return pattern.repeated(kBlock / pattern.size());
}

void takeAll(FrameAssembler &assembler, const QByteArray &bytes, CountingListener &listener)
{
    for (const char byte : bytes) {
        assembler.take(static_cast<unsigned char>(byte), listener);
    }
}

/// @return the frames whose sum is right
qint64 searchAndSum(const QByteArray &bytes)
{
    qint64 accepted = 0;
    const auto *at = reinterpret_cast<const unsigned char *>(bytes.constData());
    const auto *const end = at + bytes.size();
    while (at < end) {
        at = static_cast<const unsigned char *>(
            std::memchr(at, 0xFF, static_cast<std::size_t>(end - at)));
        if (at == nullptr || end - at < 3) {
            break;
        }
        const unsigned char *const checksum = at + 2 + at[2];
        if (at[1] != 0xFF || checksum >= end) {
            ++at;
            continue;
        }
        unsigned int sum = 0;
        for (at += 2; at < checksum; ++at) {
            sum += *at;
        }
        accepted += sum % 256 == *checksum ? 1 : 0;
        ++at;
    }
    return accepted;
}

void searchingAndSumming(benchmark::State &state)
{
    const QByteArray bytes = blockOf(Frames::packetAcknowledgement());
    while (state.KeepRunning()) {
        benchmark::DoNotOptimize(searchAndSum(bytes));
    }
    if (searchAndSum(bytes) != bytes.size() / Frames::packetAcknowledgement().size()) {
        state.SkipWithError("a frame was not found");
    }
    state.SetBytesProcessed(state.iterations() * bytes.size());
}

void assembling(benchmark::State &state, const QByteArray &pattern)
{
    const QByteArray bytes = blockOf(pattern);
    FrameAssembler assembler;
    CountingListener listener;
    while (state.KeepRunning()) {
        takeAll(assembler, bytes, listener);
    }
    state.SetBytesProcessed(state.iterations() * bytes.size());
    state.counters["frames"] =
        static_cast<double>(listener.accepted) / static_cast<double>(state.iterations());
}

/// Time over the length of the stream, which has to be a straight line.
void assemblingMebibytes(benchmark::State &state)
{
    const QByteArray bytes = blockOf(Frames::packetAcknowledgement());
    FrameAssembler assembler;
    CountingListener listener;
    while (state.KeepRunning()) {
        for (int block = 0; block < state.range(0); ++block) {
            takeAll(assembler, bytes, listener);
        }
    }
    state.SetBytesProcessed(state.iterations() * state.range(0) * bytes.size());
}

} // namespace

int main(int argc, char *argv[])
{
    benchmark::RegisterBenchmark("searchingAndSumming", searchingAndSumming);
    const auto assemblingOf = [](const char *name, const QByteArray &pattern) {
        benchmark::RegisterBenchmark(name, [pattern](auto &state) { assembling(state, pattern); });
    };
    assemblingOf("assembling/acknowledgements", Frames::packetAcknowledgement());
    assemblingOf("assembling/allFF", QByteArray::fromHex("ff"));
    assemblingOf("assembling/headersOnly", QByteArray::fromHex("ffff20"));
    assemblingOf("assembling/framesCutShort", Frames::packetAcknowledgement().left(9));
    benchmark::RegisterBenchmark("assemblingMebibytes", assemblingMebibytes)
        ->RangeMultiplier(32)
        ->Range(1, 1024)
        ->Unit(benchmark::kMillisecond)
        ->ComputeStatistics("fastest", [](const std::vector<double> &times) {
            return *std::min_element(times.begin(), times.end());
        });

    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
