#include "platform/hvaudio/sources/sources.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace hvaudio {

namespace {

constexpr double pi = 3.14159265358979323846;
constexpr double level = 0.1; // -20 dBFS

class PinkNoise final : public Source
{
public:
    PinkNoise(double rate, unsigned seed)
    {
        for (int i = 0; i < pairs; ++i) {
            const double pole = lowestHz * std::pow(spacing, i);
            pole_[i] = std::exp(-2 * pi * pole / rate);
            zero_[i] = std::exp(-2 * pi * pole * std::sqrt(spacing) / rate);
        }
        for (int s = 0; s < 2; ++s)
            random_[s] = seed * 2654435761u + 40503u * unsigned(s + 1);
        // The filter's gain for white noise is the energy of its impulse response.
        double energy = 0;
        std::array<double, pairs> memory{};
        for (int n = 0; n < int(rate); ++n) {
            const double x = filter(n == 0 ? 1 : 0, memory);
            energy += x * x;
        }
        // Uniform numbers in -1..1 have a mean square of 1/3.
        scale_ = level / std::sqrt(energy / 3);
    }

    bool render(const float* const*, float* left, float* right, int frames) noexcept override
    {
        float* const out[2] = {left, right};
        for (int s = 0; s < 2; ++s)
            for (int n = 0; n < frames; ++n)
                out[s][n] = float(scale_ * filter(white(random_[s]), memory_[s]));
        return true;
    }

private:
    static constexpr int pairs = 9;
    static constexpr double lowestHz = 8, spacing = 2.6;

    /// xorshift32 of G. Marsaglia, "Xorshift RNGs", 2003.
    static double white(std::uint32_t& state) noexcept
    {
        state ^= state << 13;
        state ^= state >> 17;
        state ^= state << 5;
        return double(state) / 2147483648.0 - 1;
    }
    /// y = (1 - zero z^-1) / (1 - pole z^-1) x, one pair after the other.
    double filter(double x, std::array<double, pairs>& memory) const noexcept
    {
        for (int i = 0; i < pairs; ++i) {
            const double state = x + pole_[i] * memory[i];
            x = state - zero_[i] * memory[i];
            memory[i] = state;
        }
        return x;
    }

    double pole_[pairs], zero_[pairs];
    double scale_ = 1;
    std::array<double, pairs> memory_[2] = {};
    std::uint32_t random_[2];
};

class Sweep final : public Source
{
public:
    explicit Sweep(double rate)
        : rate_(rate)
        , frames_(int(10 * rate))
        , edge_(int(0.02 * rate))
        , growth_(std::log(std::min(20000.0, 0.45 * rate) / lowestHz) / frames_)
    {
    }

    bool render(const float* const*, float* left, float* right, int frames) noexcept override
    {
        for (int n = 0; n < frames; ++n) {
            const int toEdge = std::min({at_, frames_ - at_, edge_});
            const double x = level * smoothStep(float(toEdge) / float(edge_)) * std::sin(phase_);
            left[n] = right[n] = float(x);
            phase_ += 2 * pi * lowestHz * std::exp(growth_ * at_) / rate_;
            if (phase_ > 2 * pi)
                phase_ -= 2 * pi;
            if (++at_ >= frames_) {
                at_ = 0;
                phase_ = 0;
            }
        }
        return true;
    }

private:
    static constexpr double lowestHz = 20;
    const double rate_;
    const int frames_, edge_;
    const double growth_;
    int at_ = 0;
    double phase_ = 0;
};

class Input final : public Source
{
public:
    bool render(const float* const in[2], float* left, float* right, int frames) noexcept override
    {
        if (!in[0] && !in[1])
            return false;
        float* const out[2] = {left, right};
        for (int s = 0; s < 2; ++s) {
            if (in[s])
                std::copy(in[s], in[s] + frames, out[s]);
            else
                std::fill(out[s], out[s] + frames, 0.0f);
        }
        return true;
    }
};

class FileSource final : public Source
{
public:
    explicit FileSource(std::unique_ptr<SoundFile> file)
        : file_(std::move(file))
        , ahead_(65536)
    {
        fill(firstFrames);
    }

    bool render(const float* const*, float* left, float* right, int frames) noexcept override
    {
        StereoFrame piece[128];
        for (int done = 0; done < frames;) {
            const int want = std::min(128, frames - done);
            const int got = ahead_.read(piece, want);
            for (int n = 0; n < got; ++n) {
                left[done + n] = piece[n].left;
                right[done + n] = piece[n].right;
            }
            // The disk is late: silence until it has caught up.
            std::fill(left + done + got, left + done + want, 0.0f);
            std::fill(right + done + got, right + done + want, 0.0f);
            done += want;
        }
        return true;
    }

    bool readAhead() override
    {
        fill(ahead_.writable());
        return !exhausted_;
    }

private:
    static constexpr int firstFrames = 8192;

    void fill(int frames)
    {
        std::array<StereoFrame, 1024> piece;
        bool restarted = false;
        while (frames > 0 && !exhausted_) {
            const int want = std::min(frames, int(piece.size()));
            const int got = file_->read(piece.data(), want);
            ahead_.write(piece.data(), got);
            frames -= got;
            if (got == want) {
                restarted = false;
                continue;
            }
            // The end: once more from the start, unless the start has nothing to give any more.
            exhausted_ = (got == 0 && restarted) || !file_->rewind();
            restarted = true;
        }
    }

    const std::unique_ptr<SoundFile> file_;
    Ring<StereoFrame> ahead_;
    bool exhausted_ = false;
};

} // namespace

std::unique_ptr<Source> makePinkNoise(double rate, unsigned seed)
{
    return std::make_unique<PinkNoise>(rate, seed);
}

std::unique_ptr<Source> makeSweep(double rate)
{
    return std::make_unique<Sweep>(rate);
}

std::unique_ptr<Source> makeInput()
{
    return std::make_unique<Input>();
}

std::unique_ptr<Source> makeFileSource(const std::string& path, double rate, std::string& error)
{
    auto file = SoundFile::open(path, rate, SoundFile::Quality::Playing, error);
    if (!file)
        return nullptr;
    return std::make_unique<FileSource>(std::move(file));
}

void Sources::prepare(double rate) noexcept
{
    fadeFrames_ = std::max(1, int(0.005 * rate));
    sounding_.store(nullptr);
    id_ = -1;
}

void Sources::set(int id, std::shared_ptr<Source> source)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    wanted_[id].store(source.get());
    std::swap(owned_[id], source);
    if (source)
        retired_.push_back(std::move(source));
    discardUnused();
}

std::vector<std::shared_ptr<Source>> Sources::all() const
{
    const std::lock_guard<std::mutex> lock(mutex_);
    std::vector<std::shared_ptr<Source>> sources;
    for (const auto& source : owned_)
        if (source)
            sources.push_back(source);
    return sources;
}

void Sources::discardUnused()
{
    retired_.erase(std::remove_if(retired_.begin(), retired_.end(),
                                  [this](const auto& source) { return sounding_.load() != source.get(); }),
                   retired_.end());
}

bool Sources::take(Source* source, int id) noexcept
{
    sounding_.store(source);
    if (wanted_[id].load() == source)
        return true;
    sounding_.store(nullptr);
    return false;
}

bool Sources::render(int id, const float* const in[2], float* left, float* right, int frames) noexcept
{
    if (id < 0 || id >= Player::sourceIds) {
        sounding_.store(nullptr);
        id_ = -1;
        return false;
    }
    if (id != id_) {
        id_ = id;
        take(wanted_[id].load(), id);
        level_ = fadeFrames_;
    }
    Source* source = sounding_.load();
    bool any = false;
    for (int done = 0; done < frames;) {
        Source* const wanted = wanted_[id].load();
        if (source != wanted && (level_ == 0 || !source)) {
            level_ = 0;
            if (!take(wanted, id)) {
                // Exchanged in this very moment: the next block has another look.
                std::fill(left + done, left + frames, 0.0f);
                std::fill(right + done, right + frames, 0.0f);
                return any;
            }
            source = wanted;
        }
        const bool leaving = source != wanted;
        const bool moving = leaving || level_ < fadeFrames_;
        const int count = !moving   ? frames - done
                          : leaving ? std::min(frames - done, level_)
                                    : std::min(frames - done, fadeFrames_ - level_);
        const float* const rest[2] = {in[0] ? in[0] + done : nullptr, in[1] ? in[1] + done : nullptr};
        const bool sounds = source && source->render(rest, left + done, right + done, count);
        if (!sounds) {
            std::fill(left + done, left + done + count, 0.0f);
            std::fill(right + done, right + done + count, 0.0f);
        }
        for (int n = 0; moving && n < count; ++n) {
            level_ += leaving ? -1 : 1;
            const float factor = smoothStep(float(level_) / float(fadeFrames_));
            left[done + n] *= factor;
            right[done + n] *= factor;
        }
        any |= sounds;
        done += count;
    }
    return any;
}

} // namespace hvaudio
