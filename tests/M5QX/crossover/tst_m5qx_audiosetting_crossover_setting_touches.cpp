#include "tests/M5QX/crossover/crossoverpage.h"
#include "tests/support/randomwalk.h"

#include <QtTest>

using namespace crossoverpage;
using formcheck::shows;

/// What a touch on the stand-alone crossover page stores, sends and shows, in order.
class TestCrossoverTouches : public CrossoverPageFixture
{
    Q_OBJECT
private slots:
    void init() { makePage(); }
    void cleanup() { m_page.reset(); }

    void frequencyStepsStoreAndSendInOrder_data();
    void frequencyStepsStoreAndSendInOrder();
    void hpfNextAtIndex5Keeps5AndStillWritesAndSends();
    void switchingTheHpfOffSendsIndex0AndHidesItsRows();
    void switchingTheLpf();
    void switchingReadsTheStoredFrequencyOnlyWhenOn_data();
    void switchingReadsTheStoredFrequencyOnlyWhenOn();
    void slopeKeysStoreAndSend_data();
    void slopeKeysStoreAndSend();
    void subwooferFrequencySteps_data();
    void subwooferFrequencySteps();
    void subwooferLevelStepsSendBeforeTheyStore_data();
    void subwooferLevelStepsSendBeforeTheyStore();
    void withTheSubwooferOffAllFourOfItsKeysAreDisabled();
    void keysAtTheEndsAreDisabled_data();
    void keysAtTheEndsAreDisabled();
    void backBeepsAndPostsOneBackRequest();
    void touchesPassThroughLabelsOverKeys();
    void randomTouchesKeepEveryInvariant_data() { RandomWalk::addSeedRow(); }
    void randomTouchesKeepEveryInvariant();
};

void TestCrossoverTouches::frequencyStepsStoreAndSendInOrder_data()
{
    QTest::addColumn<bool>("high");
    QTest::addColumn<bool>("up");
    QTest::addColumn<int>("from");
    QTest::addColumn<int>("to");
    for (const bool high : {true, false}) {
        const char* name = high ? "hpf" : "lpf";
        for (int from = 0; from <= 6; ++from) {
            QTest::addRow("%s up from %d", name, from)
                << high << true << from << (from <= 4 ? from + 1 : from);
            QTest::addRow("%s down from %d", name, from)
                << high << false << from << (from >= 2 ? from - 1 : from);
        }
    }
}

void TestCrossoverTouches::frequencyStepsStoreAndSendInOrder()
{
    QFETCH(bool, high);
    QFETCH(bool, up);
    QFETCH(int, from);
    QFETCH(int, to);
    setStored(high ? "hpfState" : "lpfState", true);
    setStored(high ? "hpfFreq" : "lpfFreq", from);
    setStored(high ? "hpfslope" : "lpfslope", 2);
    show();
    const char* const slots_[2][2] = {{"onLpfFreqPrevClicked", "onLpfFreqNextClicked"},
                                      {"onHpfFreqPrevClicked", "onHpfFreqNextClicked"}};
    const char* const keys[2][2] = {{"Key_low_freq_minus", "Key_low_freq_plus"},
                                    {"Key_hpf_freq_minus", "Key_hpf_freq_plus"}};
    if (find(keys[high][up])->isEnabled())
        click(keys[high][up]);
    else
        call(slots_[high][up]);
    QCOMPARE(takeCalls(), QStringList({keyBeep, write(high ? "hpfFreq" : "lpfFreq", high ? "4" : "0",
                                                      QString::number(to))}) +
                              sent(high ? "HPF" : "LPF", to, 2));
    const char* const texts[2][7] = {{"OFF", "2kHz", "8KHz", "10KHz", "16KHz", "20KHz", ""},
                                     {"OFF", "20Hz", "60Hz", "80Hz", "160Hz", "250Hz", ""}};
    QCOMPARE(text(high ? "text_hpf_freq" : "text_low_freq"), QLatin1String(texts[high][to]));
    QCOMPARE(find(keys[high][1])->isEnabled(), to != 5);
    QCOMPARE(find(keys[high][0])->isEnabled(), to != 1);
    if (to >= 1 && to <= 5)
        QCOMPARE(find<QLabel>(high ? "icon_line_hpf" : "icon_line_lpf")->pos(), QPoint(44 * (to - 1), 0));
}

void TestCrossoverTouches::hpfNextAtIndex5Keeps5AndStillWritesAndSends()
{
    setStored(QStringLiteral("hpfState"), true);
    setStored(QStringLiteral("hpfFreq"), 5);
    show();
    call("onHpfFreqNextClicked");
    QCOMPARE(takeCalls(), QStringList({keyBeep, write("hpfFreq", "4", "5")}) + sent("HPF", 5, 1));
    QVERIFY(!find("Key_hpf_freq_plus")->isEnabled());
    QVERIFY(find("Key_hpf_freq_minus")->isEnabled());
}

void TestCrossoverTouches::switchingTheHpfOffSendsIndex0AndHidesItsRows()
{
    setStored(QStringLiteral("hpfState"), true);
    setStored(QStringLiteral("hpfFreq"), 3);
    setStored(QStringLiteral("hpfslope"), 2);
    m_page.reset(new Page);
    show();
    for (const char* part : {"icon_line_hpf", "text_high_pass", "hpf_freq_widget", "hpf_slope_widget"})
        QVERIFY2(visible(part), part);
    click("key_high_pass");
    QCOMPARE(takeCalls(), QStringList({keyBeep, write("hpfState", "false", "false")}) + sent("HPF", 0, 2));
    for (const char* part : {"icon_line_hpf", "text_high_pass", "hpf_freq_widget", "hpf_slope_widget"})
        QVERIFY2(!visible(part), part);
    QVERIFY(shows(find("key_high_pass")->icon().pixmap(QPixmap(":/dual_icon/setup_btn_off_n.png").size()),
                  ":/dual_icon/setup_btn_off_n.png"));
    click("key_high_pass");
    QCOMPARE(takeCalls(), QStringList({keyBeep, write("hpfState", "false", "true")}) + sent("HPF", 3, 2));
    for (const char* part : {"icon_line_hpf", "text_high_pass", "hpf_freq_widget", "hpf_slope_widget"})
        QVERIFY2(visible(part), part);
    QVERIFY(shows(find("key_high_pass")->icon().pixmap(110, 52), ICONS "eq_btn_on1_n.png"));
    QCOMPARE(find<QLabel>("icon_line_hpf")->pos(), QPoint(88, 0));
}

void TestCrossoverTouches::switchingTheLpf()
{
    setStored(QStringLiteral("lpfFreq"), 4);
    show();
    click("key_low_pass");
    QCOMPARE(takeCalls(), QStringList({keyBeep, write("lpfState", "false", "true")}) + sent("LPF", 4, 3));
    for (const char* part : {"icon_line_lpf", "text_low_pass", "low_freq_widgetl", "low_slope_widget"})
        QVERIFY2(visible(part), part);
    QCOMPARE(find<QLabel>("icon_line_lpf")->pos(), QPoint(132, 0));
    click("key_low_pass");
    QCOMPARE(takeCalls(), QStringList({keyBeep, write("lpfState", "false", "false")}) + sent("LPF", 0, 3));
    for (const char* part : {"icon_line_lpf", "text_low_pass", "low_freq_widgetl", "low_slope_widget"})
        QVERIFY2(!visible(part), part);
}

void TestCrossoverTouches::switchingReadsTheStoredFrequencyOnlyWhenOn_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("prefix");
    QTest::addColumn<int>("freqDefault");
    QTest::addColumn<int>("slopeDefault");
    QTest::newRow("hpf") << "key_high_pass"
                         << "hpf" << 4 << 1;
    QTest::newRow("lpf") << "key_low_pass"
                         << "lpf" << 0 << 3;
}

void TestCrossoverTouches::switchingReadsTheStoredFrequencyOnlyWhenOn()
{
    QFETCH(QString, key);
    QFETCH(QString, prefix);
    QFETCH(int, freqDefault);
    QFETCH(int, slopeDefault);
    show();
    const QString state = QStringLiteral("SettingsExe.getValue(\"%1State\", false)").arg(prefix);
    const QString freq = QStringLiteral("SettingsExe.getValue(\"%1Freq\", %2)").arg(prefix).arg(freqDefault);
    const QString slope =
        QStringLiteral("SettingsExe.getValue(\"%1slope\", %2)").arg(prefix).arg(slopeDefault);
    const QByteArray stateKey = prefix.toLatin1() + "State";
    const QByteArray filter = prefix.toUpper().toLatin1();

    click(key.toLatin1());
    QStringList expected{keyBeep, state, write(stateKey, "false", "true"), freq, slope};
    expected += sent(filter, freqDefault, slopeDefault);
    expected << freq << freq; // text and keys of the row that appears
    QCOMPARE(takeCalls(All).mid(0, expected.size()), expected);

    click(key.toLatin1());
    expected = QStringList{keyBeep, state, write(stateKey, "false", "false"), slope};
    expected += sent(filter, 0, slopeDefault);
    QCOMPARE(takeCalls(All), expected);
}

void TestCrossoverTouches::slopeKeysStoreAndSend_data()
{
    QTest::addColumn<bool>("high");
    QTest::addColumn<int>("slope");
    for (int slope = 0; slope < 3; ++slope) {
        QTest::addRow("hpf %d dB", 6 + 6 * slope) << true << slope;
        QTest::addRow("lpf %d dB", 6 + 6 * slope) << false << slope;
    }
}

void TestCrossoverTouches::slopeKeysStoreAndSend()
{
    QFETCH(bool, high);
    QFETCH(int, slope);
    setStored(high ? "hpfState" : "lpfState", true);
    setStored(high ? "hpfFreq" : "lpfFreq", 2);
    show();
    const char* const keys[2][3] = {{"key_low_slope_6db", "key_low_slope_12db", "key_low_slope_18db"},
                                    {"key_hpf_slope_6db", "key_hpf_slope_12db", "key_hpf_slope_18db"}};
    const char* const lines[2][3] = {
        {ICONS "filter_thumb_right65.png", ICONS "filter_thumb_right75.png",
         ICONS "filter_thumb_right85.png"},
        {ICONS "filter_thumb_left65.png", ICONS "filter_thumb_left75.png", ICONS "filter_thumb_left85.png"}};
    for (int touches = 0; touches < 2; ++touches) { // a second touch on the selected one sends again
        click(keys[high][slope]);
        QCOMPARE(takeCalls(), QStringList({keyBeep, write(high ? "hpfslope" : "lpfslope", high ? "1" : "3",
                                                          QString::number(slope))}) +
                                  sent(high ? "HPF" : "LPF", 2, slope));
        for (int other = 0; other < 3; ++other) {
            const QString picture(other == slope ? ICONS "icon_circle_blue.png"
                                                 : ICONS "icon_circle_grey.png");
            const QIcon icon = find(keys[high][other])->icon();
            QVERIFY(shows(icon.pixmap(QSize(30, 30), QIcon::Normal, QIcon::Off), picture));
            QVERIFY(shows(icon.pixmap(QSize(30, 30), QIcon::Normal, QIcon::On), picture));
            QCOMPARE(find(keys[high][other])->isChecked(), other == slope);
        }
        QVERIFY(shows(find<QLabel>(high ? "icon_line_hpf" : "icon_line_lpf")->pixmap(Qt::ReturnByValue),
                      QLatin1String(lines[high][slope])));
    }
}

void TestCrossoverTouches::subwooferFrequencySteps_data()
{
    QTest::addColumn<bool>("up");
    QTest::addColumn<int>("from");
    QTest::addColumn<int>("to");
    for (int from = 0; from <= 7; ++from) {
        QTest::addRow("up from %d", from) << true << from << (from <= 3 ? from + 1 : from);
        QTest::addRow("down from %d", from) << false << from << (from >= 1 ? from - 1 : from);
    }
}

void TestCrossoverTouches::subwooferFrequencySteps()
{
    QFETCH(bool, up);
    QFETCH(int, from);
    QFETCH(int, to);
    setStored(QStringLiteral("subwooferFreq"), from);
    setStored(QStringLiteral("subwooferLevel"), 0x80 | 6);
    show();
    QPushButton* key = find(up ? "Key_subwoofer_freq_plus" : "Key_subwoofer_freq_minus");
    if (key->isEnabled())
        click(middle(key));
    else
        call(up ? "onSUBFreqNextClicked" : "onSUBFreqPrevClicked");
    QCOMPARE(takeCalls(),
             QStringList({keyBeep, write("subwooferFreq", "7", QString::number(to)), sub(to, 6)}));
    const char* const texts[] = {"OFF", "AP", "50Hz", "80Hz", "120Hz", "160Hz", "100Hz", "120Hz"};
    QCOMPARE(text("text_subwoofer_freq"), QLatin1String(texts[to]));
    QCOMPARE(find("Key_subwoofer_freq_plus")->isEnabled(), to != 4);
    QCOMPARE(find("Key_subwoofer_freq_minus")->isEnabled(), to != 0);
}

void TestCrossoverTouches::subwooferLevelStepsSendBeforeTheyStore_data()
{
    QTest::addColumn<bool>("up");
    QTest::addColumn<int>("from");
    QTest::addColumn<int>("to");
    QTest::newRow("up") << true << 8 << 9;
    QTest::newRow("down") << false << 8 << 7;
    QTest::newRow("up with bit 7") << true << (8 | 0x80) << (9 | 0x80);
    QTest::newRow("down with bit 7") << false << (8 | 0x80) << (7 | 0x80);
    QTest::newRow("up to the end") << true << 13 << 14;
    QTest::newRow("up at the end") << true << 14 << 14;
    QTest::newRow("down to the end") << false << 2 << 1;
    QTest::newRow("down at the end") << false << (1 | 0x80) << (1 | 0x80);
    QTest::newRow("up from 0") << true << 0 << 1;
    QTest::newRow("down from 0") << false << 0 << 0;
    QTest::newRow("up from 127") << true << 127 << 127;
    QTest::newRow("down from 127") << false << 127 << 126;
}

void TestCrossoverTouches::subwooferLevelStepsSendBeforeTheyStore()
{
    QFETCH(bool, up);
    QFETCH(int, from);
    QFETCH(int, to);
    setStored(QStringLiteral("subwooferFreq"), 3);
    setStored(QStringLiteral("subwooferLevel"), from);
    show();
    QPushButton* key = find(up ? "Key_subwoofer_level_plus" : "Key_subwoofer_level_minus");
    if (key->isEnabled())
        key->click();
    else
        call(up ? "onSUBLevelNextClicked" : "onSUBLevelPrevClicked");
    const int level = to & 0x7F;
    QCOMPARE(takeCalls(), QStringList({keyBeep, sub(to & 0x80 ? 3 : 0, level),
                                       write("subwooferLevel", "11", QString::number(to))}));
    QCOMPARE(text("text_subwoofer_level"), QString::number(level));
    QCOMPARE(find("Key_subwoofer_level_plus")->isEnabled(), level != 14);
    QCOMPARE(find("Key_subwoofer_level_minus")->isEnabled(), level != 1);
}

void TestCrossoverTouches::withTheSubwooferOffAllFourOfItsKeysAreDisabled()
{
    setStored(QStringLiteral("subwooferOnOff"), false);
    setStored(QStringLiteral("subwooferFreq"), 2);
    show();
    for (const char* key : {"Key_subwoofer_freq_plus", "Key_subwoofer_freq_minus", "Key_subwoofer_level_plus",
                            "Key_subwoofer_level_minus"}) {
        QVERIFY2(!find(key)->isEnabled(), key);
        click(key);
    }
    QCOMPARE(takeCalls(All), QStringList());
    QCOMPARE(text("text_subwoofer"), QStringLiteral("T236"));
    m_page->hide();
    setStored(QStringLiteral("subwooferOnOff"), true);
    show();
    QVERIFY(find("Key_subwoofer_freq_plus")->isEnabled());
}

void TestCrossoverTouches::keysAtTheEndsAreDisabled_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<int>("value");
    QTest::addColumn<QString>("row");
    QTest::addColumn<bool>("next");
    QTest::addColumn<bool>("prev");
    struct Row
    {
        const char* key;
        const char* row;
        int min, max;
    };
    const Row rows[] = {{"hpfFreq", "hpf_freq", 1, 5},
                        {"lpfFreq", "low_freq", 1, 5},
                        {"subwooferFreq", "subwoofer_freq", 0, 4},
                        {"subwooferLevel", "subwoofer_level", 1, 14}};
    for (const Row& row : rows) {
        QTest::addRow("%s at its least", row.key) << row.key << row.min << row.row << true << false;
        QTest::addRow("%s between", row.key) << row.key << row.min + 1 << row.row << true << true;
        QTest::addRow("%s at its most", row.key) << row.key << row.max << row.row << false << true;
        QTest::addRow("%s beyond", row.key) << row.key << row.max + 1 << row.row << true << true;
    }
}

void TestCrossoverTouches::keysAtTheEndsAreDisabled()
{
    QFETCH(QString, key);
    QFETCH(int, value);
    QFETCH(QString, row);
    setStored(key, value);
    show();
    QTEST(find(qPrintable(QStringLiteral("Key_%1_plus").arg(row)))->isEnabled(), "next");
    QTEST(find(qPrintable(QStringLiteral("Key_%1_minus").arg(row)))->isEnabled(), "prev");
}

void TestCrossoverTouches::backBeepsAndPostsOneBackRequest()
{
    show();
    click("key_back");
    QCOMPARE(takeCalls(All), QStringList(keyBeep));
    QCOMPARE(takeBackRequests(), 1);
    QCOMPARE(takeLog().filter(QStringLiteral("-- back last display")).size(), 1);
}

void TestCrossoverTouches::touchesPassThroughLabelsOverKeys()
{
    for (QLabel* label : m_page->findChildren<QLabel*>())
        QVERIFY2(label->testAttribute(Qt::WA_TransparentForMouseEvents), qPrintable(label->objectName()));
    setStored(QStringLiteral("hpfState"), true);
    show();
    // The frequency's background covers the last pixels of the minus key, the slope's text the first of its
    // key.
    click(QPoint(20 + 73, 90 + 138 + 30));
    QCOMPARE(takeCalls().value(1), write("hpfFreq", "4", "3"));
    click(QPoint(20 + 50, 90 + 327 + 42));
    QCOMPARE(takeCalls().value(1), write("hpfslope", "1", "0"));
}

void TestCrossoverTouches::randomTouchesKeepEveryInvariant()
{
    QFETCH(quint32, seed);
    setStored(QStringLiteral("subwooferLevel"), 0x80 | 11);
    show();
    const QRegularExpression form(QStringLiteral("^AudioService\\.(doBeep\\(0\\)|set[HL]PFFilter\\(([0-5]), "
                                                 "\\2, [1248], [0-3]\\)|setSubFilter\\([0-7], "
                                                 "([1-9]|1[0-4]), 0\\))$"));
    RandomWalk walk(m_page.data(), seed);
    for (int event = 0; event < 20000; ++event) {
        const RandomWalk::Step step = walk.step();
        const QStringList calls = takeCalls();
        if (step != RandomWalk::Release) {
            QVERIFY2(calls.isEmpty(), qPrintable(calls.join('\n')));
            continue;
        }
        const QStringList audio = calls.filter(QStringLiteral("AudioService."));
        for (const QString& line : audio)
            QVERIFY2(form.match(line).hasMatch(), qPrintable(line));
        if (!calls.isEmpty()) {
            QCOMPARE(calls.first(), keyBeep);
            QCOMPARE(calls.count(keyBeep), 1);
            // A filter goes to four speakers or to the subwoofer, with one write; back is the beep alone.
            const int writes = calls.filter(QStringLiteral("setValue")).size();
            QVERIFY(audio.size() == 1 ? writes == 0 : writes == 1);
            QVERIFY(audio.size() == 1 || audio.size() == 2 || audio.size() == 5);
        }
        QCOMPARE(visible("hpf_freq_widget"), stored(QStringLiteral("hpfState")).toBool());
        QCOMPARE(visible("low_slope_widget"), stored(QStringLiteral("lpfState")).toBool());
        if (event % 64 == 0) {
            takeLog();
            takeBackRequests();
        }
    }
    takeBackRequests();
}

QTEST_MAIN(TestCrossoverTouches)
#include "tst_m5qx_audiosetting_crossover_setting_touches.moc"
