// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

// Stands in for the fuzzer: gives a target every file of the folders that are named, once. It needs
// no special compiler, so that the inputs are tried in every build.

#include "fuzztarget.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

namespace {

std::vector<std::filesystem::path> filesOf(const char *folder)
{
    std::vector<std::filesystem::path> files;
    for (const auto &entry : std::filesystem::directory_iterator(folder)) {
        if (entry.is_regular_file()) {
            files.push_back(entry.path());
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

/// @return whether the file could be read
bool replay(const std::filesystem::path &path)
{
    std::ifstream file(path, std::ios::binary);
    std::vector<char> bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (!file.is_open() || file.bad()) {
        std::fprintf(stderr, "Cannot read %s\n", path.string().c_str());
        return false;
    }
    // Printed first, so that the last line before a crash names the culprit.
    std::printf("%s\n", path.string().c_str());
    std::fflush(stdout);
    // Without spare capacity, so that the address sanitizer sees a read beyond the end.
    bytes.shrink_to_fit();
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t *>(bytes.data()), bytes.size());
    return true;
}

} // namespace

int main(int argc, char **argv)
{
    int count = 0;
    for (int i = 1; i < argc; ++i) {
        std::error_code error;
        if (!std::filesystem::is_directory(argv[i], error)) {
            std::fprintf(stderr, "No folder: %s\n", argv[i]);
            return EXIT_FAILURE;
        }
        for (const std::filesystem::path &path : filesOf(argv[i])) {
            if (!replay(path)) {
                return EXIT_FAILURE;
            }
            ++count;
        }
    }
    std::printf("%d inputs\n", count);
    return count > 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
