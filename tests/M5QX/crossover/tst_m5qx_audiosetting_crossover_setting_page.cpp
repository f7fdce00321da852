#include "tests/M5QX/crossover/crossoverpage.h"

#include <QPixmapCache>
#include <QtTest>

using namespace crossoverpage;
using formcheck::shows;

/// What the stand-alone crossover page reads and shows.
class TestCrossoverPage : public CrossoverPageFixture
{
    Q_OBJECT
private slots:
    void init() { makePage(); }
    void cleanup() { m_page.reset(); }

    void slotsAreDeclaredInOrder();

    void constructionReadsTheTwoStatesAndWritesNothing();
    void showingRefreshesInOrderAndWritesNothing();
    void aFreshStoreShowsTheDefaults();
    void frequencyTexts_data();
    void frequencyTexts();
    void valuesOutsideTheTablesShowNoTextAndStayAsStored_data();
    void valuesOutsideTheTablesShowNoTextAndStayAsStored();

    void anySlopeButThreeShowsNoneAndNoLine();
    void lineIconsMove44PixelsAStep();
    void sendersReadFrequencyThenSlopeOrLevel();
    void diagnosticTextsAreTheKnownOnes_data();
    void diagnosticTextsAreTheKnownOnes();
    void everySlotWritesADiagnosticLine();
    void destructionClearsThePixmapCache();
    void hostileStoredValuesDoNoHarm_data();
    void hostileStoredValuesDoNoHarm();
};

void TestCrossoverPage::slotsAreDeclaredInOrder()
{
    const QMetaObject& meta = Page::staticMetaObject;
    QCOMPARE(formcheck::ownMethods(&meta),
             QStringList({"onBackClicked()", "onHighPassClicked()", "onHpfFreqNextClicked()",
                          "onHpfFreqPrevClicked()", "onLowPassClicked()", "onLpfFreqNextClicked()",
                          "onLpfFreqPrevClicked()", "onSUBFreqNextClicked()", "onSUBFreqPrevClicked()",
                          "onSUBLevelNextClicked()", "onSUBLevelPrevClicked()",
                          "onHpfSlopeButtonClicked(int)", "onLpfSlopeButtonClicked(int)"}));
    QCOMPARE(QString::fromLatin1(meta.className()),
             QStringLiteral("audiosetting::m5qx_eq_crossover_setting_page"));
    QVERIFY(m_page->findChild<QTimer*>()->isSingleShot());
    QVERIFY(!m_page->findChild<QTimer*>()->isActive());
    QCOMPARE(takeLog().filter(QRegularExpression(QStringLiteral("^W "))), QStringList());
}

void TestCrossoverPage::constructionReadsTheTwoStatesAndWritesNothing()
{
    QCOMPARE(takeCalls(All & ~Text), QStringList({"SettingsExe.getValue(\"hpfState\", false)",
                                                  "SettingsExe.getValue(\"lpfState\", false)"}));
    // Each key has its own on picture, off is the same.
    setStored(QStringLiteral("hpfState"), true);
    setStored(QStringLiteral("lpfState"), true);
    m_page.reset(new Page);
    QVERIFY(shows(find("key_high_pass")->icon().pixmap(110, 52), ICONS "eq_btn_on1_n.png"));
    const QSize size = QPixmap(":/dual_icon/setup_btn_on_p.png").size();
    QVERIFY(shows(find("key_low_pass")->icon().pixmap(size), ":/dual_icon/setup_btn_on_p.png"));
}

void TestCrossoverPage::showingRefreshesInOrderAndWritesNothing()
{
    const auto updaters = [] {
        static const QRegularExpression name(QStringLiteral("::(update\\w+)\\("));
        QStringList names;
        for (const QString& line : takeLog()) {
            const QRegularExpressionMatch match = name.match(line);
            if (match.hasMatch())
                names << match.captured(1);
        }
        return names;
    };
    const QStringList slopesAndSubwoofer = {
        "updateHPFSlopeIcon",        "updateHPFSlopeLineIcon",  "updateLPFSlopeIcon",
        "updateLPFSlopeLineIcon",    "updateCurrSubWooferText", "updateCurrSubFreqText",
        "updateCurrSubFreqBtnState", "updateCurrSubLevelText",  "updateCurrSubLevelBtnState"};
    takeCalls(All);
    takeLog();
    m_page->show();
    const QStringList calls = takeCalls(All);
    const QStringList texts = calls.filter(QStringLiteral("Translator."));
    QVERIFY(calls.first().startsWith(QStringLiteral("Translator."))); // texts, then values
    QCOMPARE(calls.size() - texts.size(), calls.filter(QStringLiteral(".getValue(")).size());
    QCOMPARE(updaters(),
             QStringList({"updateCurrHPFFreqText", "updateCurrHPFFreqBtnState", "updateCurrHPFFreqLineIcon",
                          "updateHPFStateIcon", "updateCurrLPFFreqText", "updateCurrLPFFreqBtnState",
                          "updateCurrLPFFreqLineIcon", "updateLPFStateIcon"}) +
                 slopesAndSubwoofer);

    // A filter that is on has its text and keys refreshed once more.
    m_page->hide();
    setStored(QStringLiteral("hpfState"), true);
    setStored(QStringLiteral("lpfState"), true);
    m_page->show();
    QCOMPARE(updaters(),
             QStringList({"updateCurrHPFFreqText", "updateCurrHPFFreqBtnState", "updateCurrHPFFreqLineIcon",
                          "updateHPFStateIcon", "updateCurrHPFFreqText", "updateCurrHPFFreqBtnState",
                          "updateCurrLPFFreqText", "updateCurrLPFFreqBtnState", "updateCurrLPFFreqLineIcon",
                          "updateLPFStateIcon", "updateCurrLPFFreqText", "updateCurrLPFFreqBtnState"}) +
                 slopesAndSubwoofer);
    QCOMPARE(takeCalls(), QStringList());
}

void TestCrossoverPage::aFreshStoreShowsTheDefaults()
{
    show();
    QCOMPARE(text("text_hpf_freq"), QStringLiteral("160Hz"));
    QCOMPARE(text("text_low_freq"), QStringLiteral("OFF"));
    QCOMPARE(text("text_subwoofer_level"), QStringLiteral("11"));
    QCOMPARE(text("text_subwoofer_freq"), QStringLiteral("120Hz"));
    for (const char* part : {"icon_line_hpf", "text_high_pass", "hpf_freq_widget", "hpf_slope_widget",
                             "icon_line_lpf", "text_low_pass", "low_freq_widgetl", "low_slope_widget"})
        QVERIFY2(!visible(part), part);
    const auto blue = [this](const char* key) {
        return shows(find(key)->icon().pixmap(30, 30), ICONS "icon_circle_blue.png");
    };
    QVERIFY(blue("key_hpf_slope_12db"));
    for (const char* key : {"key_hpf_slope_6db", "key_hpf_slope_18db", "key_low_slope_6db",
                            "key_low_slope_12db", "key_low_slope_18db"}) {
        QVERIFY2(!blue(key), key);
        QVERIFY2(shows(find(key)->icon().pixmap(30, 30), ICONS "icon_circle_grey.png"), key);
        QVERIFY2(!find(key)->isChecked(), key);
    }
}

void TestCrossoverPage::frequencyTexts_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<QString>("hpf");
    QTest::addColumn<QString>("lpf");
    QTest::addColumn<QString>("subwoofer");
    // clang-format off
    const char* const texts[][3] = {
        {"OFF",   "OFF",   "OFF"},
        {"20Hz",  "2kHz",  "AP"},
        {"60Hz",  "8KHz",  "50Hz"},
        {"80Hz",  "10KHz", "80Hz"},
        {"160Hz", "16KHz", "120Hz"},
        {"250Hz", "20KHz", "160Hz"},
        {"",      "",      "100Hz"},
        {"",      "",      "120Hz"},
        {"",      "",      "160Hz"},
        {"",      "",      "250Hz"},
        {"",      "",      ""},
    };
    // clang-format on
    for (int i = 0; i < 11; ++i)
        QTest::addRow("index %d", i) << i << texts[i][0] << texts[i][1] << texts[i][2];
}

void TestCrossoverPage::frequencyTexts()
{
    QFETCH(int, index);
    for (const char* key : {"hpfFreq", "lpfFreq", "subwooferFreq"})
        setStored(QLatin1String(key), index);
    m_page->show();
    QTEST(text("text_hpf_freq"), "hpf");
    QTEST(text("text_low_freq"), "lpf");
    QTEST(text("text_subwoofer_freq"), "subwoofer");
}

void TestCrossoverPage::valuesOutsideTheTablesShowNoTextAndStayAsStored_data()
{
    QTest::addColumn<int>("index");
    QTest::newRow("-1") << -1;
    QTest::newRow("100") << 100;
    QTest::newRow("largest") << std::numeric_limits<int>::max();
    QTest::newRow("smallest") << std::numeric_limits<int>::min();
}

void TestCrossoverPage::valuesOutsideTheTablesShowNoTextAndStayAsStored()
{
    QFETCH(int, index);
    setStored(QStringLiteral("hpfState"), true);
    setStored(QStringLiteral("subwooferLevel"), 0x80 | 9);
    for (const char* key : {"hpfFreq", "lpfFreq", "subwooferFreq"})
        setStored(QLatin1String(key), index);
    const QPoint place = find<QLabel>("icon_line_hpf")->pos();
    show();
    for (const char* label : {"text_hpf_freq", "text_low_freq", "text_subwoofer_freq"})
        QCOMPARE(text(label), QString());
    QCOMPARE(find<QLabel>("icon_line_hpf")->pos(), place);
    QCOMPARE(stored(QStringLiteral("hpfFreq")), QVariant(index));
    // Sent as stored too.
    click("key_hpf_slope_6db");
    QCOMPARE(takeCalls(), QStringList({keyBeep, write("hpfslope", "1", "0")}) + sent("HPF", index, 0));
    click("Key_subwoofer_level_plus");
    QCOMPARE(takeCalls().value(1), sub(index, 10));
}

void TestCrossoverPage::anySlopeButThreeShowsNoneAndNoLine()
{
    setStored(QStringLiteral("hpfState"), true);
    show();
    QVERIFY(find("key_hpf_slope_12db")->isChecked());
    m_page->hide();
    for (const int slope : {3, -1, 99}) {
        setStored(QStringLiteral("hpfslope"), slope);
        show();
        QVERIFY(find<QLabel>("icon_line_hpf")->pixmap(Qt::ReturnByValue).isNull());
        for (const char* key : {"key_hpf_slope_6db", "key_hpf_slope_12db", "key_hpf_slope_18db"}) {
            QVERIFY(!find(key)->isChecked());
            QVERIFY(shows(find(key)->icon().pixmap(30, 30), ICONS "icon_circle_grey.png"));
        }
        m_page->hide();
    }
}

void TestCrossoverPage::lineIconsMove44PixelsAStep()
{
    setStored(QStringLiteral("hpfState"), true);
    setStored(QStringLiteral("lpfState"), true);
    for (int freq = 0; freq <= 5; ++freq) {
        setStored(QStringLiteral("hpfFreq"), freq);
        setStored(QStringLiteral("lpfFreq"), freq);
        show();
        QCOMPARE(find<QLabel>("icon_line_hpf")->pos(), QPoint(freq ? 44 * (freq - 1) : 0, 0));
        QCOMPARE(find<QLabel>("icon_line_lpf")->pos(), QPoint(freq ? 44 * (freq - 1) : 176, 0));
        if (freq) // the low-pass was moved last
            QCOMPARE(find<QWidget>("line_widget")->children().last()->objectName(),
                     QStringLiteral("icon_line_lpf"));
        m_page->hide();
    }
}

void TestCrossoverPage::sendersReadFrequencyThenSlopeOrLevel()
{
    show();
    call("onSUBFreqNextClicked");
    QCOMPARE(takeCalls(Read | Write | Audio).mid(1, 5),
             QStringList({"SettingsExe.getValue(\"subwooferFreq\", 7)", write("subwooferFreq", "7", "7"),
                          "SettingsExe.getValue(\"subwooferFreq\", 7)",
                          "SettingsExe.getValue(\"subwooferLevel\", 11)", sub(0, 11)}));
    call("onHpfFreqPrevClicked");
    QCOMPARE(takeCalls(Read | Write | Audio).mid(1, 4),
             QStringList({"SettingsExe.getValue(\"hpfFreq\", 4)", write("hpfFreq", "4", "3"),
                          "SettingsExe.getValue(\"hpfFreq\", 4)", "SettingsExe.getValue(\"hpfslope\", 1)"}));
}

void TestCrossoverPage::diagnosticTextsAreTheKnownOnes_data()
{
    QTest::addColumn<QString>("function");
    QTest::addColumn<QString>("text");
    // clang-format off
    const char* const rows[][2] = {
        {"getHpfState()",                "get current hpf state: "},
        {"getHpfFreq()",                 "get current hpf freq: "},
        {"getHpfSlope()",                "get current hpf slope: "},
        {"getLpfState()",                "get current hpf state: "},
        {"getLpfFreq()",                 "get current hpf freq: "},
        {"getLpfSlope()",                "get current lpf slope: "},
        {"getSubFreq()",                 "current subwoofer freq: "},
        {"getSubLevel()",                "current subwoofer level: "},
        {"setHpfState(bool)",            "set current hpf state: "},
        {"setHpfFreq(int)",              "set current hpf freq: "},
        {"setHpfSlope(int)",             "set current hpf slope: "},
        {"setLpfState(bool)",            "set current lpf state: "},
        {"setLpfFreq(int)",              "set current lpf freq: "},
        {"setLpfSlope(int)",             "set current lpf slope: "},
        {"setSubFreq(int)",              "set current subwoofer freq: "},
        {"setSubLevel(int)",             "set current subwoofer Level: "},
        {"updateCurrHPFFreqText(int)",   "current hpf freq: "},
        {"updateCurrLPFFreqText(int)",   "current hpf freq: "},
        {"updateCurrSubFreqText(int)",   "current hpf freq: "},
        {"updateCurrSubFreqBtnState(int)", "current subwoofer level: "},
        {"updateCurrSubLevelText(int)",  "current subwoofer freq: "},
        {"updateHPFStateIcon(bool)",     "current hpf state: "},
        {"updateLPFStateIcon(bool)",     "current lpf state: "},
        {"updateCurrHPFFreqBtnState(int)", "current hpf freq: "},
        {"updateCurrHPFFreqLineIcon(int)", "current hpf freq: "},
        {"updateHPFSlopeIcon(int)",      "current hpf freq: "},
        {"updateHPFSlopeLineIcon(int)",  "current hpf freq: "},
        {"updateCurrLPFFreqBtnState(int)", "current lpf freq: "},
        {"updateCurrLPFFreqLineIcon(int)", "current lpf freq: "},
    };
    // clang-format on
    for (const auto& row : rows)
        QTest::newRow(row[0]) << row[0] << row[1];
}

void TestCrossoverPage::diagnosticTextsAreTheKnownOnes()
{
    QFETCH(QString, function);
    QFETCH(QString, text);
    m_page->show();
    for (const char* key :
         {"key_high_pass", "key_low_pass", "Key_hpf_freq_minus", "Key_low_freq_plus", "key_hpf_slope_18db",
          "key_low_slope_6db", "Key_subwoofer_freq_minus", "Key_subwoofer_level_minus"})
        click(key);
    const QStringList lines = takeLog().filter(QStringLiteral("::") + function);
    QVERIFY(!lines.isEmpty());
    for (const QString& line : lines)
        QVERIFY2(line.section(QStringLiteral(" -- "), 1).startsWith(text), qPrintable(line));
}

void TestCrossoverPage::everySlotWritesADiagnosticLine()
{
    show();
    const QMetaObject& meta = Page::staticMetaObject;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        takeLog();
        const QMetaMethod slot = meta.method(i);
        QVERIFY(slot.parameterCount() ? slot.invoke(m_page.data(), Q_ARG(int, 1))
                                      : slot.invoke(m_page.data()));
        QCOMPARE(
            takeLog().filter(QStringLiteral("::%1").arg(QString::fromLatin1(slot.methodSignature()))).size(),
            1);
    }
    takeBackRequests();
}

void TestCrossoverPage::destructionClearsThePixmapCache()
{
    QPixmap picture(8, 8);
    picture.fill(Qt::red);
    QVERIFY(QPixmapCache::insert(QStringLiteral("somebody's"), picture));
    m_page.reset();
    QPixmap found;
    QVERIFY(!QPixmapCache::find(QStringLiteral("somebody's"), &found));
}

void TestCrossoverPage::hostileStoredValuesDoNoHarm_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::newRow("text") << QVariant(QStringLiteral("no number"));
    QTest::newRow("empty") << QVariant(QString());
    QTest::newRow("largest") << QVariant(std::numeric_limits<int>::max());
    QTest::newRow("smallest") << QVariant(std::numeric_limits<int>::min());
    QTest::newRow("-1") << QVariant(-1);
    QTest::newRow("flag") << QVariant(true);
}

void TestCrossoverPage::hostileStoredValuesDoNoHarm()
{
    QFETCH(QVariant, value);
    const char* const keys[] = {"hpfState", "hpfFreq",       "hpfslope",       "lpfState",      "lpfFreq",
                                "lpfslope", "subwooferFreq", "subwooferLevel", "subwooferOnOff"};
    for (const char* key : keys)
        setStored(QLatin1String(key), value);
    m_page.reset(new Page);
    show();
    for (const char* key : keys)
        QCOMPARE(stored(QLatin1String(key)), value); // looking at it rewrites nothing
    const QMetaObject& meta = Page::staticMetaObject;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        const QMetaMethod slot = meta.method(i);
        QVERIFY(slot.parameterCount() ? slot.invoke(m_page.data(), Q_ARG(int, 1))
                                      : slot.invoke(m_page.data()));
    }
    QCOMPARE(takeBackRequests(), 1);
}

QTEST_MAIN(TestCrossoverPage)
#include "tst_m5qx_audiosetting_crossover_setting_page.moc"
