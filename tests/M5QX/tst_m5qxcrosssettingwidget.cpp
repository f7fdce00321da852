#include "M5QX/curvewidget.h"
#include "M5QX/m5qxcrosssettingwidget.h"
#include "pagefixture.h"

#include <QLabel>
#include <QMetaMethod>
#include <QPushButton>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QtTest>

using namespace platform_double;

namespace {

const char* const FreqKey = "settings_cross_freq_index";
const char* const GainKey = "settings_cross_gain_index";
const char* const SlopeKey = "settings_cross_slope_index";

/// What the page draws into one of its curves, as its setter logs it.
QStringList loggedCurves(const QString& setter)
{
    QStringList curves;
    for (const QString& line : takeLog()) {
        if (line.contains(setter))
            curves << line.section(QStringLiteral(" -- "), 1).trimmed();
    }
    return curves;
}

QString points(QPoint a, QPoint b, QPoint c)
{
    QString text;
    QDebug(&text).nospace() << a << " " << b << " " << c;
    return text;
}

QString write(const char* key, const QString& defaultMap, const QString& map)
{
    return QStringLiteral("SettingsFunc.setValue(\"%1\", \"%2\", \"%3\", true)")
        .arg(QLatin1String(key), defaultMap, map);
}

const QString KeyBeep = QStringLiteral("AudioService.doBeep(0)");

QString hpf(int frequency, int gain, int speaker, int slope)
{
    return QStringLiteral("AudioService.setHPFFilter(%1, %2, %3, %4)")
        .arg(frequency)
        .arg(gain)
        .arg(speaker)
        .arg(slope);
}

/// The calls that send a group's filter.
QStringList sent(int group, int freq, int gain, int slope)
{
    if (group == 0)
        return {hpf(freq, gain, 1, slope), hpf(freq, gain, 2, slope)};
    if (group == 1)
        return {hpf(freq | 0x80, gain, 4, slope), hpf(freq | 0x80, gain, 8, slope)};
    return {
        QStringLiteral("AudioService.setSubFilter(%1, %2, %3)").arg(freq + 1).arg(gain).arg(slope),
        QStringLiteral("SettingsFunc.setValue(\"subwooferFreq\", 7, %1, true)").arg(freq + 1),
        QStringLiteral("SettingsFunc.setValue(\"subwooferslope\", 0, %1, true)").arg(slope),
        QStringLiteral("SettingsFunc.setValue(\"subwooferLevel\", 11, %1, true)").arg(gain | 0x80),
        QStringLiteral("SettingsFunc.setValue(\"subwooferOnOff\", true, true, true)"),
    };
}

} // namespace

class TestCrossSetting : public PageFixture<M5QXCrossSettingWidget>
{
    Q_OBJECT
private slots:
    void init();
    void cleanup() { m_page.reset(); }

    void signalsAndSlotsAreDeclaredInOrder();

    void constructionReadsAndWritesNothing();
    void resumeReadsInOrderAndWritesNothing();
    void storedGroupOutsideRangeIsTakenAs0_data();
    void storedGroupOutsideRangeIsTakenAs0();
    void freshStoreShowsTheDefaults();
    void resumeShowsTheSelectedGroupLast_data();
    void resumeShowsTheSelectedGroupLast();
    void subwooferGainComesFromItsLevelNotFromTheMap();
    void curvesLieOverTheGridInTheirColours();
    void curvesHaveTheirKneeOnTheGrid_data();
    void curvesHaveTheirKneeOnTheGrid();
    void aSubwooferCurveIsALowPassTheOthersAreHighPasses();
    void offDrawsAFlatLineAtTheTop();

    void stepsStoreShowAndSendInOrder_data();
    void stepsStoreShowAndSendInOrder();
    void filterUpAt250HzKeepsTheIndexStillStoresAndStillSends();
    void stepsAtTheOtherEndsStillStoreAndSend_data();
    void stepsAtTheOtherEndsStillStoreAndSend();
    void withTheSubwooferSelectedLevelDownFrom11Stores12WithBit7();
    void keysAtTheEndsAreDisabled_data();
    void keysAtTheEndsAreDisabled();
    void offLeavesOnlyFilterUp();
    void groupKeysBeepStoreAndSend_data();
    void groupKeysBeepStoreAndSend();
    void selectingAGroupThatWasStoredOtherwiseShowsItsRows();
    void phaseControlIsShownForTheSubwooferOnly();
    void phaseKeySendsTheSubwoofersIndexes();
    void phaseKeyIsDispatchedOnTheSelectedGroup_data();
    void phaseKeyIsDispatchedOnTheSelectedGroup();
    void storedPhaseIsShown();
    void exitBeepsAndAsksTheHub();
    void aTouchOnALabelReachesTheKeyBelow();
    void aTouchOnTheGridReachesNothing();
    void everySlotWritesADiagnosticLine();

    void mapsAreWrittenWithAscendingKeys();
    void emptyTextOrASingleNumberYieldsAnEmptyMap();
    void oddLastPartIsIgnored();
    void mapTextsAreReadPairwise_data();
    void mapTextsAreReadPairwise();
    void storedIndexOutsideItsListCountsAsTheNearestAndIsNotRewritten_data();
    void storedIndexOutsideItsListCountsAsTheNearestAndIsNotRewritten();
    void levelBeyondTheListIsShownAsTheLowest_data();
    void levelBeyondTheListIsShownAsTheLowest();
    void hostileStoredValuesDoNoHarm_data();
    void hostileStoredValuesDoNoHarm();
    void keysOfAMapThatThePageDoesntKnowAreKept();
    void randomTouchesKeepEveryInvariant();
    void pagesMadeAndLeftLeaveNothingBehind();

private:
    void resume()
    {
        m_page->resume();
        take();
        takeLog();
    }
    QStringList shown()
    {
        return {find<QLabel>("label_filter")->text(), find<QLabel>("txt_filter")->text(),
                find<QLabel>("txt_slope")->text(), find<QLabel>("txt_level")->text()};
    }
    /// Which of the six step keys are enabled: filter down, up, slope down, up, level down, up.
    QString enabled()
    {
        QString text;
        for (const char* key : {"key_filter_down", "key_filter_up", "key_slope_down", "key_slope_up",
                                "key_level_down", "key_level_up"})
            text += QLatin1Char(find(key)->isEnabled() ? '1' : '0');
        return text;
    }
};

void TestCrossSetting::init()
{
    reset();
    m_page.reset(new M5QXCrossSettingWidget);
}

void TestCrossSetting::signalsAndSlotsAreDeclaredInOrder()
{
    QCOMPARE(
        formcheck::ownMethods(&M5QXCrossSettingWidget::staticMetaObject),
        QStringList({"exitUI()", "on_key_filter_up_clicked()", "on_key_filter_down_clicked()",
                     "on_key_slope_up_clicked()", "on_key_slope_down_clicked()", "on_key_level_up_clicked()",
                     "on_key_level_down_clicked()", "on_key_front_clicked()", "on_key_rear_clicked()",
                     "on_key_subwoofer_clicked()", "on_key_exit_clicked()", "onKey_troggle_phase()"}));
    // Each is bound once: by its name, the last one by hand.
    QVERIFY(!takeLog().join(' ').contains(QStringLiteral("QMetaObject::connectSlotsByName")));
}

void TestCrossSetting::constructionReadsAndWritesNothing()
{
    QCOMPARE(take(All & ~Text), QStringList());
}

void TestCrossSetting::resumeReadsInOrderAndWritesNothing()
{
    take(All);
    m_page->resume();
    QCOMPARE(take(All & ~Text),
             QStringList({"SettingsFunc.getValue(\"settings_cross_filter\", 0)",
                          "SettingsFunc.getValue(\"Audio_Phase_Troggle\", false)",
                          "SettingsFunc.getValue(\"settings_cross_freq_index\", \"0;0;1;0;2;6\")",
                          "SettingsFunc.getValue(\"settings_cross_gain_index\", \"0;0;1;0;2;0\")",
                          "SettingsFunc.getValue(\"settings_cross_slope_index\", \"0;0;1;0;2;0\")",
                          "SettingsFunc.getValue(\"subwooferLevel\", 11)"}));
}

void TestCrossSetting::storedGroupOutsideRangeIsTakenAs0_data()
{
    QTest::addColumn<int>("stored");
    QTest::newRow("below") << -1;
    QTest::newRow("above") << 3;
    QTest::newRow("far") << std::numeric_limits<int>::max();
}

void TestCrossSetting::storedGroupOutsideRangeIsTakenAs0()
{
    QFETCH(int, stored);
    setStored(QStringLiteral("settings_cross_filter"), stored);
    m_page->resume();
    QCOMPARE(take(), QStringList());
    QVERIFY(find("key_front")->isChecked());
    QVERIFY(takeLog().filter(QRegularExpression(QStringLiteral("^C \\[ERR\\]"))).size() == 1);
    click("key_filter_up");
    QCOMPARE(take(), QStringList({KeyBeep, write(FreqKey, "0;0;1;0;2;6", "0;1;1;0;2;6")}) + sent(0, 1, 0, 0));
}

void TestCrossSetting::freshStoreShowsTheDefaults()
{
    m_page->resume();
    QVERIFY(find("key_front")->isChecked());
    QCOMPARE(shown(), QStringList({"T1243", "T790", "0 dB", "0"}));
    // Front and rear off; the subwoofer at 120 Hz, 6 dB/octave, -11 dB.
    const QStringList high = QStringList() << points({56, 2}, {0, 2}, {697, 2});
    const QStringList log = takeLog();
    QStringList highs;
    QStringList lows;
    for (const QString& line : log) {
        if (line.contains(QStringLiteral("setCurveHpf")))
            highs << line.section(QStringLiteral(" -- "), 1).trimmed();
        if (line.contains(QStringLiteral("setCurveLpf")))
            lows << line.section(QStringLiteral(" -- "), 1).trimmed();
    }
    QCOMPARE(highs, high + high + high); // front, rear, and front once more
    QCOMPARE(lows, QStringList() << points({276, 255}, {0, 255}, {270, 282}));
}

void TestCrossSetting::resumeShowsTheSelectedGroupLast_data()
{
    QTest::addColumn<int>("group");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QStringList>("rows");
    QTest::addColumn<QString>("keys");
    // clang-format off
    QTest::newRow("front")     << 0 << "key_front"     << QStringList({"T1243", "30 Hz", "-6 dB", "-1"})   << "110111";
    QTest::newRow("rear")      << 1 << "key_rear"      << QStringList({"T1243", "100 Hz", "-24 dB", "0"})  << "111010";
    QTest::newRow("subwoofer") << 2 << "key_subwoofer" << QStringList({"T1244", "250 Hz", "-12 dB", "-12"}) << "101101";
    // clang-format on
}

void TestCrossSetting::resumeShowsTheSelectedGroupLast()
{
    QFETCH(int, group);
    QFETCH(QString, key);
    QFETCH(QStringList, rows);
    QFETCH(QString, keys);
    setStored(QStringLiteral("settings_cross_filter"), group);
    setStored(FreqKey, QStringLiteral("0;1;1;5;2;8"));
    setStored(GainKey, QStringLiteral("0;1;1;0;2;0"));
    setStored(SlopeKey, QStringLiteral("0;0;1;3;2;1"));
    setStored(QStringLiteral("subwooferLevel"), 12 | 0x80);
    m_page->resume();
    QVERIFY(find(key.toLatin1())->isChecked());
    QCOMPARE(shown(), rows);
    QCOMPARE(enabled(), keys);
}

void TestCrossSetting::subwooferGainComesFromItsLevelNotFromTheMap()
{
    setStored(QStringLiteral("settings_cross_filter"), 2);
    setStored(GainKey, QStringLiteral("0;0;1;0;2;3"));
    setStored(QStringLiteral("subwooferLevel"), 0x80 | 5);
    m_page->resume();
    QCOMPARE(find<QLabel>("txt_level")->text(), QStringLiteral("-5"));
}

void TestCrossSetting::curvesLieOverTheGridInTheirColours()
{
    // Three off curves would cover each other: one each at a place of its own.
    setStored(FreqKey, QStringLiteral("0;2;1;4;2;3"));
    setStored(GainKey, QStringLiteral("0;0;1;4;2;0"));
    setStored(SlopeKey, QStringLiteral("0;3;1;3;2;3"));
    setStored(QStringLiteral("subwooferLevel"), 8);
    resume();
    const QList<CurveWidget*> curves = m_page->findChildren<CurveWidget*>();
    QCOMPARE(curves.size(), 3);
    const QRgb colours[] = {qRgb(255, 108, 0), qRgb(255, 204, 0), qRgb(100, 100, 100)};
    const QPoint knees[] = {{126, 2}, {210, 94}, {168, 186}};
    QImage image(m_page->size(), QImage::Format_ARGB32_Premultiplied);
    m_page->render(&image);
    QWidget* grid = find<QWidget>("widget_adjust");
    for (int i = 0; i < 3; ++i) {
        QCOMPARE(curves.at(i)->parentWidget(), grid);
        QCOMPARE(curves.at(i)->geometry(), QRect(26, 0, 697, 282));
        QVERIFY(curves.at(i)->testAttribute(Qt::WA_TransparentForMouseEvents));
        QCOMPARE(image.pixel(grid->mapTo(m_page.data(), knees[i])), colours[i]);
    }
}

void TestCrossSetting::curvesHaveTheirKneeOnTheGrid_data()
{
    QTest::addColumn<int>("frequency");
    QTest::addColumn<int>("gain");
    QTest::addColumn<QPoint>("knee");
    // clang-format off
    constexpr struct { int hz; int x; } columns[] = {
        {30, 82}, {40, 126}, {60, 168}, {80, 210}, {100, 256}, {120, 302}, {160, 437}, {250, 635}};
    // clang-format on
    for (int i = 0; i < 8; ++i)
        QTest::addRow("%d Hz", columns[i].hz) << i + 1 << 0 << QPoint(columns[i].x - 26, 2);
    for (int gain = 0; gain <= 12; ++gain)
        QTest::addRow("-%d dB", gain) << 1 << gain << QPoint(56, 2 + 23 * gain);
}

void TestCrossSetting::curvesHaveTheirKneeOnTheGrid()
{
    QFETCH(int, frequency);
    QFETCH(int, gain);
    QFETCH(QPoint, knee);
    setStored(FreqKey, QStringLiteral("0;%1;1;0;2;0").arg(frequency));
    setStored(GainKey, QStringLiteral("0;%1;1;0;2;0").arg(gain));
    // Each slope has its own gradient.
    const float gradients[] = {-4.9F, -7.8F, -15.0F, -24.0F};
    for (int slope = 0; slope < 4; ++slope) {
        setStored(SlopeKey, QStringLiteral("0;%1;1;0;2;0").arg(slope));
        takeLog();
        m_page->resume();
        const int left = static_cast<int>(knee.y() - gradients[slope] * knee.x());
        QCOMPARE(loggedCurves(QStringLiteral("setCurveHpf")).first(),
                 points(knee, {0, left}, {697, knee.y()}));
    }
}

void TestCrossSetting::aSubwooferCurveIsALowPassTheOthersAreHighPasses()
{
    setStored(FreqKey, QStringLiteral("0;8;1;8;2;8"));
    setStored(SlopeKey, QStringLiteral("0;1;1;1;2;1"));
    setStored(QStringLiteral("subwooferLevel"), 0);
    m_page->resume();
    const QString high = points({609, 2}, {0, 2 + 4750}, {697, 2});
    QStringList curves;
    for (const QString& line : takeLog()) {
        if (line.contains(QStringLiteral("::setCurve")) && !line.contains(QStringLiteral("setCurveColor")))
            curves << line.section(QStringLiteral(" -- "), 1).trimmed();
    }
    QCOMPARE(curves, QStringList({high, high, points({609, 2}, {0, 2}, {573, 282}), high}));
}

void TestCrossSetting::offDrawsAFlatLineAtTheTop()
{
    setStored(GainKey, QStringLiteral("0;7;1;0;2;0"));
    setStored(SlopeKey, QStringLiteral("0;3;1;0;2;0"));
    m_page->resume();
    QCOMPARE(loggedCurves(QStringLiteral("setCurveHpf")).first(), points({56, 2}, {0, 2}, {697, 2}));
    QCOMPARE(shown(), QStringList({"T1243", "T790", "0 dB", "0"}));
    click("key_filter_up");
    QCOMPARE(shown(), QStringList({"T1243", "30 Hz", "-24 dB", "-7"})); // nothing was lost by being off
}

void TestCrossSetting::stepsStoreShowAndSendInOrder_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<int>("group");
    QTest::addColumn<int>("freq");
    QTest::addColumn<int>("gain");
    QTest::addColumn<int>("slope");
    struct Step
    {
        const char* key;
        int freq, gain, slope;
    };
    const Step steps[] = {
        {"key_filter_up", 1, 0, 0},   {"key_filter_down", -1, 0, 0}, {"key_slope_up", 0, 0, 1},
        {"key_slope_down", 0, 0, -1}, {"key_level_up", 0, -1, 0},    {"key_level_down", 0, 1, 0},
    };
    const char* const groups[] = {"front", "rear", "subwoofer"};
    for (int group = 0; group < 3; ++group) {
        for (const Step& step : steps)
            QTest::addRow("%s %s", groups[group], step.key)
                << step.key << group << step.freq << step.gain << step.slope;
    }
}

void TestCrossSetting::stepsStoreShowAndSendInOrder()
{
    QFETCH(QString, key);
    QFETCH(int, group);
    QFETCH(int, freq);
    QFETCH(int, gain);
    QFETCH(int, slope);
    setStored(QStringLiteral("settings_cross_filter"), group);
    setStored(FreqKey, QStringLiteral("0;4;1;4;2;4"));
    setStored(GainKey, QStringLiteral("0;5;1;5;2;5"));
    setStored(SlopeKey, QStringLiteral("0;2;1;2;2;2"));
    setStored(QStringLiteral("subwooferLevel"), 5);
    resume();
    click(key.toLatin1());
    const auto map = [group](int other, int own) {
        QStringList parts;
        for (int g = 0; g < 3; ++g)
            parts << QString::number(g) << QString::number(g == group ? own : other);
        return parts.join(QLatin1Char(';'));
    };
    QStringList expected(KeyBeep);
    if (freq)
        expected << write(FreqKey, QStringLiteral("0;0;1;0;2;6"), map(4, 4 + freq));
    if (gain)
        expected << write(GainKey, QStringLiteral("0;0;1;0;2;0"), map(5, 5 + gain));
    if (slope)
        expected << write(SlopeKey, QStringLiteral("0;0;1;0;2;0"), map(2, 2 + slope));
    expected << sent(group, 4 + freq, 5 + gain, 2 + slope);
    QCOMPARE(take(Actions | Read), expected);
    const int hz[] = {0, 30, 40, 60, 80, 100, 120, 160, 250};
    QCOMPARE(shown(),
             QStringList({group == 2 ? "T1244" : "T1243", QStringLiteral("%1 Hz").arg(hz[4 + freq]),
                          QStringLiteral("%1 dB").arg(-6 * (2 + slope) - 6), QString::number(-(5 + gain))}));
}

void TestCrossSetting::filterUpAt250HzKeepsTheIndexStillStoresAndStillSends()
{
    setStored(FreqKey, QStringLiteral("0;8;1;0;2;6"));
    resume();
    click("key_filter_up"); // disabled: a touch does nothing
    QCOMPARE(take(), QStringList());
    call("on_key_filter_up_clicked");
    QCOMPARE(take(), QStringList({KeyBeep, write(FreqKey, "0;0;1;0;2;6", "0;8;1;0;2;6")}) + sent(0, 8, 0, 0));
    QCOMPARE(find<QLabel>("txt_filter")->text(), QStringLiteral("250 Hz"));
}

void TestCrossSetting::stepsAtTheOtherEndsStillStoreAndSend_data()
{
    QTest::addColumn<QString>("slot");
    QTest::addColumn<QString>("freq");
    QTest::addColumn<QString>("gain");
    QTest::addColumn<QString>("slope");
    QTest::addColumn<QString>("key");
    // clang-format off
    QTest::newRow("filter down when off")  << "on_key_filter_down_clicked" << "0" << "0"  << "0" << FreqKey;
    QTest::newRow("slope up at -24")       << "on_key_slope_up_clicked"    << "4" << "0"  << "3" << SlopeKey;
    QTest::newRow("slope down at -6")      << "on_key_slope_down_clicked"  << "4" << "0"  << "0" << SlopeKey;
    QTest::newRow("level up at 0")         << "on_key_level_up_clicked"    << "4" << "0"  << "0" << GainKey;
    QTest::newRow("level down at -12")     << "on_key_level_down_clicked"  << "4" << "12" << "0" << GainKey;
    // clang-format on
}

void TestCrossSetting::stepsAtTheOtherEndsStillStoreAndSend()
{
    QFETCH(QString, slot);
    QFETCH(QString, freq);
    QFETCH(QString, gain);
    QFETCH(QString, slope);
    QFETCH(QString, key);
    const QString map(QStringLiteral("0;0;1;%1;2;0"));
    setStored(QStringLiteral("settings_cross_filter"), 1);
    setStored(QStringLiteral("subwooferLevel"), 0);
    setStored(FreqKey, map.arg(freq));
    setStored(GainKey, map.arg(gain));
    setStored(SlopeKey, map.arg(slope));
    resume();
    call(slot.toLatin1());
    const QString unchanged = map.arg(key == QLatin1String(FreqKey)   ? freq
                                      : key == QLatin1String(GainKey) ? gain
                                                                      : slope);
    const QString fallback(key == QLatin1String(FreqKey) ? "0;0;1;0;2;6" : "0;0;1;0;2;0");
    QCOMPARE(take(), QStringList({KeyBeep, write(key.toLatin1(), fallback, unchanged)}) +
                         sent(1, freq.toInt(), gain.toInt(), slope.toInt()));
}

void TestCrossSetting::withTheSubwooferSelectedLevelDownFrom11Stores12WithBit7()
{
    setStored(QStringLiteral("settings_cross_filter"), 2);
    resume();
    click("key_level_down");
    QCOMPARE(take(),
             QStringList({KeyBeep, write(GainKey, "0;0;1;0;2;0", "0;0;1;0;2;12")}) + sent(2, 6, 12, 0));
    QCOMPARE(stored(QStringLiteral("subwooferLevel")), QVariant(12 | 0x80));
    // The count of the subwoofer's key is one higher: 120 Hz is the 7 that is its default.
    QCOMPARE(stored(QStringLiteral("subwooferFreq")), QVariant(7));
}

void TestCrossSetting::keysAtTheEndsAreDisabled_data()
{
    QTest::addColumn<int>("freq");
    QTest::addColumn<int>("gain");
    QTest::addColumn<int>("slope");
    QTest::addColumn<QString>("keys"); // filter down, up, slope down, up, level down, up
    QTest::newRow("in the middle") << 4 << 6 << 1 << "111111";
    QTest::newRow("30 Hz leads to off") << 1 << 6 << 1 << "111111";
    QTest::newRow("250 Hz") << 8 << 6 << 1 << "101111";
    QTest::newRow("flattest") << 4 << 6 << 0 << "110111";
    QTest::newRow("steepest") << 4 << 6 << 3 << "111011";
    QTest::newRow("no attenuation") << 4 << 0 << 1 << "111110";
    QTest::newRow("most attenuation") << 4 << 12 << 1 << "111101";
    QTest::newRow("off") << 0 << 6 << 1 << "010000";
}

void TestCrossSetting::keysAtTheEndsAreDisabled()
{
    QFETCH(int, freq);
    QFETCH(int, gain);
    QFETCH(int, slope);
    QFETCH(QString, keys);
    setStored(FreqKey, QStringLiteral("0;%1").arg(freq));
    setStored(GainKey, QStringLiteral("0;%1").arg(gain));
    setStored(SlopeKey, QStringLiteral("0;%1").arg(slope));
    resume();
    QCOMPARE(enabled(), keys);
}

void TestCrossSetting::offLeavesOnlyFilterUp()
{
    setStored(FreqKey, QStringLiteral("0;1;1;0;2;6"));
    resume();
    click("key_filter_down");
    QCOMPARE(take(), QStringList({KeyBeep, write(FreqKey, "0;0;1;0;2;6", "0;0;1;0;2;6")}) + sent(0, 0, 0, 0));
    QCOMPARE(enabled(), QStringLiteral("010000"));
    for (const char* key :
         {"key_filter_down", "key_slope_up", "key_slope_down", "key_level_up", "key_level_down"})
        click(key);
    QCOMPARE(take(All), QStringList());
}

void TestCrossSetting::groupKeysBeepStoreAndSend_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<int>("group");
    QTest::newRow("front") << "key_front" << 0;
    QTest::newRow("rear") << "key_rear" << 1;
    QTest::newRow("subwoofer") << "key_subwoofer" << 2;
}

void TestCrossSetting::groupKeysBeepStoreAndSend()
{
    QFETCH(QString, key);
    QFETCH(int, group);
    setStored(QStringLiteral("settings_cross_filter"), (group + 1) % 3);
    setStored(FreqKey, QStringLiteral("0;1;1;2;2;3"));
    setStored(GainKey, QStringLiteral("0;4;1;5;2;6"));
    setStored(SlopeKey, QStringLiteral("0;1;1;2;2;3"));
    setStored(QStringLiteral("subwooferLevel"), 6);
    resume();
    click(key.toLatin1());
    QCOMPARE(
        take(Actions | Read),
        QStringList(
            {KeyBeep,
             QStringLiteral("SettingsFunc.setValue(\"settings_cross_filter\", 0, %1, true)").arg(group)}) +
            sent(group, 1 + group, 4 + group, 1 + group));
    for (const char* other : {"key_front", "key_rear", "key_subwoofer"})
        QCOMPARE(find(other)->isChecked(), key == QLatin1String(other));
    // A second touch on the selected group sends again and leaves it checked.
    click(key.toLatin1());
    QCOMPARE(take().size(), 2 + sent(group, 0, 0, 0).size());
    QVERIFY(find(key.toLatin1())->isChecked());
}

void TestCrossSetting::selectingAGroupThatWasStoredOtherwiseShowsItsRows()
{
    setStored(FreqKey, QStringLiteral("0;1;1;8;2;6"));
    resume();
    QCOMPARE(shown(), QStringList({"T1243", "30 Hz", "-6 dB", "0"}));
    click("key_rear");
    QCOMPARE(shown(), QStringList({"T1243", "250 Hz", "-6 dB", "0"}));
    QVERIFY(!find("key_filter_up")->isEnabled());
    click("key_subwoofer");
    QCOMPARE(shown(), QStringList({"T1244", "120 Hz", "-6 dB", "-11"}));
    QVERIFY(find("key_filter_up")->isEnabled());
}

void TestCrossSetting::phaseControlIsShownForTheSubwooferOnly()
{
    QWidget* phase = find<QWidget>("phase_widget");
    for (int group = 0; group < 3; ++group) {
        setStored(QStringLiteral("settings_cross_filter"), group);
        m_page->resume();
        QCOMPARE(phase->isVisibleTo(m_page.data()), group == 2);
    }
    // Also when the group changes on the page.
    click("key_front");
    QVERIFY(!phase->isVisibleTo(m_page.data()));
    click("key_subwoofer");
    QVERIFY(phase->isVisibleTo(m_page.data()));
    click("key_rear");
    QVERIFY(!phase->isVisibleTo(m_page.data()));
}

void TestCrossSetting::phaseKeySendsTheSubwoofersIndexes()
{
    setStored(QStringLiteral("settings_cross_filter"), 2);
    setStored(QStringLiteral("subwooferLevel"), 4);
    resume();
    QPushButton* key = find("Key_troggle_phase");
    for (const bool phase : {true, false}) {
        click("Key_troggle_phase");
        QCOMPARE(key->isChecked(), phase);
        QCOMPARE(take(Actions | Read),
                 QStringList({KeyBeep, QStringLiteral(
                                           "SettingsFunc.setValue(\"Audio_Phase_Troggle\", false, %1, true)")
                                           .arg(phase ? "true" : "false")}) +
                     sent(2, 6, 4, 0));
        const QPixmap picture(phase ? ":/dual_icon/setup_btn_on_p.png" : ":/dual_icon/setup_btn_off_n.png");
        QVERIFY(!picture.isNull());
        QCOMPARE(key->icon().pixmap(key->iconSize()).toImage(), picture.toImage());
    }
}

void TestCrossSetting::phaseKeyIsDispatchedOnTheSelectedGroup_data()
{
    QTest::addColumn<int>("group");
    QTest::newRow("front") << 0;
    QTest::newRow("rear") << 1;
}

void TestCrossSetting::phaseKeyIsDispatchedOnTheSelectedGroup()
{
    QFETCH(int, group);
    setStored(QStringLiteral("settings_cross_filter"), group);
    setStored(FreqKey, QStringLiteral("0;1;1;2;2;7"));
    setStored(SlopeKey, QStringLiteral("0;0;1;1;2;3"));
    resume();
    call("onKey_troggle_phase");
    QCOMPARE(take(),
             QStringList({KeyBeep, "SettingsFunc.setValue(\"Audio_Phase_Troggle\", false, false, true)"}) +
                 sent(group, 7, 11, 3));
}

void TestCrossSetting::storedPhaseIsShown()
{
    QPushButton* key = find("Key_troggle_phase");
    setStored(QStringLiteral("Audio_Phase_Troggle"), true);
    m_page->resume();
    QVERIFY(key->isChecked());
    QCOMPARE(key->icon().pixmap(key->iconSize(), QIcon::Normal, QIcon::On).toImage(),
             QPixmap(":/dual_icon/setup_btn_on_p.png").toImage());
    setStored(QStringLiteral("Audio_Phase_Troggle"), false);
    m_page->resume();
    QVERIFY(!key->isChecked());
}

void TestCrossSetting::exitBeepsAndAsksTheHub()
{
    resume();
    QSignalSpy spy(m_page.data(), SIGNAL(exitUI()));
    find("key_exit")->click();
    QCOMPARE(take(All), QStringList(KeyBeep));
    QCOMPARE(spy.count(), 1);
    QCOMPARE(takeBackRequests(), 0); // the hub posts it
}

void TestCrossSetting::aTouchOnALabelReachesTheKeyBelow()
{
    setStored(FreqKey, QStringLiteral("0;4;1;4;2;4"));
    resume();
    // The row title covers the upper 10 px of both keys.
    touch::click(m_page.data(), QPoint(22 + 250, 385 + 35));
    QCOMPARE(take().value(1), write(FreqKey, "0;0;1;0;2;6", "0;5;1;4;2;4"));
    touch::click(m_page.data(), QPoint(22 + 5, 385 + 35));
    QCOMPARE(take().value(1), write(FreqKey, "0;0;1;0;2;6", "0;4;1;4;2;4"));
    // Captions cover their keys wholly.
    touch::click(m_page.data(), QPoint(820 + 86, 94 + 76 + 35));
    QVERIFY(find("key_rear")->isChecked());
}

void TestCrossSetting::aTouchOnTheGridReachesNothing()
{
    resume();
    for (const QPoint& pos :
         {QPoint(60, 100), QPoint(400, 200), QPoint(770, 380), QPoint(48, 40), QPoint(300, 50)})
        touch::click(m_page.data(), pos);
    QCOMPARE(take(All), QStringList());
}

void TestCrossSetting::everySlotWritesADiagnosticLine()
{
    const QMetaObject& meta = M5QXCrossSettingWidget::staticMetaObject;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        if (meta.method(i).methodType() != QMetaMethod::Slot)
            continue;
        resume();
        QVERIFY(meta.method(i).invoke(m_page.data()));
        const QString name = QString::fromLatin1(meta.method(i).name());
        QCOMPARE(takeLog().filter(QStringLiteral("::%1()").arg(name)).size(), 1);
    }
}

void TestCrossSetting::mapsAreWrittenWithAscendingKeys()
{
    QCOMPARE(M5QXCrossSettingWidget::mapToString({{2, 6}, {0, 0}, {1, 0}}), QStringLiteral("0;0;1;0;2;6"));
    QCOMPARE(M5QXCrossSettingWidget::mapToString({{10, -3}, {-1, 4}}), QStringLiteral("-1;4;10;-3"));
    QCOMPARE(M5QXCrossSettingWidget::mapToString({}), QString());
}

void TestCrossSetting::emptyTextOrASingleNumberYieldsAnEmptyMap()
{
    using Map = QMap<int, int>;
    QCOMPARE(M5QXCrossSettingWidget::stringToMap(QString()), Map());
    QCOMPARE(M5QXCrossSettingWidget::stringToMap(QStringLiteral("")), Map());
    QCOMPARE(M5QXCrossSettingWidget::stringToMap(QStringLiteral("5")), Map());
    // Every group then has index 0, which for the frequency is off.
    setStored(FreqKey, QStringLiteral("5"));
    setStored(QStringLiteral("settings_cross_filter"), 2);
    resume();
    QCOMPARE(find<QLabel>("txt_filter")->text(), QStringLiteral("T790"));
    QCOMPARE(stored(FreqKey), QVariant(QStringLiteral("5")));
    click("key_filter_up");
    QCOMPARE(stored(FreqKey), QVariant(QStringLiteral("0;0;1;0;2;1")));
}

void TestCrossSetting::oddLastPartIsIgnored()
{
    using Map = QMap<int, int>;
    QCOMPARE(M5QXCrossSettingWidget::stringToMap(QStringLiteral("0;3;1;4;2")), Map({{0, 3}, {1, 4}}));
}

void TestCrossSetting::mapTextsAreReadPairwise_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("back");
    QTest::newRow("default") << "0;0;1;0;2;6"
                             << "0;0;1;0;2;6";
    QTest::newRow("unordered") << "2;6;0;1;1;4"
                               << "0;1;1;4;2;6";
    QTest::newRow("a later pair overwrites") << "0;1;0;2"
                                             << "0;2";
    QTest::newRow("no number counts as 0") << "x;1;1;y"
                                           << "0;1;1;0";
    QTest::newRow("empty parts count as 0") << ";;1;2"
                                            << "0;0;1;2";
    QTest::newRow("only a separator") << ";"
                                      << "0;0";
    QTest::newRow("too large a number counts as 0") << "0;99999999999"
                                                    << "0;0";
    QTest::newRow("trailing separator") << "0;1;"
                                        << "0;1";
}

void TestCrossSetting::mapTextsAreReadPairwise()
{
    QFETCH(QString, text);
    QFETCH(QString, back);
    QCOMPARE(M5QXCrossSettingWidget::mapToString(M5QXCrossSettingWidget::stringToMap(text)), back);
}

void TestCrossSetting::storedIndexOutsideItsListCountsAsTheNearestAndIsNotRewritten_data()
{
    QTest::addColumn<QString>("freq");
    QTest::addColumn<QString>("gain");
    QTest::addColumn<QString>("slope");
    QTest::addColumn<QStringList>("rows");
    // clang-format off
    QTest::newRow("beyond")  << "0;9;1;0;2;6"          << "0;13;1;0;2;0"      << "0;4;1;0;2;0"   << QStringList({"T1243", "250 Hz", "-24 dB", "-12"});
    QTest::newRow("far")     << "0;2147483647;1;0;2;6" << "0;99999;1;0;2;0"   << "0;700;1;0;2;0" << QStringList({"T1243", "250 Hz", "-24 dB", "-12"});
    QTest::newRow("below")   << "0;1;1;0;2;6"          << "0;-1;1;0;2;0"      << "0;-9;1;0;2;0"  << QStringList({"T1243", "30 Hz", "-6 dB", "0"});
    QTest::newRow("lacking") << "0;1"                  << "1;5;2;5"           << "2;3"           << QStringList({"T1243", "30 Hz", "-6 dB", "0"});
    // clang-format on
}

void TestCrossSetting::storedIndexOutsideItsListCountsAsTheNearestAndIsNotRewritten()
{
    QFETCH(QString, freq);
    QFETCH(QString, gain);
    QFETCH(QString, slope);
    QFETCH(QStringList, rows);
    setStored(FreqKey, freq);
    setStored(GainKey, gain);
    setStored(SlopeKey, slope);
    m_page->resume();
    QCOMPARE(take(), QStringList());
    QCOMPARE(shown(), rows);
    click("key_rear");
    QCOMPARE(stored(FreqKey), QVariant(freq));
    QCOMPARE(stored(GainKey), QVariant(gain));
    QCOMPARE(stored(SlopeKey), QVariant(slope));
}

void TestCrossSetting::levelBeyondTheListIsShownAsTheLowest_data()
{
    QTest::addColumn<int>("stored");
    QTest::addColumn<QString>("text");
    QTest::newRow("12 is the last") << 12 << "-12";
    QTest::newRow("14") << 14 << "-12";
    QTest::newRow("127") << 127 << "-12";
    QTest::newRow("14 with bit 7") << (14 | 0x80) << "-12";
    QTest::newRow("bit 7 alone") << 0x80 << "0";
    QTest::newRow("negative") << -1 << "-12";
    QTest::newRow("only the low 7 bits") << 0x7F03 << "-3";
}

void TestCrossSetting::levelBeyondTheListIsShownAsTheLowest()
{
    QFETCH(int, stored);
    QFETCH(QString, text);
    setStored(QStringLiteral("settings_cross_filter"), 2);
    setStored(QStringLiteral("subwooferLevel"), stored);
    m_page->resume();
    QCOMPARE(find<QLabel>("txt_level")->text(), text);
    QCOMPARE(take(), QStringList());
    QCOMPARE(platform_double::stored(QStringLiteral("subwooferLevel")), QVariant(stored));
}

void TestCrossSetting::hostileStoredValuesDoNoHarm_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::newRow("empty") << QVariant(QString());
    QTest::newRow("huge number") << QVariant(std::numeric_limits<int>::max());
    QTest::newRow("negative") << QVariant(std::numeric_limits<int>::min());
    QTest::newRow("flag") << QVariant(true);
    QTest::newRow("words") << QVariant(QStringLiteral("no;map;at;all"));
    QTest::newRow("1 MiB of separators") << QVariant(QString(1 << 20, QLatin1Char(';')));
    QTest::newRow("1 MiB of one digit") << QVariant(QString(1 << 20, QLatin1Char('9')));
    QString pairs;
    for (int i = 0; pairs.size() < (1 << 20); ++i)
        pairs += QStringLiteral("%1;%2;").arg(i % 4 - 1).arg(i);
    QTest::newRow("1 MiB of pairs") << QVariant(pairs);
}

void TestCrossSetting::hostileStoredValuesDoNoHarm()
{
    QFETCH(QVariant, value);
    for (const char* key : {"settings_cross_filter", FreqKey, GainKey, SlopeKey, "Audio_Phase_Troggle",
                            "subwooferLevel", "subwooferFreq", "subwooferslope", "subwooferOnOff"})
        setStored(QLatin1String(key), value);
    m_page->resume();
    QCOMPARE(take(), QStringList());
    for (const char* group : {"key_front", "key_rear", "key_subwoofer"}) {
        click(group);
        for (const char* key : {"key_filter_up", "key_filter_down", "key_slope_up", "key_slope_down",
                                "key_level_up", "key_level_down"})
            click(key);
    }
    click("Key_troggle_phase");
    for (const QString& line : take(Audio)) {
        const QRegularExpression form(QStringLiteral("^AudioService\\.(doBeep\\(0\\)|setHPFFilter\\((\\d+), "
                                                     "(\\d+), [1248], [0-3]\\)|setSubFilter\\(([1-9]), "
                                                     "(\\d+), [0-3]\\))$"));
        QVERIFY2(form.match(line).hasMatch(), qPrintable(line));
    }
}

void TestCrossSetting::keysOfAMapThatThePageDoesntKnowAreKept()
{
    setStored(FreqKey, QStringLiteral("0;1;1;0;2;6;7;99"));
    resume();
    click("key_filter_up");
    QCOMPARE(stored(FreqKey), QVariant(QStringLiteral("0;2;1;0;2;6;7;99")));
}

void TestCrossSetting::randomTouchesKeepEveryInvariant()
{
    const quint32 seed = QRandomGenerator::global()->generate();
    qInfo("seed %u", seed);
    QRandomGenerator random(seed);
    resume();
    const QRegularExpression filter(
        QStringLiteral("^AudioService\\.set(HPF|Sub)Filter\\((\\d+), (\\d+), (\\d+)(?:, (\\d+))?\\)$"));
    const auto anywhere = [&random] { return QPoint(random.bounded(-60, 1084), random.bounded(-60, 570)); };
    for (int event = 0; event < 20000;) {
        QPoint pos = anywhere();
        if (random.bounded(2)) { // aim
            const QList<QPushButton*> keys = m_page->findChildren<QPushButton*>();
            QPushButton* key = keys.at(random.bounded(keys.size()));
            if (!key->isVisibleTo(m_page.data()))
                continue;
            pos = touch::middle(m_page.data(), key);
        }
        touch::press(m_page.data(), pos);
        ++event;
        for (int moves = random.bounded(4); moves > 0; --moves, ++event)
            touch::move(m_page.data(), random.bounded(2) ? anywhere() : pos);
        const QStringList early = take();
        QVERIFY2(early.isEmpty(), qPrintable(early.join('\n')));
        touch::release(m_page.data(), random.bounded(4) ? pos : anywhere());
        ++event;

        const QStringList calls = take();
        QVERIFY2(calls.isEmpty() || calls.first() == KeyBeep, qPrintable(calls.join('\n')));
        QCOMPARE(calls.count(KeyBeep), calls.isEmpty() ? 0 : 1);
        int filters = 0;
        for (const QString& line : calls) {
            const QRegularExpressionMatch match = filter.match(line);
            if (!match.hasMatch())
                continue;
            ++filters;
            const bool sub = match.captured(1) == QStringLiteral("Sub");
            QVERIFY(sub ? match.captured(2).toInt() <= 9 : (match.captured(2).toInt() & 0x7F) <= 8);
            QVERIFY(match.captured(3).toInt() <= 12);
            QVERIFY(match.captured(sub ? 4 : 5).toInt() <= 3);
        }
        if (!calls.isEmpty())
            QCOMPARE(filters, calls.filter(QStringLiteral("setSub")).isEmpty() ? 2 : 1);
        int checked = 0;
        for (const char* key : {"key_front", "key_rear", "key_subwoofer"})
            checked += find(key)->isChecked();
        QCOMPARE(checked, 1);
        if (event % 64 == 0)
            takeLog();
    }
    // What was stored by all this shows the same on a new page.
    const QStringList before = shown() << enabled();
    m_page.reset(new M5QXCrossSettingWidget);
    m_page->resume();
    QCOMPARE(shown() << enabled(), before);
}

void TestCrossSetting::pagesMadeAndLeftLeaveNothingBehind()
{
    QWidget hub;
    for (int i = 0; i < 200; ++i) {
        auto* page = new M5QXCrossSettingWidget(&hub);
        connect(page, SIGNAL(exitUI()), page, SLOT(deleteLater()));
        page->resume();
        QPointer<QWidget> guard(page);
        page->findChild<QPushButton*>(QStringLiteral("key_exit"))->click();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(guard.isNull());
    }
    QVERIFY(hub.findChildren<QObject*>().isEmpty());
    takeLog();
}

QTEST_MAIN(TestCrossSetting)
#include "tst_m5qxcrosssettingwidget.moc"
