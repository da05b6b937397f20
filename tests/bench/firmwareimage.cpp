// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

// How long the largest firmware takes from an image file to what is uploaded, beside the least that
// has to be done for it: to read the file, and to decode it once.

#include "firmwareimage.h"

#include <QFile>
#include <QTemporaryFile>

#include <benchmark/benchmark.h>

namespace {

constexpr int kLargestFirmware = 16 * 1024 * 1024 - 1;

/// An image of the largest firmware, for as long as the program runs.
QString imagePath()
{
    static QTemporaryFile file;
    if (!file.isOpen() && file.open()) {
        const QByteArray firmware(kLargestFirmware, 'A');
        QByteArray header("KVEL");
        header.resize(FirmwareImage::kHeaderSize);
        file.write(header + firmware.left(FirmwareImage::kRawPrefixSize)
                   + firmware.mid(FirmwareImage::kRawPrefixSize).toBase64());
        file.flush();
    }
    return file.fileName();
}

void preparing(benchmark::State &state)
{
    const QString path = imagePath();
    while (state.KeepRunning()) {
        const auto image = FirmwareImage::read(path);
        if (!image || !image->hasMagic() || image->firmware().size() != kLargestFirmware) {
            state.SkipWithError("not the firmware");
        }
    }
}

void readingAndDecoding(benchmark::State &state)
{
    const QString path = imagePath();
    while (state.KeepRunning()) {
        QFile file(path);
        file.open(QIODevice::ReadOnly);
        benchmark::DoNotOptimize(QByteArray::fromBase64(file.readAll()));
    }
}

} // namespace

int main(int argc, char *argv[])
{
    benchmark::RegisterBenchmark("preparing", preparing)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("readingAndDecoding", readingAndDecoding)
        ->Unit(benchmark::kMillisecond);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
