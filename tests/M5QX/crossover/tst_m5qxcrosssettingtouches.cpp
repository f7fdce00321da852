#include "tests/M5QX/crossover/crosssetting.h"
#include "tests/support/randomwalk.h"

#include <QtTest>

using namespace crosssetting;

/// What a touch on the speaker crossover stores, shows and sends, in order.
class TestCrossSettingTouches : public CrossSettingFixture
{
    Q_OBJECT
private slots:
    void init() { makePage(); }
    void cleanup() { m_page.reset(); }

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

    void randomTouchesKeepEveryInvariant_data() { RandomWalk::addSeedRow(); }
    void randomTouchesKeepEveryInvariant();
    void pagesMadeAndLeftLeaveNothingBehind();
};

void TestCrossSettingTouches::stepsStoreShowAndSendInOrder_data()
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

void TestCrossSettingTouches::stepsStoreShowAndSendInOrder()
{
    QFETCH(QString, key);
    QFETCH(int, group);
    QFETCH(int, freq);
    QFETCH(int, gain);
    QFETCH(int, slope);
    setStored(QStringLiteral("settings_cross_filter"), group);
    setStored(freqKey, QStringLiteral("0;4;1;4;2;4"));
    setStored(gainKey, QStringLiteral("0;5;1;5;2;5"));
    setStored(slopeKey, QStringLiteral("0;2;1;2;2;2"));
    setStored(QStringLiteral("subwooferLevel"), 5);
    resume();
    click(key.toLatin1());
    const auto map = [group](int other, int own) {
        QStringList parts;
        for (int g = 0; g < 3; ++g)
            parts << QString::number(g) << QString::number(g == group ? own : other);
        return parts.join(QLatin1Char(';'));
    };
    QStringList expected(keyBeep);
    if (freq)
        expected << write(freqKey, QStringLiteral("0;0;1;0;2;6"), map(4, 4 + freq));
    if (gain)
        expected << write(gainKey, QStringLiteral("0;0;1;0;2;0"), map(5, 5 + gain));
    if (slope)
        expected << write(slopeKey, QStringLiteral("0;0;1;0;2;0"), map(2, 2 + slope));
    expected << sent(group, 4 + freq, 5 + gain, 2 + slope);
    QCOMPARE(takeCalls(Actions | Read), expected);
    const int hz[] = {0, 30, 40, 60, 80, 100, 120, 160, 250};
    QCOMPARE(shown(),
             QStringList({group == 2 ? "T1244" : "T1243", QStringLiteral("%1 Hz").arg(hz[4 + freq]),
                          QStringLiteral("%1 dB").arg(-6 * (2 + slope) - 6), QString::number(-(5 + gain))}));
}

void TestCrossSettingTouches::filterUpAt250HzKeepsTheIndexStillStoresAndStillSends()
{
    setStored(freqKey, QStringLiteral("0;8;1;0;2;6"));
    resume();
    click("key_filter_up"); // disabled: a touch does nothing
    QCOMPARE(takeCalls(), QStringList());
    call("on_key_filter_up_clicked");
    QCOMPARE(takeCalls(),
             QStringList({keyBeep, write(freqKey, "0;0;1;0;2;6", "0;8;1;0;2;6")}) + sent(0, 8, 0, 0));
    QCOMPARE(find<QLabel>("txt_filter")->text(), QStringLiteral("250 Hz"));
}

void TestCrossSettingTouches::stepsAtTheOtherEndsStillStoreAndSend_data()
{
    QTest::addColumn<QString>("slot");
    QTest::addColumn<QString>("freq");
    QTest::addColumn<QString>("gain");
    QTest::addColumn<QString>("slope");
    QTest::addColumn<QString>("key");
    // clang-format off
    QTest::newRow("filter down when off")  << "on_key_filter_down_clicked" << "0" << "0"  << "0" << freqKey;
    QTest::newRow("slope up at -24")       << "on_key_slope_up_clicked"    << "4" << "0"  << "3" << slopeKey;
    QTest::newRow("slope down at -6")      << "on_key_slope_down_clicked"  << "4" << "0"  << "0" << slopeKey;
    QTest::newRow("level up at 0")         << "on_key_level_up_clicked"    << "4" << "0"  << "0" << gainKey;
    QTest::newRow("level down at -12")     << "on_key_level_down_clicked"  << "4" << "12" << "0" << gainKey;
    // clang-format on
}

void TestCrossSettingTouches::stepsAtTheOtherEndsStillStoreAndSend()
{
    QFETCH(QString, slot);
    QFETCH(QString, freq);
    QFETCH(QString, gain);
    QFETCH(QString, slope);
    QFETCH(QString, key);
    const QString map(QStringLiteral("0;0;1;%1;2;0"));
    setStored(QStringLiteral("settings_cross_filter"), 1);
    setStored(QStringLiteral("subwooferLevel"), 0);
    setStored(freqKey, map.arg(freq));
    setStored(gainKey, map.arg(gain));
    setStored(slopeKey, map.arg(slope));
    resume();
    call(slot.toLatin1());
    const QString unchanged = map.arg(key == QLatin1String(freqKey)   ? freq
                                      : key == QLatin1String(gainKey) ? gain
                                                                      : slope);
    const QString fallback(key == QLatin1String(freqKey) ? "0;0;1;0;2;6" : "0;0;1;0;2;0");
    QCOMPARE(takeCalls(), QStringList({keyBeep, write(key.toLatin1(), fallback, unchanged)}) +
                              sent(1, freq.toInt(), gain.toInt(), slope.toInt()));
}

void TestCrossSettingTouches::withTheSubwooferSelectedLevelDownFrom11Stores12WithBit7()
{
    setStored(QStringLiteral("settings_cross_filter"), 2);
    resume();
    click("key_level_down");
    QCOMPARE(takeCalls(),
             QStringList({keyBeep, write(gainKey, "0;0;1;0;2;0", "0;0;1;0;2;12")}) + sent(2, 6, 12, 0));
    QCOMPARE(stored(QStringLiteral("subwooferLevel")), QVariant(12 | 0x80));
    // The count of the subwoofer's key is one higher: 120 Hz is the 7 that is its default.
    QCOMPARE(stored(QStringLiteral("subwooferFreq")), QVariant(7));
}

void TestCrossSettingTouches::keysAtTheEndsAreDisabled_data()
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

void TestCrossSettingTouches::keysAtTheEndsAreDisabled()
{
    QFETCH(int, freq);
    QFETCH(int, gain);
    QFETCH(int, slope);
    setStored(freqKey, QStringLiteral("0;%1").arg(freq));
    setStored(gainKey, QStringLiteral("0;%1").arg(gain));
    setStored(slopeKey, QStringLiteral("0;%1").arg(slope));
    resume();
    QTEST(enabled(), "keys");
}

void TestCrossSettingTouches::offLeavesOnlyFilterUp()
{
    setStored(freqKey, QStringLiteral("0;1;1;0;2;6"));
    resume();
    click("key_filter_down");
    QCOMPARE(takeCalls(),
             QStringList({keyBeep, write(freqKey, "0;0;1;0;2;6", "0;0;1;0;2;6")}) + sent(0, 0, 0, 0));
    QCOMPARE(enabled(), QStringLiteral("010000"));
    for (const char* key :
         {"key_filter_down", "key_slope_up", "key_slope_down", "key_level_up", "key_level_down"})
        click(key);
    QCOMPARE(takeCalls(All), QStringList());
}

void TestCrossSettingTouches::groupKeysBeepStoreAndSend_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<int>("group");
    QTest::newRow("front") << "key_front" << 0;
    QTest::newRow("rear") << "key_rear" << 1;
    QTest::newRow("subwoofer") << "key_subwoofer" << 2;
}

void TestCrossSettingTouches::groupKeysBeepStoreAndSend()
{
    QFETCH(QString, key);
    QFETCH(int, group);
    setStored(QStringLiteral("settings_cross_filter"), (group + 1) % 3);
    setStored(freqKey, QStringLiteral("0;1;1;2;2;3"));
    setStored(gainKey, QStringLiteral("0;4;1;5;2;6"));
    setStored(slopeKey, QStringLiteral("0;1;1;2;2;3"));
    setStored(QStringLiteral("subwooferLevel"), 6);
    resume();
    click(key.toLatin1());
    QCOMPARE(
        takeCalls(Actions | Read),
        QStringList(
            {keyBeep,
             QStringLiteral("SettingsFunc.setValue(\"settings_cross_filter\", 0, %1, true)").arg(group)}) +
            sent(group, 1 + group, 4 + group, 1 + group));
    for (const char* other : {"key_front", "key_rear", "key_subwoofer"})
        QCOMPARE(find(other)->isChecked(), key == QLatin1String(other));
    // A second touch on the selected group sends again and leaves it checked.
    click(key.toLatin1());
    QCOMPARE(takeCalls().size(), 2 + sent(group, 0, 0, 0).size());
    QVERIFY(find(key.toLatin1())->isChecked());
}

void TestCrossSettingTouches::selectingAGroupThatWasStoredOtherwiseShowsItsRows()
{
    setStored(freqKey, QStringLiteral("0;1;1;8;2;6"));
    resume();
    QCOMPARE(shown(), QStringList({"T1243", "30 Hz", "-6 dB", "0"}));
    click("key_rear");
    QCOMPARE(shown(), QStringList({"T1243", "250 Hz", "-6 dB", "0"}));
    QVERIFY(!find("key_filter_up")->isEnabled());
    click("key_subwoofer");
    QCOMPARE(shown(), QStringList({"T1244", "120 Hz", "-6 dB", "-11"}));
    QVERIFY(find("key_filter_up")->isEnabled());
}

void TestCrossSettingTouches::phaseControlIsShownForTheSubwooferOnly()
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

void TestCrossSettingTouches::phaseKeySendsTheSubwoofersIndexes()
{
    setStored(QStringLiteral("settings_cross_filter"), 2);
    setStored(QStringLiteral("subwooferLevel"), 4);
    resume();
    QPushButton* key = find("Key_troggle_phase");
    for (const bool phase : {true, false}) {
        click("Key_troggle_phase");
        QCOMPARE(key->isChecked(), phase);
        QCOMPARE(takeCalls(Actions | Read),
                 QStringList({keyBeep, QStringLiteral(
                                           "SettingsFunc.setValue(\"Audio_Phase_Troggle\", false, %1, true)")
                                           .arg(phase ? "true" : "false")}) +
                     sent(2, 6, 4, 0));
        const QPixmap picture(phase ? ":/dual_icon/setup_btn_on_p.png" : ":/dual_icon/setup_btn_off_n.png");
        QVERIFY(!picture.isNull());
        QCOMPARE(key->icon().pixmap(key->iconSize()).toImage(), picture.toImage());
    }
}

void TestCrossSettingTouches::phaseKeyIsDispatchedOnTheSelectedGroup_data()
{
    QTest::addColumn<int>("group");
    QTest::newRow("front") << 0;
    QTest::newRow("rear") << 1;
}

void TestCrossSettingTouches::phaseKeyIsDispatchedOnTheSelectedGroup()
{
    QFETCH(int, group);
    setStored(QStringLiteral("settings_cross_filter"), group);
    setStored(freqKey, QStringLiteral("0;1;1;2;2;7"));
    setStored(slopeKey, QStringLiteral("0;0;1;1;2;3"));
    resume();
    call("onKey_troggle_phase");
    QCOMPARE(takeCalls(),
             QStringList({keyBeep, "SettingsFunc.setValue(\"Audio_Phase_Troggle\", false, false, true)"}) +
                 sent(group, 7, 11, 3));
}

void TestCrossSettingTouches::storedPhaseIsShown()
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

void TestCrossSettingTouches::exitBeepsAndAsksTheHub()
{
    resume();
    QSignalSpy spy(m_page.data(), SIGNAL(exitUI()));
    find("key_exit")->click();
    QCOMPARE(takeCalls(All), QStringList(keyBeep));
    QCOMPARE(spy.count(), 1);
    QCOMPARE(takeBackRequests(), 0); // the hub posts it
}

void TestCrossSettingTouches::aTouchOnALabelReachesTheKeyBelow()
{
    setStored(freqKey, QStringLiteral("0;4;1;4;2;4"));
    resume();
    // The row title covers the upper 10 px of both keys.
    click(QPoint(22 + 250, 385 + 35));
    QCOMPARE(takeCalls().value(1), write(freqKey, "0;0;1;0;2;6", "0;5;1;4;2;4"));
    click(QPoint(22 + 5, 385 + 35));
    QCOMPARE(takeCalls().value(1), write(freqKey, "0;0;1;0;2;6", "0;4;1;4;2;4"));
    // Captions cover their keys wholly.
    click(QPoint(820 + 86, 94 + 76 + 35));
    QVERIFY(find("key_rear")->isChecked());
}

void TestCrossSettingTouches::aTouchOnTheGridReachesNothing()
{
    resume();
    for (const QPoint& pos :
         {QPoint(60, 100), QPoint(400, 200), QPoint(770, 380), QPoint(48, 40), QPoint(300, 50)})
        click(pos);
    QCOMPARE(takeCalls(All), QStringList());
}

void TestCrossSettingTouches::everySlotWritesADiagnosticLine()
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

void TestCrossSettingTouches::randomTouchesKeepEveryInvariant()
{
    QFETCH(quint32, seed);
    resume();
    const QRegularExpression filter(
        QStringLiteral("^AudioService\\.set(HPF|Sub)Filter\\((\\d+), (\\d+), (\\d+)(?:, (\\d+))?\\)$"));
    RandomWalk walk(m_page.data(), seed);
    for (int event = 0; event < 20000; ++event) {
        const RandomWalk::Step step = walk.step();
        const QStringList calls = takeCalls();
        if (step != RandomWalk::Release) {
            QVERIFY2(calls.isEmpty(), qPrintable(calls.join('\n')));
            continue;
        }
        QVERIFY2(calls.isEmpty() || calls.first() == keyBeep, qPrintable(calls.join('\n')));
        QCOMPARE(calls.count(keyBeep), calls.isEmpty() ? 0 : 1);
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

void TestCrossSettingTouches::pagesMadeAndLeftLeaveNothingBehind()
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

QTEST_MAIN(TestCrossSettingTouches)
#include "tst_m5qxcrosssettingtouches.moc"
