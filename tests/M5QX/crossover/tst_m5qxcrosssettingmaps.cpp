#include "tests/M5QX/crossover/crosssetting.h"

#include <QtTest>

using namespace crosssetting;

/// The maps that the speaker crossover keeps, as it wrote them and as somebody else did.
class TestCrossSettingMaps : public CrossSettingFixture
{
    Q_OBJECT
private slots:
    void init() { makePage(); }
    void cleanup() { m_page.reset(); }

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
};

void TestCrossSettingMaps::mapsAreWrittenWithAscendingKeys()
{
    QCOMPARE(M5QXCrossSettingWidget::mapToString({{2, 6}, {0, 0}, {1, 0}}), QStringLiteral("0;0;1;0;2;6"));
    QCOMPARE(M5QXCrossSettingWidget::mapToString({{10, -3}, {-1, 4}}), QStringLiteral("-1;4;10;-3"));
    QCOMPARE(M5QXCrossSettingWidget::mapToString({}), QString());
}

void TestCrossSettingMaps::emptyTextOrASingleNumberYieldsAnEmptyMap()
{
    using Map = QMap<int, int>;
    QCOMPARE(M5QXCrossSettingWidget::stringToMap(QString()), Map());
    QCOMPARE(M5QXCrossSettingWidget::stringToMap(QStringLiteral("")), Map());
    QCOMPARE(M5QXCrossSettingWidget::stringToMap(QStringLiteral("5")), Map());
    // Every group then has index 0, which for the frequency is off.
    setStored(freqKey, QStringLiteral("5"));
    setStored(QStringLiteral("settings_cross_filter"), 2);
    resume();
    QCOMPARE(find<QLabel>("txt_filter")->text(), QStringLiteral("T790"));
    QCOMPARE(stored(freqKey), QVariant(QStringLiteral("5")));
    click("key_filter_up");
    QCOMPARE(stored(freqKey), QVariant(QStringLiteral("0;0;1;0;2;1")));
}

void TestCrossSettingMaps::oddLastPartIsIgnored()
{
    using Map = QMap<int, int>;
    QCOMPARE(M5QXCrossSettingWidget::stringToMap(QStringLiteral("0;3;1;4;2")), Map({{0, 3}, {1, 4}}));
}

void TestCrossSettingMaps::mapTextsAreReadPairwise_data()
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

void TestCrossSettingMaps::mapTextsAreReadPairwise()
{
    QFETCH(QString, text);
    QTEST(M5QXCrossSettingWidget::mapToString(M5QXCrossSettingWidget::stringToMap(text)), "back");
}

void TestCrossSettingMaps::storedIndexOutsideItsListCountsAsTheNearestAndIsNotRewritten_data()
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

void TestCrossSettingMaps::storedIndexOutsideItsListCountsAsTheNearestAndIsNotRewritten()
{
    QFETCH(QString, freq);
    QFETCH(QString, gain);
    QFETCH(QString, slope);
    setStored(freqKey, freq);
    setStored(gainKey, gain);
    setStored(slopeKey, slope);
    m_page->resume();
    QCOMPARE(takeCalls(), QStringList());
    QTEST(shown(), "rows");
    click("key_rear");
    QCOMPARE(stored(freqKey), QVariant(freq));
    QCOMPARE(stored(gainKey), QVariant(gain));
    QCOMPARE(stored(slopeKey), QVariant(slope));
}

void TestCrossSettingMaps::levelBeyondTheListIsShownAsTheLowest_data()
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

void TestCrossSettingMaps::levelBeyondTheListIsShownAsTheLowest()
{
    QFETCH(int, stored);
    QFETCH(QString, text);
    setStored(QStringLiteral("settings_cross_filter"), 2);
    setStored(QStringLiteral("subwooferLevel"), stored);
    m_page->resume();
    QCOMPARE(find<QLabel>("txt_level")->text(), text);
    QCOMPARE(takeCalls(), QStringList());
    QCOMPARE(platform_double::stored(QStringLiteral("subwooferLevel")), QVariant(stored));
}

void TestCrossSettingMaps::hostileStoredValuesDoNoHarm_data()
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

void TestCrossSettingMaps::hostileStoredValuesDoNoHarm()
{
    QFETCH(QVariant, value);
    for (const char* key : {"settings_cross_filter", freqKey, gainKey, slopeKey, "Audio_Phase_Troggle",
                            "subwooferLevel", "subwooferFreq", "subwooferslope", "subwooferOnOff"})
        setStored(QLatin1String(key), value);
    m_page->resume();
    QCOMPARE(takeCalls(), QStringList());
    for (const char* group : {"key_front", "key_rear", "key_subwoofer"}) {
        click(group);
        for (const char* key : {"key_filter_up", "key_filter_down", "key_slope_up", "key_slope_down",
                                "key_level_up", "key_level_down"})
            click(key);
    }
    click("Key_troggle_phase");
    for (const QString& line : takeCalls(Audio)) {
        const QRegularExpression form(QStringLiteral("^AudioService\\.(doBeep\\(0\\)|setHPFFilter\\((\\d+), "
                                                     "(\\d+), [1248], [0-3]\\)|setSubFilter\\(([1-9]), "
                                                     "(\\d+), [0-3]\\))$"));
        QVERIFY2(form.match(line).hasMatch(), qPrintable(line));
    }
}

void TestCrossSettingMaps::keysOfAMapThatThePageDoesntKnowAreKept()
{
    setStored(freqKey, QStringLiteral("0;1;1;0;2;6;7;99"));
    resume();
    click("key_filter_up");
    QCOMPARE(stored(freqKey), QVariant(QStringLiteral("0;2;1;0;2;6;7;99")));
}

QTEST_MAIN(TestCrossSettingMaps)
#include "tst_m5qxcrosssettingmaps.moc"
