// Programming-error checks that stop the program in every build, not only in debug builds:
// a broken caller contract (say, an out-of-range move offset) must never limp on and corrupt
// the board that is about to be saved.
#pragma once

#include <cstdio>
#include <cstdlib>

#define TOCK_REQUIRE(cond, what)                                                              \
    do {                                                                                      \
        if (!(cond)) {                                                                        \
            std::fprintf(stderr, "tock: fatal: %s (%s:%d)\n", what, __FILE__, __LINE__);       \
            std::abort();                                                                     \
        }                                                                                     \
    } while (false)
