#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>

// What the targets in this folder share. Each of them defines this function, which takes any bytes as the
// file that somebody has put into the unit; libFuzzer makes the bytes up, and replay.cpp takes them from the
// corpus.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace fuzz {

/// libFuzzer sees by these where nothing is compiled for it: libraries are told apart by what they answer.
__attribute__((section("__libfuzzer_extra_counters"), used)) inline std::uint8_t answers[4096];

inline void answered(const std::string& answer)
{
    answers[std::hash<std::string>()(answer) % sizeof answers] = 1;
}

/// Ends the process in a way that libFuzzer takes for a find.
inline void require(bool holds, const std::string& what)
{
    if (holds)
        return;
    std::fprintf(stderr, "%s\n", what.c_str());
    std::abort();
}

} // namespace fuzz
