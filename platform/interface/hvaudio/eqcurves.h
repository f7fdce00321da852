#pragma once

#include "hvaudio/audioservice.h"

#include <iterator>

/// The equalizer's curves, in the one table that the page draws from and the sound processor plays from.
namespace hvaudio {

constexpr int eqBandCount = 13;

struct EqCurve
{
    int type;               ///< AudioEQType; -1 in the row of all that is no type
    int nameId;             ///< id of its name at the translator
    int value[eqBandCount]; ///< -10..10 dB, bands 32 Hz ... 16 kHz
};

/// The two user curves lie in the settings store; their rows here are what an empty store means. The lookup
/// visits nine places for eight types: the ninth is no type, and whatever isn't found, type 8 too, ends there
/// and is flat. Every name of an EQ type, by whichever list, is taken from here.
// clang-format off
constexpr EqCurve eqCurves[] = {
    {EQ_Type_Flat,   1226, { 0, 0, 0, 0,  0,  0,  0,  0, 0, 0,  0,  0,  0}},
    {EQ_Type_RB,     237,  { 1, 3, 5, 0, -1,  0, -2,  0, 3, 3,  1,  1,  1}},
    {EQ_Type_Rock,   239,  { 0, 4, 4, 0, -1, -1,  0,  3, 6, 6,  4,  4,  4}},
    {EQ_Type_Pop,    238,  {-1, 3, 3, 2,  0, -1, -1,  0, 2, 2,  1,  1,  1}},
    {EQ_Type_HipHop, 240,  { 0, 4, 5, 2,  0, -1, -2, -1, 0, 0, -1, -1, -1}},
    {EQ_Type_Jazz,   246,  { 1, 3, 2, 1,  0,  0,  1,  2, 1, 1,  0,  0,  0}},
    {EQ_Type_User1,  1258, { 0, 0, 0, 0,  0,  0,  0,  0, 0, 0,  0,  0,  0}},
    {EQ_Type_User2,  1259, { 0, 0, 0, 0,  0,  0,  0,  0, 0, 0,  0,  0,  0}},
    {-1,             1226, { 0, 0, 0, 0,  0,  0,  0,  0, 0, 0,  0,  0,  0}},
};
// clang-format on
static_assert(std::size(eqCurves) == 9, "eight types and the flat end");

/// The row of an EQ type; any number without one has the flat end's.
constexpr const EqCurve& eqCurveOf(int type)
{
    for (const EqCurve& curve : eqCurves) {
        if (curve.type == type)
            return curve;
    }
    return eqCurves[std::size(eqCurves) - 1];
}

} // namespace hvaudio
