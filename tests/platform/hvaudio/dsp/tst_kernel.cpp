#include "tests/platform/hvaudio/dsp/sound.h"

#include "platform/hvaudio/dsp/equalizer.h"
#include "platform/hvaudio/dsp/snapshot.h"

#include <QtTest>

#include <cstring>

using namespace sound;

Q_DECLARE_METATYPE(Path)

/// The loops over samples on each path: cleaning, and the two forms of the filters.
class TestKernel : public QObject
{
    Q_OBJECT

private slots:
    void whatIsNoNumberIsCleanedWhereverItStands_data() { paths(); }
    void whatIsNoNumberIsCleanedWhereverItStands();
    void missingSideIsSilent_data() { paths(); }
    void missingSideIsSilent();
    void changeOfFormIsNotHeard_data() { paths(); }
    void changeOfFormIsNotHeard();
    void memoryComesBackFromTheOtherForm();
    void detectorFindsNoMoreThanItsBound_data() { paths(); }
    void detectorFindsNoMoreThanItsBound();
    void gainIsAppliedUpToTheCeiling_data() { paths(); }
    void gainIsAppliedUpToTheCeiling();

private:
    static void paths()
    {
        QTest::addColumn<Path>("path");
        for (Path path : allPaths)
            if (kernelOf(path))
                QTest::addRow("path %d", int(path)) << path;
    }
};

static Settings busy()
{
    Settings s = flat();
    s.mainDb = -20;
    s.loudness = true;
    s.equalizer = {6, 4, 0, -1, -3, 0, 1, 3, 5, -4, 2, -6, 4};
    for (int i = 0; i < cabinSpeakerCount; ++i)
        s.cabin[size_t(i)] = {{80, 1 + i}, {8000, 4 - i}, i, false, 0.3 * i};
    s.subwoofer.lowPass = {80, 3};
    return s;
}

void TestKernel::whatIsNoNumberIsCleanedWhereverItStands()
{
    QFETCH(Path, path);
    struct Bad
    {
        unsigned bits;
        double wanted;
    };
    // clang-format off
    const Bad bads[] = {
        {0x7fc00000,   0}, // not a number
        {0xffc00000,   0},
        {0x7f800001,   0}, // a signalling one
        {0x7f800000,   0}, // infinity
        {0xff800000,   0},
        {0x7f7fffff,  64}, // the largest number
        {0xff7fffff, -64},
        {0x42800001,  64}, // just beyond 64
        {0x42800000,  64},
        {0xbf000000,-0.5},
    };
    // clang-format on
    for (const Bad& bad : bads) {
        float sample;
        std::memcpy(&sample, &bad.bits, sizeof sample);
        for (int frames : {1, 3, 8, 21, pieceFrames})
            for (int at = 0; at < frames; at += 1 + frames / 40)
                for (int side = 0; side < 2; ++side) {
                    Signal in[2] = {Signal(size_t(frames), 0.25f), Signal(size_t(frames), 0.25f)};
                    in[side][size_t(at)] = sample;
                    double pairs[2 * pieceFrames];
                    kernelOf(path)->gather(in[0].data(), in[1].data(), Line{2, 0, 0}, pairs, frames);
                    for (int i = 0; i < 2 * frames; ++i)
                        QCOMPARE(pairs[i], i == 2 * at + side ? 2 * bad.wanted : 0.5);
                }
    }
}

void TestKernel::missingSideIsSilent()
{
    QFETCH(Path, path);
    const Signal in(100, 0.25f);
    double pairs[200];
    kernelOf(path)->gather(in.data(), nullptr, Line{1, 0.5, 3}, pairs, 100);
    for (int n = 0; n < 100; ++n) {
        QCOMPARE(pairs[2 * n], 0.25 * (1 + 0.5 * (3 + n)));
        QCOMPARE(pairs[2 * n + 1], 0.0);
    }
}

/// Filters that go on in place of the same ones, and levels that glide to the same ones, sound as if they
/// rested.
void TestKernel::changeOfFormIsNotHeard()
{
    QFETCH(Path, path);
    const Kernel& kernel = *kernelOf(path);
    constexpr double rate = 48000;
    const Snapshot snapshot = makeSnapshot(busy(), EqualizerDesign(rate), rate);
    const Filters& filters = snapshot.filters;
    const Parameters step;
    FilterMemory resting{}, changing{};
    constexpr int frames = 100;
    double largest = 0;
    for (int piece = 0; piece < 40; ++piece) {
        const Signal in = whiteNoise(0.5, frames, unsigned(piece));
        double pairs[2][2 * frames];
        Speakers out[2];
        for (int i = 0; i < 2; ++i) {
            kernel.gather(in.data(), in.data(), Line{}, pairs[i], frames);
            for (Signal& speaker : out[i])
                speaker.resize(frames);
        }
        const auto to = [](Speakers& s) {
            return std::array<float*, speakerCount>{s[0].data(), s[1].data(), s[2].data(), s[3].data(),
                                                    s[4].data()};
        };
        kernel.cascade(pairs[0], frames, filters, resting);
        kernel.crossover(pairs[0], to(out[0]).data(), frames, filters, Lines{snapshot.parameters}, resting);
        if (piece % 2) {
            toStateForm(changing, filters);
            toDirectForm(changing, filters);
        }
        kernel.cascade(pairs[1], frames, filters, changing);
        kernel.crossover(pairs[1], to(out[1]).data(), frames, filters,
                         Lines{snapshot.parameters, piece % 2 ? &step : nullptr, 3}, changing);
        for (int i = 0; i < speakerCount; ++i)
            for (int n = 0; n < frames; ++n) {
                largest = std::max(largest, double(std::abs(out[0][size_t(i)][size_t(n)])));
                QVERIFY(std::abs(out[0][size_t(i)][size_t(n)] - out[1][size_t(i)][size_t(n)]) < 1e-7f);
            }
    }
    QVERIFY(largest > 0.1);
}

void TestKernel::memoryComesBackFromTheOtherForm()
{
    // The lowest corner at the highest rate, where the two forms differ most in size, and flat bands, whose
    // output tells nothing of their memory.
    Settings s = flat();
    for (auto& speaker : s.cabin)
        speaker.highPass = {10, 4};
    const Snapshot snapshot = makeSnapshot(s, EqualizerDesign(192000), 192000);
    std::mt19937 random(1);
    const auto number = [&] { return double(random()) / 4294967296.0 - 0.5; };
    FilterMemory memory{};
    for (int i = 0; i < cascadeLanes; ++i)
        memory.cascade.first[i] = number(), memory.cascade.second[i] = number();
    for (int i = 0; i < highLanes; ++i)
        memory.high.first[i] = number(), memory.high.second[i] = number();
    const FilterMemory before = memory;
    toDirectForm(memory, snapshot.filters);
    QVERIFY(std::abs(memory.high.first[0] - before.high.first[0]) > 100);
    toStateForm(memory, snapshot.filters);
    for (int i = 0; i < cascadeLanes; ++i) {
        QVERIFY(std::abs(memory.cascade.first[i] - before.cascade.first[i]) < 1e-11);
        QVERIFY(std::abs(memory.cascade.second[i] - before.cascade.second[i]) < 1e-11);
    }
    for (int i = 0; i < highLanes; ++i) {
        QVERIFY(std::abs(memory.high.first[i] - before.high.first[i]) < 1e-11);
        QVERIFY(std::abs(memory.high.second[i] - before.high.second[i]) < 1e-11);
    }
}

/// What the limiter leaves out because of the bound can't be above it.
void TestKernel::detectorFindsNoMoreThanItsBound()
{
    QFETCH(Path, path);
    const Kernel& kernel = *kernelOf(path);
    constexpr int cells = 2000, frames = cells * cellFrames, before = 2 * cellFrames;
    std::mt19937 random(9);
    double closest = 0;
    for (int kind = 0; kind < 5; ++kind) {
        Signal s = kind == 0   ? whiteNoise(1, frames + before, 1)
                   : kind == 1 ? pinkNoise(1, frames + before, 2)
                   : kind == 2 ? sine(50, 1, frames + before)
                               : silence(frames + before);
        if (kind == 3)
            for (float& x : s)
                x = random() & 1 ? 1.0f : -1.0f;
        // Second differences of size 1, with the signs that the filter for the middle answers most.
        constexpr float crest[cellFrames] = {-1.5f, -1.5f, -1.5f, -0.5f, -0.5f, 0.5f,  0.5f,  1.5f,
                                             1.5f,  0.5f,  0.5f,  -0.5f, -0.5f, -1.5f, -1.5f, -1.5f};
        if (kind == 4)
            for (size_t n = 0; n < s.size(); ++n)
                s[n] = crest[n % cellFrames];
        float bend[speakerCount] = {4, 4, 4, 4, 4}, top[speakerCount], most[speakerCount];
        for (int cell = 0; cell < cells; ++cell) {
            const float* at[speakerCount];
            for (int i = 0; i < speakerCount; ++i)
                at[i] = &s[size_t(before + ((cell + i) % cells) * cellFrames)];
            kernel.measure(at, bend, top, most);
            if (cell == 0 || cell + speakerCount >= cells)
                continue; // the cells before weren't measured
            for (int i = 0; i < speakerCount; ++i) {
                float largest = 0;
                for (int n = -6; n <= 10; ++n)
                    largest = std::max(largest, std::abs(at[i][n]));
                QCOMPARE(top[i], largest);
                const float between = kernel.largestBetween(at[i]);
                QVERIFY2(between <= most[i], qPrintable(QString("%1 above %2").arg(between).arg(most[i])));
                QVERIFY(kind != 2 || most[i] < 1.0001f * top[i]);
                closest = std::max(closest, double(between / most[i]));
            }
        }
    }
    QVERIFY(closest > 0.995);
}

void TestKernel::gainIsAppliedUpToTheCeiling()
{
    QFETCH(Path, path);
    for (int frames : {1, 5, 16, 37, pieceFrames}) {
        const Signal in = whiteNoise(1, frames, 3), gain = whiteNoise(1, frames, 4);
        Signal out(in.size()), copy(in.size());
        const float most = kernelOf(path)->applyGain(in.data(), gain.data(), out.data(), frames, 0.25f);
        float largest = 0;
        for (size_t n = 0; n < in.size(); ++n) {
            QCOMPARE(out[n], std::clamp(in[n] * gain[n], -0.25f, 0.25f));
            largest = std::max(largest, std::abs(out[n]));
        }
        QCOMPARE(most, largest);
        QCOMPARE(kernelOf(path)->copy(in.data(), copy.data(), frames), peak(in));
        QVERIFY(copy == in);
    }
}

QTEST_GUILESS_MAIN(TestKernel)
#include "tst_kernel.moc"
