#include "M5QX/curvewidget.h"
#include "tests/M5QX/crossover/crosssetting.h"

#include <QtTest>

using namespace crosssetting;

/// What the speaker crossover reads and shows.
class TestCrossSetting : public CrossSettingFixture
{
    Q_OBJECT
private slots:
    void init() { makePage(); }
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
};

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
    QCOMPARE(takeCalls(All & ~Text), QStringList());
}

void TestCrossSetting::resumeReadsInOrderAndWritesNothing()
{
    takeCalls(All);
    m_page->resume();
    QCOMPARE(takeCalls(All & ~Text),
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
    QCOMPARE(takeCalls(), QStringList());
    QVERIFY(find("key_front")->isChecked());
    QVERIFY(takeLog().filter(QRegularExpression(QStringLiteral("^C \\[ERR\\]"))).size() == 1);
    click("key_filter_up");
    QCOMPARE(takeCalls(),
             QStringList({keyBeep, write(freqKey, "0;0;1;0;2;6", "0;1;1;0;2;6")}) + sent(0, 1, 0, 0));
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
    setStored(QStringLiteral("settings_cross_filter"), group);
    setStored(freqKey, QStringLiteral("0;1;1;5;2;8"));
    setStored(gainKey, QStringLiteral("0;1;1;0;2;0"));
    setStored(slopeKey, QStringLiteral("0;0;1;3;2;1"));
    setStored(QStringLiteral("subwooferLevel"), 12 | 0x80);
    m_page->resume();
    QVERIFY(find(key.toLatin1())->isChecked());
    QTEST(shown(), "rows");
    QTEST(enabled(), "keys");
}

void TestCrossSetting::subwooferGainComesFromItsLevelNotFromTheMap()
{
    setStored(QStringLiteral("settings_cross_filter"), 2);
    setStored(gainKey, QStringLiteral("0;0;1;0;2;3"));
    setStored(QStringLiteral("subwooferLevel"), 0x80 | 5);
    m_page->resume();
    QCOMPARE(find<QLabel>("txt_level")->text(), QStringLiteral("-5"));
}

void TestCrossSetting::curvesLieOverTheGridInTheirColours()
{
    // Three off curves would cover each other: one each at a place of its own.
    setStored(freqKey, QStringLiteral("0;2;1;4;2;3"));
    setStored(gainKey, QStringLiteral("0;0;1;4;2;0"));
    setStored(slopeKey, QStringLiteral("0;3;1;3;2;3"));
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
    setStored(freqKey, QStringLiteral("0;%1;1;0;2;0").arg(frequency));
    setStored(gainKey, QStringLiteral("0;%1;1;0;2;0").arg(gain));
    // Each slope has its own gradient.
    const float gradients[] = {-4.9F, -7.8F, -15.0F, -24.0F};
    for (int slope = 0; slope < 4; ++slope) {
        setStored(slopeKey, QStringLiteral("0;%1;1;0;2;0").arg(slope));
        takeLog();
        m_page->resume();
        const int left = static_cast<int>(knee.y() - gradients[slope] * knee.x());
        QCOMPARE(loggedCurves(QStringLiteral("setCurveHpf")).first(),
                 points(knee, {0, left}, {697, knee.y()}));
    }
}

void TestCrossSetting::aSubwooferCurveIsALowPassTheOthersAreHighPasses()
{
    setStored(freqKey, QStringLiteral("0;8;1;8;2;8"));
    setStored(slopeKey, QStringLiteral("0;1;1;1;2;1"));
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
    setStored(gainKey, QStringLiteral("0;7;1;0;2;0"));
    setStored(slopeKey, QStringLiteral("0;3;1;0;2;0"));
    m_page->resume();
    QCOMPARE(loggedCurves(QStringLiteral("setCurveHpf")).first(), points({56, 2}, {0, 2}, {697, 2}));
    QCOMPARE(shown(), QStringList({"T1243", "T790", "0 dB", "0"}));
    click("key_filter_up");
    QCOMPARE(shown(), QStringList({"T1243", "30 Hz", "-24 dB", "-7"})); // nothing was lost by being off
}

QTEST_MAIN(TestCrossSetting)
#include "tst_m5qxcrosssettingwidget.moc"
