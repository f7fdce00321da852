#include "tests/M5QX/crossover/crossoverpage.h"

using namespace crossoverpage;
using formcheck::difference;
using formcheck::Place;
using formcheck::shows;

namespace {

const char* const rootName = "m5qx_audiosetting_crossover_setting_page";

// clang-format off
const Place places[] = {
    {"key_back",                    "QPushButton", rootName,                      {938, 13, 74, 60}},
    {"bkg_eq",                      "QLabel",      rootName,                      {28, 22, 52, 52}},
    {"text_titel",                  "QLabel",      rootName,                      {95, 28, 400, 41}},
    {"bkg_line_1",                  "QLabel",      rootName,                      {335, 100, 6, 388}},
    {"bkg_line_2",                  "QLabel",      rootName,                      {665, 100, 6, 388}},
    {"high_pass_widget",            "QWidget",     rootName,                      {20, 90, 307, 508}},
    {"key_high_pass",               "QPushButton", "high_pass_widget",        {0, 63, 110, 52}},
    {"text_hpf_main_audio",         "QLabel",      "high_pass_widget",        {1, 0, 306, 40}},
    {"bkg_hpf_main_audio",          "QLabel",      "high_pass_widget",        {0, 0, 306, 40}},
    {"hpf_freq_widget",             "QWidget",     "high_pass_widget",        {0, 138, 307, 71}},
    {"Key_hpf_freq_minus",          "QPushButton", "hpf_freq_widget",         {0, 0, 75, 71}},
    {"Key_hpf_freq_plus",           "QPushButton", "hpf_freq_widget",         {232, 0, 75, 71}},
    {"bkg_hpf_freq",                "QLabel",      "hpf_freq_widget",         {71, 6, 164, 59}},
    {"text_hpf_freq",               "QLabel",      "hpf_freq_widget",         {71, 6, 164, 59}},
    {"hpf_slope_widget",            "QWidget",     "high_pass_widget",        {0, 327, 307, 183}},
    {"key_hpf_slope_6db",           "QPushButton", "hpf_slope_widget",        {38, 41, 30, 30}},
    {"key_hpf_slope_12db",          "QPushButton", "hpf_slope_widget",        {152, 41, 30, 30}},
    {"key_hpf_slope_18db",          "QPushButton", "hpf_slope_widget",        {260, 41, 30, 30}},
    {"text_hpf_freq_slope",         "QLabel",      "hpf_slope_widget",        {0, 0, 307, 20}},
    {"text_lpf_slope_6db",          "QLabel",      "hpf_slope_widget",        {18, 27, 67, 17}},
    {"text_lpf_slope_12db",         "QLabel",      "hpf_slope_widget",        {132, 27, 67, 17}},
    {"text_lpf_slope_18db",         "QLabel",      "hpf_slope_widget",        {240, 27, 67, 17}},
    {"text_high_pass",              "QLabel",      "high_pass_widget",        {73, 120, 161, 20}},
    {"low_pass_widget",             "QWidget",     rootName,                      {350, 90, 307, 508}},
    {"key_low_pass",                "QPushButton", "low_pass_widget",         {0, 63, 110, 52}},
    {"text_low_main_audio",         "QLabel",      "low_pass_widget",         {1, 0, 306, 40}},
    {"bkg_lpf_main_audiol",         "QLabel",      "low_pass_widget",         {0, 0, 306, 40}},
    {"low_freq_widgetl",            "QWidget",     "low_pass_widget",         {0, 138, 307, 71}},
    {"Key_low_freq_minus",          "QPushButton", "low_freq_widgetl",        {0, 0, 75, 71}},
    {"Key_low_freq_plus",           "QPushButton", "low_freq_widgetl",        {232, 0, 75, 71}},
    {"bkg_low_freq",                "QLabel",      "low_freq_widgetl",        {71, 6, 164, 59}},
    {"text_low_freq",               "QLabel",      "low_freq_widgetl",        {71, 6, 164, 59}},
    {"low_slope_widget",            "QWidget",     "low_pass_widget",         {0, 327, 307, 183}},
    {"key_low_slope_6db",           "QPushButton", "low_slope_widget",        {38, 41, 30, 30}},
    {"key_low_slope_12db",          "QPushButton", "low_slope_widget",        {152, 41, 30, 30}},
    {"key_low_slope_18db",          "QPushButton", "low_slope_widget",        {260, 41, 30, 30}},
    {"text_low_freq_slope",         "QLabel",      "low_slope_widget",        {0, 0, 307, 20}},
    {"text_low_slope_6db",          "QLabel",      "low_slope_widget",        {18, 27, 67, 17}},
    {"text_low_slope_12db",         "QLabel",      "low_slope_widget",        {132, 27, 67, 17}},
    {"text_low_slope_18db",         "QLabel",      "low_slope_widget",        {240, 27, 67, 17}},
    {"text_low_pass",               "QLabel",      "low_pass_widget",         {73, 120, 161, 20}},
    {"subwoofer_widget",            "QWidget",     rootName,                      {680, 90, 307, 211}},
    {"text_subwoofer",              "QLabel",      "subwoofer_widget",        {1, 0, 306, 40}},
    {"bkg_subwoofer_main_audiol",   "QLabel",      "subwoofer_widget",        {0, 0, 306, 40}},
    {"subwoofer_freq_widget",       "QWidget",     "subwoofer_widget",        {0, 64, 307, 71}},
    {"Key_subwoofer_freq_minus",    "QPushButton", "subwoofer_freq_widget",   {0, 0, 75, 71}},
    {"Key_subwoofer_freq_plus",     "QPushButton", "subwoofer_freq_widget",   {232, 0, 75, 71}},
    {"bkg_subwoofer_freq",          "QLabel",      "subwoofer_freq_widget",   {71, 6, 164, 59}},
    {"text_subwoofer_freq",         "QLabel",      "subwoofer_freq_widget",   {71, 6, 164, 59}},
    {"subwoofer_level_widget",      "QWidget",     "subwoofer_widget",        {0, 150, 307, 71}},
    {"Key_subwoofer_level_minus",   "QPushButton", "subwoofer_level_widget",  {0, 0, 75, 71}},
    {"Key_subwoofer_level_plus",    "QPushButton", "subwoofer_level_widget",  {232, 0, 75, 71}},
    {"bkg_subwoofer_level",         "QLabel",      "subwoofer_level_widget",  {71, 6, 164, 59}},
    {"text_subwoofer_level",        "QLabel",      "subwoofer_level_widget",  {71, 6, 164, 59}},
    {"text_subwoo_freq_tiltel",     "QLabel",      "subwoofer_widget",        {71, 46, 161, 20}},
    {"text_subwoofer_Level_tiltel", "QLabel",      "subwoofer_widget",        {71, 132, 161, 20}},
    {"line_widget",                 "QWidget",     rootName,                      {686, 320, 319, 171}},
    {"icon_line_lpf",               "QLabel",      "line_widget",             {176, 0, 142, 162}},
    {"icon_line_hpf",               "QLabel",      "line_widget",             {0, 0, 142, 162}},
    {"bkg_line",                    "QLabel",      "line_widget",             {0, 1, 319, 171}},
};
static_assert(std::size(places) == 60, "every widget of the form");

struct Look { const char* label; const char* style; int points; const char* text; bool centred; };
const Look looks[] = {
    {"text_titel",                  "color:#FFFFFF",             28, "T1229T141", false},
    {"text_hpf_main_audio",         "color:#009140",             20, "T1228",     true},
    {"text_low_main_audio",         "color:#0094DD",             20, "T1228",     true},
    {"text_hpf_freq",               "color:rgb(238, 238, 236)",  23, "160Hz",     true},
    {"text_low_freq",               "color:rgb(238, 238, 236)",  23, "OFF",       true},
    {"text_hpf_freq_slope",         "",                          0,  "HPF SLOPE", true},
    {"text_low_freq_slope",         "",                          0,  "LPF SLOPE", true},
    {"text_lpf_slope_6db",          "",                          11, "-6db",      true},
    {"text_lpf_slope_12db",         "",                          11, "-12dB",     true},
    {"text_lpf_slope_18db",         "",                          11, "-18dB",     true},
    {"text_low_slope_6db",          "",                          11, "-6db",      true},
    {"text_low_slope_12db",         "",                          11, "-12dB",     true},
    {"text_low_slope_18db",         "",                          11, "-18dB",     true},
    {"text_high_pass",              "color: rgb(255, 255, 255);", 0, "HIGH PASS", true},
    {"text_low_pass",               "color: rgb(255, 255, 255);", 0, "LOW PASS",  true},
    {"text_subwoofer",              "color:#0094DD",             0,  "T236",      true},
    {"text_subwoofer_freq",         "color:rgb(238, 238, 236)",  23, "120Hz",     true},
    {"text_subwoofer_level",        "color:rgb(238, 238, 236)",  23, "11",        true},
    {"text_subwoo_freq_tiltel",     "",                          0,  "T1230",     true},
    {"text_subwoofer_Level_tiltel", "",                          0,  "T1231",     true},
};

struct KeyLook { const char* key; const char* normal; const char* pressed; const char* checked; QSize size; };
#define ICONS ":/vexa_m5qx_audiosettingicon/"
const KeyLook keyLooks[] = {
    {"key_back",                  ICONS "icon_close_n.png",    ICONS "icon_close_p.png",  "", {74, 60}},
    {"key_high_pass",             ":/dual_icon/setup_btn_off_n.png", "",                  "", {110, 52}},
    {"key_low_pass",              ":/dual_icon/setup_btn_off_n.png", "",                  "", {110, 52}},
    {"Key_hpf_freq_minus",        ICONS "eq_icon_pre_n.png",   ICONS "eq_icon_pre_p.png", "", {75, 71}},
    {"Key_hpf_freq_plus",         ICONS "eq_icon_next_n.png",  ":/icon/eq_icon/eq_icon_next_p.png", "", {75, 71}},
    {"Key_low_freq_minus",        ICONS "eq_icon_pre_n.png",   ICONS "eq_icon_pre_p.png", "", {75, 71}},
    {"Key_low_freq_plus",         ICONS "eq_icon_next_n.png",  ":/icon/eq_icon/eq_icon_next_p.png", "", {75, 71}},
    {"Key_subwoofer_freq_minus",  ICONS "eq_icon_pre_n.png",   ICONS "eq_icon_pre_p.png", "", {75, 71}},
    {"Key_subwoofer_freq_plus",   ICONS "eq_icon_next_n.png",  ":/icon/eq_icon/eq_icon_next_p.png", "", {75, 71}},
    {"Key_subwoofer_level_minus", ICONS "eq_icon_pre_n.png",   ICONS "eq_icon_pre_p.png", "", {75, 71}},
    {"Key_subwoofer_level_plus",  ICONS "eq_icon_next_n.png",  ":/icon/eq_icon/eq_icon_next_p.png", "", {75, 71}},
    {"key_hpf_slope_6db",         ICONS "icon_circle_grey.png", "", ICONS "icon_circle_green.png", {30, 30}},
    {"key_hpf_slope_12db",        ICONS "icon_circle_grey.png", "", ICONS "icon_circle_green.png", {30, 30}},
    {"key_hpf_slope_18db",        ICONS "icon_circle_grey.png", "", ICONS "icon_circle_green.png", {30, 30}},
    {"key_low_slope_6db",         ICONS "icon_circle_grey.png", "", ICONS "icon_circle_green.png", {30, 30}},
    {"key_low_slope_12db",        ICONS "icon_circle_grey.png", "", ICONS "icon_circle_green.png", {30, 30}},
    {"key_low_slope_18db",        ICONS "icon_circle_grey.png", "", ICONS "icon_circle_green.png", {30, 30}},
};
static_assert(std::size(keyLooks) == 17, "every key");

struct PictureRow { const char* label; const char* file; };
const PictureRow pictures[] = {
    {"bkg_eq",                    ICONS "icon_eq.png"},
    {"bkg_line_1",                ICONS "icon_line.png"},
    {"bkg_line_2",                ICONS "icon_line.png"},
    {"bkg_hpf_main_audio",        ICONS "eq_presets_bg.png"},
    {"bkg_lpf_main_audiol",       ICONS "eq_presets_bg.png"},
    {"bkg_subwoofer_main_audiol", ICONS "eq_presets_bg.png"},
    {"bkg_hpf_freq",              ICONS "eq_icon_bg.png"},
    {"bkg_low_freq",              ICONS "eq_icon_bg.png"},
    {"bkg_subwoofer_freq",        ICONS "eq_icon_bg.png"},
    {"bkg_subwoofer_level",       ICONS "eq_icon_bg.png"},
    {"icon_line_hpf",             ICONS "filter_thumb_left.png"},
    {"icon_line_lpf",             ICONS "filter_thumb_right.png"},
    {"bkg_line",                  ICONS "bg1.png"},
};
// clang-format on

} // namespace

class TestCrossoverForm : public CrossoverPageFixture
{
    Q_OBJECT
private slots:
    void init() { makePage(); }
    void cleanup() { m_page.reset(); }

    void everyWidgetOfTheFormHasItsParentAndPlace_data() { formcheck::addRows(places, &Place::name); }
    void everyWidgetOfTheFormHasItsParentAndPlace();
    void backgroundsLieBelowTitlesAndIcons();
    void labelsHaveTheirLook_data() { formcheck::addRows(looks, &Look::label); }
    void labelsHaveTheirLook();
    void theFormsOwnTexts_data();
    void theFormsOwnTexts();
    void keysHaveTheirPictures_data() { formcheck::addRows(keyLooks, &KeyLook::key); }
    void keysHaveTheirPictures();
    void labelsHaveTheirPictures_data();
    void labelsHaveTheirPictures();
    void onlyTheWordSettingsOfTheTitleIsUpperCased();
    void captionsAreUpperCased();
    void keysHaveAccessibleNames();
};

void TestCrossoverForm::everyWidgetOfTheFormHasItsParentAndPlace()
{
    QFETCH(int, row);
    QCOMPARE(m_page->objectName(), QLatin1String(rootName));
    QCOMPARE(m_page->geometry(), QRect(0, 0, 1024, 510));
    QCOMPARE(m_page->windowTitle(), QStringLiteral("Form"));
    QCOMPARE(m_page->findChildren<QWidget*>().size(), int(std::size(places)));
    QCOMPARE(difference(m_page.data(), places[row]), QString());
}

void TestCrossoverForm::backgroundsLieBelowTitlesAndIcons()
{
    const char* const pairs[][2] = {
        {"bkg_hpf_main_audio", "text_hpf_main_audio"},
        {"bkg_lpf_main_audiol", "text_low_main_audio"},
        {"bkg_subwoofer_main_audiol", "text_subwoofer"},
        {"bkg_hpf_freq", "text_hpf_freq"},
        {"bkg_low_freq", "text_low_freq"},
        {"bkg_subwoofer_freq", "text_subwoofer_freq"},
        {"bkg_subwoofer_level", "text_subwoofer_level"},
        {"bkg_line", "icon_line_lpf"},
        {"bkg_line", "icon_line_hpf"},
    };
    for (const auto& pair : pairs) {
        auto* below = find<QWidget>(pair[0]);
        auto* above = find<QWidget>(pair[1]);
        const QObjectList& stack = below->parentWidget()->children(); // lowest first
        QVERIFY2(stack.indexOf(below) < stack.indexOf(above), pair[1]);
    }
}

void TestCrossoverForm::labelsHaveTheirLook()
{
    QFETCH(int, row);
    const Look& look = looks[row];
    m_page->show();
    auto* label = find<QLabel>(look.label);
    QCOMPARE(label->styleSheet(), QLatin1String(look.style));
    QCOMPARE(label->text(), QLatin1String(look.text));
    if (look.points)
        QCOMPARE(label->font().pointSize(), look.points);
    QCOMPARE(bool(label->alignment() & Qt::AlignHCenter), look.centred);
}

void TestCrossoverForm::theFormsOwnTexts_data()
{
    QTest::addColumn<QString>("text");
    // clang-format off
    QTest::newRow("text_titel")                  << "CROSSOVER SETTINGS";
    QTest::newRow("text_hpf_main_audio")         << "MAIN AUDIO";
    QTest::newRow("text_low_main_audio")         << "MAIN AUDIO";
    QTest::newRow("text_hpf_freq")               << "20Hz";
    QTest::newRow("text_low_freq")               << "20KHz";
    QTest::newRow("text_subwoofer")              << "SUBWOOFER";
    QTest::newRow("text_subwoofer_freq")         << "120Hz";
    QTest::newRow("text_subwoo_freq_tiltel")     << "SUB Filter";
    QTest::newRow("text_subwoofer_Level_tiltel") << "SUB Level";
    // clang-format on
}

void TestCrossoverForm::theFormsOwnTexts()
{
    QFETCH(QString, text);
    auto* label = find<QLabel>(QTest::currentDataTag());
    QCOMPARE(label->text(), text);
    m_page->show(); // replaces them all
    QVERIFY(label->text() != text || label->objectName() == QStringLiteral("text_subwoofer_freq"));
}

void TestCrossoverForm::keysHaveTheirPictures()
{
    QFETCH(int, row);
    const KeyLook& look = keyLooks[row];
    QPushButton* key = find(look.key);
    QCOMPARE(key->iconSize(), look.size);
    QVERIFY(key->isFlat());
    QCOMPARE(key->focusPolicy(), Qt::TabFocus);
    QCOMPARE(key->isCheckable(), *look.checked != 0);
    // The toggle pictures are made for a wider key, so each is asked for in its own size.
    const QSize own = QPixmap(QLatin1String(look.normal)).size();
    QVERIFY(shows(key->icon().pixmap(own, QIcon::Normal, QIcon::Off), QLatin1String(look.normal)));
    if (*look.pressed)
        QVERIFY(
            shows(key->icon().pixmap(look.size, QIcon::Selected, QIcon::Off), QLatin1String(look.pressed)));
    if (*look.checked)
        QVERIFY(shows(key->icon().pixmap(look.size, QIcon::Normal, QIcon::On), QLatin1String(look.checked)));
}

void TestCrossoverForm::labelsHaveTheirPictures_data()
{
    QTest::addColumn<QString>("file");
    for (const PictureRow& row : pictures)
        QTest::newRow(row.label) << row.file;
}

void TestCrossoverForm::labelsHaveTheirPictures()
{
    QFETCH(QString, file);
    const auto* label = find<QLabel>(QTest::currentDataTag());
    QVERIFY(shows(label->pixmap(Qt::ReturnByValue), file));
    QCOMPARE(label->hasScaledContents(), label->objectName().startsWith(QStringLiteral("icon_line_")));
}

void TestCrossoverForm::onlyTheWordSettingsOfTheTitleIsUpperCased()
{
    setText(1229, QStringLiteral("Crossover "));
    setText(141, QStringLiteral("settings"));
    QCOMPARE(find<QLabel>("text_titel")->text(), QStringLiteral("CROSSOVER SETTINGS")); // the form's own
    m_page->show();
    QCOMPARE(find<QLabel>("text_titel")->text(), QStringLiteral("Crossover SETTINGS"));
}

void TestCrossoverForm::captionsAreUpperCased()
{
    setText(1228, QStringLiteral("Main audio"));
    setText(236, QStringLiteral("Subwoofer"));
    setText(1230, QStringLiteral("Sub filter"));
    setText(1231, QStringLiteral("Sub level"));
    m_page->show();
    QCOMPARE(find<QLabel>("text_hpf_main_audio")->text(), QStringLiteral("MAIN AUDIO"));
    QCOMPARE(find<QLabel>("text_low_main_audio")->text(), QStringLiteral("MAIN AUDIO"));
    QCOMPARE(find<QLabel>("text_subwoofer")->text(), QStringLiteral("SUBWOOFER"));
    QCOMPARE(find<QLabel>("text_subwoo_freq_tiltel")->text(), QStringLiteral("Sub filter"));
    QCOMPARE(find<QLabel>("text_subwoofer_Level_tiltel")->text(), QStringLiteral("Sub level"));
    // Another language from the next show on.
    setText(236, QStringLiteral("Basse"));
    m_page->hide();
    m_page->show();
    QCOMPARE(find<QLabel>("text_subwoofer")->text(), QStringLiteral("BASSE"));
}

void TestCrossoverForm::keysHaveAccessibleNames()
{
    m_page->show();
    for (QPushButton* key : m_page->findChildren<QPushButton*>())
        QVERIFY2(!key->accessibleName().isEmpty(), qPrintable(key->objectName()));
    QCOMPARE(find("Key_hpf_freq_plus")->accessibleName(), QStringLiteral("HIGH PASS +"));
    QCOMPARE(find("key_low_slope_18db")->accessibleName(), QStringLiteral("LPF SLOPE -18dB"));
}

QTEST_MAIN(TestCrossoverForm)
#include "tst_m5qx_audiosetting_crossover_setting_form.moc"
