// Every control of every page, touched: the sound at the speakers changes as the control's label says, by the
// amount that it says, and on no speaker that isn't meant.

#include "tests/system/touchtable.h"

#include "platform/hvaudioservice/audioservicehost.h"

#include <QtTest>

using namespace sound;
using namespace touchtable;

namespace {

// clang-format off
// Keys that lead elsewhere or say what another key means, and so change no sound themselves.
const char* const soundless[] = {
    "key_back",      // leave the page
    "Key_prev_page", // scroll
    "Key_next_page",
};
// clang-format on

constexpr const char* speakerNames[speakerCount] = {"front left", "front right", "rear left", "rear right",
                                                    "subwoofer"};

/// Change of a speaker's level in dB; none between two silences.
double levelChange(const Signal& before, const Signal& after, double hz)
{
    constexpr double inaudible = 1e-8;
    const double from = std::abs(spectrum(before, hz)), to = std::abs(spectrum(after, hz));
    return from < inaudible && to < inaudible ? 0 : db(to) - db(from);
}

/// Change of phase at 40 Hz in turns, -0.5..0.5.
constexpr double phaseHz = 40;
double phaseChange(const Signal& before, const Signal& after)
{
    return std::arg(spectrum(after, phaseHz) / spectrum(before, phaseHz)) / (2 * pi);
}

QString report(int speaker, const Change& change, double measured)
{
    const QString where = QLatin1String(speakerNames[speaker]);
    const QString what = change.kind == Change::Level   ? QStringLiteral("dB at %1 Hz").arg(change.hz)
                         : change.kind == Change::Delay ? QStringLiteral("ms")
                                                        : QStringLiteral("turns from 180 degrees");
    return QStringLiteral("%1: %2 instead of %3..%4 %5")
        .arg(where)
        .arg(measured)
        .arg(change.low)
        .arg(change.high)
        .arg(what);
}

/// Empty when all changes, and no others, can be heard.
QString compare(const std::vector<Change>& changes, const sound::Speakers& before,
                const sound::Speakers& after)
{
    int meant = 0;
    for (const Change& change : changes)
        meant |= change.speakers;
    for (int i = 0; i < speakerCount; ++i) {
        const Signal &was = before[std::size_t(i)], &is = after[std::size_t(i)];
        for (const Change& change : changes) {
            if (!(change.speakers & 1 << i))
                continue;
            double measured = 0;
            if (change.kind == Change::Level)
                measured = levelChange(was, is, change.hz);
            else if (change.kind == Change::Delay)
                measured = -phaseChange(was, is) * 1000 / phaseHz;
            else
                measured = 0.5 - std::abs(phaseChange(was, is)); // 0 when turned
            const double tolerance = change.kind == Change::Polarity ? 0.001 : 0;
            if (!(measured >= change.low - tolerance && measured <= change.high + tolerance))
                return report(i, change, measured);
            // What only delays or turns makes nothing louder.
            if (change.kind != Change::Level && std::abs(levelChange(was, is, 60)) > 0.05)
                return report(i, {0, 60, 0, 0}, levelChange(was, is, 60));
        }
        if (meant & 1 << i)
            continue;
        for (double hz : {60.0, 1000.0, 8000.0}) {
            if (const double change = levelChange(was, is, hz); !(std::abs(change) < 0.05))
                return report(i, {0, hz, 0, 0}, change) + QStringLiteral(", which wasn't meant");
        }
        if (peak(was) > 0 && !(std::abs(phaseChange(was, is)) < 0.0005))
            return QLatin1String(speakerNames[i]) + QStringLiteral(": moved in time, which wasn't meant");
    }
    return QString();
}

} // namespace

class TestTouchToSound : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { SoundUnit::hushLog(); }
    void controlChangesTheSoundAsItsLabelSays_data();
    void controlChangesTheSoundAsItsLabelSays();
    void everyControlOfEveryPageHasARow_data();
    void everyControlOfEveryPageHasARow();
    void keyIsHeardAsABeep();
};

void TestTouchToSound::controlChangesTheSoundAsItsLabelSays_data()
{
    QTest::addColumn<int>("index");
    for (std::size_t i = 0; i < rows().size(); ++i)
        QTest::newRow(rows()[i].name.c_str()) << int(i);
}

void TestTouchToSound::controlChangesTheSoundAsItsLabelSays()
{
    QFETCH(int, index);
    const Row& row = rows()[std::size_t(index)];
    SoundUnit unit;
    hvaudio::AudioServiceHost::setActiveSource(row.source);
    for (const Touch& touch : row.before)
        QVERIFY2(unit.touch(touch), qPrintable(unit.error()));
    const sound::Speakers before = unit.hear(row.input);
    QVERIFY2(peak(before[FrontLeft]) + peak(before[RearLeft]) > 0, "nothing is heard to begin with");

    for (const Touch& touch : row.touches)
        QVERIFY2(unit.touch(touch), qPrintable(unit.error()));
    if (row.atPowerOn) {
        const QString now = compare({}, before, unit.hear(row.input));
        QVERIFY2(now.isEmpty(), qPrintable("before power-on: " + now));
        unit.cyclePower();
    }
    const QString difference = compare(row.changes, before, unit.hear(row.input));
    QVERIFY2(difference.isEmpty(), qPrintable(difference));
}

void TestTouchToSound::everyControlOfEveryPageHasARow_data()
{
    QTest::addColumn<int>("page");
    QTest::addColumn<int>("least");
    // clang-format off
    QTest::newRow("equalizer")      << 0 << 13 + 2;
    QTest::newRow("presets")        << 1 << 8;
    QTest::newRow("audio levels")   << 2 << 10;
    QTest::newRow("crossover")      << 3 << 9;
    QTest::newRow("time alignment") << 4 << 10 + 4;
    QTest::newRow("volumes")        << 5 << 3 * 11;
    QTest::newRow("stand-alone")    << 6 << 2 + 4 + 6 + 4;
    // clang-format on
}

void TestTouchToSound::everyControlOfEveryPageHasARow()
{
    QFETCH(int, page);
    QFETCH(int, least);
    QSet<QString> touched;
    for (const Row& row : rows()) {
        for (const Touch& touch : row.touches)
            touched << QLatin1String(touch.control);
    }
    const std::vector<Touch> ways[] = {{equalizer},
                                       {presets},
                                       {levels},
                                       {crossover, {"key_subwoofer"}},
                                       {alignment},
                                       {volumes},
                                       {alone, {"key_high_pass"}, {"key_low_pass"}}};
    SoundUnit unit;
    for (const Touch& touch : ways[page])
        QVERIFY2(unit.touch(touch), qPrintable(unit.error()));
    int count = 0;
    const auto controls = unit.controls();
    for (const QWidget* control : controls) {
        const QString name = SoundUnit::nameOf(control);
        if (std::any_of(std::begin(soundless), std::end(soundless),
                        [&](const char* other) { return name == QLatin1String(other); }))
            continue;
        QVERIFY2(touched.contains(name), qPrintable(name));
        ++count;
    }
    // Names that two pages share must not hide that a page has lost its own.
    QVERIFY2(count >= least, qPrintable(QString::number(count)));
}

void TestTouchToSound::keyIsHeardAsABeep()
{
    SoundUnit unit;
    QVERIFY(unit.touch(levels));
    unit.hear();
    QCOMPARE(unit.loudestOfItsOwn(), 0.0f);
    QVERIFY(unit.touch({"key_reset_level"})); // which changes nothing else
    QVERIFY(unit.loudestOfItsOwn() > 0.001f);
}

QTEST_MAIN(TestTouchToSound)
#include "tst_touchtosound.moc"
