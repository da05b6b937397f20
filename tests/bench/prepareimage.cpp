// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

// Prepares an image file for upload as the window does, and prints the size of the firmware. For
// measuring what that costs as a whole process.

#include "firmwareimage.h"

#include <cstdio>

int main(int argc, char *argv[])
{
    if (argc != 2) {
        std::fputs("usage: corvane-bench-prepareimage FILE\n", stderr);
        return 2;
    }
    auto image = FirmwareImage::read(QString::fromLocal8Bit(argv[1]));
    if (!image || !image->hasMagic()) {
        std::fputs("not an image\n", stderr);
        return 1;
    }
    std::printf("%d\n", image->takeFirmware().size());
    return 0;
}
