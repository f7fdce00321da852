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

void TestNoClick::anyChangeIsSmooth_data()
{
    QTest::addColumn<Change>("before");
    QTest::addColumn<Change>("change");
    const Change none = [](Settings&) {};
    const auto row = [&](const char* name, Change change) { QTest::newRow(name) << none << change; };
    const auto rowFrom = [&](const char* name, Change before, Change change) {
        QTest::newRow(name) << before << change;
    };

    for (int i = 0; i < bandCount; ++i)
        QTest::addRow("band %g Hz from -10 to 10", bandHz[i])
            << Change([i](Settings& s) { s.equalizer[i] = -10; })
            << Change([i](Settings& s) { s.equalizer[i] = 10; });
    rowFrom(
        "all bands from 10 to -10", [](Settings& s) { s.equalizer.fill(10); },
        [](Settings& s) { s.equalizer.fill(-10); });
    rowFrom(
        "all bands turned over",
        [](Settings& s) {
            for (int i = 0; i < bandCount; ++i)
                s.equalizer[i] = i & 1 ? 10 : -10;
        },
        [](Settings& s) {
            for (int i = 0; i < bandCount; ++i)
                s.equalizer[i] = i & 1 ? -10 : 10;
        });
    rowFrom(
        "loudness on", [](Settings& s) { s.mainDb = -24; }, [](Settings& s) { s.loudness = true; });
    rowFrom(
        "loudness off",
        [](Settings& s) {
            s.mainDb = -24;
            s.loudness = true;
        },
        [](Settings& s) { s.loudness = false; });
    rowFrom(
        "loudness on at the lowest volume", [](Settings& s) { s.mainDb = -58.8; },
        [](Settings& s) { s.loudness = true; });
    rowFrom(
        "volume from the lowest with loudness",
        [](Settings& s) {
            s.mainDb = -58.8;
            s.loudness = true;
        },
        [](Settings& s) { s.mainDb = 0; });
    rowFrom(
        "volume with loudness",
        [](Settings& s) {
            s.mainDb = -48;
            s.loudness = true;
        },
        [](Settings& s) { s.mainDb = 0; });
    rowFrom(
        "volume up", [](Settings& s) { s.mainDb = silentDb; }, [](Settings& s) { s.mainDb = 0; });
    row("volume down", [](Settings& s) { s.mainDb = silentDb; });
    row("one volume step", [](Settings& s) { s.mainDb = -1.2; });
    row("mute", [](Settings& s) { s.mute = true; });
    rowFrom(
        "mute off", [](Settings& s) { s.mute = true; }, [](Settings& s) { s.mute = false; });
    row("power off", [](Settings& s) { s.power = false; });
    rowFrom(
        "power on", [](Settings& s) { s.power = false; }, [](Settings& s) { s.power = true; });
    row("another source", [](Settings& s) { s.source = 6; });
    row("another source with its gain", [](Settings& s) {
        s.source = 6;
        s.sourceDb = 10;
    });
    rowFrom(
        "source gain", [](Settings& s) { s.sourceDb = -5; }, [](Settings& s) { s.sourceDb = 10; });
    row("balance to the right", [](Settings& s) { s.balance = 1; });
    rowFrom(
        "balance from side to side", [](Settings& s) { s.balance = -1; }, [](Settings& s) { s.balance = 1; });
    rowFrom(
        "fader from end to end", [](Settings& s) { s.fader = -1; }, [](Settings& s) { s.fader = 1; });
    for (int i = 1; i <= 8; ++i)
        QTest::addRow("high-pass on at index %d", i) << none << Change([i](Settings& s) {
            for (auto& c : s.cabin)
                c.highPass = {corners[i], 4};
        });
    rowFrom(
        "high-pass off",
        [](Settings& s) {
            for (auto& c : s.cabin)
                c.highPass = {250, 4};
        },
        [](Settings& s) {
            for (auto& c : s.cabin)
                c.highPass.hz = 0;
        });
    rowFrom(
        "high-pass frequency",
        [](Settings& s) {
            for (auto& c : s.cabin)
                c.highPass = {30, 4};
        },
        [](Settings& s) {
            for (auto& c : s.cabin)
                c.highPass.hz = 250;
        });
    for (int from = 0; from < 4; ++from)
        for (int to = 0; to < 4; ++to)
            if (from != to)
                QTest::addRow("high-pass slope %d to %d", from, to) << Change([from](Settings& s) {
                    for (auto& c : s.cabin)
                        c.highPass = {250, from + 1};
                }) << Change([to](Settings& s) {
                    for (auto& c : s.cabin)
                        c.highPass.order = to + 1;
                });
    row("low-pass on", [](Settings& s) {
        for (auto& c : s.cabin)
            c.lowPass = {2000, 4};
    });
    rowFrom(
        "low-pass off",
        [](Settings& s) {
            for (auto& c : s.cabin)
                c.lowPass = {2000, 4};
        },
        [](Settings& s) {
            for (auto& c : s.cabin)
                c.lowPass.hz = 0;
        });
    row("attenuation", [](Settings& s) {
        for (auto& c : s.cabin)
            c.attenuation = 12;
    });
    row("polarity of the speakers", [](Settings& s) {
        for (auto& c : s.cabin)
            c.inverted = true;
    });
    row("polarity of the subwoofer", [](Settings& s) { s.subwoofer.inverted = true; });
    row("subwoofer silent", [](Settings& s) { setSubwoofer(s, 0); });
    rowFrom(
        "subwoofer sounds", [](Settings& s) { setSubwoofer(s, 0); }, [](Settings& s) { setSubwoofer(s, 7); });
    for (int i = 2; i <= 9; ++i)
        QTest::addRow("subwoofer filter on, code %d", i)
            << none << Change([i](Settings& s) { setSubwoofer(s, i); });
    rowFrom(
        "subwoofer frequency", [](Settings& s) { s.subwoofer.lowPass.hz = 30; },
        [](Settings& s) { s.subwoofer.lowPass.hz = 250; });
    rowFrom(
        "subwoofer slope",
        [](Settings& s) {
            s.subwoofer = {false, {250, 1}, 0, false, 0};
        },
        [](Settings& s) { s.subwoofer.lowPass.order = 4; });
    row("subwoofer level", [](Settings& s) { s.subwoofer.attenuation = 12; });
    for (double ms : {0.1, 0.2, 1.0, 2.5, 5.0, 10.0})
        QTest::addRow("delays to %g ms", ms) << none << Change([ms](Settings& s) {
            for (auto& c : s.cabin)
                c.delayMs = ms;
            s.subwoofer.delayMs = ms;
        });
    rowFrom(
        "delays from 10 ms to nothing",
        [](Settings& s) {
            for (auto& c : s.cabin)
                c.delayMs = 10;
            s.subwoofer.delayMs = 10;
        },
        [](Settings& s) {
            for (auto& c : s.cabin)
                c.delayMs = 0;
            s.subwoofer.delayMs = 0;
        });
    row("all at once", [](Settings& s) {
        s.equalizer = {10, -10, 10, -10, 10, -10, 10, -10, 10, -10, 10, -10, 10};
        s.loudness = true;
        s.mainDb = -12;
        s.balance = -7 / 15.0;
        s.fader = 9 / 15.0;
        for (auto& c : s.cabin)
            c = {{120, 4}, {0, 4}, 3, true, 3.3};
        s.subwoofer = {false, {120, 4}, 4, true, 6.6};
    });
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
