#include "tests/M5QX/levels/audiolevels.h"

#include <QFrame>
#include <QtTest>

using namespace audiolevels;
using formcheck::difference;
using formcheck::Icon;
using formcheck::Row;

namespace {

constexpr char rootName[] = "m5qx_audiosetting_audio_levels_page";
constexpr char captionStyle[] = "color:rgb(238, 238, 236)";
constexpr char greyStyle[] = "color:rgb(96,96,96)";

// clang-format off
const Row rows[] = {
    {"key_back",           "QPushButton", rootName,     {938,  23,  74,  60}},
    {"icon_eq",            "QLabel",      rootName,     { 28,  57,   0,   0}},
    {"text_titel",         "QLabel",      rootName,     { 95,  57,   0,   0}, "color:#FFFFFF"},
    {"icon_car",           "QLabel",      rootName,     {  0,   0,   0, 386}},
    {"widget",             "QWidget",     rootName,     {121, 169, 253, 253}},
    {"text_up_level",      "QLabel",      rootName,     {  0,   0,   0,  31}, captionStyle},
    {"text_left_level",    "QLabel",      rootName,     {  0,   0,   0,  31}, captionStyle},
    {"text_right_level",   "QLabel",      rootName,     {  0,   0,   0,  31}, captionStyle},
    {"bkg_balance_fader",  "QLabel",      "widget", {  0,   0, 253, 253}},
    {"text_down_label",    "QLabel",      rootName,     {  0,   0,   0,  31}, captionStyle},
    {"key_reset_level",    "QPushButton", rootName,     { 22, 431, 149,  70}},
    {"text_reset",         "QLabel",      rootName,     { 22, 431, 149,  70}},
    {"key_left_level",     "QPushButton", rootName,     { 42, 261,  74,  70}},
    {"key_down_level",     "QPushButton", rootName,     {211, 431,  74,  70}},
    {"key_right_btn",      "QPushButton", rootName,     {379, 261,  74,  70}},
    {"key_up_level",       "QPushButton", rootName,     {211,  89,  74,  70}},
    {"txt_balance",        "QLabel",      rootName,     { 49, 108, 112,  32}},
    {"txt_fader",          "QLabel",      rootName,     {334, 108, 112,  32}},
    {"label_loudness",     "QLabel",      rootName,     {525, 164, 355,  64}},
    {"line",               "QFrame",      rootName,     {525, 228, 466,   4}, greyStyle},
    {"label_subwoofer",    "QLabel",      rootName,     {525, 232, 355,  64}},
    {"line_2",             "QFrame",      rootName,     {525, 293, 466,   4}, greyStyle},
    {"label_sub_level",    "QLabel",      rootName,     {525, 298, 355,  64}},
    {"line_3",             "QFrame",      rootName,     {525, 358, 466,   4}, greyStyle},
    {"key_loudness",       "QPushButton", rootName,     {920, 180,  60,  30}},
    {"key_subwoofer",      "QPushButton", rootName,     {920, 250,  60,  30}},
    {"key_sub_level_down", "QPushButton", rootName,     {525, 380,  63,  59}},
    {"horizontalSlider",   "QSlider",     rootName,     {588, 380, 342,  59}},
    {"key_sub_level_up",   "QPushButton", rootName,     {930, 380,  63,  59}},
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

} // namespace

/// What the form of the audio levels page is.
class TestAudioLevelsForm : public AudioLevelsFixture
{
    Q_OBJECT
private slots:
    void init() { makePage(); }
    void cleanup() { m_page.reset(); }

    void signalsAndSlotsAreDeclaredInOrder();
    void theFormHasTheTablesWidgets_data() { formcheck::addRows(rows, &Row::name); }
    void theFormHasTheTablesWidgets();
    void siblingsAreMadeInTheTablesOrder();
    void keysHoldTheTablesPictures_data() { formcheck::addRows(icons, &Icon::key); }
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
};

void TestAudioLevelsForm::signalsAndSlotsAreDeclaredInOrder()
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

void TestAudioLevelsForm::theFormHasTheTablesWidgets()
{
    QFETCH(int, row);
    QCOMPARE(difference(m_page.data(), rows[row]), QString());
    QCOMPARE(m_page->size(), QSize(1024, 510));
}

void TestAudioLevelsForm::siblingsAreMadeInTheTablesOrder()
{
    QStringList expected;
    for (const Row& row : rows) {
        if (row.parent == QLatin1String(rootName))
            expected += QLatin1String(row.name);
    }
    const QStringList made = formcheck::childNames(m_page.data());
    QCOMPARE(made.mid(0, expected.size()), expected);
    QCOMPARE(made.size(), expected.size() + 1); // the slider, which the page makes for itself
}

void TestAudioLevelsForm::keysHoldTheTablesPictures()
{
    QFETCH(int, row);
    QCOMPARE(difference(m_page.data(), icons[row]), QString());
    QVERIFY(!key(icons[row].key)->isCheckable());
}

void TestAudioLevelsForm::switchesShowTheirStateByPicture()
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

void TestAudioLevelsForm::labelsShowTheTablesPictures()
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

void TestAudioLevelsForm::theBackKeyAndThePlaceholdersAreHidden()
{
    QVERIFY(key("key_back")->isHidden());
    QVERIFY(m_page->findChild<QSlider*>(QStringLiteral("horizontalSlider"))->isHidden());
    QVERIFY(label("icon_selector")->isHidden());
    QVERIFY(slider()->isVisible());
    QVERIFY(pad()->isVisible());
}

void TestAudioLevelsForm::labelsOverKeysLetTouchesThrough()
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

void TestAudioLevelsForm::padLiesOnTheTouchAreaInTheHost()
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

void TestAudioLevelsForm::theSelectorKeepsItsPlaceInTheTouchArea()
{
    QCOMPARE(label("icon_selector")->geometry(), QRect(111, 111, 30, 30));
    QCOMPARE(label("icon_selector")->parentWidget()->metaObject()->className(), "k41_audio_root_bf");
}

void TestAudioLevelsForm::textsAreTheTranslatorsUpperCased()
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

void TestAudioLevelsForm::everyVisibleKeyHasAnAccessibleName()
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

void TestAudioLevelsForm::theKeyboardWalksInReadingOrder()
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

QTEST_MAIN(TestAudioLevelsForm)
#include "tst_m5qx_audiosetting_audio_levels_form.moc"
