#pragma once

#include <cstdio>

/// Ends one measured stretch: the simulator notes its counts before each call of this function, and the
/// printed name says which stretch that was. Never inlined, since the simulator knows it by its symbol.
extern "C" __attribute__((noinline)) inline void instructionsMark(const char* name)
{
    std::printf("%s\n", name);
    std::fflush(stdout);
}
