#include "headunit/inspector/levelmeter.h"

#include <QtTest>

using namespace headunit;

class TestLevelMeter : public QObject
{
    Q_OBJECT
private slots:
    void restsAtItsQuietEnd();
    void levelIsToldInDecibels_data();
    void levelIsToldInDecibels();
    void levelJumpsUpAndFallsSlowly();
    void reductionGrowsAtOnceAndReturnsSlowly();
    void resetForgets();
    void barIsAsLongAsItsLevel_data();
    void barIsAsLongAsItsLevel();
};

static const QColor colour(0x10, 0xa0, 0x20);

void TestLevelMeter::restsAtItsQuietEnd()
{
    QCOMPARE(LevelMeter(LevelMeter::Level, colour, nullptr).shownDb(), -60.0);
    QCOMPARE(LevelMeter(LevelMeter::Reduction, colour, nullptr).shownDb(), 0.0);
}

void TestLevelMeter::levelIsToldInDecibels_data()
{
    QTest::addColumn<double>("factor");
    QTest::addColumn<QString>("text");
    QTest::newRow("full scale") << 1.0 << "0.0 dB";
    QTest::newRow("half") << 0.5 << "-6.0 dB";
    QTest::newRow("above full scale counts as full scale") << 2.0 << "0.0 dB";
    QTest::newRow("silence") << 0.0 << QStringLiteral("-\u221e dB");
    QTest::newRow("below the scale") << 1e-5 << QStringLiteral("< -60 dB");
    QTest::newRow("at the scale's end") << 1e-3 << QStringLiteral("< -60 dB");
    QTest::newRow("next to silence") << 1e-30 << QStringLiteral("< -60 dB");
}

void TestLevelMeter::levelIsToldInDecibels()
{
    QFETCH(double, factor);
    QFETCH(QString, text);
    LevelMeter meter(LevelMeter::Level, colour, nullptr);
    meter.setFactor(factor);
    QCOMPARE(meter.text(), text);
    QFont desk = meter.font();
    desk.setPixelSize(13); // the inspector's
    QVERIFY(QFontMetrics(desk).horizontalAdvance(text) <= LevelMeter::numberWidth);
}

void TestLevelMeter::levelJumpsUpAndFallsSlowly()
{
    LevelMeter meter(LevelMeter::Level, colour, nullptr);
    meter.setFactor(1);
    QCOMPARE(meter.shownDb(), 0.0);
    meter.setFactor(0);
    QVERIFY(meter.shownDb() > -60);
    const auto falls = [&] {
        const double before = meter.shownDb();
        meter.setFactor(0);
        return meter.shownDb() <= before && meter.shownDb() == -60;
    };
    QTRY_VERIFY(falls());
}

void TestLevelMeter::reductionGrowsAtOnceAndReturnsSlowly()
{
    LevelMeter meter(LevelMeter::Reduction, colour, nullptr);
    meter.setFactor(0.5);
    QVERIFY(std::abs(meter.shownDb() + 6.02) < 0.01);
    meter.setFactor(1);
    QVERIFY(meter.shownDb() < 0);
    const auto returned = [&] {
        meter.setFactor(1);
        return meter.shownDb() == 0;
    };
    QTRY_VERIFY(returned());
}

void TestLevelMeter::resetForgets()
{
    LevelMeter meter(LevelMeter::Level, colour, nullptr);
    meter.setFactor(1);
    meter.setFactor(1e-5);
    meter.reset();
    QCOMPARE(meter.shownDb(), -60.0);
    QCOMPARE(meter.text(), QStringLiteral("-\u221e dB"));
    meter.setFactor(0);
    QCOMPARE(meter.shownDb(), -60.0);
}

void TestLevelMeter::barIsAsLongAsItsLevel_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<double>("factor");
    QTest::addColumn<double>("part"); // of the bar
    QTest::addColumn<bool>("fromLeft");
    QTest::newRow("full scale fills it") << int(LevelMeter::Level) << 1.0 << 1.0 << true;
    QTest::newRow("-30 dB fills half") << int(LevelMeter::Level) << 0.0316228 << 0.5 << true;
    QTest::newRow("silence leaves it empty") << int(LevelMeter::Level) << 0.0 << 0.0 << true;
    QTest::newRow("limiter at rest is empty") << int(LevelMeter::Reduction) << 1.0 << 0.0 << false;
    QTest::newRow("6 dB less is half") << int(LevelMeter::Reduction) << 0.501187 << 0.5 << false;
}

void TestLevelMeter::barIsAsLongAsItsLevel()
{
    QFETCH(int, kind);
    QFETCH(double, factor);
    QFETCH(double, part);
    QFETCH(bool, fromLeft);
    LevelMeter meter(LevelMeter::Kind(kind), colour, nullptr);
    meter.resize(264, 16); // 200 of bar
    meter.setFactor(factor);
    const QImage picture = meter.grab().toImage();
    int first = -1, painted = 0;
    for (int x = 0; x < 200; ++x) {
        if (picture.pixelColor(x, 8) != colour)
            continue;
        first = first < 0 ? x : first;
        ++painted;
    }
    QVERIFY2(std::abs(painted - 200 * part) <= 3, qPrintable(QString::number(painted))); // 2 are the mark
    if (painted)
        QVERIFY2(fromLeft ? first == 0 : first > 90, qPrintable(QString::number(first)));
}

QTEST_MAIN(TestLevelMeter)
#include "tst_levelmeter.moc"
