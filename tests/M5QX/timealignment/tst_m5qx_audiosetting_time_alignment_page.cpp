#include "common/settings.h"
#include "tests/M5QX/timealignment/timealignment.h"
#include "tests/support/randomwalk.h"

#include <QtTest>

#include <functional>

using namespace timealignment;

namespace {

const QString readPreset = QStringLiteral("SettingsExe.getValue(\"Audio_Time_Alignment_Preset\", 0)");

QString readItem(int preset, int item)
{
    return QStringLiteral("SettingsExe.getValue(\"%1\", 0)").arg(storeKey(preset, item));
}

/// The reads of one value by the current preset, count times.
QStringList readsOf(int preset, int item, int count = 1)
{
    QStringList result;
    while (count--)
        result += {readPreset, readItem(preset, item)};
    return result;
}

QStringList readsOfAll(int preset, int countEach = 1)
{
    QStringList result;
    for (int item = 0; item < 5; ++item)
        result += readsOf(preset, item, countEach);
    return result;
}

} // namespace

/// What the time alignment page asks of the platform.
class TestTimeAlignmentPage : public TimeAlignmentFixture
{
    Q_OBJECT
private slots:
    void init() { makePage(); }
    void cleanup() { m_page.reset(); }

    void constructionReadsThePresetAndSendsNothing();
    void theStoredPresetsKeyIsChecked_data();
    void theStoredPresetsKeyIsChecked();
    void showReadsOnlyAndDoesNotRecheckThePreset();
    void aStepSendsThenStoresThenShows_data();
    void aStepSendsThenStoresThenShows();
    void subwooferPlusOneFromZeroSendsMask32();
    void presetItemKeysAreNamedByTheTable_data();
    void presetItemKeysAreNamedByTheTable();
    void textOfAValue_data();
    void textOfAValue();
    void switchingToPreset2SendsAllFiveInItemOrderAndShowsThem();
    void aSwitchOfPresetCallsInOrder();
    void resetZeroesAllThreePresetsAndKeepsTheSelectedOne();
    void presetIconsOfTheOlderKeySet();
    void backBeepsAndPostsOneBackRequest();
    void everySlotWritesItsDiagnosticLine();
    void randomTouchesKeepTheInvariants_data() { RandomWalk::addSeedRow(); }
    void randomTouchesKeepTheInvariants();
};

void TestTimeAlignmentPage::constructionReadsThePresetAndSendsNothing()
{
    const OpenPage page(nullptr);
    QCOMPARE(takeCalls(All), QStringList{readPreset});
    QCOMPARE(page.findChildren<mem::SettingsExe*>(QString(), Qt::FindDirectChildrenOnly).size(), 1);
}

void TestTimeAlignmentPage::theStoredPresetsKeyIsChecked_data()
{
    QTest::addColumn<QVariant>("preset");
    QTest::addColumn<QString>("checked");
    QTest::newRow("none stored is preset 0") << QVariant() << "key_preset1";
    QTest::newRow("0") << QVariant(0) << "key_preset1";
    QTest::newRow("1") << QVariant(1) << "key_preset2";
    QTest::newRow("2") << QVariant(2) << "key_preset3";
    QTest::newRow("3 has no key") << QVariant(3) << "";
    QTest::newRow("-1 has no key") << QVariant(-1) << "";
    QTest::newRow("-2 has no key") << QVariant(-2) << "";
}

void TestTimeAlignmentPage::theStoredPresetsKeyIsChecked()
{
    QFETCH(QVariant, preset);
    setStored("Audio_Time_Alignment_Preset", preset);
    rebuild();
    QStringList is;
    for (const QPushButton* each : m_page->findChildren<QPushButton*>()) {
        if (each->isChecked())
            is += each->objectName();
    }
    QTEST(is.join(QLatin1Char(' ')), "checked");
}

void TestTimeAlignmentPage::showReadsOnlyAndDoesNotRecheckThePreset()
{
    m_page->hide();
    setStored("Audio_Time_Alignment_Preset", 1);
    setStored(storeKey(1, 2), 44);
    takeCalls(All);
    m_page->show();
    const QStringList calls = takeCalls(All);
    const QStringList texts = calls.filter(QStringLiteral("Translator."));
    QCOMPARE(calls.mid(0, texts.size()), texts);
    QCOMPARE(calls.mid(texts.size()), readsOfAll(1) + readsOfAll(1, 2));
    QCOMPARE(shownValues().at(2), QStringLiteral("4.4ms"));
    QVERIFY(key("key_preset1")->isChecked());
}

void TestTimeAlignmentPage::aStepSendsThenStoresThenShows_data()
{
    QTest::addColumn<int>("item");
    QTest::addColumn<bool>("plus");
    for (int item = 0; item < 5; ++item) {
        QTest::newRow(qPrintable(plusKey(item))) << item << true;
        QTest::newRow(qPrintable(minusKey(item))) << item << false;
    }
}

void TestTimeAlignmentPage::aStepSendsThenStoresThenShows()
{
    QFETCH(int, item);
    QFETCH(bool, plus);
    setStored("Audio_Time_Alignment_Preset", 2);
    setStored(storeKey(2, item), 15);
    rebuild();
    const int value = plus ? 16 : 14;
    const QByteArray ms = plus ? "1.6" : "1.4";
    const QStringList sent{delay(items[item].mask, ms.constData())};
    const QStringList kept{readPreset, writeItem(2, item, value)};
    QCOMPARE(clicked(plus ? plusKey(item) : minusKey(item), All),
             QStringList(keyBeep) + readsOf(2, item) + sent + kept + readsOf(2, item));
    QStringList shown{"0ms", "0ms", "0ms", "0ms", "0ms"};
    shown[item] = QString::fromLatin1(ms) + QStringLiteral("ms");
    QCOMPARE(shownValues(), shown);
}

void TestTimeAlignmentPage::subwooferPlusOneFromZeroSendsMask32()
{
    QCOMPARE(clicked("Key_subwoofer_plus"), (QStringList{keyBeep, delay(32, "0.1"), writeItem(0, 4, 1)}));
    QCOMPARE(clicked("Key_front_right_plus"), (QStringList{keyBeep, delay(2, "0.1"), writeItem(0, 1, 1)}));
}

void TestTimeAlignmentPage::presetItemKeysAreNamedByTheTable_data()
{
    QTest::addColumn<int>("preset");
    QTest::addColumn<int>("item");
    QTest::addColumn<QString>("name");
    QTest::newRow("preset 0, item 0") << 0 << 0 << "Audio_Time_Alignment_Num10";
    QTest::newRow("preset 0, item 4") << 0 << 4 << "Audio_Time_Alignment_Num14";
    QTest::newRow("preset 1, item 3") << 1 << 3 << "Audio_Time_Alignment_Num23";
    QTest::newRow("preset 2, item 0") << 2 << 0 << "Audio_Time_Alignment_Num30";
    QTest::newRow("preset 2, item 4") << 2 << 4 << "Audio_Time_Alignment_Num34";
}

void TestTimeAlignmentPage::presetItemKeysAreNamedByTheTable()
{
    QFETCH(int, preset);
    QFETCH(int, item);
    QFETCH(QString, name);
    m_page->setTimeAlignmentValue(preset, item, 77);
    QCOMPARE(stored(name), QVariant(77));
    QCOMPARE(m_page->getTimeAlignmentValue(preset, item), 77);
}

void TestTimeAlignmentPage::textOfAValue_data()
{
    QTest::addColumn<int>("value");
    QTest::addColumn<QString>("text");
    QTest::newRow("0") << 0 << "0ms";
    QTest::newRow("1") << 1 << "0.1ms";
    QTest::newRow("3 without rounding dust") << 3 << "0.3ms";
    QTest::newRow("15") << 15 << "1.5ms";
    QTest::newRow("99") << 99 << "9.9ms";
    QTest::newRow("100") << 100 << "10ms";
}

void TestTimeAlignmentPage::textOfAValue()
{
    QFETCH(int, value);
    QFETCH(QString, text);
    m_page->updateCurrAlignmentText(3, value);
    QCOMPARE(shownValues(), (QStringList{"0ms", "0ms", "0ms", text, "0ms"}));
}

void TestTimeAlignmentPage::switchingToPreset2SendsAllFiveInItemOrderAndShowsThem()
{
    const int values[] = {1, 0, 30, 100, 15};
    for (int item = 0; item < 5; ++item)
        setStored(storeKey(1, item), values[item]);
    QCOMPARE(clicked("key_preset2"), (QStringList{keyBeep, writePreset(1), delay(1, "0.1"), delay(2, "0"),
                                                  delay(4, "3"), delay(8, "10"), delay(32, "1.5")}));
    QCOMPARE(shownValues(), (QStringList{"0.1ms", "0ms", "3ms", "10ms", "1.5ms"}));
    QCOMPARE(disabledKeys(), (QStringList{minusKey(1), plusKey(3)}));
    QVERIFY(key("key_preset2")->isChecked());
    QVERIFY(!key("key_preset1")->isChecked());
    // The key that is current already sends everything once more.
    QCOMPARE(clicked("key_preset2").size(), 7);
}

void TestTimeAlignmentPage::aSwitchOfPresetCallsInOrder()
{
    QStringList sends;
    for (int item = 0; item < 5; ++item)
        sends += readsOf(2, item) + QStringList{delay(items[item].mask, "0")};
    QCOMPARE(clicked("key_preset3", All), (QStringList{keyBeep, writePreset(2)}) + readsOfAll(2) +
                                              readsOfAll(2, 2) + sends + readsOfAll(2, 2));
}

void TestTimeAlignmentPage::resetZeroesAllThreePresetsAndKeepsTheSelectedOne()
{
    setStored("Audio_Time_Alignment_Preset", 1);
    QStringList writes;
    QStringList sends;
    for (int preset = 0; preset < 3; ++preset) {
        for (int item = 0; item < 5; ++item) {
            setStored(storeKey(preset, item), 10 * preset + item + 1);
            writes += writeItem(preset, item, 0);
        }
    }
    for (const Item& item : items)
        sends += delay(item.mask, "0");
    rebuild();
    QCOMPARE(clicked("key_reset"), QStringList(keyBeep) + writes + sends);
    QCOMPARE(shownValues(), (QStringList{"0ms", "0ms", "0ms", "0ms", "0ms"}));
    QCOMPARE(stored("Audio_Time_Alignment_Preset"), QVariant(1));
    QVERIFY(key("key_preset2")->isChecked());
}

void TestTimeAlignmentPage::presetIconsOfTheOlderKeySet()
{
    const char normal[] = ":/vexa_m5qx_audiosettingicon/eq_btn_n.png";
    const char pressed[] = ":/vexa_m5qx_audiosettingicon/eq_btn_p.png";
    const QSize size = QPixmap(QLatin1String(normal)).size();
    m_page->updatePresetIcon(1, true);
    const auto icon = [this] { return key("key_preset2")->icon(); };
    QVERIFY(formcheck::shows(icon(), size, QIcon::Normal, QIcon::Off, normal));
    QVERIFY(formcheck::shows(icon(), size, QIcon::Selected, QIcon::Off, pressed));
    m_page->updatePresetIcon(1, false);
    QVERIFY(formcheck::shows(icon(), size, QIcon::Normal, QIcon::Off, pressed));
    QVERIFY(formcheck::shows(icon(), size, QIcon::Selected, QIcon::Off, pressed));
    QCOMPARE(key("key_preset1")->iconSize(), QSize(142, 70));
    takeLog();
    m_page->updatePresetIcon(3, true);
    QCOMPARE(takeLog().filter(QStringLiteral("[ERR]")).size(), 1);
}

void TestTimeAlignmentPage::backBeepsAndPostsOneBackRequest()
{
    key("key_back")->click();
    QCOMPARE(takeCalls(), QStringList{keyBeep});
    QCOMPARE(takeBackRequests(), 1);
}

void TestTimeAlignmentPage::everySlotWritesItsDiagnosticLine()
{
    const struct
    {
        QByteArray name;
        std::function<void()> call;
    } calls[] = {
        {"onAlmButGroupClicked", [this] { m_page->onAlmButGroupClicked(1); }},
        {"onPreButGroupClicked", [this] { m_page->onPreButGroupClicked(1); }},
        {"onResetClicked", [this] { m_page->onResetClicked(); }},
        {"onBackClicked", [this] { m_page->onBackClicked(); }},
    };
    for (const auto& each : calls) {
        takeLog();
        each.call();
        const QStringList lines = takeLog();
        QCOMPARE(lines.size(), 1);
        QVERIFY2(lines.first().startsWith(QLatin1String("D [DBG] ")), qPrintable(lines.first()));
        QVERIFY2(lines.first().contains(QString::fromLatin1("::" + each.name + '(')),
                 qPrintable(lines.first()));
    }
    takeBackRequests();
}

void TestTimeAlignmentPage::randomTouchesKeepTheInvariants()
{
    QFETCH(quint32, seed);
    RandomWalk walk(m_page.data(), seed);
    int steps = 0;
    for (int i = 0; i < 20000; ++i) {
        const RandomWalk::Step step = walk.step();
        const QStringList calls = takeCalls();
        if (step != RandomWalk::Release) {
            QCOMPARE(calls, QStringList());
        } else {
            const QString name = walk.holder()->objectName();
            const int sent = calls.filter(QStringLiteral("setSurroundDelay")).size();
            const int expected = name.startsWith(QLatin1String("Key_")) ? 1 : 5;
            QVERIFY2(calls.isEmpty() || sent == expected, qPrintable(name));
            steps += sent == 1;
        }
        const int preset = stored("Audio_Time_Alignment_Preset").toInt();
        QVERIFY(preset >= 0 && preset <= 2);
        for (int item = 0; item < 15; ++item) {
            const int value = stored(storeKey(item / 5, item % 5)).toInt();
            QVERIFY(value >= 0 && value <= 100);
        }
    }
    walk.end();
    QVERIFY2(steps > 10, qPrintable(QString::number(steps)));
    QCOMPARE(takeBackRequests(), 0);
}

QTEST_MAIN(TestTimeAlignmentPage)
#include "tst_m5qx_audiosetting_time_alignment_page.moc"
