// Looks for the settings and the sound with which the processor's error comes closest to its signal: random
// ones, and the worst so far with something of them drawn anew. What it finds is named by a row of numbers,
// of which errorCase() makes the same case everywhere.
//
//   error_search [TRIES] [SEED]     prints the ten worst
//   error_search = NUMBER...        measures one case

#include "tests/platform/hvaudio/dsp/errorcase.h"

#include <cstdio>
#include <cstdlib>
#include <string>

using namespace sound;

namespace {

struct Found
{
    Clean clean;
    Lineage lineage;
};

void print(const Found& found)
{
    const ErrorCase c = errorCase(found.lineage);
    std::printf("%6.1f dB at %6.0f Hz, %s %8.1f Hz, speaker %d, path %d, part %d: {", found.clean.db, c.rate,
                c.hz > 0 ? "tone" : "noise", c.hz, found.clean.speaker, int(found.clean.path),
                found.clean.part);
    for (size_t i = 0; i < found.lineage.size(); ++i)
        std::printf("%s%u", i ? ", " : "", found.lineage[i]);
    std::printf("}\n");
}

} // namespace

int main(int argc, char** argv)
{
    if (argc > 2 && std::string(argv[1]) == "=") {
        Found found;
        for (int i = 2; i < argc; ++i)
            found.lineage.push_back(unsigned(std::strtoul(argv[i], nullptr, 10)));
        found.clean = cleanOf(errorCase(found.lineage));
        print(found);
        return 0;
    }
    const int tries = argc > 1 ? std::atoi(argv[1]) : 5000;
    const auto seed = argc > 2 ? unsigned(std::strtoul(argv[2], nullptr, 10)) : std::random_device()();
    std::printf("%d tries, seed %u\n", tries, seed);
    constexpr size_t kept = 10;
    std::mt19937 random(seed);
    std::vector<Found> worst;
    for (int i = 0; i < tries; ++i) {
        Found found;
        if (!worst.empty() && random() % 3)
            found.lineage = worst[random() % worst.size()].lineage;
        found.lineage.push_back(random());
        found.clean = cleanOf(errorCase(found.lineage));
        const auto place =
            std::lower_bound(worst.begin(), worst.end(), found, [](const Found& a, const Found& b) {
                return a.clean.db < b.clean.db - 0.01; // what was drawn anew makes no difference
            });
        if (place != worst.end() && std::abs(place->clean.db - found.clean.db) <= 0.01)
            continue;
        worst.insert(place, found);
        if (worst.size() > kept)
            worst.pop_back();
    }
    for (const Found& found : worst)
        print(found);
    return 0;
}
