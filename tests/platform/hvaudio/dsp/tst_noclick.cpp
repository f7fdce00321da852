#include "tests/platform/hvaudio/dsp/sound.h"

#include <QtTest>

#include <functional>

using namespace sound;

/// A 200 Hz sine plays while settings change: whatever lies above 5 kHz is a click.
class TestNoClick : public QObject
{
    Q_OBJECT

private slots:
    void anyChangeIsSmooth_data();
    void anyChangeIsSmooth();
    void aClickWouldBeFound();
};

using Change = std::function<void(Settings&)>;
Q_DECLARE_METATYPE(Change)

/// Largest sample of what lies above 5 kHz, in dBFS. Four second-order Butterworth sections in double keep
/// the sine out; all go on by a sample at once, for one after the other would wait for each result.
OPTIMIZED("O3") static double clickDb(const Signal& signal, double rate)
{
    constexpr int sections = 4;
    const double g = std::tan(pi * 5000 / rate);
    double k[sections], a1[sections], ic1[sections] = {}, ic2[sections] = {};
    for (int section = 0; section < sections; ++section) {
        k[section] = 2 * std::cos(pi * (2 * section + 1) / 16);
        a1[section] = 1 / (1 + g * (g + k[section]));
    }
    double largest = 0;
    for (const float sample : signal) {
        double v = double(sample);
        for (int section = 0; section < sections; ++section) {
            const double v3 = v - ic2[section];
            const double v1 = a1[section] * (ic1[section] + g * v3), v2 = ic2[section] + g * v1;
            ic1[section] = 2 * v1 - ic1[section];
            ic2[section] = 2 * v2 - ic2[section];
            v = v - k[section] * v1 - v2;
        }
        largest = std::max(largest, std::abs(v));
    }
    return db(largest);
}

static void nothing(Settings&)
{
}

/// The same in each speaker of the cabin.
static Change inCabin(std::function<void(CabinSpeakerSettings&)> change)
{
    return [change](Settings& s) {
        for (CabinSpeakerSettings& c : s.cabin)
            change(c);
    };
}

static Change delays(double ms)
{
    return [ms](Settings& s) {
        inCabin([ms](auto& c) { c.delayMs = ms; })(s);
        s.subwoofer.delayMs = ms;
    };
}

struct Row
{
    const char* name;
    Change before;
    Change change;
};

// clang-format off
static const Row levelRows[] = {
    {"loudness on",                          [](Settings& s) { s.mainDb = -24; },                        [](Settings& s) { s.loudness = true; }},
    {"loudness off",                         [](Settings& s) { s.mainDb = -24; s.loudness = true; },     [](Settings& s) { s.loudness = false; }},
    {"loudness on at the lowest volume",     [](Settings& s) { s.mainDb = -58.8; },                      [](Settings& s) { s.loudness = true; }},
    {"volume from the lowest with loudness", [](Settings& s) { s.mainDb = -58.8; s.loudness = true; },   [](Settings& s) { s.mainDb = 0; }},
    {"volume with loudness",                 [](Settings& s) { s.mainDb = -48; s.loudness = true; },     [](Settings& s) { s.mainDb = 0; }},
    {"volume up",                            [](Settings& s) { s.mainDb = silentDb; },                   [](Settings& s) { s.mainDb = 0; }},
    {"volume down",                          nothing,                                                    [](Settings& s) { s.mainDb = silentDb; }},
    {"one volume step",                      nothing,                                                    [](Settings& s) { s.mainDb = -1.2; }},
    {"mute",                                 nothing,                                                    [](Settings& s) { s.mute = true; }},
    {"mute off",                             [](Settings& s) { s.mute = true; },                         [](Settings& s) { s.mute = false; }},
    {"power off",                            nothing,                                                    [](Settings& s) { s.power = false; }},
    {"power on",                             [](Settings& s) { s.power = false; },                       [](Settings& s) { s.power = true; }},
    {"another source",                       nothing,                                                    [](Settings& s) { s.source = 6; }},
    {"another source with its gain",         nothing,                                                    [](Settings& s) { s.source = 6; s.sourceDb = 10; }},
    {"source gain",                          [](Settings& s) { s.sourceDb = -5; },                       [](Settings& s) { s.sourceDb = 10; }},
    {"balance to the right",                 nothing,                                                    [](Settings& s) { s.balance = 1; }},
    {"balance from side to side",            [](Settings& s) { s.balance = -1; },                        [](Settings& s) { s.balance = 1; }},
    {"fader from end to end",                [](Settings& s) { s.fader = -1; },                          [](Settings& s) { s.fader = 1; }},
};
static const Row speakerRows[] = {
    {"high-pass off",                inCabin([](auto& c) { c.highPass = {250, 4}; }),                    inCabin([](auto& c) { c.highPass.hz = 0; })},
    {"high-pass frequency",          inCabin([](auto& c) { c.highPass = {30, 4}; }),                     inCabin([](auto& c) { c.highPass.hz = 250; })},
    {"low-pass on",                  nothing,                                                            inCabin([](auto& c) { c.lowPass = {2000, 4}; })},
    {"low-pass off",                 inCabin([](auto& c) { c.lowPass = {2000, 4}; }),                    inCabin([](auto& c) { c.lowPass.hz = 0; })},
    {"attenuation",                  nothing,                                                            inCabin([](auto& c) { c.attenuation = 12; })},
    {"polarity of the speakers",     nothing,                                                            inCabin([](auto& c) { c.inverted = true; })},
    {"polarity of the subwoofer",    nothing,                                                            [](Settings& s) { s.subwoofer.inverted = true; }},
    {"subwoofer silent",             nothing,                                                            [](Settings& s) { setSubwoofer(s, 0); }},
    {"subwoofer sounds",             [](Settings& s) { setSubwoofer(s, 0); },                            [](Settings& s) { setSubwoofer(s, 7); }},
    {"subwoofer frequency",          [](Settings& s) { s.subwoofer.lowPass.hz = 30; },                   [](Settings& s) { s.subwoofer.lowPass.hz = 250; }},
    {"subwoofer slope",              [](Settings& s) { s.subwoofer = {false, {250, 1}, 0, false, 0}; },  [](Settings& s) { s.subwoofer.lowPass.order = 4; }},
    {"subwoofer level",              nothing,                                                            [](Settings& s) { s.subwoofer.attenuation = 12; }},
    {"delays from 10 ms to nothing", delays(10),                                                         delays(0)},
};
// clang-format on

static void everything(Settings& s)
{
    s.equalizer = {10, -10, 10, -10, 10, -10, 10, -10, 10, -10, 10, -10, 10};
    s.loudness = true;
    s.mainDb = -12;
    s.balance = -7 / 15.0;
    s.fader = 9 / 15.0;
    for (auto& c : s.cabin)
        c = {{120, 4}, {0, 4}, 3, true, 3.3};
    s.subwoofer = {false, {120, 4}, 4, true, 6.6};
}

/// Every other band at its top from this one on, the rest at the bottom.
static Change comb(int first)
{
    return [first](Settings& s) {
        for (int i = 0; i < bandCount; ++i)
            s.equalizer[i] = (i & 1) == first ? 10 : -10;
    };
}

void TestNoClick::anyChangeIsSmooth_data()
{
    QTest::addColumn<Change>("before");
    QTest::addColumn<Change>("change");
    for (int i = 0; i < bandCount; ++i)
        QTest::addRow("band %g Hz from -10 to 10", bandHz[i])
            << Change([i](Settings& s) { s.equalizer[i] = -10; })
            << Change([i](Settings& s) { s.equalizer[i] = 10; });
    QTest::newRow("all bands from 10 to -10") << Change([](Settings& s) { s.equalizer.fill(10); })
                                              << Change([](Settings& s) { s.equalizer.fill(-10); });
    QTest::newRow("all bands turned over") << comb(1) << comb(0);
    for (const Row& row : levelRows)
        QTest::newRow(row.name) << row.before << row.change;
    for (int i = 1; i <= 8; ++i)
        QTest::addRow("high-pass on at index %d", i) << Change(nothing) << inCabin([i](auto& c) {
            c.highPass = {corners[i], 4};
        });
    for (int from = 0; from < 4; ++from)
        for (int to = 0; to < 4; ++to)
            if (from != to)
                QTest::addRow("high-pass slope %d to %d", from, to) << inCabin([from](auto& c) {
                    c.highPass = {250, from + 1};
                }) << inCabin([to](auto& c) { c.highPass.order = to + 1; });
    for (const Row& row : speakerRows)
        QTest::newRow(row.name) << row.before << row.change;
    for (int i = 2; i <= 9; ++i)
        QTest::addRow("subwoofer filter on, code %d", i)
            << Change(nothing) << Change([i](Settings& s) { setSubwoofer(s, i); });
    for (double ms : {0.1, 0.2, 1.0, 2.5, 5.0, 10.0})
        QTest::addRow("delays to %g ms", ms) << Change(nothing) << delays(ms);
    QTest::newRow("all at once") << Change(nothing) << Change(everything);
}

void TestNoClick::anyChangeIsSmooth()
{
    QFETCH(Change, before);
    QFETCH(Change, change);
    Settings first = flat();
    before(first);
    Settings second = first;
    change(second);
    for (double rate : {44100.0, 48000.0, 96000.0})
        // Also interrupted half way, and changed back and forth again and again.
        for (double betweenMs : {1000.0, 20.0, 7.0}) {
            Rig rig(first, rate);
            const int frames = int(1.2 * rate);
            const Signal in = sine(200, 0.1, frames, rate);
            Speakers all;
            int done = 0, steps = 0;
            while (done < frames) {
                int piece = int(betweenMs * rate / 1000);
                if (done == 0)
                    piece = int(0.1 * rate) + 7; // off the grid, off the sine's zero
                else if (steps > 8)
                    piece = frames - done;
                piece = std::min(piece, frames - done);
                const Signal part(in.begin() + done, in.begin() + done + piece);
                const Speakers out = rig.play(part);
                for (int i = 0; i < speakerCount; ++i)
                    all[i].insert(all[i].end(), out[i].begin(), out[i].end());
                done += piece;
                rig.engine.set(++steps & 1 ? second : first);
            }
            for (int i = 0; i < speakerCount; ++i) {
                if (std::find(all.begin(), all.begin() + i, all[i]) != all.begin() + i)
                    continue; // the same as another one, which has been looked at
                // The start of the sine itself is left out.
                const Signal tail(all[i].begin() + int(0.05 * rate), all[i].end());
                Signal faded = tail;
                const int edge = int(0.02 * rate);
                for (int n = 0; n < edge; ++n)
                    faded[n] *= float(0.5 - 0.5 * std::cos(pi * n / edge));
                const double got = clickDb(faded, rate);
                QVERIFY2(got < -70, qPrintable(QString("speaker %1 at %2, %3 ms apart: %4 dBFS")
                                                   .arg(i)
                                                   .arg(rate)
                                                   .arg(betweenMs)
                                                   .arg(got)));
            }
        }
}

void TestNoClick::aClickWouldBeFound()
{
    Signal s = sine(200, 0.1, 48000);
    QVERIFY(clickDb(Signal(s.begin() + 4800, s.end()), 48000) > -70); // it starts at once
    for (int n = 0; n < 2400; ++n)
        s[n] *= float(0.5 - 0.5 * std::cos(pi * n / 2400));
    QVERIFY(clickDb(s, 48000) < -100);
    for (size_t n = 20037; n < s.size(); ++n)
        s[n] *= 0.9f; // a single step of a volume
    QVERIFY(clickDb(s, 48000) > -70);
}

QTEST_GUILESS_MAIN(TestNoClick)
#include "tst_noclick.moc"
