// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

// The fuzzer's entry point in every target, and what replay.cpp calls instead of the fuzzer.

#pragma once

#include <cstddef>
#include <cstdint>

// The name is libFuzzer's.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);
