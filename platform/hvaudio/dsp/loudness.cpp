#include "platform/hvaudio/dsp/loudness.h"

#include <algorithm>
#include <cmath>

namespace hvaudio::dsp {

namespace {

/// ISO 226:2003, table 1: exponent for loudness perception, magnitude of the linear transfer function
/// normalised at 1 kHz in dB, and threshold of hearing in dB.
struct Contour
{
    double hz, exponent, transferDb, thresholdDb;
};

// clang-format off
constexpr Contour contours[] = {
    {   20, 0.532, -31.6, 78.5}, {   25, 0.506, -27.2, 68.7}, { 31.5, 0.480, -23.0, 59.5}, {   40, 0.455, -19.1, 51.1},
    {   50, 0.432, -15.9, 44.0}, {   63, 0.409, -13.0, 37.5}, {   80, 0.387, -10.3, 31.5}, {  100, 0.367,  -8.1, 26.5},
    {  125, 0.349,  -6.2, 22.1}, {  160, 0.330,  -4.5, 17.9}, {  200, 0.315,  -3.1, 14.4}, {  250, 0.301,  -2.0, 11.4},
    {  315, 0.288,  -1.1,  8.6}, {  400, 0.276,  -0.4,  6.2}, {  500, 0.267,   0.0,  4.4}, {  630, 0.259,   0.3,  3.0},
    {  800, 0.253,   0.5,  2.2}, { 1000, 0.250,   0.0,  2.4}, { 1250, 0.246,  -2.7,  3.5}, { 1600, 0.244,  -4.1,  1.7},
    { 2000, 0.243,  -1.0, -1.3}, { 2500, 0.243,   1.7, -4.2}, { 3150, 0.243,   2.5, -6.0}, { 4000, 0.242,   1.2, -5.4},
    { 5000, 0.242,  -2.1, -1.5}, { 6300, 0.245,  -7.1,  6.0}, { 8000, 0.254, -11.2, 12.6}, {10000, 0.271, -10.7, 13.9},
    {12500, 0.301,  -3.1, 12.3},
};
// clang-format on
static_assert(std::size(contours) == 29, "the standard's table has 29 rows");

constexpr double fullVolumePhon = 80;
constexpr double lowestPhon = 20; ///< where the standard's contours begin

double levelOf(const Contour& row, double phon)
{
    const double af =
        4.47e-3 * (std::pow(10.0, 0.025 * phon) - 1.15) +
        std::pow(0.4 * std::pow(10.0, (row.thresholdDb + row.transferDb) / 10 - 9), row.exponent);
    return 10 / row.exponent * std::log10(af) - row.transferDb + 94;
}

/// The three shelves: where their gain is half, how steep they are, and where their sum meets the contour.
/// Chosen by search over all volumes at 44.1 to 96 kHz. The contour falls by up to 6 dB an octave over five
/// octaves and is flat by 1 kHz: one wide shelf gives nearly all of the bass, and the second, which works
/// against it, straightens its upper end.
struct Shelf
{
    double hz, q, meetsHz;
};
constexpr Shelf shelves[] = {{110, 0.305, 30}, {510, 0.695, 294}, {11800, 0.753, 11100}};

constexpr int shelfCount = int(std::size(shelves));

/// Far below the difference between two steps of the volume, so that the lift grows with each of them.
constexpr double closeEnoughDb = 1e-4;

using Gains = std::array<double, shelfCount>;

/// Shelves with these lifts: bass ones as cuts above, the treble one as it is.
std::array<Section, shelfCount> sectionsOf(const Gains& liftDb, double rate)
{
    return {highShelf(shelves[0].hz, shelves[0].q, -liftDb[0], rate),
            highShelf(shelves[1].hz, shelves[1].q, -liftDb[1], rate),
            highShelf(shelves[2].hz, shelves[2].q, liftDb[2], rate)};
}

double chainDb(const std::array<Section, shelfCount>& sections, double hz, double rate)
{
    double db = 0;
    for (const Section& s : sections)
        db += dbOfFactor(std::abs(responseOf(s, hz, rate)));
    return db;
}

} // namespace

double equalLoudnessLevel(double hz, double phon)
{
    const Contour* const end = std::end(contours);
    const Contour* above =
        std::find_if(std::begin(contours), end, [hz](const Contour& c) { return c.hz >= hz; });
    if (above == contours)
        return levelOf(contours[0], phon);
    if (above == end)
        return levelOf(end[-1], phon);
    const double t = std::log(hz / above[-1].hz) / std::log(above->hz / above[-1].hz);
    return (1 - t) * levelOf(above[-1], phon) + t * levelOf(*above, phon);
}

double loudnessLift(double hz, double mainDb)
{
    const double phon = std::clamp(fullVolumePhon + mainDb, lowestPhon, fullVolumePhon);
    return (equalLoudnessLevel(hz, phon) - phon) - (equalLoudnessLevel(hz, fullVolumePhon) - fullVolumePhon) -
           (equalLoudnessLevel(1000, phon) - phon) +
           (equalLoudnessLevel(1000, fullVolumePhon) - fullVolumePhon);
}

LoudnessSections designLoudness(double mainDb, double rate)
{
    // Newton's method with a fixed slope, that of half the lift: each round leaves less than a sixth of the
    // error.
    Gains lift{}, wanted{};
    // A low rate has no room for the treble shelf.
    const int used = shelves[shelfCount - 1].meetsHz < 0.4 * rate ? shelfCount : shelfCount - 1;
    for (int i = 0; i < used; ++i)
        wanted[i] = loudnessLift(shelves[i].meetsHz, mainDb);
    auto sections = sectionsOf(lift, rate);
    for (int step = 0; step < 20; ++step) {
        const double middle = chainDb(sections, 1000, rate);
        double worst = 0;
        Gains error{};
        for (int i = 0; i < used; ++i) {
            error[i] = wanted[i] - (chainDb(sections, shelves[i].meetsHz, rate) - middle);
            worst = std::max(worst, std::abs(error[i]));
        }
        if (worst < closeEnoughDb)
            break;
        // The first shelf gives most of the deep bass and some of the upper, the second the other way round.
        lift[0] += 2.2 * error[0] - 2.5 * error[1];
        lift[1] += 1.8 * error[1] - 0.5 * error[0];
        lift[2] += 2.2 * error[2];
        sections = sectionsOf(lift, rate);
    }
    return {sections, factorOfDb(-chainDb(sections, 1000, rate))};
}

} // namespace hvaudio::dsp
