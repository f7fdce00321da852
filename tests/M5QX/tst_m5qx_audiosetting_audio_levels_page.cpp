#include "M5QX/m5qx_audiosetting_audio_levels_page.h"
#include "M5QX/pa_balancefadercontrol.h"
#include "common/customslider.h"
#include "common/pushbutton.h"
#include "formcheck.h"
#include "platform_double/platform_double.h"
#include "platform_double/touch.h"

#include <QFrame>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QtTest>

#include <limits>

using namespace audiosetting;
using namespace platform_double;
using formcheck::difference;
using formcheck::Icon;
using formcheck::Row;

class TestAudioLevelsPage : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    // What the form is
    void signalsAndSlotsAreDeclaredInOrder();
    void theFormHasTheTablesWidgets_data();
    void theFormHasTheTablesWidgets();
    void siblingsAreMadeInTheTablesOrder();
    void keysHoldTheTablesPictures_data();
    void keysHoldTheTablesPictures();
    void switchesShowTheirStateByPicture();
    void labelsShowTheTablesPictures();
    void theBackKeyAndThePlaceholdersAreHidden();
    void labelsOverKeysLetTouchesThrough();
    void padLiesOnTheTouchAreaInTheHost();
    void theSelectorKeepsItsPlaceInTheTouchArea();
    void textsAreTheTranslatorsUpperCased();
    void everyVisibleKeyHasAnAccessibleName();
    void theKeyboardWalksInReadingOrder();

    // What it asks of the platform
    void constructionReadsAndMakesItsWidgetsInOrder();
    void showReadsBalanceThenTexts();
    void resumeReadsEverythingInOrder();
    void anArrowBeepsThenStepsThenReadsBack_data();
    void anArrowBeepsThenStepsThenReadsBack();
    void theRightKeyLogsTheNewPair();
    void balanceAt15DisablesRightAloneAndMinus15MirrorsIt_data();
    void balanceAt15DisablesRightAloneAndMinus15MirrorsIt();
    void aDisabledRightKeyCannotBeClicked();
    void resetYieldsZeroWithAllFourKeysEnabled();
    void aTouchOnTheResetCaptionReachesTheKey();
    void holdingAnArrowKeyChangesTheValueByExactlyOneStep();
    void stepsAtTheLimitAreSentUnchanged_data();
    void stepsAtTheLimitAreSentUnchanged();
    void textsShowBalanceMinus3AndFader15();
    void aBalanceBeyondItsRangeIsShownAsItIs();
    void thePadShowsWhileDraggedAndSendsOnRelease();
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
    void backBeepsAndPostsOneBackRequest();
    void everySlotWritesItsDiagnosticLine();
    void hostileValuesNeitherCrashNorAreRewritten();
    void randomTouchesKeepTheInvariants();

private:
    QPushButton* key(const char* name) { return m_page->findChild<QPushButton*>(QLatin1String(name)); }
    QLabel* label(const char* name) { return m_page->findChild<QLabel*>(QLatin1String(name)); }
    balanceFaderControl* pad() { return m_page->findChild<balanceFaderControl*>(); }
    settings::CustomSlider_2* slider() { return m_page->findChild<settings::CustomSlider_2*>(); }
    void click(const char* name) { touch::click(m_page.data(), touch::middle(m_page.data(), key(name))); }
    /// What was asked of the platform by that click.
    QStringList clicked(const char* name, int kinds = Actions)
    {
        take(All);
        click(name);
        return take(kinds);
    }
    QScopedPointer<m5qx_eq_audio_levels_page> m_page;
};

namespace {

constexpr char Page[] = "m5qx_audiosetting_audio_levels_page";
constexpr char Caption[] = "color:rgb(238, 238, 236)";
constexpr char Grey[] = "color:rgb(96,96,96)";

// clang-format off
const Row rows[] = {
    {"key_back",           "QPushButton", Page,     {938,  23,  74,  60}},
    {"icon_eq",            "QLabel",      Page,     { 28,  57,   0,   0}},
    {"text_titel",         "QLabel",      Page,     { 95,  57,   0,   0}, "color:#FFFFFF"},
    {"icon_car",           "QLabel",      Page,     {  0,   0,   0, 386}},
    {"widget",             "QWidget",     Page,     {121, 169, 253, 253}},
    {"text_up_level",      "QLabel",      Page,     {  0,   0,   0,  31}, Caption},
    {"text_left_level",    "QLabel",      Page,     {  0,   0,   0,  31}, Caption},
    {"text_right_level",   "QLabel",      Page,     {  0,   0,   0,  31}, Caption},
    {"bkg_balance_fader",  "QLabel",      "widget", {  0,   0, 253, 253}},
    {"text_down_label",    "QLabel",      Page,     {  0,   0,   0,  31}, Caption},
    {"key_reset_level",    "QPushButton", Page,     { 22, 431, 149,  70}},
    {"text_reset",         "QLabel",      Page,     { 22, 431, 149,  70}},
    {"key_left_level",     "QPushButton", Page,     { 42, 261,  74,  70}},
    {"key_down_level",     "QPushButton", Page,     {211, 431,  74,  70}},
    {"key_right_btn",      "QPushButton", Page,     {379, 261,  74,  70}},
    {"key_up_level",       "QPushButton", Page,     {211,  89,  74,  70}},
    {"txt_balance",        "QLabel",      Page,     { 49, 108, 112,  32}},
    {"txt_fader",          "QLabel",      Page,     {334, 108, 112,  32}},
    {"label_loudness",     "QLabel",      Page,     {525, 164, 355,  64}},
    {"line",               "QFrame",      Page,     {525, 228, 466,   4}, Grey},
    {"label_subwoofer",    "QLabel",      Page,     {525, 232, 355,  64}},
    {"line_2",             "QFrame",      Page,     {525, 293, 466,   4}, Grey},
    {"label_sub_level",    "QLabel",      Page,     {525, 298, 355,  64}},
    {"line_3",             "QFrame",      Page,     {525, 358, 466,   4}, Grey},
    {"key_loudness",       "QPushButton", Page,     {920, 180,  60,  30}},
    {"key_subwoofer",      "QPushButton", Page,     {920, 250,  60,  30}},
    {"key_sub_level_down", "QPushButton", Page,     {525, 380,  63,  59}},
    {"horizontalSlider",   "QSlider",     Page,     {588, 380, 342,  59}},
    {"key_sub_level_up",   "QPushButton", Page,     {930, 380,  63,  59}},
};
const Icon icons[] = {
    {"key_back",           ":/vexa_m5qx_audiosettingicon/icon_close_n.png",    ":/vexa_m5qx_audiosettingicon/icon_close_p.png",    {74, 60}},
    {"key_reset_level",    ":/vexa_m5qx_settingicon_ext/bal_btn_reset_n.png",  ":/vexa_m5qx_settingicon_ext/bal_btn_reset_p.png",  {149, 70}},
    {"key_left_level",     ":/vexa_m5qx_settingicon_ext/bal_btn_left_n.png",   ":/vexa_m5qx_settingicon_ext/bal_btn_left_p.png",   {74, 70}},
    {"key_down_level",     ":/vexa_m5qx_settingicon_ext/bal_btn_down_n.png",   ":/vexa_m5qx_settingicon_ext/bal_btn_down_p.png",   {74, 70}},
    {"key_right_btn",      ":/vexa_m5qx_settingicon_ext/bal_btn_right_n.png",  ":/vexa_m5qx_settingicon_ext/bal_btn_right_p.png",  {74, 70}},
    {"key_up_level",       ":/vexa_m5qx_settingicon_ext/bal_btn_up_n.png",     ":/vexa_m5qx_settingicon_ext/bal_btn_up_p.png",     {74, 70}},
    {"key_sub_level_down", ":/vexa_m5qx_settingicon_ext/eq_btn_down_n.png",    ":/vexa_m5qx_settingicon_ext/eq_btn_down_p.png",    {63, 59}},
    {"key_sub_level_up",   ":/vexa_m5qx_settingicon_ext/eq_btn_up_n.png",      ":/vexa_m5qx_settingicon_ext/eq_btn_up_p.png",      {63, 59}},
};
const char* const labelsOverKeys[] = {
    "text_reset", "text_up_level", "text_down_label", "text_left_level", "text_right_level", "bkg_balance_fader",
};
// clang-format on

const QString Beep0 = QStringLiteral("AudioService.doBeep(0)");
const QString McuBeep = QStringLiteral("McuManager.triggerBeep(0)");
const QString ReadPair = QStringLiteral("AudioService.getBalanceFader()");
const QString ReadLoudness = QStringLiteral("SettingsFunc.getValue(\"customloudnes\", false)");
const QString ReadSwitch = QStringLiteral("SettingsFunc.getValue(\"subwooferOnOff\", true)");
const QString ReadLevel = QStringLiteral("SettingsFunc.getValue(\"subwooferLevel\", 11)");
const QString ReadFrequency = QStringLiteral("SettingsFunc.getValue(\"subwooferFreq\", 7)");

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

QString sendPair(int balance, int fader)
{
    return QStringLiteral("AudioService.setBalanceFader(%1, %2, true)").arg(balance).arg(fader);
}

} // namespace

void TestAudioLevelsPage::init()
{
    reset();
    m_page.reset(new m5qx_eq_audio_levels_page(nullptr));
    m_page->resume();
    m_page->show();
    take(All);
}

void TestAudioLevelsPage::cleanup()
{
    m_page.reset();
}

// ---- what the form is

void TestAudioLevelsPage::signalsAndSlotsAreDeclaredInOrder()
{
    QCOMPARE(formcheck::ownMethods(m_page->metaObject(), QMetaMethod::Signal),
             (QStringList{"trigSubwooferOutputOnOff(bool)", "trigLoudnessOnOff(bool)"}));
    QCOMPARE(formcheck::ownMethods(m_page->metaObject(), QMetaMethod::Slot),
             (QStringList{"onUpClicked()",
                          "onUpLongPressed()",
                          "onUpLongRepeat()",
                          "onDownClicked()",
                          "onDownLongPressed()",
                          "onDownLongRepeat()",
                          "onLeftClicked()",
                          "onLeftLongPressed()",
                          "onLeftLongRepeat()",
                          "onRightClicked()",
                          "onRightLongPressed()",
                          "onRightLongRepeat()",
                          "onUpdateBF(int,int)",
                          "on_key_back_clicked()",
                          "on_key_reset_level_clicked()",
                          "on_key_loudness_clicked()",
                          "on_key_subwoofer_clicked()",
                          "onSliderOnSave(int)",
                          "on_key_sub_level_up_clicked()",
                          "on_key_sub_level_down_clicked()"}));
}

void TestAudioLevelsPage::theFormHasTheTablesWidgets_data()
{
    QTest::addColumn<int>("row");
    for (int i = 0; i < int(std::size(rows)); ++i)
        QTest::newRow(rows[i].name) << i;
}

void TestAudioLevelsPage::theFormHasTheTablesWidgets()
{
    QFETCH(int, row);
    QCOMPARE(difference(m_page.data(), rows[row]), QString());
    QCOMPARE(m_page->size(), QSize(1024, 510));
}

void TestAudioLevelsPage::siblingsAreMadeInTheTablesOrder()
{
    QStringList expected;
    for (const Row& row : rows) {
        if (row.parent == QLatin1String(Page))
            expected += QLatin1String(row.name);
    }
    const QStringList made = formcheck::childNames(m_page.data());
    QCOMPARE(made.mid(0, expected.size()), expected);
    QCOMPARE(made.size(), expected.size() + 1); // the slider, which the page makes for itself
}

void TestAudioLevelsPage::keysHoldTheTablesPictures_data()
{
    QTest::addColumn<int>("row");
    for (int i = 0; i < int(std::size(icons)); ++i)
        QTest::newRow(icons[i].key) << i;
}

void TestAudioLevelsPage::keysHoldTheTablesPictures()
{
    QFETCH(int, row);
    QCOMPARE(difference(m_page.data(), icons[row]), QString());
    QVERIFY(!key(icons[row].key)->isCheckable());
}

void TestAudioLevelsPage::switchesShowTheirStateByPicture()
{
    for (const char* name : {"key_loudness", "key_subwoofer"}) {
        const QPushButton* toggle = key(name);
        const QSize size(60, 30);
        QVERIFY(toggle->isCheckable());
        QVERIFY(toggle->isFlat());
        QCOMPARE(toggle->focusPolicy(), Qt::TabFocus);
        QCOMPARE(toggle->iconSize(), size);
        // While the finger is on it, a switch that is off already shows where it is going.
        const char off[] = ":/vexa_m5qx_settingicon_ext/switch_n.png";
        const char on[] = ":/vexa_m5qx_settingicon_ext/switch_p.png";
        QVERIFY(formcheck::shows(toggle->icon(), size, QIcon::Normal, QIcon::Off, off));
        QVERIFY(formcheck::shows(toggle->icon(), size, QIcon::Normal, QIcon::On, on));
        QVERIFY(formcheck::shows(toggle->icon(), size, QIcon::Selected, QIcon::Off, on));
        QVERIFY(formcheck::shows(toggle->icon(), size, QIcon::Selected, QIcon::On, on));
    }
}

void TestAudioLevelsPage::labelsShowTheTablesPictures()
{
    const struct
    {
        const char* label;
        const char* path;
        QSize size;
    } pictures[] = {
        {"icon_eq", ":/vexa_m5qx_audiosettingicon/icon_eq.png", {52, 52}},
        {"icon_car", ":/vexa_m5qx_settingicon_ext/time_alignment_car.png", {245, 249}},
        {"bkg_balance_fader", ":/vexa_m5qx_settingicon_ext/bal_bg.png", {253, 253}},
    };
    for (const auto& row : pictures) {
        const QPixmap picture{QLatin1String(row.path)};
        QCOMPARE(picture.size(), row.size);
        QCOMPARE(label(row.label)->pixmap(Qt::ReturnByValue).toImage(), picture.toImage());
    }
}

void TestAudioLevelsPage::theBackKeyAndThePlaceholdersAreHidden()
{
    QVERIFY(key("key_back")->isHidden());
    QVERIFY(m_page->findChild<QSlider*>(QStringLiteral("horizontalSlider"))->isHidden());
    QVERIFY(label("icon_selector")->isHidden());
    QVERIFY(slider()->isVisible());
    QVERIFY(pad()->isVisible());
}

void TestAudioLevelsPage::labelsOverKeysLetTouchesThrough()
{
    QStringList transparent;
    for (const QLabel* each : m_page->findChildren<QLabel*>()) {
        if (each->testAttribute(Qt::WA_TransparentForMouseEvents))
            transparent += each->objectName();
    }
    QStringList expected;
    for (const char* name : labelsOverKeys)
        expected += QLatin1String(name);
    transparent.sort();
    expected.sort();
    QCOMPARE(transparent, expected);
}

void TestAudioLevelsPage::padLiesOnTheTouchAreaInTheHost()
{
    const auto* host = m_page->findChild<QWidget*>(QStringLiteral("widget"));
    auto* area = host->findChild<QSlider*>(QString(), Qt::FindDirectChildrenOnly);
    QCOMPARE(area->metaObject()->className(), "k41_audio_root_bf");
    QCOMPARE(area->parentWidget(), host);
    QCOMPARE(area->geometry(), QRect(0, 0, 253, 253));
    QCOMPARE(pad()->parentWidget(), host);
    QCOMPARE(pad()->geometry(), area->geometry());
    QVERIFY(area->isVisible());
    // The pad gets the touches everywhere.
    for (const QPoint& at : {QPoint(0, 0), QPoint(126, 126), QPoint(252, 252), QPoint(120, 130)})
        QCOMPARE(m_page->childAt(QPoint(121, 169) + at), pad());
}

void TestAudioLevelsPage::theSelectorKeepsItsPlaceInTheTouchArea()
{
    QCOMPARE(label("icon_selector")->geometry(), QRect(111, 111, 30, 30));
    QCOMPARE(label("icon_selector")->parentWidget()->metaObject()->className(), "k41_audio_root_bf");
}

void TestAudioLevelsPage::textsAreTheTranslatorsUpperCased()
{
    setText(421, QStringLiteral("balance"));
    setText(141, QStringLiteral("Settings"));
    setText(444, QStringLiteral("Loudness"));
    setText(236, QStringLiteral("Subwoofer"));
    setText(384, QStringLiteral("Level"));
    m_page->retranslateUi();
    QCOMPARE(label("text_titel")->text(), QStringLiteral("BALANCE SETTINGS"));
    QCOMPARE(label("label_loudness")->text(), QStringLiteral("LOUDNESS"));
    QCOMPARE(label("label_subwoofer")->text(), QStringLiteral("SUBWOOFER"));
    QCOMPARE(label("label_sub_level")->text(), QStringLiteral("LEVEL"));
    QCOMPARE(label("text_reset")->text(), QStringLiteral("RESET"));
    // A new language shows at the next show.
    setText(444, QStringLiteral("Тонкомпенсация"));
    m_page->hide();
    m_page->show();
    QCOMPARE(label("label_loudness")->text(), QStringLiteral("ТОНКОМПЕНСАЦИЯ"));
}

void TestAudioLevelsPage::everyVisibleKeyHasAnAccessibleName()
{
    QStringList names;
    for (const QAbstractButton* each : m_page->findChildren<QAbstractButton*>()) {
        if (!each->isVisible())
            continue;
        QVERIFY2(!each->accessibleName().isEmpty(), qPrintable(each->objectName()));
        names += each->accessibleName();
    }
    QCOMPARE(names.size(), 9);
    QCOMPARE(names.removeDuplicates(), 0);
    QCOMPARE(key("key_sub_level_up")->accessibleName(), QStringLiteral("T384 +"));
    QCOMPARE(slider()->accessibleName(), QStringLiteral("T384"));
}

void TestAudioLevelsPage::theKeyboardWalksInReadingOrder()
{
    const QStringList order{"key_up_level",    "key_left_level",     "key_right_btn",
                            "key_reset_level", "key_down_level",     "key_loudness",
                            "key_subwoofer",   "key_sub_level_down", "",
                            "key_sub_level_up"};
    QStringList walked;
    const QWidget* first = key("key_up_level");
    const QWidget* widget = first;
    do {
        if (widget->isVisible() && widget->isEnabled() && (widget->focusPolicy() & Qt::TabFocus))
            walked += widget->objectName();
        widget = widget->nextInFocusChain();
    } while (widget != first);
    QCOMPARE(walked, order);
}

// ---- what it asks of the platform

void TestAudioLevelsPage::constructionReadsAndMakesItsWidgetsInOrder()
{
    const m5qx_eq_audio_levels_page page(nullptr);
    const QStringList calls = take(Actions | Read | Widget);
    QCOMPARE(calls,
             (QStringList{"CustomSlider_2(588,380 342x59, 4)", ReadLoudness, ReadSwitch,
                          "PushButton(key_up_level)", "PushButton(key_down_level)",
                          "PushButton(key_left_level)", "PushButton(key_right_btn)", ReadPair, ReadPair}));
    const auto* made = page.findChild<settings::CustomSlider_2*>();
    QCOMPARE(made->minimum(), 0);
    QCOMPARE(made->maximum(), 12);
    for (cm::PushButton* wrapper : page.findChildren<cm::PushButton*>())
        QCOMPARE(wrapper->parent(), static_cast<const QObject*>(&page));
    QCOMPARE(page.findChildren<cm::PushButton*>().size(), 4);
}

void TestAudioLevelsPage::showReadsBalanceThenTexts()
{
    m_page->hide();
    take(All);
    m_page->show();
    const QStringList calls = take(All);
    QCOMPARE(calls.mid(0, 2), (QStringList{ReadPair, ReadPair}));
    for (const QString& call : calls.mid(2))
        QVERIFY2(call.startsWith(QLatin1String("Translator.translate(")), qPrintable(call));
    QCOMPARE(calls.size(), 2 + 5);
}

void TestAudioLevelsPage::resumeReadsEverythingInOrder()
{
    audio().balance = 4;
    audio().fader = -5;
    setStored("customloudnes", true);
    setStored("subwooferOnOff", false);
    setStored("subwooferLevel", 3);
    m_page->resume();
    QCOMPARE(take(All), (QStringList{ReadPair, ReadPair, ReadLoudness, ReadSwitch, ReadLevel, ReadSwitch}));
    QCOMPARE(label("txt_balance")->text(), QStringLiteral("BAL:4"));
    QCOMPARE(label("txt_fader")->text(), QStringLiteral("FAD:-5"));
    QCOMPARE(QPoint(pad()->getValueX(), pad()->getValueY()), QPoint(4, -5));
    QVERIFY(key("key_loudness")->isChecked());
    QVERIFY(!key("key_subwoofer")->isChecked());
    QCOMPARE(slider()->value(), 9);
    for (QWidget* each : QList<QWidget*>{slider(), key("key_sub_level_down"), key("key_sub_level_up")})
        QVERIFY(!each->isEnabled());
    setStored("subwooferOnOff", true);
    m_page->resume();
    for (QWidget* each : QList<QWidget*>{slider(), key("key_sub_level_down"), key("key_sub_level_up")})
        QVERIFY(each->isEnabled());
}

void TestAudioLevelsPage::anArrowBeepsThenStepsThenReadsBack_data()
{
    QTest::addColumn<QByteArray>("arrow");
    QTest::addColumn<QPoint>("pair"); // balance, fader
    // clang-format off
    QTest::newRow("up is fader +1")      << QByteArray("key_up_level")   << QPoint(2, -3);
    QTest::newRow("down is fader -1")    << QByteArray("key_down_level") << QPoint(2, -5);
    QTest::newRow("left is balance -1")  << QByteArray("key_left_level") << QPoint(1, -4);
    QTest::newRow("right is balance +1") << QByteArray("key_right_btn")  << QPoint(3, -4);
    // clang-format on
}

void TestAudioLevelsPage::anArrowBeepsThenStepsThenReadsBack()
{
    QFETCH(QByteArray, arrow);
    QFETCH(QPoint, pair);
    audio().balance = 2;
    audio().fader = -4;
    QStringList calls = clicked(arrow.constData(), Actions | Read);
    QCOMPARE(calls.takeFirst(), Beep0);
    // Two reads for the step, two for what is shown (and two for the right key's log line).
    const QStringList reads = calls.mid(0, 2) + calls.mid(3);
    QCOMPARE(calls.value(2), sendPair(pair.x(), pair.y()));
    QCOMPARE(reads.count(ReadPair), reads.size());
    QCOMPARE(reads.size(), arrow == "key_right_btn" ? 6 : 4);
    QCOMPARE(label("txt_balance")->text(), QStringLiteral("BAL:%1").arg(pair.x()));
    QCOMPARE(label("txt_fader")->text(), QStringLiteral("FAD:%1").arg(pair.y()));
    QCOMPARE(QPoint(pad()->getValueX(), pad()->getValueY()), pair);
}

void TestAudioLevelsPage::theRightKeyLogsTheNewPair()
{
    audio().balance = 6;
    audio().fader = -7;
    takeLog();
    click("key_right_btn");
    const QStringList lines = takeLog().filter(QStringLiteral("onRightClicked()"));
    QCOMPARE(lines.size(), 2);
    QVERIFY2(lines.last().endsWith(QLatin1String("-- balance: 7 fader: -7")), qPrintable(lines.last()));
}

void TestAudioLevelsPage::balanceAt15DisablesRightAloneAndMinus15MirrorsIt_data()
{
    QTest::addColumn<QPoint>("pair");
    QTest::addColumn<QString>("disabled");
    // clang-format off
    QTest::newRow("balance 15")   << QPoint(15, 0)   << "key_right_btn";
    QTest::newRow("balance -15")  << QPoint(-15, 0)  << "key_left_level";
    QTest::newRow("balance 14")   << QPoint(14, 0)   << "";
    QTest::newRow("balance -14")  << QPoint(-14, 0)  << "";
    QTest::newRow("fader 15")     << QPoint(0, 15)   << "key_up_level";
    QTest::newRow("fader -15")    << QPoint(0, -15)  << "key_down_level";
    QTest::newRow("both at ends") << QPoint(15, -15) << "key_right_btn key_down_level";
    QTest::newRow("beyond")       << QPoint(20, -20) << "";
    // clang-format on
}

void TestAudioLevelsPage::balanceAt15DisablesRightAloneAndMinus15MirrorsIt()
{
    QFETCH(QPoint, pair);
    QFETCH(QString, disabled);
    // From the opposite end: the other key comes back.
    m_page->onUpdateBF(-pair.x(), -pair.y());
    m_page->onUpdateBF(pair.x(), pair.y());
    QStringList is;
    for (const char* name : {"key_right_btn", "key_left_level", "key_up_level", "key_down_level"}) {
        if (!key(name)->isEnabled())
            is += QLatin1String(name);
    }
    QCOMPARE(is.join(QLatin1Char(' ')), disabled);
    QCOMPARE(take(Actions | Read), QStringList());
}

void TestAudioLevelsPage::aDisabledRightKeyCannotBeClicked()
{
    audio().balance = 14;
    click("key_right_btn");
    QVERIFY(!key("key_right_btn")->isEnabled());
    QVERIFY(key("key_left_level")->isEnabled());
    QCOMPARE(clicked("key_right_btn", All), QStringList());
    QCOMPARE(audio().balance, 15);
    click("key_left_level");
    QVERIFY(key("key_right_btn")->isEnabled());
    QCOMPARE(audio().balance, 14);
}

void TestAudioLevelsPage::resetYieldsZeroWithAllFourKeysEnabled()
{
    audio().balance = 15;
    audio().fader = -15;
    m_page->resume();
    QCOMPARE(clicked("key_reset_level", Actions | Read), (QStringList{Beep0, sendPair(0, 0)}));
    QCOMPARE(label("txt_balance")->text(), QStringLiteral("BAL:0"));
    QCOMPARE(label("txt_fader")->text(), QStringLiteral("FAD:0"));
    for (const char* name : {"key_right_btn", "key_left_level", "key_up_level", "key_down_level"})
        QVERIFY(key(name)->isEnabled());
}

void TestAudioLevelsPage::aTouchOnTheResetCaptionReachesTheKey()
{
    QCOMPARE(touch::press(m_page.data(), QPoint(96, 466)), key("key_reset_level"));
    touch::release(m_page.data(), QPoint(96, 466));
    QCOMPARE(take(), (QStringList{Beep0, sendPair(0, 0)}));
    // Slid off before it is lifted: nothing.
    touch::press(m_page.data(), QPoint(96, 466));
    touch::move(m_page.data(), QPoint(600, 100));
    touch::release(m_page.data(), QPoint(600, 100));
    QCOMPARE(take(), QStringList());
}

void TestAudioLevelsPage::holdingAnArrowKeyChangesTheValueByExactlyOneStep()
{
    for (const char* name : {"key_up_level", "key_down_level", "key_left_level", "key_right_btn"}) {
        audio().balance = 0;
        audio().fader = 0;
        touch::press(m_page.data(), touch::middle(m_page.data(), key(name)));
        take(All);
        cm::PushButton* wrapper = wrapperOf(key(name));
        emit wrapper->longPressed();
        for (int i = 0; i < 10; ++i)
            emit wrapper->longPressedRepeat();
        QCOMPARE(take(All), QStringList());
        touch::release(m_page.data(), touch::middle(m_page.data(), key(name)));
        QCOMPARE(take().filter(QStringLiteral("setBalanceFader")).size(), 1);
        QCOMPARE(qAbs(audio().balance) + qAbs(audio().fader), 1);
    }
}

void TestAudioLevelsPage::stepsAtTheLimitAreSentUnchanged_data()
{
    QTest::addColumn<QByteArray>("slot");
    QTest::addColumn<QPoint>("pair");
    // clang-format off
    QTest::newRow("up at fader 15")          << QByteArray("onUpClicked")    << QPoint(1, 15);
    QTest::newRow("down at fader -15")       << QByteArray("onDownClicked")  << QPoint(1, -15);
    QTest::newRow("left at balance -15")     << QByteArray("onLeftClicked")  << QPoint(-15, 1);
    QTest::newRow("right at balance 15")     << QByteArray("onRightClicked") << QPoint(15, 1);
    QTest::newRow("right beyond, at 20")     << QByteArray("onRightClicked") << QPoint(20, 1);
    // clang-format on
}

void TestAudioLevelsPage::stepsAtTheLimitAreSentUnchanged()
{
    QFETCH(QByteArray, slot);
    QFETCH(QPoint, pair);
    audio().balance = pair.x();
    audio().fader = pair.y();
    QVERIFY(QMetaObject::invokeMethod(m_page.data(), slot.constData()));
    QCOMPARE(take(), (QStringList{Beep0, sendPair(pair.x(), pair.y())}));
}

void TestAudioLevelsPage::textsShowBalanceMinus3AndFader15()
{
    m_page->onUpdateBF(-3, 15);
    QCOMPARE(label("txt_balance")->text(), QStringLiteral("BAL:-3"));
    QCOMPARE(label("txt_fader")->text(), QStringLiteral("FAD:15"));
}

void TestAudioLevelsPage::aBalanceBeyondItsRangeIsShownAsItIs()
{
    audio().balance = 20;
    m_page->resume();
    QCOMPARE(label("txt_balance")->text(), QStringLiteral("BAL:20"));
    m_page->grab();
    QCOMPARE(take(), QStringList());
}

void TestAudioLevelsPage::thePadShowsWhileDraggedAndSendsOnRelease()
{
    const QPoint middle(121 + 126, 169 + 126);
    const QImage before = pad()->grab().toImage();
    touch::press(m_page.data(), middle + QPoint(70, 0));
    QCOMPARE(take(Actions | Read), QStringList{McuBeep});
    QCOMPARE(label("txt_balance")->text(), QStringLiteral("BAL:10"));
    QVERIFY(pad()->grab().toImage() != before);
    touch::move(m_page.data(), middle + QPoint(700, -35));
    QCOMPARE(label("txt_balance")->text(), QStringLiteral("BAL:15"));
    QCOMPARE(label("txt_fader")->text(), QStringLiteral("FAD:5"));
    QVERIFY(!key("key_right_btn")->isEnabled());
    QCOMPARE(take(Actions | Read), QStringList());
    QCOMPARE(audio().balance, 0);
    touch::release(m_page.data(), middle + QPoint(700, -35));
    QCOMPARE(take(Actions | Read), QStringList{sendPair(15, 5)});
}

void TestAudioLevelsPage::loudnessBeepsByTheMcuAndTellsTheServiceAlone()
{
    QCOMPARE(clicked("key_loudness", Actions | Read),
             (QStringList{McuBeep, "AudioService.setCustomLoudness(true, false)"}));
    QCOMPARE(clicked("key_loudness", Actions | Read),
             (QStringList{McuBeep, "AudioService.setCustomLoudness(false, false)"}));
    QVERIFY(!stored("customloudnes").isValid());
}

void TestAudioLevelsPage::switchingTheSubwooferOnMarksTheLevel()
{
    setStored("subwooferOnOff", false);
    setStored("subwooferLevel", 5);
    setStored("subwooferFreq", 3);
    m_page->resume();
    QCOMPARE(clicked("key_subwoofer", Actions | Read),
             (QStringList{McuBeep, writeSwitch(true), ReadLevel, ReadFrequency, writeLevel(5 | 128),
                          subFilter(3, 5)}));
    for (QWidget* each : QList<QWidget*>{slider(), key("key_sub_level_down"), key("key_sub_level_up")})
        QVERIFY(each->isEnabled());
}

void TestAudioLevelsPage::switchingTheSubwooferOffStoresTheLevelWithoutBit7()
{
    setStored("subwooferLevel", 5 | 128);
    setStored("subwooferFreq", 3);
    m_page->resume();
    QCOMPARE(clicked("key_subwoofer", Actions | Read),
             (QStringList{McuBeep, writeSwitch(false), ReadLevel, ReadFrequency, writeLevel(5, false),
                          subFilter(0, 5)}));
    for (QWidget* each : QList<QWidget*>{slider(), key("key_sub_level_down"), key("key_sub_level_up")})
        QVERIFY(!each->isEnabled());
}

void TestAudioLevelsPage::sliderReleaseSendsTheLevel_data()
{
    QTest::addColumn<int>("x");
    QTest::addColumn<int>("level");
    QTest::newRow("left end is the softest") << 588 << 12;
    QTest::newRow("middle") << 588 + 171 << 6;
    QTest::newRow("right end is the loudest") << 588 + 341 << 0;
}

void TestAudioLevelsPage::sliderReleaseSendsTheLevel()
{
    QFETCH(int, x);
    QFETCH(int, level);
    setStored("subwooferFreq", 4);
    take(All);
    touch::click(m_page.data(), QPoint(x, 410));
    QCOMPARE(take(Actions | Read),
             (QStringList{writeSwitch(true), ReadFrequency, writeLevel(level | 128), subFilter(4, level)}));
    QCOMPARE(slider()->value(), 12 - level);
    QVERIFY(key("key_subwoofer")->isChecked());
}

void TestAudioLevelsPage::sliderSendsNothingWhileDragged()
{
    touch::press(m_page.data(), QPoint(588, 410));
    for (int x = 588; x < 1200; x += 10)
        touch::move(m_page.data(), QPoint(x, 200));
    QCOMPARE(take(All), QStringList());
    touch::release(m_page.data(), QPoint(1200, 200));
    QCOMPARE(take(), (QStringList{writeSwitch(true), writeLevel(128), subFilter(7, 0)}));
}

void TestAudioLevelsPage::aSavedValueOutsideTheSliderIsClamped_data()
{
    QTest::addColumn<int>("value");
    QTest::addColumn<int>("level");
    QTest::newRow("13") << 13 << 0;
    QTest::newRow("-1") << -1 << 12;
    QTest::newRow("smallest int") << std::numeric_limits<int>::min() << 12;
    QTest::newRow("largest int") << std::numeric_limits<int>::max() << 0;
}

void TestAudioLevelsPage::aSavedValueOutsideTheSliderIsClamped()
{
    QFETCH(int, value);
    QFETCH(int, level);
    m_page->onSliderOnSave(value);
    QCOMPARE(take(), (QStringList{writeSwitch(true), writeLevel(level | 128), subFilter(7, level)}));
}

void TestAudioLevelsPage::levelKeysStepMaskStoreAndSend_data()
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

void TestAudioLevelsPage::levelKeysStepMaskStoreAndSend()
{
    QFETCH(QByteArray, step);
    QFETCH(int, level);
    QFETCH(int, frequency);
    QFETCH(int, newLevel);
    QFETCH(int, newFrequency);
    setStored("subwooferLevel", level);
    setStored("subwooferFreq", frequency);
    QCOMPARE(clicked(step.constData(), Actions | Read),
             (QStringList{Beep0, writeSwitch(true), ReadLevel, ReadFrequency, writeLevel(newLevel | 128),
                          subFilter(newFrequency, newLevel)}));
    QCOMPARE(slider()->value(), qBound(0, 12 - newLevel, 12));
    QVERIFY(key("key_subwoofer")->isChecked());
}

void TestAudioLevelsPage::withTheSubwooferOffALevelSlotSwitchesItOnAndLeavesTheKeysDisabled_data()
{
    QTest::addColumn<QByteArray>("slot");
    QTest::newRow("up") << QByteArray("on_key_sub_level_up_clicked");
    QTest::newRow("down") << QByteArray("on_key_sub_level_down_clicked");
    QTest::newRow("slider") << QByteArray("onSliderOnSave");
}

void TestAudioLevelsPage::withTheSubwooferOffALevelSlotSwitchesItOnAndLeavesTheKeysDisabled()
{
    QFETCH(QByteArray, slot);
    click("key_subwoofer");
    QCOMPARE(stored("subwooferOnOff"), QVariant(false));
    // By touch they are out of reach.
    QCOMPARE(clicked("key_sub_level_up", All), QStringList());
    touch::click(m_page.data(), QPoint(700, 410));
    QCOMPARE(take(All), QStringList());

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

void TestAudioLevelsPage::storedLevel139ShowsSliderValue1()
{
    setStored("subwooferLevel", 139);
    m_page->resume();
    QCOMPARE(slider()->value(), 1);
}

void TestAudioLevelsPage::storedLevelsAreClampedForTheSlider_data()
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

void TestAudioLevelsPage::storedLevelsAreClampedForTheSlider()
{
    QFETCH(int, level);
    QFETCH(int, value);
    setStored("subwooferLevel", level);
    m_page->resume();
    QCOMPARE(slider()->value(), value);
    QCOMPARE(take(), QStringList());
    QCOMPARE(stored("subwooferLevel"), QVariant(level));
}

void TestAudioLevelsPage::backBeepsAndPostsOneBackRequest()
{
    key("key_back")->click();
    QCOMPARE(take(), QStringList{Beep0});
    QCOMPARE(takeBackRequests(), 1);
}

void TestAudioLevelsPage::everySlotWritesItsDiagnosticLine()
{
    for (const QString& signature : formcheck::ownMethods(m_page->metaObject(), QMetaMethod::Slot)) {
        const QByteArray name = signature.left(signature.indexOf(QLatin1Char('('))).toLatin1();
        takeLog();
        if (signature.endsWith(QLatin1String("(int,int)")))
            QVERIFY(QMetaObject::invokeMethod(m_page.data(), name.constData(), Q_ARG(int, 1), Q_ARG(int, 2)));
        else if (signature.endsWith(QLatin1String("(int)")))
            QVERIFY(QMetaObject::invokeMethod(m_page.data(), name.constData(), Q_ARG(int, 1)));
        else
            QVERIFY(QMetaObject::invokeMethod(m_page.data(), name.constData()));
        const QString first = takeLog().value(0);
        QVERIFY2(first.startsWith(QLatin1String("D [DBG] ")), qPrintable(first));
        QVERIFY2(first.contains(QLatin1String("::") + QString::fromLatin1(name) + QLatin1Char('(')),
                 qPrintable(first));
    }
    takeBackRequests();
}

void TestAudioLevelsPage::hostileValuesNeitherCrashNorAreRewritten()
{
    const QVariantList hostile{QVariant(std::numeric_limits<int>::min()),
                               QVariant(std::numeric_limits<int>::max()),
                               QVariant(-1),
                               QVariant(true),
                               QVariant(QString(1 << 20, QLatin1Char('7'))),
                               QVariant(QString())};
    for (const QVariant& value : hostile) {
        for (const char* name : {"customloudnes", "subwooferOnOff", "subwooferLevel", "subwooferFreq"})
            setStored(QLatin1String(name), value);
        const bool number = value.type() == QVariant::Int;
        audio().balance = number ? value.toInt() : 0;
        audio().fader = number ? value.toInt() : 0;
        m_page.reset(new m5qx_eq_audio_levels_page(nullptr));
        m_page->resume();
        m_page->show();
        m_page->grab();
        QCOMPARE(take(), QStringList());
        QCOMPARE(stored("subwooferLevel"), value);
        for (const char* slot : {"onUpClicked", "onDownClicked", "onLeftClicked", "onRightClicked",
                                 "on_key_sub_level_up_clicked", "on_key_sub_level_down_clicked",
                                 "on_key_subwoofer_clicked", "on_key_loudness_clicked"})
            QVERIFY(QMetaObject::invokeMethod(m_page.data(), slot));
        m_page->hide();
        take(All);
    }
}

void TestAudioLevelsPage::randomTouchesKeepTheInvariants()
{
    const quint32 seed = QRandomGenerator::global()->generate();
    qInfo("seed %u", seed);
    QRandomGenerator random(seed);
    QWidget* holder = nullptr;
    const QRegularExpression pair(QStringLiteral("setBalanceFader\\((-?\\d+), (-?\\d+), true\\)$"));
    const QRegularExpression sub(QStringLiteral("setSubFilter\\(([07]), (\\d+), 0\\)$"));
    int sent = 0;
    for (int i = 0; i < 20000; ++i) {
        const QPoint at(random.bounded(-100, 1124), random.bounded(-100, 610));
        if (!holder) {
            if (!m_page->rect().contains(at))
                continue;
            holder = touch::press(m_page.data(), at);
            QCOMPARE(take(), holder == pad() ? QStringList{McuBeep} : QStringList());
        } else if (random.bounded(3)) {
            touch::move(m_page.data(), at);
            QCOMPARE(take(), QStringList());
        } else {
            // Half of the time where the finger went down, so that keys are clicked, too.
            const QPoint end = random.bounded(2) ? at : touch::middle(m_page.data(), holder);
            touch::release(m_page.data(), end);
            holder = nullptr;
            const QStringList calls = take();
            int audioCalls = 0;
            for (const QString& call : calls) {
                if (call.startsWith(QLatin1String("AudioService.set")))
                    ++audioCalls;
                if (const auto match = pair.match(call); match.hasMatch()) {
                    QVERIFY(qAbs(match.captured(1).toInt()) <= 15);
                    QVERIFY(qAbs(match.captured(2).toInt()) <= 15);
                }
                if (call.contains(QLatin1String("setSubFilter"))) {
                    const auto match = sub.match(call);
                    QVERIFY2(match.hasMatch() && match.captured(2).toInt() <= 12, qPrintable(call));
                }
            }
            QVERIFY2(audioCalls <= 1, qPrintable(calls.join(QLatin1Char('\n'))));
            sent += audioCalls;
        }
        QVERIFY(qAbs(pad()->getValueX()) <= 15 && qAbs(pad()->getValueY()) <= 15);
        const int level = stored("subwooferLevel").isValid() ? stored("subwooferLevel").toInt() & 127 : 11;
        QVERIFY(level >= 0 && level <= 12);
    }
    touch::release(m_page.data(), QPoint(-50, -50));
    QVERIFY2(sent > 200, qPrintable(QString::number(sent)));
    QCOMPARE(takeBackRequests(), 0);
}

QTEST_MAIN(TestAudioLevelsPage)
#include "tst_m5qx_audiosetting_audio_levels_page.moc"
