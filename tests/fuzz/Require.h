#pragma once

#include <cstdio>
#include <cstdlib>

/// Ends the run unless `held` is true. libFuzzer then keeps the input.
inline void Require(bool held, const char* what)
{
    if (!held) {
        std::fprintf(stderr, "Broken: %s\n", what);
        std::abort();
    }
}
