// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

// Headers can be compiled in advance only as part of a program.
int main() {}
