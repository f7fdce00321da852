#include "tests/M5QX/levels/audiolevels.h"

#include <QtTest>

#include <limits>

using namespace audiolevels;

namespace {

QString writeSwitch(bool on)
{
    return QStringLiteral("SettingsFunc.setValue(\"subwooferOnOff\", true, %1, true)")
        .arg(on ? QLatin1String("true") : QLatin1String("false"));
}

QString writeLevel(int value, bool commit = true)
{
    return QStringLiteral("SettingsFunc.setValue(\"subwooferLevel\", 11, %1, %2)")
        .arg(value)
        .arg(commit ? QLatin1String("true") : QLatin1String("false"));
}

QString subFilter(int frequency, int level)
{
    return QStringLiteral("AudioService.setSubFilter(%1, %2, 0)").arg(frequency).arg(level);
}

} // namespace

/// Loudness, and the subwoofer's switch and level, on the audio levels page.
class TestAudioLevelsSubwoofer : public AudioLevelsFixture
{
    Q_OBJECT
private slots:
    void init() { makePage(); }
    void cleanup() { m_page.reset(); }

    void loudnessBeepsByTheMcuAndTellsTheServiceAlone();
    void switchingTheSubwooferOnMarksTheLevel();
    void switchingTheSubwooferOffStoresTheLevelWithoutBit7();
    void sliderReleaseSendsTheLevel_data();
    void sliderReleaseSendsTheLevel();
    void sliderSendsNothingWhileDragged();
    void aSavedValueOutsideTheSliderIsClamped_data();
    void aSavedValueOutsideTheSliderIsClamped();
    void levelKeysStepMaskStoreAndSend_data();
    void levelKeysStepMaskStoreAndSend();
    void withTheSubwooferOffALevelSlotSwitchesItOnAndLeavesTheKeysDisabled_data();
    void withTheSubwooferOffALevelSlotSwitchesItOnAndLeavesTheKeysDisabled();
    void storedLevel139ShowsSliderValue1();
    void storedLevelsAreClampedForTheSlider_data();
    void storedLevelsAreClampedForTheSlider();
};

void TestAudioLevelsSubwoofer::loudnessBeepsByTheMcuAndTellsTheServiceAlone()
{
    QCOMPARE(clicked("key_loudness", Actions | Read),
             (QStringList{mcuBeep, "AudioService.setCustomLoudness(true, false)"}));
    QCOMPARE(clicked("key_loudness", Actions | Read),
             (QStringList{mcuBeep, "AudioService.setCustomLoudness(false, false)"}));
    QVERIFY(!stored("customloudnes").isValid());
}

void TestAudioLevelsSubwoofer::switchingTheSubwooferOnMarksTheLevel()
{
    setStored("subwooferOnOff", false);
    setStored("subwooferLevel", 5);
    setStored("subwooferFreq", 3);
    m_page->resume();
    QCOMPARE(clicked("key_subwoofer", Actions | Read),
             (QStringList{mcuBeep, writeSwitch(true), readLevel, readFrequency, writeLevel(5 | 128),
                          subFilter(3, 5)}));
    for (QWidget* each : QList<QWidget*>{slider(), key("key_sub_level_down"), key("key_sub_level_up")})
        QVERIFY(each->isEnabled());
}

void TestAudioLevelsSubwoofer::switchingTheSubwooferOffStoresTheLevelWithoutBit7()
{
    setStored("subwooferLevel", 5 | 128);
    setStored("subwooferFreq", 3);
    m_page->resume();
    QCOMPARE(clicked("key_subwoofer", Actions | Read),
             (QStringList{mcuBeep, writeSwitch(false), readLevel, readFrequency, writeLevel(5, false),
                          subFilter(0, 5)}));
    for (QWidget* each : QList<QWidget*>{slider(), key("key_sub_level_down"), key("key_sub_level_up")})
        QVERIFY(!each->isEnabled());
}

void TestAudioLevelsSubwoofer::sliderReleaseSendsTheLevel_data()
{
    QTest::addColumn<int>("x");
    QTest::addColumn<int>("level");
    QTest::newRow("left end is the softest") << 588 << 12;
    QTest::newRow("middle") << 588 + 171 << 6;
    QTest::newRow("right end is the loudest") << 588 + 341 << 0;
}

void TestAudioLevelsSubwoofer::sliderReleaseSendsTheLevel()
{
    QFETCH(int, x);
    QFETCH(int, level);
    setStored("subwooferFreq", 4);
    takeCalls(All);
    click(QPoint(x, 410));
    QCOMPARE(takeCalls(Actions | Read),
             (QStringList{writeSwitch(true), readFrequency, writeLevel(level | 128), subFilter(4, level)}));
    QCOMPARE(slider()->value(), 12 - level);
    QVERIFY(key("key_subwoofer")->isChecked());
}

void TestAudioLevelsSubwoofer::sliderSendsNothingWhileDragged()
{
    press(QPoint(588, 410));
    for (int x = 588; x < 1200; x += 10)
        move(QPoint(x, 200));
    QCOMPARE(takeCalls(All), QStringList());
    release(QPoint(1200, 200));
    QCOMPARE(takeCalls(), (QStringList{writeSwitch(true), writeLevel(128), subFilter(7, 0)}));
}

void TestAudioLevelsSubwoofer::aSavedValueOutsideTheSliderIsClamped_data()
{
    QTest::addColumn<int>("value");
    QTest::addColumn<int>("level");
    QTest::newRow("13") << 13 << 0;
    QTest::newRow("-1") << -1 << 12;
    QTest::newRow("smallest int") << std::numeric_limits<int>::min() << 12;
    QTest::newRow("largest int") << std::numeric_limits<int>::max() << 0;
}

void TestAudioLevelsSubwoofer::aSavedValueOutsideTheSliderIsClamped()
{
    QFETCH(int, value);
    QFETCH(int, level);
    m_page->onSliderOnSave(value);
    QCOMPARE(takeCalls(), (QStringList{writeSwitch(true), writeLevel(level | 128), subFilter(7, level)}));
}

void TestAudioLevelsSubwoofer::levelKeysStepMaskStoreAndSend_data()
{
    QTest::addColumn<QByteArray>("step");
    QTest::addColumn<int>("level");
    QTest::addColumn<int>("frequency");
    QTest::addColumn<int>("newLevel");
    QTest::addColumn<int>("newFrequency");
    const QByteArray up("key_sub_level_up");
    const QByteArray down("key_sub_level_down");
    // clang-format off
    QTest::newRow("up is louder")                  << up   << 5         << 7   << 4  << 7;
    QTest::newRow("down is softer")                << down << 5         << 7   << 6  << 7;
    QTest::newRow("up at 0 is sent again")         << up   << 0         << 7   << 0  << 7;
    QTest::newRow("down at 12 is sent again")      << down << 12        << 7   << 12 << 7;
    QTest::newRow("bit 7 is masked")               << up   << (5 | 128) << 7   << 4  << 7;
    QTest::newRow("16 masks to 0, up")             << up   << 16        << 7   << 0  << 7;
    QTest::newRow("15 steps up to 14 as it is")    << up   << 15        << 7   << 14 << 7;
    QTest::newRow("13 stays 13 on the way down")   << down << 13        << 7   << 13 << 7;
    QTest::newRow("frequency is masked with 15")   << up   << 5         << 135 << 4  << 7;
    QTest::newRow("frequency 16 masks to off")     << up   << 5         << 16  << 4  << 0;
    // clang-format on
}

void TestAudioLevelsSubwoofer::levelKeysStepMaskStoreAndSend()
{
    QFETCH(QByteArray, step);
    QFETCH(int, level);
    QFETCH(int, frequency);
    QFETCH(int, newLevel);
    QFETCH(int, newFrequency);
    setStored("subwooferLevel", level);
    setStored("subwooferFreq", frequency);
    QCOMPARE(clicked(step.constData(), Actions | Read),
             (QStringList{keyBeep, writeSwitch(true), readLevel, readFrequency, writeLevel(newLevel | 128),
                          subFilter(newFrequency, newLevel)}));
    QCOMPARE(slider()->value(), qBound(0, 12 - newLevel, 12));
    QVERIFY(key("key_subwoofer")->isChecked());
}

void TestAudioLevelsSubwoofer::withTheSubwooferOffALevelSlotSwitchesItOnAndLeavesTheKeysDisabled_data()
{
    QTest::addColumn<QByteArray>("slot");
    QTest::newRow("up") << QByteArray("on_key_sub_level_up_clicked");
    QTest::newRow("down") << QByteArray("on_key_sub_level_down_clicked");
    QTest::newRow("slider") << QByteArray("onSliderOnSave");
}

void TestAudioLevelsSubwoofer::withTheSubwooferOffALevelSlotSwitchesItOnAndLeavesTheKeysDisabled()
{
    QFETCH(QByteArray, slot);
    click("key_subwoofer");
    QCOMPARE(stored("subwooferOnOff"), QVariant(false));
    // By touch they are out of reach.
    QCOMPARE(clicked("key_sub_level_up", All), QStringList());
    click(QPoint(700, 410));
    QCOMPARE(takeCalls(All), QStringList());

    if (slot == "onSliderOnSave")
        emit slider()->valSave(6);
    else
        QVERIFY(QMetaObject::invokeMethod(m_page.data(), slot.constData()));
    QCOMPARE(stored("subwooferOnOff"), QVariant(true));
    QVERIFY(key("key_subwoofer")->isChecked());
    const QList<QWidget*> parts{slider(), key("key_sub_level_down"), key("key_sub_level_up")};
    for (QWidget* each : parts)
        QVERIFY(!each->isEnabled());
    m_page->resume();
    for (QWidget* each : parts)
        QVERIFY(each->isEnabled());
}

void TestAudioLevelsSubwoofer::storedLevel139ShowsSliderValue1()
{
    setStored("subwooferLevel", 139);
    m_page->resume();
    QCOMPARE(slider()->value(), 1);
}

void TestAudioLevelsSubwoofer::storedLevelsAreClampedForTheSlider_data()
{
    QTest::addColumn<int>("level");
    QTest::addColumn<int>("value");
    QTest::newRow("0 is the right end") << 0 << 12;
    QTest::newRow("12 is the left end") << 12 << 0;
    QTest::newRow("127") << 127 << 0;
    QTest::newRow("13") << 13 << 0;
    QTest::newRow("256 masks to 0") << 256 << 12;
    QTest::newRow("-1 masks to 127") << -1 << 0;
}

void TestAudioLevelsSubwoofer::storedLevelsAreClampedForTheSlider()
{
    QFETCH(int, level);
    QFETCH(int, value);
    setStored("subwooferLevel", level);
    m_page->resume();
    QCOMPARE(slider()->value(), value);
    QCOMPARE(takeCalls(), QStringList());
    QCOMPARE(stored("subwooferLevel"), QVariant(level));
}

QTEST_MAIN(TestAudioLevelsSubwoofer)
#include "tst_m5qx_audiosetting_audio_levels_subwoofer.moc"
