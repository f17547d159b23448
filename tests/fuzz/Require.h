#pragma once

#include <cstdio>
#include <cstdlib>

/// Ends the process loudly when a rule is broken, so that a fuzzer keeps the input.
inline void require(bool holds, const char* rule) {
    if (holds)
        return;
    std::fprintf(stderr, "broken: %s\n", rule);
    std::abort();
}
