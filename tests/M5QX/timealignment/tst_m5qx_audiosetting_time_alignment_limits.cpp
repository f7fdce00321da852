#include "tests/M5QX/timealignment/timealignment.h"

#include <QtTest>

#include <limits>

using namespace timealignment;

/// The time alignment page at the ends of its values, and with what lies beyond them.
class TestTimeAlignmentLimits : public TimeAlignmentFixture
{
    Q_OBJECT
private slots:
    void init() { makePage(); }
    void cleanup() { m_page.reset(); }

    void at100ThePlusKeyIsDisabledAndOneMinusClickGives99();
    void at0TheMinusKeyIsDisabledByItsOwnClickAndPlusBringsItBack();
    void afterResetAllMinusKeysAreDisabledAndAllPlusKeysEnabled();
    void atTheBottomThePlusKeyChangesNothing();
    void anIdOutsideTheKeysCountsAsItem0_data();
    void anIdOutsideTheKeysCountsAsItem0();
    void aPresetOutsideRangeIsLiteral_data();
    void aPresetOutsideRangeIsLiteral();
    void valuesOutsideTheRangeAreShownAndSentAsTheyAre_data();
    void valuesOutsideTheRangeAreShownAndSentAsTheyAre();
    void anItemThatDoesNotExistIsLoggedAndIgnored();
    void hostileValuesNeitherCrashNorAreRewritten();
};

void TestTimeAlignmentLimits::at100ThePlusKeyIsDisabledAndOneMinusClickGives99()
{
    for (int item = 0; item < 5; ++item) {
        setStored(storeKey(0, item), 99);
        rebuild();
        click(plusKey(item));
        QCOMPARE(stored(storeKey(0, item)), QVariant(100));
        QVERIFY(!key(plusKey(item))->isEnabled());
        QCOMPARE(clicked(plusKey(item), All), QStringList());
        QCOMPARE(clicked(minusKey(item)),
                 (QStringList{keyBeep, delay(items[item].mask, "9.9"), writeItem(0, item, 99)}));
        QVERIFY(key(plusKey(item))->isEnabled());
        QCOMPARE(shownValues().at(item), QStringLiteral("9.9ms"));
    }
}

void TestTimeAlignmentLimits::at0TheMinusKeyIsDisabledByItsOwnClickAndPlusBringsItBack()
{
    setStored(storeKey(0, 2), 1);
    rebuild();
    click(minusKey(2));
    QCOMPARE(stored(storeKey(0, 2)), QVariant(0));
    QVERIFY(!key(minusKey(2))->isEnabled());
    QVERIFY(key(plusKey(2))->isEnabled());
    click(plusKey(2));
    QVERIFY(key(minusKey(2))->isEnabled());
}

void TestTimeAlignmentLimits::afterResetAllMinusKeysAreDisabledAndAllPlusKeysEnabled()
{
    for (int item = 0; item < 5; ++item)
        setStored(storeKey(0, item), 100);
    rebuild();
    QCOMPARE(disabledKeys().size(), 5);
    // Zero in the store alone disables nothing: a minus key goes when its own state is looked at again, and
    // what it finds at 0 doesn't bring the plus key back.
    for (int item = 0; item < 5; ++item)
        setStored(storeKey(0, item), 0);
    QVERIFY(key(minusKey(0))->isEnabled());
    m_page->updtaeTimeAlignmentItemState(items[0].minus);
    QVERIFY(!key(minusKey(0))->isEnabled());
    QVERIFY(!key(plusKey(0))->isEnabled());
    click("key_reset");
    QStringList expected;
    for (int item = 0; item < 5; ++item)
        expected += minusKey(item);
    QCOMPARE(disabledKeys(), expected);
}

void TestTimeAlignmentLimits::atTheBottomThePlusKeyChangesNothing()
{
    setStored(storeKey(0, 0), 0);
    key(plusKey(0))->setEnabled(false);
    key(minusKey(0))->setEnabled(true);
    m_page->updtaeTimeAlignmentItemState(items[0].plus);
    QVERIFY(!key(plusKey(0))->isEnabled());
    QVERIFY(key(minusKey(0))->isEnabled());
    setStored(storeKey(0, 0), 100);
    key(plusKey(0))->setEnabled(true);
    key(minusKey(0))->setEnabled(false);
    m_page->updtaeTimeAlignmentItemState(items[0].minus);
    QVERIFY(key(plusKey(0))->isEnabled());
    QVERIFY(!key(minusKey(0))->isEnabled());
}

void TestTimeAlignmentLimits::anIdOutsideTheKeysCountsAsItem0_data()
{
    QTest::addColumn<int>("id");
    QTest::addColumn<int>("value");
    QTest::newRow("0 is even") << 0 << 49;
    QTest::newRow("11 is odd") << 11 << 51;
    QTest::newRow("12 is even") << 12 << 49;
    QTest::newRow("-1 is odd") << -1 << 51;
    QTest::newRow("largest int") << std::numeric_limits<int>::max() << 51;
    QTest::newRow("smallest int") << std::numeric_limits<int>::min() << 49;
}

void TestTimeAlignmentLimits::anIdOutsideTheKeysCountsAsItem0()
{
    QFETCH(int, id);
    QFETCH(int, value);
    setStored(storeKey(0, 0), 50);
    rebuild();
    const QStringList disabled = disabledKeys();
    key(minusKey(0))->setEnabled(false);
    m_page->onAlmButGroupClicked(id);
    QCOMPARE(takeCalls(),
             (QStringList{keyBeep, delay(1, QByteArray::number(value / 10.0)), writeItem(0, 0, value)}));
    // No key of that id, none is touched; its neighbour isn't either.
    QCOMPARE(disabledKeys(), QStringList{minusKey(0)} + disabled);
}

void TestTimeAlignmentLimits::aPresetOutsideRangeIsLiteral_data()
{
    QTest::addColumn<int>("preset");
    QTest::newRow("3") << 3;
    QTest::newRow("-1") << -1;
    QTest::newRow("largest int") << std::numeric_limits<int>::max();
}

void TestTimeAlignmentLimits::aPresetOutsideRangeIsLiteral()
{
    QFETCH(int, preset);
    setStored(storeKey(0, 0), 50);
    m_page->onPreButGroupClicked(preset);
    QCOMPARE(takeCalls(), (QStringList{keyBeep, writePreset(preset), delay(1, "0"), delay(2, "0"),
                                       delay(4, "0"), delay(8, "0"), delay(32, "0")}));
    QCOMPARE(m_page->getTimeAlignmentValue(0), 0);
    // A step is sent from 0 and stored nowhere.
    QCOMPARE(clicked(plusKey(0)), (QStringList{keyBeep, delay(1, "0.1")}));
    QCOMPARE(stored(storeKey(0, 0)), QVariant(50));
    m_page->setTimeAlignmentValue(preset, 0, 9);
    QCOMPARE(takeCalls(), QStringList());
}

void TestTimeAlignmentLimits::valuesOutsideTheRangeAreShownAndSentAsTheyAre_data()
{
    QTest::addColumn<int>("value");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("sent");
    QTest::newRow("101") << 101 << "10.1ms"
                         << "10.1";
    QTest::newRow("-1") << -1 << "-0.1ms"
                        << "-0.1";
    QTest::newRow("1000") << 1000 << "100ms"
                          << "100";
}

void TestTimeAlignmentLimits::valuesOutsideTheRangeAreShownAndSentAsTheyAre()
{
    QFETCH(int, value);
    QFETCH(QString, sent);
    setStored(storeKey(0, 3), value);
    rebuild();
    QTEST(shownValues().at(3), "text");
    QVERIFY(key(plusKey(3))->isEnabled() && key(minusKey(3))->isEnabled());
    QVERIFY(clicked("key_preset1").contains(delay(8, sent.toLatin1().constData())));
    QVERIFY(key(plusKey(3))->isEnabled() && key(minusKey(3))->isEnabled());
    QCOMPARE(m_page->isValidValue(value), 2);
    QCOMPARE(m_page->isValidValue(100), 0);
    QCOMPARE(m_page->isValidValue(0), 1);
}

void TestTimeAlignmentLimits::anItemThatDoesNotExistIsLoggedAndIgnored()
{
    for (const int item : {-1, 5, 1000000}) {
        takeLog();
        m_page->setTimeAlignment(item, 5);
        m_page->updateCurrAlignmentText(item, 5);
        QCOMPARE(takeLog().filter(QRegularExpression(QStringLiteral("^C \\[ERR\\] "))).size(), 2);
    }
    QCOMPARE(takeCalls(), QStringList());
    QCOMPARE(shownValues(), (QStringList{"0ms", "0ms", "0ms", "0ms", "0ms"}));
}

void TestTimeAlignmentLimits::hostileValuesNeitherCrashNorAreRewritten()
{
    for (const bool presetToo : {false, true}) {
        for (const QVariant& value : hostileValues()) {
            setStored("Audio_Time_Alignment_Preset", presetToo ? value : QVariant(0));
            for (int item = 0; item < 15; ++item)
                setStored(storeKey(item / 5, item % 5), value);
            rebuild();
            m_page->grab();
            QCOMPARE(takeCalls(), QStringList());
            QCOMPARE(stored(storeKey(2, 4)), value);
            for (int id = 0; id <= 11; ++id)
                m_page->onAlmButGroupClicked(id);
            m_page->onPreButGroupClicked(1);
            m_page->onResetClicked();
        }
    }
}

QTEST_MAIN(TestTimeAlignmentLimits)
#include "tst_m5qx_audiosetting_time_alignment_limits.moc"
