"""What measure.sh runs: HEADUNIT [NAME...]. Each function below that has rows in the table is one NAME."""

import os
import shutil
import sqlite3
import subprocess
import sys
import tempfile

import numpy as np
from scipy.io import wavfile
from scipy.signal import resample_poly

RATES = (44100, 48000, 96000)
FL, FR, LFE, BL, BR = range(5)  # the rendered file's channels
BANDS = np.array([32, 63, 125, 250, 500, 1000, 2000, 4000, 8000, 10000, 12000, 14000, 16000.0])
CORNERS = (30, 40, 60, 80, 100, 120, 160, 250)  # frequency indexes 1 and up
SLOPES = (6, 12, 18, 24)
FULL_VOLUME = 50
# Nothing changes the sound: the subwoofer plays everything, at 0 dB.
NEUTRAL = {"Setup_Main_Volume": FULL_VOLUME, "AudioService_EQType": 6, "AudioService_Sub": "1;0;1"}
SEED = 12


def db(factor):
    return 20 * np.log10(np.maximum(np.abs(factor), 1e-12))


class Unit:
    """Renders signals with settings."""

    def __init__(self, program, folder):
        self.program, self.folder = program, folder
        self.store = os.path.join(folder, "fresh.db")
        os.environ["XDG_RUNTIME_DIR"] = os.environ["HOME"] = folder
        # What the unit makes of no store, as far as it is when its first picture is painted.
        unit = subprocess.Popen([program, "--settings", self.store, "--output", "none", "--trace-startup"],
                                stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        for line in unit.stdout:
            if "launcher-painted" in line:
                unit.terminate()
        unit.wait()

    def render(self, signal_in, rate=48000, stereo=False, **settings):
        """Signal (frames, or frames x 2) to frames x channels, in double; the input's first frame is the first."""
        paths = [os.path.join(self.folder, name) for name in ("set.db", "in.wav", "out.wav")]
        shutil.copy(self.store, paths[0])
        store = sqlite3.connect(paths[0])
        for key, value in {**NEUTRAL, **settings}.items():
            kind = {bool: "bool", int: "int", str: "string"}[type(value)]
            store.execute("INSERT OR REPLACE INTO settings(key, type, value) VALUES(?, ?, ?)", (key, kind, value))
        store.commit()
        store.close()
        sides = signal_in if signal_in.ndim == 2 else np.column_stack([signal_in, signal_in])
        wavfile.write(paths[1], rate, sides.astype(np.float32))
        subprocess.run([self.program, "--settings", paths[0], "--render", paths[1], paths[2]] +
                       (["--stereo"] if stereo else []), check=True, stdout=subprocess.DEVNULL)
        told, result = wavfile.read(paths[2])
        assert told == rate
        return result.astype(float)

    def response(self, rate=48000, stereo=False, seconds=2, **settings):
        """Impulse response as the function of a frequency in Hz and a channel; below the limiter, and large enough
        that what the unit takes for rung out is nothing."""
        impulse = np.zeros(int(seconds * rate))
        impulse[0] = 2.0 ** -5
        out = self.render(impulse, rate, stereo, **settings) * 2.0 ** 5
        turn = -2j * np.pi / rate * np.arange(len(out))
        return np.vectorize(lambda hz, channel=FL: np.exp(turn * hz) @ out[:, channel])


def cabin(text, which="HPF"):
    return {"AudioService_%s_%d" % (which, speaker): text for speaker in range(4)}


def subwoofer(corner, slope, level=0):
    """The 6 dB/octave slope is told by the page's own key."""
    return {"AudioService_Sub": "%d;%d;%d" % (corner + 1, level, slope), "subwooferslope": slope}


def sine(hz, seconds, rate, level=1.0, phase=0.0):
    return level * np.sin(2 * np.pi * hz * np.arange(int(seconds * rate)) / rate + phase)


def tones_of(x, hz, rate):
    """Amplitude of a tone and of each harmonic, and what is left, of a whole number of periods."""
    periods = int(len(x) * hz / rate)
    count = int(round(periods * rate / hz))
    spectrum = np.fft.rfft(x[:count]) / count * 2
    rest = spectrum.copy()
    rest[periods] = 0
    return np.abs(spectrum[periods::periods]), np.linalg.norm(rest)


def volume(unit):
    rows = []
    for level in range(FULL_VOLUME + 1):
        has = unit.response(seconds=0.1, Setup_Main_Volume=level)(1000)
        rows.append((level, db(has) if abs(has) > 1e-9 else -np.inf))
    worst = max(abs(has - 1.2 * (level - FULL_VOLUME)) for level, has in rows[1:])
    yield "levels 1 to 50 against 1.2 dB a step below 0 dB", "%.1g dB off at most" % worst
    yield "level 0", "silence" if rows[0][1] == -np.inf else "%.1f dB" % rows[0][1]


def balance(unit):
    worst = 0
    for key, near, far in (("AudioService_Balance", FR, FL), ("AudioService_Fader", FL, BL)):
        for value in range(-15, 16):
            at = unit.response(seconds=0.1, **{key: value})
            away = np.cos(np.pi / 2 * abs(value) / 15) if abs(value) < 15 else 0
            wanted = {near: 1 if value >= 0 else away, far: away if value > 0 else 1}
            worst = max([worst] + [abs(abs(at(1000, c)) - factor) for c, factor in wanted.items()])
    yield "balance and fader, -15 to 15, near side 1, far side cos", "%.1g of full level off at most" % worst


def equalizer(unit):
    chance = np.random.default_rng(SEED)
    curves = [[g if b == band else 0 for b in range(13)] for band in range(13) for g in (-10, 10)]
    curves += [[10] * 13, [-10] * 13, [10, -10] * 6 + [10], [-10, 10] * 6 + [-10]]
    curves += chance.integers(-10, 11, (30, 13)).tolist()
    for rate in RATES:
        worst = 0
        for curve in curves:
            at = unit.response(rate, **{"eq1%d" % band: int(g) for band, g in enumerate(curve)})
            worst = max(worst, np.max(np.abs(db(at(BANDS)) - curve)))
        yield "centres, %d curves, %d Hz" % (len(curves), rate), "%.1g dB off at most" % worst


# Frequency in Hz, exponent, level of the transfer function and threshold in dB: ISO 226:2003, table 1.
ISO226 = np.array([
    (20, .532, -31.6, 78.5), (25, .506, -27.2, 68.7), (31.5, .480, -23.0, 59.5), (40, .455, -19.1, 51.1),
    (50, .432, -15.9, 44.0), (63, .409, -13.0, 37.5), (80, .387, -10.3, 31.5), (100, .367, -8.1, 26.5),
    (125, .349, -6.2, 22.1), (160, .330, -4.5, 17.9), (200, .315, -3.1, 14.4), (250, .301, -2.0, 11.4),
    (315, .288, -1.1, 8.6), (400, .276, -0.4, 6.2), (500, .267, 0.0, 4.4), (630, .259, 0.3, 3.0),
    (800, .253, 0.5, 2.2), (1000, .250, 0.0, 2.4), (1250, .246, -2.7, 3.5), (1600, .244, -4.1, 1.7),
    (2000, .243, -1.0, -1.3), (2500, .243, 1.7, -4.2), (3150, .243, 2.5, -6.0), (4000, .242, 1.2, -5.4),
    (5000, .242, -2.1, -1.5), (6300, .245, -7.1, 6.0), (8000, .254, -11.2, 12.6), (10000, .271, -10.7, 13.9),
    (12500, .301, -3.1, 12.3)])


def contour(phon):
    _, a, lu, tf = ISO226.T
    af = 4.47e-3 * (10 ** (0.025 * phon) - 1.15) + (0.4 * 10 ** ((tf + lu) / 10 - 9)) ** a
    level = 10 / a * np.log10(af) - lu + 94
    return level - level[ISO226[:, 0] == 1000]


def loudness(unit):
    for rate in RATES:
        worst, bass = 0, []
        for level in (5, 10, 15, 20, 25, 30, 35, 40, 45, 50):
            at = unit.response(rate, Setup_Main_Volume=level, customloudnes=True)
            main = 1.2 * (level - FULL_VOLUME)
            lift = db(at(ISO226[:, 0])) - main
            worst = max(worst, np.max(np.abs(lift - (contour(80 + main) - contour(80)))))
            bass.append("%.1f" % lift[4])
        yield "against ISO 226, 20 Hz to 12.5 kHz, %d Hz" % rate, "%.2f dB off at most" % worst
    yield "lift at 50 Hz, levels 5, 10 ... 50", " ".join(bass) + " dB"


def crossover(unit):
    for rate in RATES:
        worst = {6: 0, 12: 0, 18: 0, 24: 0}
        for index, hz in enumerate(CORNERS, 1):
            for s, slope in enumerate(SLOPES):
                text = "%d;0;%d" % (index, s)
                at = unit.response(rate, AudioService_HPF_0=text, AudioService_LPF_1=text, **subwoofer(index, s))
                wanted = 10 * np.log10(0.5) * (1 if slope in (6, 18) else 2)
                has = [db(at(hz, c)) for c in (FL, FR, LFE)]
                worst[slope] = max([worst[slope]] + [abs(x - wanted) for x in has])
        yield ("corner, high-pass, low-pass, subwoofer, 30 to 250 Hz, %d Hz" % rate,
               ", ".join("%d dB/octave %.1g" % pair for pair in worst.items()) + " dB off at most")


def fold(unit):
    """Cabin and subwoofer each have half of what both sides have in common."""
    hz = np.geomspace(20, 20000, 100)
    for s, slope in enumerate(SLOPES):
        worst = 0
        for index in range(1, len(CORNERS) + 1):
            at = unit.response(stereo=True, **cabin("%d;0;%d" % (index, s)), **subwoofer(index, s))
            worst = max([worst] + [np.max(np.abs(db(2 * at(hz, side)))) for side in (0, 1)])
        yield ("cabin and subwoofer folded, 20 Hz to 20 kHz, eight corners, %d dB/octave" % slope,
               "%.1g dB off flat at most" % worst)


def polarity(unit):
    for s, slope in enumerate(SLOPES):
        sums = []
        for t in range(len(SLOPES)):
            both = [db(2 * unit.response(stereo=True, Audio_Phase_Troggle=turned, **cabin("4;0;%d" % s),
                                     **subwoofer(4, t))(80, 0)) for turned in (False, True)]
            sums.append("%+.2f / %s" % (both[0], "%+.2f" % both[1] if both[1] > -60 else "null"))
        yield ("sum at 80 Hz, cabin %d, subwoofer 6, 12, 18, 24 dB/octave: as chosen / phase switch turned" % slope,
               ",  ".join(sums) + " dB")


def delay(unit):
    tenths = (0, 1, 3, 17, 25, 50, 77, 99, 100)
    hz = np.geomspace(20, 16000, 60)
    for rate in RATES:
        late, uneven = 0, 0
        for shift in range(len(tenths)):
            wanted = {c: tenths[(shift + i) % len(tenths)] / 10 for i, c in enumerate((FL, FR, BL, BR, LFE))}
            keys = {FL: 0, FR: 1, BL: 2, BR: 3, LFE: 4}
            at = unit.response(rate, seconds=0.1, **{
                "AudioService_DelayUs_%d" % keys[c]: int(round(1000 * ms)) for c, ms in wanted.items()})
            for c, ms in wanted.items():
                rest = at(hz, c) * np.exp(2j * np.pi * hz * ms / 1000)
                late = max(late, np.max(np.abs(np.angle(rest) / (2 * np.pi * hz))) * 1000)
                uneven = max(uneven, np.max(np.abs(db(rest))))
        yield ("0 to 10 ms, five speakers, phase delay 20 Hz to 16 kHz, %d Hz" % rate,
               "%.1g ms and %.1g dB off at most" % (late, uneven))


def limiter(unit):
    rate = 48000
    for name, c, stereo in (("cabin", FL, False), ("subwoofer", LFE, False), ("fold", 0, True)):
        shown = []
        for hz in (20, 23.75, 30, 50, 123.25, 1000, 7003.25):
            out = unit.render(sine(hz, 8, rate, 4), stereo=stereo)[4 * rate:8 * rate, c]
            own, rest = tones_of(out, hz, rate)
            thd = np.sqrt(np.sum(own[1:] ** 2)) / own[0]
            shown.append("%g Hz %.1e / %.1e %%" % (hz, 100 * thd, 100 * rest / own[0]))
        yield "THD / THD+N, 12 dB over, %s" % name, ", ".join(shown)
    # A bass burst that only the subwoofer plays, and a treble tone that only the cabin does.
    tone = sine(5000, 4, rate, 0.1)
    burst = sine(40, 4, rate, 8) * ((np.arange(4 * rate) >= rate) & (np.arange(4 * rate) < 2 * rate))
    split = {**cabin("8;0;3"), **subwoofer(1, 3)}
    alone, with_burst = (unit.render(x, **split)[int(1.5 * rate):2 * rate, FL] for x in (tone, tone + burst))
    levels = [tones_of(x, 5000, rate)[0][0] for x in (alone, with_burst)]
    yield "5 kHz in the cabin while 40 Hz, 18 dB over, limits the subwoofer", "%+.3f dB" % db(levels[1] / levels[0])
    for ms in (1, 100):
        x = sine(1000, 4, rate, 0.05)
        x[rate:rate + ms * rate // 1000] += sine(1000, ms / 1000, rate, 4)
        out = unit.render(x)[:4 * rate, FL]
        cells = range(0, 4 * rate - 480, 480)
        change = db(np.array([tones_of(out[n:n + 480], 1000, rate)[0][0] for n in cells]) / 0.05)
        after = change[(rate + ms * rate // 1000) // 480 + 1:]
        yield ("return to within 1 dB after %d ms of 1 kHz, 12 dB over" % ms,
               "%d ms" % (10 * (1 + np.max(np.nonzero(after < -1)[0], initial=-1))))


def hot_signals(rate):
    chance = np.random.default_rng(SEED)
    yield "rate / 4, 45 degrees", sine(rate / 4, 2, rate, 4, np.pi / 4)
    tones = [sine(hz, 0.3, rate, 4, chance.uniform(0, 7)) for hz in np.geomspace(30, 0.375 * rate, 40)]
    yield "40 tones to 0.375 of the rate", np.concatenate([np.concatenate([t, np.zeros(rate // 10)]) for t in tones])
    yield "white noise", 4 * chance.standard_normal(3 * rate)
    clicks = 0.2 * chance.standard_normal(3 * rate) * (1 + 20 * (chance.random(3 * rate) > 0.9995))
    yield "noise with clicks", np.cumsum(clicks) - np.cumsum(np.concatenate([np.zeros(20), clicks[:-20]]))


def peak(unit):
    largest = 0
    for rate in RATES:
        shown = []
        for name, x in hot_signals(rate):
            out = unit.render(x, rate)[:, FL]
            tops = [db(np.max(np.abs(resample_poly(out, up, 1, window=("kaiser", 10.0))))) for up in (4, 8)]
            shown.append("%s %+.2f / %+.2f" % (name, *tops))
            largest = max(largest, np.max(np.abs(out)))
        yield "true peak, 4 / 8 times oversampled, 12 dB over, %d Hz" % rate, ", ".join(shown) + " dBTP"
    yield "largest sample of all these", "%+.4f dBFS" % db(largest)


def floor(unit):
    for name, settings in (("neutral", {}), (
            "equalizer, loudness, crossovers, delays",
            {**{"eq1%d" % b: (-1) ** b * 6 for b in range(13)}, **cabin("4;0;3"), **subwoofer(4, 3),
             "customloudnes": True, "Setup_Main_Volume": 30, "AudioService_DelayUs_0": 1700})):
        for rate in RATES:
            out = unit.render(sine(1000, 4, rate, 0.5), rate, **settings)[rate:3 * rate, FL]
            own, rest = tones_of(out, 1000, rate)
            yield "noise and distortion below a tone of 1 kHz, %s, %d Hz" % (name, rate), "%.0f dB" % -db(rest / own[0])
    silence = unit.render(np.zeros(48000), **{"eq1%d" % b: 10 for b in range(13)})
    yield "silence in, every band at +10 dB", "%s out" % ("silence" if not np.any(silence) else "sound")


MEASUREMENTS = (volume, balance, equalizer, loudness, crossover, fold, polarity, delay, limiter, peak, floor)


def main():
    program, wanted = sys.argv[1], sys.argv[2:]
    names = [m.__name__ for m in MEASUREMENTS]
    for name in wanted:
        if name not in names:
            sys.exit("%s is no row: %s" % (name, ", ".join(names)))
    with tempfile.TemporaryDirectory() as folder:
        unit = Unit(program, folder)
        for measurement in MEASUREMENTS:
            if not wanted or measurement.__name__ in wanted:
                try:
                    for what, figure in measurement(unit):
                        print("%-10s %s: %s" % (measurement.__name__, what, figure), flush=True)
                except subprocess.CalledProcessError as fault:
                    sys.exit("%s: %s" % (measurement.__name__, fault))


main()
