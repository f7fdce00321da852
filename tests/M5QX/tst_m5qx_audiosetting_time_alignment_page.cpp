#include "M5QX/m5qx_audiosetting_time_alignment_page.h"
#include "common/settings.h"
#include "formcheck.h"
#include "platform_double/platform_double.h"
#include "platform_double/touch.h"

#include <QButtonGroup>
#include <QRandomGenerator>
#include <QtTest>

#include <functional>
#include <limits>

using namespace audiosetting;
using namespace platform_double;
using formcheck::difference;
using formcheck::Icon;
using formcheck::Row;

namespace {

/// Opens the operations that only the page itself calls.
class OpenPage : public m5qx_eq_time_alignment_page
{
public:
    using m5qx_eq_time_alignment_page::currItemVlaue;
    using m5qx_eq_time_alignment_page::getTimeAlignmentValue;
    using m5qx_eq_time_alignment_page::isValidValue;
    using m5qx_eq_time_alignment_page::m5qx_eq_time_alignment_page;
    using m5qx_eq_time_alignment_page::setTimeAlignment;
    using m5qx_eq_time_alignment_page::setTimeAlignmentValue;
    using m5qx_eq_time_alignment_page::updateAllTimeAlignmentItemState;
    using m5qx_eq_time_alignment_page::updateCurrAlignmentText;
    using m5qx_eq_time_alignment_page::updatePresetIcon;
    using m5qx_eq_time_alignment_page::updtaeTimeAlignmentItemState;
};

} // namespace

class TestTimeAlignmentPage : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    // What the form is
    void slotsAreDeclaredInOrder();
    void theFormHasTheTablesWidgets_data();
    void theFormHasTheTablesWidgets();
    void siblingsAreMadeInTheTablesOrder_data();
    void siblingsAreMadeInTheTablesOrder();
    void theFormsOwnTexts_data();
    void theFormsOwnTexts();
    void keysHoldTheTablesPictures_data();
    void keysHoldTheTablesPictures();
    void presetKeysShowTheirStateByPicture();
    void theThirdPictureOfPreset1NeverShows();
    void labelsShowTheirPictures();
    void exactlyTheseLabelsLetTouchesThrough();
    void keyGroupsHoldTheTablesIds();
    void resetAndPreset2AreRaised();
    void everyKeyIsReachedAtItsMiddle();
    void textsComeFromTheTranslator();
    void presetCaptionsAreReplacedAtEachShow();
    void everyVisibleKeyHasAnAccessibleName();
    void theKeyboardWalksInReadingOrder();

    // What it asks of the platform
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
    void at100ThePlusKeyIsDisabledAndOneMinusClickGives99();
    void at0TheMinusKeyIsDisabledByItsOwnClickAndPlusBringsItBack();
    void afterResetAllMinusKeysAreDisabledAndAllPlusKeysEnabled();
    void atTheBottomThePlusKeyChangesNothing();
    void switchingToPreset2SendsAllFiveInItemOrderAndShowsThem();
    void aSwitchOfPresetCallsInOrder();
    void resetZeroesAllThreePresetsAndKeepsTheSelectedOne();
    void anIdOutsideTheKeysCountsAsItem0_data();
    void anIdOutsideTheKeysCountsAsItem0();
    void aPresetOutsideRangeIsLiteral_data();
    void aPresetOutsideRangeIsLiteral();
    void valuesOutsideTheRangeAreShownAndSentAsTheyAre_data();
    void valuesOutsideTheRangeAreShownAndSentAsTheyAre();
    void anItemThatDoesNotExistIsLoggedAndIgnored();
    void presetIconsOfTheOlderKeySet();
    void backBeepsAndPostsOneBackRequest();
    void everySlotWritesItsDiagnosticLine();
    void hostileValuesNeitherCrashNorAreRewritten();
    void randomTouchesKeepTheInvariants();

private:
    QPushButton* key(const QString& name) { return m_page->findChild<QPushButton*>(name); }
    QLabel* label(const QString& name) { return m_page->findChild<QLabel*>(name); }
    void click(const QString& name) { touch::click(m_page.data(), touch::middle(m_page.data(), key(name))); }
    QStringList clicked(const QString& name, int kinds = Actions)
    {
        take(All);
        click(name);
        return take(kinds);
    }
    QStringList shownValues();
    QStringList disabledKeys();
    /// A fresh page on what is stored.
    void rebuild();
    QScopedPointer<OpenPage> m_page;
};

namespace {

constexpr char Page[] = "m5qx_audiosetting_time_alignment_page";
constexpr char Panel[] = "time_alignment_setting_widget";
constexpr char Presets[] = "time_alignment_preset_widget";
constexpr char Title[] = "color:#FFFFFF";
constexpr char Data[] = "background-color:rgb(38,41,51);color:rgb(255,255,255)";
constexpr char FL[] = "time_front_left_widget";
constexpr char FR[] = "time_front_right_widget";
constexpr char RL[] = "time_rear_left_widget";
constexpr char RR[] = "time_rear_right_widget";
constexpr char SW[] = "time_subwoofer_widget";

// clang-format off
const Row rows[] = {
    {"key_back",                "QPushButton", Page, {938,  13,  74,  60}},
    {"icon_label",              "QLabel",      Page, { 28,  57,   0,   0}},
    {"text_alignment_title",    "QLabel",      Page, { 95,  57,   0,   0}, Title},
    {"icon_car",                "QLabel",      Page, {296, 126, 245, 249}},
    {"key_reset",               "QPushButton", Page, { 22, 400, 142,  70}},
    {"text_reset",              "QLabel",      Page, { 22, 400, 142,  70}, "color:rgb(238, 238, 236)"},
    {Panel,                     "QWidget",     Page, {  0, 100, 820, 380}},
    {FL,                        "QWidget",     Panel, {  0,   0, 260, 103}},
    {"text_front_left_data",    "QLabel",      FL,   {105,  38,  80,  58}, Data},
    {"Key_front_left_plus",     "QPushButton", FL,   {185,  32,  74,  70}},
    {"Key_front_left_minus",    "QPushButton", FL,   { 31,  32,  74,  70}},
    {"text_front_left_title",   "QLabel",      FL,   { 31,   0, 228,  32}, Title},
    {"bkg_front_left",          "QLabel",      FL,   {  0,   0,   0, 103}},
    {FR,                        "QWidget",     Panel, {550,   0, 260, 103}},
    {"text_front_right_data",   "QLabel",      FR,   {105,  38,  80,  58}, Data},
    {"Key_front_right_plus",    "QPushButton", FR,   {185,  32,  74,  70}},
    {"Key_front_right_minus",   "QPushButton", FR,   { 31,  32,  74,  70}},
    {"text_front_right_title",  "QLabel",      FR,   { 31,   0, 228,  31}, Title},
    {"bkg_front_right",         "QLabel",      FR,   {  0,   0,   0, 103}},
    {RL,                        "QWidget",     Panel, {  0, 142, 260, 103}},
    {"text_rear_left_data",     "QLabel",      RL,   {105,  38,  80,  58}, Data},
    {"Key_rear_left_plus",      "QPushButton", RL,   {185,  32,  74,  70}},
    {"Key_rear_left_minus",     "QPushButton", RL,   { 31,  32,  74,  70}},
    {"text_rear_left_title",    "QLabel",      RL,   { 31,   0, 228,  32}, Title},
    {"bkg_rear_left",           "QLabel",      RL,   {  0,   0,   0, 103}},
    {RR,                        "QWidget",     Panel, {550, 142, 260, 103}},
    {"text_rear_right_data",    "QLabel",      RR,   {105,  38,  80,  58}, Data},
    {"Key_rear_right_plus",     "QPushButton", RR,   {185,  32,  74,  70}},
    {"Key_rear_right_minus",    "QPushButton", RR,   { 31,  32,  74,  70}},
    {"text_rear_right_title",   "QLabel",      RR,   { 31,   0, 228,  32}, Title},
    {"bkg_rear_right",          "QLabel",      RR,   {  0,   0,   0, 103}},
    {SW,                        "QWidget",     Panel, {278, 268, 281, 103}},
    {"text_subwoofer_data",     "QLabel",      SW,   {105,  38,  85,  58}, Data},
    {"Key_subwoofer_plus",      "QPushButton", SW,   {190,  32,  74,  70}},
    {"Key_subwoofer_minus",     "QPushButton", SW,   { 31,  32,  74,  70}},
    {"text_subwoofer_title",    "QLabel",      SW,   { 31,   0, 228,  32}, Title},
    {"bkg_subwoofer",           "QLabel",      SW,   {  0,   0,   0, 103}},
    {Presets,                   "QWidget",     Page, {847,  78, 150, 332}},
    {"text_preset2",            "QLabel",      Presets, {  0, 153, 142,  70}},
    {"key_preset3",             "QPushButton", Presets, {  0, 246, 142,  70}},
    {"key_preset1",             "QPushButton", Presets, {  0,  60, 142,  70}},
    {"key_preset2",             "QPushButton", Presets, {  0, 153, 142,  70}},
    {"text_preset3",            "QLabel",      Presets, {  0, 243, 142,  70}},
    {"text_preset1",            "QLabel",      Presets, {  4,  60, 142,  70}},
    {"text_preset_titel",       "QLabel",      Presets, {  0,   0,   0,  50}},
};

constexpr char PlusN[]  = ":/vexa_m5qx_settingicon_ext/time_alignment_plus_n.png";
constexpr char PlusP[]  = ":/vexa_m5qx_settingicon_ext/time_alignment_plus_p.png";
constexpr char MinusN[] = ":/vexa_m5qx_settingicon_ext/time_alignment_minus_n.png";
constexpr char MinusP[] = ":/vexa_m5qx_settingicon_ext/time_alignment_minus_p.png";
constexpr char PresetN[] = ":/vexa_m5qx_settingicon_ext/time_alignment_preset_n.png";
constexpr char PresetP[] = ":/vexa_m5qx_settingicon_ext/time_alignment_preset_p.png";
const Icon icons[] = {
    {"key_back",              ":/vexa_m5qx_audiosettingicon/icon_close_n.png", ":/vexa_m5qx_audiosettingicon/icon_close_p.png", {74, 60}},
    {"key_reset",             ":/vexa_m5qx_settingicon_ext/time_alignment_reset_n.png", PresetP, {142, 70}},
    {"Key_front_left_plus",   PlusN,   PlusP,   {74, 70}},
    {"Key_front_left_minus",  MinusN,  MinusP,  {74, 70}},
    {"Key_front_right_plus",  PlusN,   PlusP,   {74, 70}},
    {"Key_front_right_minus", MinusN,  MinusP,  {74, 70}},
    {"Key_rear_left_plus",    PlusN,   PlusP,   {74, 70}},
    {"Key_rear_left_minus",   MinusN,  MinusP,  {74, 70}},
    {"Key_rear_right_plus",   PlusN,   PlusP,   {74, 70}},
    {"Key_rear_right_minus",  MinusN,  MinusP,  {74, 70}},
    {"Key_subwoofer_plus",    PlusN,   PlusP,   {74, 70}},
    {"Key_subwoofer_minus",   MinusN,  MinusP,  {74, 70}},
    {"key_preset1",           PresetN, PresetP, {142, 70}},
    {"key_preset2",           PresetN, PresetP, {142, 70}},
    {"key_preset3",           PresetN, PresetP, {142, 70}},
};

struct Item { const char* name; int plus; int minus; int mask; };
const Item items[] = {
    {"front_left",  1,  2,  1},
    {"front_right", 3,  4,  2},
    {"rear_left",   5,  6,  4},
    {"rear_right",  7,  8,  8},
    {"subwoofer",   9, 10, 32},
};
// clang-format on

const QString KeyBeep = QStringLiteral("AudioService.doBeep(0)");
const QString ReadPreset = QStringLiteral("SettingsExe.getValue(\"Audio_Time_Alignment_Preset\", 0)");

QString storeKey(int preset, int item)
{
    return QStringLiteral("Audio_Time_Alignment_Num%1%2").arg(preset + 1).arg(item);
}

QString readItem(int preset, int item)
{
    return QStringLiteral("SettingsExe.getValue(\"%1\", 0)").arg(storeKey(preset, item));
}

QString writeItem(int preset, int item, int value)
{
    return QStringLiteral("SettingsExe.setValue(\"%1\", 0, %2, true)").arg(storeKey(preset, item)).arg(value);
}

QString writePreset(int preset)
{
    return QStringLiteral("SettingsExe.setValue(\"Audio_Time_Alignment_Preset\", 0, %1, true)").arg(preset);
}

QString delay(int mask, const char* ms)
{
    return QStringLiteral("AudioService.setSurroundDelay(%1, %2)").arg(mask).arg(QLatin1String(ms));
}

QString plusKey(int item)
{
    return QStringLiteral("Key_%1_plus").arg(QLatin1String(items[item].name));
}

QString minusKey(int item)
{
    return QStringLiteral("Key_%1_minus").arg(QLatin1String(items[item].name));
}

QString valueLabel(int item)
{
    return QStringLiteral("text_%1_data").arg(QLatin1String(items[item].name));
}

/// The reads of one value by the current preset, count times.
QStringList readsOf(int preset, int item, int count = 1)
{
    QStringList result;
    while (count--)
        result += {ReadPreset, readItem(preset, item)};
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

void TestTimeAlignmentPage::init()
{
    reset();
    rebuild();
}

void TestTimeAlignmentPage::rebuild()
{
    m_page.reset(new OpenPage(nullptr));
    m_page->show();
    take(All);
}

void TestTimeAlignmentPage::cleanup()
{
    m_page.reset();
}

QStringList TestTimeAlignmentPage::shownValues()
{
    QStringList result;
    for (int item = 0; item < 5; ++item)
        result += label(valueLabel(item))->text();
    return result;
}

QStringList TestTimeAlignmentPage::disabledKeys()
{
    QStringList result;
    for (const QPushButton* each : m_page->findChildren<QPushButton*>()) {
        if (!each->isEnabled())
            result += each->objectName();
    }
    return result;
}

// ---- what the form is

void TestTimeAlignmentPage::slotsAreDeclaredInOrder()
{
    const m5qx_eq_time_alignment_page page(nullptr);
    QCOMPARE(formcheck::ownMethods(page.metaObject(), QMetaMethod::Signal), QStringList());
    QCOMPARE(formcheck::ownMethods(page.metaObject(), QMetaMethod::Slot),
             (QStringList{"onAlmButGroupClicked(int)", "onPreButGroupClicked(int)", "onResetClicked()",
                          "onBackClicked()"}));
}

void TestTimeAlignmentPage::theFormHasTheTablesWidgets_data()
{
    QTest::addColumn<int>("row");
    for (int i = 0; i < int(std::size(rows)); ++i)
        QTest::newRow(rows[i].name) << i;
}

void TestTimeAlignmentPage::theFormHasTheTablesWidgets()
{
    QFETCH(int, row);
    QCOMPARE(difference(m_page.data(), rows[row]), QString());
    QCOMPARE(m_page->size(), QSize(1024, 510));
}

void TestTimeAlignmentPage::siblingsAreMadeInTheTablesOrder_data()
{
    QTest::addColumn<QString>("parent");
    QTest::addColumn<QStringList>("raised"); // to the end of the stack, after they were made
    QTest::newRow("page") << Page << QStringList{"key_reset", "text_reset"};
    QTest::newRow("channel panel") << Panel << QStringList();
    for (const char* box : {FL, FR, RL, RR, SW})
        QTest::newRow(box) << box << QStringList();
    QTest::newRow("preset panel") << Presets << QStringList{"text_preset2"};
}

void TestTimeAlignmentPage::siblingsAreMadeInTheTablesOrder()
{
    QFETCH(QString, parent);
    QFETCH(QStringList, raised);
    QStringList expected;
    for (const Row& row : rows) {
        if (row.parent == parent && !raised.contains(QLatin1String(row.name)))
            expected += QLatin1String(row.name);
    }
    const QWidget* widget = m_page.data();
    if (parent != QLatin1String(Page))
        widget = m_page->findChild<QWidget*>(parent);
    QCOMPARE(formcheck::childNames(widget), expected + raised);
}

void TestTimeAlignmentPage::theFormsOwnTexts_data()
{
    QTest::addColumn<QString>("label");
    QTest::addColumn<QString>("text");
    QTest::newRow("title") << "text_alignment_title"
                           << "TIME ALIGNMENT SETTINGS";
    QTest::newRow("reset") << "text_reset"
                           << "RESET";
    QTest::newRow("preset 1") << "text_preset1"
                              << "PRESET 1\nCINEMATIC";
    QTest::newRow("preset 2") << "text_preset2"
                              << "PRESET 2\n STADIUM";
    QTest::newRow("preset 3") << "text_preset3"
                              << "PRESET 3\n HALL";
    QTest::newRow("presets") << "text_preset_titel"
                             << "SURROUND\nPRESETS";
    for (const Item& item : items)
        QTest::newRow(item.name) << QStringLiteral("text_%1_title").arg(QLatin1String(item.name))
                                 << "FRONT LEFT";
}

void TestTimeAlignmentPage::theFormsOwnTexts()
{
    QFETCH(QString, label);
    QFETCH(QString, text);
    const OpenPage page(nullptr); // never shown
    QCOMPARE(page.findChild<QLabel*>(label)->text(), text);
    for (int item = 0; item < 5; ++item) {
        const auto* value = page.findChild<QLabel*>(valueLabel(item));
        QVERIFY(Qt::mightBeRichText(value->text()));
        QVERIFY(value->text().contains(QLatin1String("50 Hz")));
    }
}

void TestTimeAlignmentPage::keysHoldTheTablesPictures_data()
{
    QTest::addColumn<int>("row");
    for (int i = 0; i < int(std::size(icons)); ++i)
        QTest::newRow(icons[i].key) << i;
}

void TestTimeAlignmentPage::keysHoldTheTablesPictures()
{
    QFETCH(int, row);
    QCOMPARE(difference(m_page.data(), icons[row]), QString());
}

void TestTimeAlignmentPage::presetKeysShowTheirStateByPicture()
{
    for (const char* name : {"key_preset1", "key_preset2", "key_preset3"}) {
        const QPushButton* preset = key(QLatin1String(name));
        QVERIFY(preset->isCheckable());
        for (const QIcon::Mode mode : {QIcon::Normal, QIcon::Active, QIcon::Selected})
            QVERIFY(formcheck::shows(preset->icon(), QSize(142, 70), mode, QIcon::On, PresetP));
        QVERIFY(formcheck::shows(preset->icon(), QSize(142, 70), QIcon::Active, QIcon::Off, PresetN));
    }
    for (int item = 0; item < 5; ++item)
        QVERIFY(!key(plusKey(item))->isCheckable() && !key(minusKey(item))->isCheckable());
}

void TestTimeAlignmentPage::theThirdPictureOfPreset1NeverShows()
{
    // It sits where only a key that is disabled and checked would show it, and no preset key is ever
    // disabled.
    const QSize size(149, 70);
    QVERIFY(formcheck::shows(key("key_preset1")->icon(), size, QIcon::Disabled, QIcon::On,
                             ":/vexa_m5qx_settingicon_ext/bal_btn_reset_p.png"));
    for (int preset : {0, 1, 2, 7}) {
        m_page->onPreButGroupClicked(preset);
        m_page->onResetClicked();
        for (const char* name : {"key_preset1", "key_preset2", "key_preset3"})
            QVERIFY(key(QLatin1String(name))->isEnabled());
    }
}

void TestTimeAlignmentPage::labelsShowTheirPictures()
{
    QCOMPARE(label("icon_car")->pixmap(Qt::ReturnByValue).size(), QSize(245, 249));
    QCOMPARE(label("icon_car")->pixmap(Qt::ReturnByValue).toImage(),
             QPixmap(":/vexa_m5qx_settingicon_ext/time_alignment_car.png").toImage());
    QCOMPARE(label("icon_label")->pixmap(Qt::ReturnByValue).toImage(),
             QPixmap(":/vexa_m5qx_audiosettingicon/icon_eq.png").toImage());
    QVERIFY(key("key_back")->isHidden());
}

void TestTimeAlignmentPage::exactlyTheseLabelsLetTouchesThrough()
{
    QStringList transparent;
    for (const QWidget* each : m_page->findChildren<QWidget*>()) {
        if (each->testAttribute(Qt::WA_TransparentForMouseEvents))
            transparent += each->objectName();
    }
    QStringList expected{"bkg_front_left", "bkg_front_right", "bkg_rear_left",
                         "bkg_subwoofer",  "text_preset1",    "text_preset2",
                         "text_preset3",   "text_reset",      "text_subwoofer_title"};
    transparent.sort();
    expected.sort();
    QCOMPARE(transparent, expected);
}

void TestTimeAlignmentPage::keyGroupsHoldTheTablesIds()
{
    const QList<QButtonGroup*> groups = m_page->findChildren<QButtonGroup*>();
    QCOMPARE(groups.size(), 2);
    for (const QButtonGroup* group : groups)
        QVERIFY(group->exclusive());
    QCOMPARE(groups.at(0)->buttons().size(), 10);
    for (int item = 0; item < 5; ++item) {
        QCOMPARE(groups.at(0)->button(items[item].plus), key(plusKey(item)));
        QCOMPARE(groups.at(0)->button(items[item].minus), key(minusKey(item)));
        QCOMPARE(m_page->currItemVlaue(items[item].plus), item);
        QCOMPARE(m_page->currItemVlaue(items[item].minus), item);
    }
    QCOMPARE(groups.at(1)->buttons().size(), 3);
    for (int preset = 0; preset < 3; ++preset)
        QCOMPARE(groups.at(1)->button(preset), key(QStringLiteral("key_preset%1").arg(preset + 1)));
}

void TestTimeAlignmentPage::resetAndPreset2AreRaised()
{
    QCOMPARE(m_page->childAt(93, 435), key("key_reset"));
    const auto* panel = m_page->findChild<QWidget*>(QLatin1String(Presets));
    QCOMPARE(panel->children().last(), label("text_preset2"));
}

void TestTimeAlignmentPage::everyKeyIsReachedAtItsMiddle()
{
    for (QPushButton* each : m_page->findChildren<QPushButton*>()) {
        if (each->isVisible())
            QCOMPARE(m_page->childAt(touch::middle(m_page.data(), each)), each);
    }
}

void TestTimeAlignmentPage::textsComeFromTheTranslator()
{
    setText(735, QStringLiteral("Time "));
    setText(141, QStringLiteral("Settings"));
    setText(224, QStringLiteral("Reset"));
    setText(236, QStringLiteral("Subwoofer"));
    setText(1239, QStringLiteral("Front left"));
    setText(1240, QStringLiteral("Front right"));
    setText(1241, QStringLiteral("Rear left"));
    setText(1242, QStringLiteral("Rear right"));
    m_page->retranslateUi();
    QCOMPARE(label("text_alignment_title")->text(), QStringLiteral("TIME ALIGNMENT SETTINGS"));
    QCOMPARE(label("text_reset")->text(), QStringLiteral("RESET"));
    QCOMPARE(label("text_front_left_title")->text(), QStringLiteral("Front left"));
    QCOMPARE(label("text_front_right_title")->text(), QStringLiteral("Front right"));
    QCOMPARE(label("text_rear_left_title")->text(), QStringLiteral("Rear left"));
    QCOMPARE(label("text_rear_right_title")->text(), QStringLiteral("Rear right"));
    QCOMPARE(label("text_subwoofer_title")->text(), QStringLiteral("SUBWOOFER"));
    QCOMPARE(label("text_preset_titel")->text(), QStringLiteral("SURROUND\nPRESETS"));
}

void TestTimeAlignmentPage::presetCaptionsAreReplacedAtEachShow()
{
    for (int preset = 1; preset <= 3; ++preset) {
        QLabel* caption = label(QStringLiteral("text_preset%1").arg(preset));
        QCOMPARE(caption->text(), QStringLiteral("PRESET %1").arg(preset));
        caption->setText(QStringLiteral("other"));
        m_page->hide();
        m_page->show();
        QCOMPARE(caption->text(), QStringLiteral("PRESET %1").arg(preset));
    }
}

void TestTimeAlignmentPage::everyVisibleKeyHasAnAccessibleName()
{
    QStringList names;
    for (const QPushButton* each : m_page->findChildren<QPushButton*>()) {
        if (!each->isVisible())
            continue;
        QVERIFY2(!each->accessibleName().isEmpty(), qPrintable(each->objectName()));
        names += each->accessibleName();
    }
    QCOMPARE(names.size(), 14);
    QCOMPARE(names.removeDuplicates(), 0);
    QCOMPARE(key("Key_rear_left_plus")->accessibleName(), QStringLiteral("T1241 +"));
    QCOMPARE(key("Key_rear_left_minus")->accessibleName(), QStringLiteral("T1241 -"));
}

void TestTimeAlignmentPage::theKeyboardWalksInReadingOrder()
{
    QStringList order;
    for (int item = 0; item < 4; ++item)
        order += {minusKey(item), plusKey(item)};
    order += {"key_reset", minusKey(4), plusKey(4), "key_preset1", "key_preset2", "key_preset3"};
    QStringList walked;
    const QWidget* first = key(minusKey(0));
    const QWidget* widget = first;
    do {
        if (widget->isVisible() && (widget->focusPolicy() & Qt::TabFocus))
            walked += widget->objectName();
        widget = widget->nextInFocusChain();
    } while (widget != first);
    QCOMPARE(walked, order);
}

// ---- what it asks of the platform

void TestTimeAlignmentPage::constructionReadsThePresetAndSendsNothing()
{
    const OpenPage page(nullptr);
    QCOMPARE(take(All), QStringList{ReadPreset});
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
    QFETCH(QString, checked);
    setStored("Audio_Time_Alignment_Preset", preset);
    rebuild();
    QStringList is;
    for (const QPushButton* each : m_page->findChildren<QPushButton*>()) {
        if (each->isChecked())
            is += each->objectName();
    }
    QCOMPARE(is.join(QLatin1Char(' ')), checked);
}

void TestTimeAlignmentPage::showReadsOnlyAndDoesNotRecheckThePreset()
{
    m_page->hide();
    setStored("Audio_Time_Alignment_Preset", 1);
    setStored(storeKey(1, 2), 44);
    take(All);
    m_page->show();
    const QStringList calls = take(All);
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
    const QStringList kept{ReadPreset, writeItem(2, item, value)};
    QCOMPARE(clicked(plus ? plusKey(item) : minusKey(item), All),
             QStringList(KeyBeep) + readsOf(2, item) + sent + kept + readsOf(2, item));
    QStringList shown{"0ms", "0ms", "0ms", "0ms", "0ms"};
    shown[item] = QString::fromLatin1(ms) + QStringLiteral("ms");
    QCOMPARE(shownValues(), shown);
}

void TestTimeAlignmentPage::subwooferPlusOneFromZeroSendsMask32()
{
    QCOMPARE(clicked("Key_subwoofer_plus"), (QStringList{KeyBeep, delay(32, "0.1"), writeItem(0, 4, 1)}));
    QCOMPARE(clicked("Key_front_right_plus"), (QStringList{KeyBeep, delay(2, "0.1"), writeItem(0, 1, 1)}));
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

void TestTimeAlignmentPage::at100ThePlusKeyIsDisabledAndOneMinusClickGives99()
{
    for (int item = 0; item < 5; ++item) {
        setStored(storeKey(0, item), 99);
        rebuild();
        click(plusKey(item));
        QCOMPARE(stored(storeKey(0, item)), QVariant(100));
        QVERIFY(!key(plusKey(item))->isEnabled());
        QCOMPARE(clicked(plusKey(item), All), QStringList());
        QCOMPARE(clicked(minusKey(item)),
                 (QStringList{KeyBeep, delay(items[item].mask, "9.9"), writeItem(0, item, 99)}));
        QVERIFY(key(plusKey(item))->isEnabled());
        QCOMPARE(shownValues().at(item), QStringLiteral("9.9ms"));
    }
}

void TestTimeAlignmentPage::at0TheMinusKeyIsDisabledByItsOwnClickAndPlusBringsItBack()
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

void TestTimeAlignmentPage::afterResetAllMinusKeysAreDisabledAndAllPlusKeysEnabled()
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

void TestTimeAlignmentPage::atTheBottomThePlusKeyChangesNothing()
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

void TestTimeAlignmentPage::switchingToPreset2SendsAllFiveInItemOrderAndShowsThem()
{
    const int values[] = {1, 0, 30, 100, 15};
    for (int item = 0; item < 5; ++item)
        setStored(storeKey(1, item), values[item]);
    QCOMPARE(clicked("key_preset2"), (QStringList{KeyBeep, writePreset(1), delay(1, "0.1"), delay(2, "0"),
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
    QCOMPARE(clicked("key_preset3", All), (QStringList{KeyBeep, writePreset(2)}) + readsOfAll(2) +
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
    QCOMPARE(clicked("key_reset"), QStringList(KeyBeep) + writes + sends);
    QCOMPARE(shownValues(), (QStringList{"0ms", "0ms", "0ms", "0ms", "0ms"}));
    QCOMPARE(stored("Audio_Time_Alignment_Preset"), QVariant(1));
    QVERIFY(key("key_preset2")->isChecked());
}

void TestTimeAlignmentPage::anIdOutsideTheKeysCountsAsItem0_data()
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

void TestTimeAlignmentPage::anIdOutsideTheKeysCountsAsItem0()
{
    QFETCH(int, id);
    QFETCH(int, value);
    setStored(storeKey(0, 0), 50);
    rebuild();
    const QStringList disabled = disabledKeys();
    key(minusKey(0))->setEnabled(false);
    m_page->onAlmButGroupClicked(id);
    QCOMPARE(take(),
             (QStringList{KeyBeep, delay(1, QByteArray::number(value / 10.0)), writeItem(0, 0, value)}));
    // No key of that id, none is touched; its neighbour isn't either.
    QCOMPARE(disabledKeys(), QStringList{minusKey(0)} + disabled);
}

void TestTimeAlignmentPage::aPresetOutsideRangeIsLiteral_data()
{
    QTest::addColumn<int>("preset");
    QTest::newRow("3") << 3;
    QTest::newRow("-1") << -1;
    QTest::newRow("largest int") << std::numeric_limits<int>::max();
}

void TestTimeAlignmentPage::aPresetOutsideRangeIsLiteral()
{
    QFETCH(int, preset);
    setStored(storeKey(0, 0), 50);
    m_page->onPreButGroupClicked(preset);
    QCOMPARE(take(), (QStringList{KeyBeep, writePreset(preset), delay(1, "0"), delay(2, "0"), delay(4, "0"),
                                  delay(8, "0"), delay(32, "0")}));
    QCOMPARE(m_page->getTimeAlignmentValue(0), 0);
    // A step is sent from 0 and stored nowhere.
    QCOMPARE(clicked(plusKey(0)), (QStringList{KeyBeep, delay(1, "0.1")}));
    QCOMPARE(stored(storeKey(0, 0)), QVariant(50));
    m_page->setTimeAlignmentValue(preset, 0, 9);
    QCOMPARE(take(), QStringList());
}

void TestTimeAlignmentPage::valuesOutsideTheRangeAreShownAndSentAsTheyAre_data()
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

void TestTimeAlignmentPage::valuesOutsideTheRangeAreShownAndSentAsTheyAre()
{
    QFETCH(int, value);
    QFETCH(QString, text);
    QFETCH(QString, sent);
    setStored(storeKey(0, 3), value);
    rebuild();
    QCOMPARE(shownValues().at(3), text);
    QVERIFY(key(plusKey(3))->isEnabled() && key(minusKey(3))->isEnabled());
    QVERIFY(clicked("key_preset1").contains(delay(8, sent.toLatin1().constData())));
    QVERIFY(key(plusKey(3))->isEnabled() && key(minusKey(3))->isEnabled());
    QCOMPARE(m_page->isValidValue(value), 2);
    QCOMPARE(m_page->isValidValue(100), 0);
    QCOMPARE(m_page->isValidValue(0), 1);
}

void TestTimeAlignmentPage::anItemThatDoesNotExistIsLoggedAndIgnored()
{
    for (const int item : {-1, 5, 1000000}) {
        takeLog();
        m_page->setTimeAlignment(item, 5);
        m_page->updateCurrAlignmentText(item, 5);
        QCOMPARE(takeLog().filter(QRegularExpression(QStringLiteral("^C \\[ERR\\] "))).size(), 2);
    }
    QCOMPARE(take(), QStringList());
    QCOMPARE(shownValues(), (QStringList{"0ms", "0ms", "0ms", "0ms", "0ms"}));
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
    QCOMPARE(take(), QStringList{KeyBeep});
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

void TestTimeAlignmentPage::hostileValuesNeitherCrashNorAreRewritten()
{
    const QVariantList hostile{QVariant(std::numeric_limits<int>::min()),
                               QVariant(std::numeric_limits<int>::max()),
                               QVariant(-1),
                               QVariant(true),
                               QVariant(QString(1 << 20, QLatin1Char('7'))),
                               QVariant(QString())};
    for (const bool presetToo : {false, true}) {
        for (const QVariant& value : hostile) {
            setStored("Audio_Time_Alignment_Preset", presetToo ? value : QVariant(0));
            for (int item = 0; item < 15; ++item)
                setStored(storeKey(item / 5, item % 5), value);
            rebuild();
            m_page->grab();
            QCOMPARE(take(), QStringList());
            QCOMPARE(stored(storeKey(2, 4)), value);
            for (int id = 0; id <= 11; ++id)
                m_page->onAlmButGroupClicked(id);
            m_page->onPreButGroupClicked(1);
            m_page->onResetClicked();
        }
    }
}

void TestTimeAlignmentPage::randomTouchesKeepTheInvariants()
{
    const quint32 seed = QRandomGenerator::global()->generate();
    qInfo("seed %u", seed);
    QRandomGenerator random(seed);
    const QList<QPushButton*> keys = m_page->findChildren<QPushButton*>();
    QWidget* holder = nullptr;
    int steps = 0;
    for (int i = 0; i < 20000; ++i) {
        QPoint at(random.bounded(-100, 1124), random.bounded(-100, 610));
        if (!holder) {
            // Every second finger aims.
            if (random.bounded(2))
                at = touch::middle(m_page.data(), keys.at(random.bounded(keys.size())));
            if (!m_page->rect().contains(at))
                continue;
            holder = touch::press(m_page.data(), at);
            QCOMPARE(take(), QStringList());
        } else if (random.bounded(3)) {
            touch::move(m_page.data(), at);
            QCOMPARE(take(), QStringList());
        } else {
            touch::release(m_page.data(), random.bounded(2) ? at : touch::middle(m_page.data(), holder));
            const QString name = holder->objectName();
            holder = nullptr;
            const QStringList calls = take();
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
    touch::release(m_page.data(), QPoint(-50, -50));
    QVERIFY2(steps > 10, qPrintable(QString::number(steps)));
    QCOMPARE(takeBackRequests(), 0);
}

QTEST_MAIN(TestTimeAlignmentPage)
#include "tst_m5qx_audiosetting_time_alignment_page.moc"
