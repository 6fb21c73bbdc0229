// What every target asserts with: a failure ends the process, which libFuzzer takes as a finding.
#pragma once

#include <cstdio>
#include <cstdlib>

namespace vornel::fuzz {

[[noreturn]] inline void Fail(const char* what, const char* file, int line) {
    std::fprintf(stderr, "%s:%d: this does not hold: %s\n", file, line, what);
    std::abort();
}

}  // namespace vornel::fuzz

#define FUZZ_REQUIRE(condition)                                 \
    do {                                                        \
        if (!(condition)) {                                     \
            vornel::fuzz::Fail(#condition, __FILE__, __LINE__); \
        }                                                       \
    } while (false)
