#pragma once

#include <cstdio>
#include <cstdlib>

/// Ends the run, which has libFuzzer keep the input, unless what must hold held.
inline void Require(bool held, const char* what)
{
    if (!held) {
        std::fprintf(stderr, "Broken: %s\n", what);
        std::abort();
    }
}
