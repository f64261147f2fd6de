// SPDX-License-Identifier: MIT
// How a fuzz target reports a broken promise: a line saying what went
// wrong and with which value, then an abort that libFuzzer records with the
// input.
#pragma once

#include <cstdio>
#include <cstdlib>

[[noreturn]] inline void fuzz_fail(const char *target, const char *what, long long value) {
    std::fprintf(stderr, "%s: %s (%lld)\n", target, what, value);
    std::fflush(stderr);
    std::abort();
}
