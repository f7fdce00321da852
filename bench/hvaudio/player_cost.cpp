// What the unit's sound costs while it runs: player_cost [seconds of sound, default 600] [--paced]
//
//   set to sound    from AudioService::setBalanceFader on the GUI thread to the first changed sample of the
//                   blocks of 64 frames that another thread pulls without pause: wall time, with and without
//                   a commit of the settings store
//   worst block     of 512 frames, while settings, sources and prompts change all the while: the slowest and
//                   the quantiles; what the scheduler takes from the pulling thread is in wall time, so
//                   thread time is given too. With --paced each block is pulled when it is due, so the run
//                   lasts as long as the sound, as it does in a unit; the pulling thread asks for real-time
//                   priority as a sound server's does
//   idle            a block of 512 frames of silence, after everything has rung out
//   memory          resident set before and after the player is made and has played
#include "hvaudio/audioservice.h"
#include "hvaudio/crossovers.h"
#include "platform/common/settings/settingsstore.h"
#include "platform/hvaudio/player.h"
#include "platform/hvaudioservice/audioservicehost.h"

#include <QCoreApplication>
#include <QTemporaryDir>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <pthread.h>
#include <sched.h>
#include <string>
#include <thread>
#include <time.h>
#include <vector>

using namespace hvaudio;

namespace {

constexpr double rate = 48000;

double now()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

double threadTime()
{
    timespec t;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return double(t.tv_sec) + 1e-9 * double(t.tv_nsec);
}

long residentKiB()
{
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.rfind("VmRSS:", 0) == 0)
            return std::atol(line.c_str() + 6);
    return 0;
}

/// Pulls when it is told to.
class Puller final : public Output
{
public:
    bool start(Feed& feed, std::string&) override
    {
        m_feed = &feed;
        return feed.prepare(rate);
    }
    void stop() override {}
    bool pulling() const override { return false; }
    std::string status() const override { return "measured"; }
    const float* pull(int frames, const float* in = nullptr)
    {
        const float* const from[2] = {in, in};
        float* out[dsp::speakerCount];
        for (int i = 0; i < dsp::speakerCount; ++i)
            out[i] = m_samples[i];
        m_feed->pull(from, out, frames);
        return m_samples[0];
    }

private:
    Feed* m_feed = nullptr;
    float m_samples[dsp::speakerCount][8192];
};

dsp::Settings loud()
{
    dsp::Settings settings;
    settings.power = true;
    settings.source = HVAudio_source_Radio;
    settings.mainDb = -12;
    settings.loudness = true;
    for (auto& speaker : settings.cabin) {
        speaker.highPass = {80, 4};
        speaker.delayMs = 2.3;
    }
    return settings;
}

/// The way of a touch: the service is called on this thread while another one pulls, as a sound server does
/// but without pause.
void setToSound(Player& player, Puller& puller)
{
    // A constant input, so that every sample that differs from the one before shows the change.
    std::vector<float> in(64, 0.1f);
    AudioService* const service = AudioService::instance();
    player.setSource(HVAudio_source_Radio, SourceKind::Input);
    AudioServiceHost::setSink([&player](const dsp::Settings& settings) { player.setSettings(settings); });
    AudioServiceHost::powerOn();
    service->setVolumeLevel(45, 0);

    std::atomic<bool> ends{false};
    std::atomic<double> changed{0}; ///< when the first changed sample was there; 0 = it is looked for
    std::atomic<int> steady{0};     ///< blocks without any change
    std::thread world([&] {
        float last = 0;
        while (!ends) {
            const float* const out = puller.pull(64, in.data());
            const bool same = std::all_of(out, out + 64, [&](float x) { return std::abs(x - last) < 1e-7f; });
            last = out[63];
            steady = same ? steady + 1 : 0;
            if (!same && changed == 0)
                changed = now();
        }
    });
    for (bool save : {false, true}) {
        std::vector<double> wall, own;
        for (int round = 0; round < 200; ++round) {
            while (steady < 500)
                std::this_thread::yield();
            changed = 0;
            const double asked = now();
            service->setBalanceFader(round % 2 ? 0 : 10, 0, save);
            own.push_back(now() - asked);
            while (changed == 0)
                std::this_thread::yield();
            wall.push_back(changed - asked);
        }
        std::sort(wall.begin(), wall.end());
        std::sort(own.begin(), own.end());
        std::printf(
            "set to sound    %s: median %.0f us, worst %.0f us of wall time; the call itself took %.0f us\n",
            save ? "kept in the store" : "not kept", 1e6 * wall[wall.size() / 2], 1e6 * wall.back(),
            1e6 * own[own.size() / 2]);
    }
    ends = true;
    world.join();
    AudioServiceHost::setSink(nullptr);
    std::printf(
        "                the processor's own look-ahead is %d frames (%.2f ms), which is in it only as far "
        "as it takes to compute; the output's block comes on top\n",
        player.engine().latencyFrames(), 1e3 * player.engine().latencyFrames() / rate);
}

/// Asks for the priority of a sound server's thread; says whether it was given.
bool becomeRealTime()
{
    sched_param wanted = {};
    wanted.sched_priority = 20;
    return pthread_setschedparam(pthread_self(), SCHED_FIFO, &wanted) == 0;
}

/// As if many hands were at the unit, until `ends`.
void changeEverything(Player& player, const std::atomic<bool>& ends, std::atomic<long>& changes)
{
    for (unsigned n = 0; !ends; ++n) {
        dsp::Settings settings = loud();
        settings.equalizer[n % dsp::bandCount] = int(n * 7 % 21) - 10;
        settings.balance = int(n * 3 % 31) / 15.0 - 1;
        settings.mainDb = 1.2 * (int(n * 11 % 51) - 50);
        settings.cabin[n % 4].delayMs = n % 100 / 10.0;
        settings.cabin[n % 4].highPass = {double(groupCrossoverHz[n % std::size(groupCrossoverHz)]),
                                          1 + int(n % 4)};
        settings.source = n % 64 < 32 ? 6 : 18;
        player.setSettings(settings);
        if (n % 50 == 0)
            player.prompt(dsp::Prompt(n / 50 % dsp::promptCount));
        if (n % 200 == 0)
            player.setSource(n % 400 ? 6 : 18, n % 3 ? SourceKind::PinkNoise : SourceKind::Sweep);
        ++changes;
        std::this_thread::sleep_for(std::chrono::microseconds(300));
    }
}

void worstBlock(Player& player, Puller& puller, double seconds, bool paced)
{
    constexpr double blockSeconds = 512 / rate;
    player.setSource(6, SourceKind::PinkNoise);
    player.setSource(18, SourceKind::Sweep);
    player.setSettings(loud());
    for (int n = 0; n < 200; ++n)
        puller.pull(512);
    std::atomic<bool> ends{false};
    std::atomic<long> changes{0};
    std::thread gui([&] { changeEverything(player, ends, changes); });
    const int blocks = int(seconds * rate / 512);
    std::vector<double> wall, own;
    wall.reserve(std::size_t(blocks));
    own.reserve(std::size_t(blocks));
    const bool realTime = paced && becomeRealTime();
    const auto first = std::chrono::steady_clock::now();
    int late = 0;
    for (int n = 0; n < blocks; ++n) {
        if (paced)
            std::this_thread::sleep_until(first + std::chrono::duration<double>(n * blockSeconds));
        const double start = now(), startOwn = threadTime();
        puller.pull(512);
        const double due = std::chrono::duration<double>(first.time_since_epoch()).count() + n * blockSeconds;
        late += paced && now() > due + blockSeconds;
        own.push_back(threadTime() - startOwn);
        wall.push_back(now() - start);
    }
    ends = true;
    gui.join();
    std::sort(wall.begin(), wall.end());
    std::sort(own.begin(), own.end());
    const auto at = [](const std::vector<double>& v, double q) {
        return 1e6 * v[std::size_t(q * double(v.size() - 1))];
    };
    std::printf(
        "worst block     of %d, %ld changes meanwhile: thread time median %.0f us, 99.9 %% %.0f us, worst "
        "%.0f us; wall time worst %.0f us; a block lasts %.0f us\n",
        blocks, changes.load(), at(own, 0.5), at(own, 0.999), at(own, 1), at(wall, 1), 1e6 * blockSeconds);
    if (paced)
        std::printf("                paced, %s: %d of %d blocks were ready later than their own length "
                    "after they were due\n",
                    realTime ? "real-time priority" : "priority of any program", late, blocks);
}

void idle(Player& player, Puller& puller)
{
    player.setSource(6, SourceKind::Silence);
    player.setSource(18, SourceKind::Silence);
    for (int n = 0; n < 20000 && !player.engine().idle(); ++n)
        puller.pull(512);
    constexpr int blocks = 20000;
    const double start = threadTime();
    for (int n = 0; n < blocks; ++n)
        puller.pull(512);
    const double each = (threadTime() - start) / blocks;
    std::printf("idle            %s, %.2f us for a block of 512 frames, %.4f %% of one core\n",
                player.engine().idle() ? "silent" : "NOT SILENT", 1e6 * each, 100 * each * rate / 512);
}

} // namespace

int main(int argc, char** argv)
{
    const double seconds = argc > 1 ? std::atof(argv[1]) : 600;
    const bool paced = argc > 2 && std::string(argv[2]) == "--paced";
    if (argc > 3 || (argc > 2 && !paced)) {
        std::fprintf(stderr, "player_cost [seconds] [--paced]\n");
        return 2;
    }
    if (!(seconds > 0)) {
        std::fprintf(stderr, "player_cost: '%s' is no number of seconds\n", argv[1]);
        return 2;
    }
    QCoreApplication application(argc, argv);
    QTemporaryDir folder;
    if (mem::SettingsStore::instance()->open(folder.filePath("cost.db")) !=
        mem::SettingsStore::Opened::Durable) {
        std::fprintf(stderr, "player_cost: no settings store in %s\n", qPrintable(folder.path()));
        return 1;
    }
    const long before = residentKiB();
    Player player;
    auto own = std::make_unique<Puller>();
    Puller& puller = *own;
    player.setSettings(loud());
    player.setSource(6, SourceKind::PinkNoise);
    player.setSource(18, SourceKind::Sweep);
    player.start(std::move(own));
    for (int n = 0; n < 200; ++n)
        puller.pull(512);
    std::printf("memory          %ld KiB resident more than before the player was made\n",
                residentKiB() - before);
    setToSound(player, puller);
    worstBlock(player, puller, seconds, paced);
    idle(player, puller);
    AudioServiceHost::shutdown();
    mem::SettingsStore::instance()->close();
    return 0;
}
