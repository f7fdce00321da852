#include "platform/hvaudio/sources/chimes.h"

#include "platform/hvaudio/sources/smoothstep.h"

#include <algorithm>
#include <cmath>
#include <system_error>

namespace hvaudio {

namespace {

constexpr double pi = 3.14159265358979323846;
constexpr unsigned silence = 0, once = 1, repeated = 2, wishBits = 3, nextWish = 4;
constexpr double peak = 0.25; // -12 dBFS
constexpr double highestHz = 8000;

struct Note
{
    dsp::Prompt prompt;
    double seconds; ///< when it is struck
    double hz;
    double level;
    double decay; ///< seconds until it has fallen by 60 dB
};

// clang-format off
constexpr Note notes[] = {
    // ring tone: a rising figure, answered once, and a rest
    {dsp::Ring,  0.00,  659.26, 1.0, 0.9},
    {dsp::Ring,  0.15,  783.99, 1.0, 0.9},
    {dsp::Ring,  0.30,  987.77, 1.0, 0.9},
    {dsp::Ring,  0.45, 1318.51, 1.0, 1.4},
    {dsp::Ring,  0.90,  987.77, 0.8, 0.9},
    {dsp::Ring,  1.05, 1318.51, 1.0, 1.6},
    // call connected: two fifths
    {dsp::Call,  0.00,  440.00, 1.0, 0.8},
    {dsp::Call,  0.00,  659.26, 0.7, 0.8},
    {dsp::Call,  0.25,  659.26, 1.0, 1.2},
    {dsp::Call,  0.25,  987.77, 0.7, 1.2},
    // voice: the unit listens
    {dsp::Voice, 0.00,  783.99, 0.8, 0.5},
    {dsp::Voice, 0.12, 1174.66, 1.0, 0.9},
    // navigation: a falling third
    {dsp::Navi,  0.00, 1046.50, 1.0, 0.9},
    {dsp::Navi,  0.22,  880.00, 1.0, 1.3},
};
/// Length of one round in seconds, in the order of dsp::Prompt.
constexpr double lengths[] = {3.0, 1.4, 1.0, 1.5};
/// Overtones of a bell: how many times the note's frequency, how strong, how much sooner they are gone.
constexpr struct { double ratio, level, sooner; } partials[] = {
    {1.00, 1.00, 1.0},
    {2.00, 0.35, 1.6},
    {3.01, 0.12, 2.5},
    {4.17, 0.06, 4.0},
};
// clang-format on
static_assert(std::size(lengths) == dsp::promptCount, "one row a prompt");

std::vector<float> makeTable(dsp::Prompt prompt, double seconds, double rate)
{
    const int frames = int(seconds * rate);
    std::vector<double> sum(frames);
    const int attack = std::max(1, int(0.004 * rate));
    for (const Note& note : notes) {
        if (note.prompt != prompt)
            continue;
        const int start = int(note.seconds * rate);
        for (const auto& partial : partials) {
            const double hz = note.hz * partial.ratio;
            if (hz > highestHz || hz > 0.4 * rate)
                continue;
            const double fall = std::log(1000.0) * partial.sooner / (note.decay * rate);
            // A sine that decays is a recursion of two terms; the unit would wait for a call of exp and sin
            // for each of five million samples when it starts.
            const double turn = 2 * pi * hz / rate, shrink = std::exp(-fall);
            const double last = 2 * shrink * std::cos(turn), beforeLast = -shrink * shrink;
            double y = 0, before = -std::sin(turn) / shrink; // sample 0, and the one that would precede it
            for (int n = start; n < frames; ++n) {
                const int t = n - start;
                const double rise = t < attack ? smoothStep(float(t) / float(attack)) : 1;
                sum[n] += note.level * partial.level * rise * y;
                const double next = last * y + beforeLast * before;
                before = y;
                y = next;
            }
        }
    }
    double largest = 1e-9;
    for (double x : sum)
        largest = std::max(largest, std::abs(x));
    // The last tenth of a second goes to silence, so that a round ends and begins at 0.
    const int tail = std::min(frames, int(0.1 * rate));
    std::vector<float> table(frames);
    for (int n = 0; n < frames; ++n) {
        const int left = frames - n;
        const double out = left < tail ? smoothStep(float(left) / float(tail)) : 1;
        table[n] = float(sum[n] * out * peak / largest);
    }
    return table;
}

} // namespace

Chimes::~Chimes()
{
    for (Voice& voice : m_voices)
        if (voice.maker.joinable())
            voice.maker.join();
}

void Chimes::prepare(double rate)
{
    const std::lock_guard<std::mutex> lock(m_makers);
    for (Voice& voice : m_voices) {
        if (rate != m_rate) {
            if (voice.maker.joinable())
                voice.maker.join();
            voice.made = false;
        }
        voice.seen = voice.wish.load();
        voice.done.store(voice.seen);
        voice.at = voice.fade = -1;
    }
    m_rate = rate;
    m_fadeFrames = std::max(1, int(0.02 * rate));
}

void Chimes::ask(dsp::Prompt which, unsigned wish) noexcept
{
    std::atomic<unsigned>& word = m_voices[which].wish;
    unsigned before = word.load(std::memory_order_relaxed);
    while (!word.compare_exchange_weak(before, ((before & ~wishBits) + nextWish) | wish))
        ;
}

void Chimes::start(dsp::Prompt which, bool again) noexcept
{
    if (make(which))
        ask(which, again ? repeated : once);
}

bool Chimes::make(dsp::Prompt which) noexcept
{
    Voice& voice = m_voices[which];
    const std::lock_guard<std::mutex> lock(m_makers);
    if (voice.made || voice.maker.joinable())
        return true;
    try {
        voice.maker = std::thread([&voice, which, rate = m_rate] {
            voice.table = makeTable(which, lengths[which], rate);
            voice.made.store(true, std::memory_order_release);
        });
    } catch (const std::system_error&) {
        return false; // no more threads are to be had; the chime stays silent
    }
    return true;
}

void Chimes::end(dsp::Prompt which) noexcept
{
    if (sounds(which))
        ask(which, silence);
}

bool Chimes::sounds(dsp::Prompt which) const noexcept
{
    const Voice& voice = m_voices[which];
    return voice.done.load() != voice.wish.load();
}

bool Chimes::anySounds() const noexcept
{
    return std::any_of(std::begin(m_voices), std::end(m_voices),
                       [](const Voice& voice) { return voice.done.load() != voice.wish.load(); });
}

double Chimes::seconds(dsp::Prompt which) const noexcept
{
    return m_rate > 0 ? std::floor(lengths[which] * m_rate) / m_rate : 0;
}

bool Chimes::render(dsp::Prompt which, float* out, int frames) noexcept
{
    if (!isMade(which))
        return false;
    Voice& voice = m_voices[which];
    const unsigned wish = voice.wish.load(std::memory_order_acquire);
    if (wish != voice.seen) {
        voice.seen = wish;
        if (voice.at >= 0)
            voice.fade = voice.fade >= 0 ? voice.fade : m_fadeFrames;
        else
            voice.at = (wish & wishBits) == silence ? -1 : 0;
    }
    if (voice.at < 0) {
        voice.done.store(voice.seen, std::memory_order_release);
        return false;
    }
    const int length = int(voice.table.size());
    int n = 0;
    for (; n < frames && voice.at >= 0; ++n) {
        float x = voice.table[voice.at++];
        bool over = false;
        if (voice.fade >= 0) {
            x *= smoothStep(float(voice.fade) / float(m_fadeFrames));
            over = --voice.fade < 0;
            if (over)
                voice.at = (voice.seen & wishBits) == silence ? -1 : 0;
        }
        if (!over && voice.at >= length)
            voice.at = (voice.seen & wishBits) == repeated && voice.fade < 0 ? 0 : -1;
        out[n] = x;
    }
    std::fill(out + n, out + frames, 0.0f);
    if (voice.at < 0) {
        voice.fade = -1;
        voice.done.store(voice.seen, std::memory_order_release);
    }
    return true;
}

} // namespace hvaudio
