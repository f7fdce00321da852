#include "platform/hvaudio/outputs/pipewire/speakerfeed.h"

#include "platform/hvaudio/dsp/fold.h"

namespace hvaudio {

namespace {

constexpr double fadeSeconds = 0.01;
constexpr int none = -1;

struct Place
{
    int speaker; ///< that the channel carries by itself
    int side;    ///< of the fold
};
// clang-format off
constexpr Place places[] = {
    {dsp::FrontLeft,  0},    // FL
    {dsp::FrontRight, 1},    // FR
    {none,            none}, // FC
    {dsp::Subwoofer,  none}, // LFE
    {dsp::RearLeft,   none}, // RL
    {dsp::RearRight,  none}, // RR
};
// clang-format on
static_assert(sizeof places / sizeof *places == SpeakerFeed::ChannelCount);

} // namespace

void SpeakerFeed::reset(Feed& feed, double rate) noexcept
{
    feed_ = &feed;
    bridge_.reset(rate);
    setLayout(Layout::Stereo);
    const float step = float(1 / (fadeSeconds * rate));
    folded_ = {1, 1, step};
    mean_ = {0, 0, step};
}

void SpeakerFeed::fill(std::uint64_t cycle, float* const channels[ChannelCount], int frames) noexcept
{
    const Layout wanted = layout();
    folded_.aim = wanted == Layout::Surround ? 0.0f : 1.0f;
    mean_.aim = wanted == Layout::Mono ? 1.0f : 0.0f;
    bridge_.begin(cycle, frames);
    for (int done = 0; done < frames; done += pieceFrames)
        fillPiece(channels, done, std::min(frames - done, pieceFrames));
}

void SpeakerFeed::fillPiece(float* const channels[ChannelCount], int done, int count) noexcept
{
    const bool any = bridge_.pull(input_[0], input_[1], count);
    const float* const in[2] = {any ? input_[0] : nullptr, any ? input_[1] : nullptr};
    float* own[dsp::speakerCount];
    for (int i = 0; i < dsp::speakerCount; ++i)
        own[i] = speakers_[i];
    feed_->pull(in, own, count);

    const bool folds = !folded_.steady() || folded_.now > 0;
    if (folds) {
        float* const sides[2] = {sides_[0], sides_[1]};
        dsp::foldToStereo(own, sides, count);
    }
    if (folds && (!mean_.steady() || mean_.now > 0)) {
        for (int n = 0; n < count; ++n) {
            const float share = smoothStep(mean_.after(n));
            const float half = 0.5f * share * (sides_[1][n] - sides_[0][n]);
            sides_[0][n] += half;
            sides_[1][n] -= half;
        }
    }
    for (int i = 0; i < ChannelCount; ++i) {
        if (!channels[i])
            continue;
        float* const to = channels[i] + done;
        const float* const alone = places[i].speaker == none ? nullptr : own[places[i].speaker];
        const float* const side = places[i].side == none ? nullptr : sides_[places[i].side];
        if (!folded_.steady() && alone) {
            for (int n = 0; n < count; ++n) {
                const float share = smoothStep(folded_.after(n));
                to[n] = alone[n] * (1 - share) + (side ? side[n] * share : 0.0f);
            }
        } else if (const float* const from = folded_.now > 0 ? side : alone) {
            std::copy(from, from + count, to);
        } else {
            std::fill(to, to + count, 0.0f);
        }
    }
    folded_.now = folded_.after(count);
    mean_.now = mean_.after(count);
}

} // namespace hvaudio
