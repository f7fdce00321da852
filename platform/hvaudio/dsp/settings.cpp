#include "platform/hvaudio/dsp/settings.h"

#include <algorithm>
#include <cmath>

namespace hvaudio::dsp {

namespace {

constexpr double lowestHz = 10, highestHz = 20000;

class Clamper
{
public:
    void value(int& v, int low, int high, const char* name, int number = -1)
    {
        const int wanted = std::clamp(v, low, high);
        if (wanted != v)
            say(std::to_string(v), std::to_string(wanted), name, number);
        v = wanted;
    }
    void value(double& v, double low, double high, const char* name, int number = -1)
    {
        const double wanted = std::isfinite(v) ? std::clamp(v, low, high) : 0;
        if (!(wanted == v))
            say(std::to_string(v), std::to_string(wanted), name, number);
        v = wanted;
    }
    /// A level up to 0 dB, down to `silentDb`.
    void level(double& v, const char* name, int number = -1)
    {
        const double wanted = std::isnan(v) ? silentDb : std::min(v, 0.0);
        if (!(wanted == v))
            say(std::to_string(v), std::to_string(wanted), name, number);
        v = wanted;
    }
    void filter(FilterSettings& f, const char* frequencyName, const char* orderName, int speaker = -1)
    {
        if (f.hz != 0)
            value(f.hz, lowestHz, highestHz, frequencyName, speaker);
        value(f.order, 1, 4, orderName, speaker);
    }
    std::string text;

private:
    void say(const std::string& was, const std::string& is, const char* name, int number)
    {
        text += (text.empty() ? "" : ", ") + std::string(name) +
                (number < 0 ? "" : " " + std::to_string(number)) + " " + was + " -> " + is;
    }
};

} // namespace

std::string clampToRange(Settings& s)
{
    Clamper c;
    c.value(s.sourceDb, -20, 20, "source level");
    c.level(s.mainDb, "main level");
    for (int i = 0; i < promptCount; ++i)
        c.level(s.promptDb[i], "prompt level", i);
    for (int i = 0; i < bandCount; ++i)
        c.value(s.equalizer[i], -10, 10, "equalizer band", i);
    c.value(s.balance, -1, 1, "balance");
    c.value(s.fader, -1, 1, "fader");
    for (int i = 0; i < cabinSpeakerCount; ++i) {
        CabinSpeakerSettings& speaker = s.cabin[i];
        c.filter(speaker.highPass, "high-pass of speaker", "high-pass order of speaker", i);
        c.filter(speaker.lowPass, "low-pass of speaker", "low-pass order of speaker", i);
        c.value(speaker.attenuation, 0, 12, "attenuation of speaker", i);
        c.value(speaker.delayMs, 0, 10, "delay of speaker", i);
    }
    c.filter(s.subwoofer.lowPass, "subwoofer low-pass", "subwoofer low-pass order");
    c.value(s.subwoofer.attenuation, 0, 60, "subwoofer attenuation");
    c.value(s.subwoofer.delayMs, 0, 10, "subwoofer delay");
    return c.text;
}

} // namespace hvaudio::dsp
