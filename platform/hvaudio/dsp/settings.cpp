#include "platform/hvaudio/dsp/settings.h"

#include <cmath>

namespace hvaudio::dsp {

namespace {

class Clamper
{
public:
    void value(int& v, int low, int high, const char* name, int number = -1)
    {
        const int wanted = v < low ? low : v > high ? high : v;
        if (wanted != v)
            say(std::to_string(v), std::to_string(wanted), name, number);
        v = wanted;
    }
    void value(double& v, double low, double high, const char* name, int number = -1)
    {
        const double wanted = !std::isfinite(v) ? 0 : v < low ? low : v > high ? high : v;
        if (!(wanted == v))
            say(std::to_string(v), std::to_string(wanted), name, number);
        v = wanted;
    }
    void filter(FilterSettings& f, const char* frequencyName, const char* slopeName, int speaker)
    {
        value(f.frequency, 0, 0x7f, frequencyName, speaker);
        value(f.slope, 0, 3, slopeName, speaker);
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
    c.value(s.sourceGain, 0, 15, "source gain");
    c.value(s.mainVolume, 0, 50, "main volume");
    for (int i = 0; i < promptCount; ++i)
        c.value(s.promptVolume[i], 0, 50, "prompt volume", i);
    for (int i = 0; i < bandCount; ++i)
        c.value(s.equalizer[i], -10, 10, "equalizer band", i);
    c.value(s.balance, -15, 15, "balance");
    c.value(s.fader, -15, 15, "fader");
    for (int i = 0; i < cabinSpeakerCount; ++i) {
        CabinSpeakerSettings& speaker = s.cabin[i];
        c.filter(speaker.highPass, "high-pass index of speaker", "high-pass slope of speaker", i);
        c.filter(speaker.lowPass, "low-pass index of speaker", "low-pass slope of speaker", i);
        c.value(speaker.attenuation, 0, 12, "attenuation of speaker", i);
        c.value(speaker.delayMs, 0, 10, "delay of speaker", i);
    }
    c.value(s.subwoofer.filter, 0, 0x7f, "subwoofer filter");
    c.value(s.subwoofer.attenuation, 0, 60, "subwoofer attenuation");
    c.value(s.subwoofer.slope, 0, 3, "subwoofer slope");
    c.value(s.subwoofer.delayMs, 0, 10, "subwoofer delay");
    return c.text;
}

} // namespace hvaudio::dsp
