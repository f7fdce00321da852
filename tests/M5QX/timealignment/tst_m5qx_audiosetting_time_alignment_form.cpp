#include "tests/M5QX/timealignment/timealignment.h"

#include <QButtonGroup>
#include <QtTest>

using namespace timealignment;
using formcheck::difference;
using formcheck::Icon;
using formcheck::Row;

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
// clang-format on

} // namespace

/// What the form of the time alignment page is.
class TestTimeAlignmentForm : public TimeAlignmentFixture
{
    Q_OBJECT
private slots:
    void init()
    {
        reset();
        rebuild();
    }
    void cleanup() { m_page.reset(); }

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
};

void TestTimeAlignmentForm::slotsAreDeclaredInOrder()
{
    const m5qx_eq_time_alignment_page page(nullptr);
    QCOMPARE(formcheck::ownMethods(page.metaObject(), QMetaMethod::Signal), QStringList());
    QCOMPARE(formcheck::ownMethods(page.metaObject(), QMetaMethod::Slot),
             (QStringList{"onAlmButGroupClicked(int)", "onPreButGroupClicked(int)", "onResetClicked()",
                          "onBackClicked()"}));
}

void TestTimeAlignmentForm::theFormHasTheTablesWidgets_data()
{
    QTest::addColumn<int>("row");
    for (int i = 0; i < int(std::size(rows)); ++i)
        QTest::newRow(rows[i].name) << i;
}

void TestTimeAlignmentForm::theFormHasTheTablesWidgets()
{
    QFETCH(int, row);
    QCOMPARE(difference(m_page.data(), rows[row]), QString());
    QCOMPARE(m_page->size(), QSize(1024, 510));
}

void TestTimeAlignmentForm::siblingsAreMadeInTheTablesOrder_data()
{
    QTest::addColumn<QString>("parent");
    QTest::addColumn<QStringList>("raised"); // to the end of the stack, after they were made
    QTest::newRow("page") << Page << QStringList{"key_reset", "text_reset"};
    QTest::newRow("channel panel") << Panel << QStringList();
    for (const char* box : {FL, FR, RL, RR, SW})
        QTest::newRow(box) << box << QStringList();
    QTest::newRow("preset panel") << Presets << QStringList{"text_preset2"};
}

void TestTimeAlignmentForm::siblingsAreMadeInTheTablesOrder()
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

void TestTimeAlignmentForm::theFormsOwnTexts_data()
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

void TestTimeAlignmentForm::theFormsOwnTexts()
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

void TestTimeAlignmentForm::keysHoldTheTablesPictures_data()
{
    QTest::addColumn<int>("row");
    for (int i = 0; i < int(std::size(icons)); ++i)
        QTest::newRow(icons[i].key) << i;
}

void TestTimeAlignmentForm::keysHoldTheTablesPictures()
{
    QFETCH(int, row);
    QCOMPARE(difference(m_page.data(), icons[row]), QString());
}

void TestTimeAlignmentForm::presetKeysShowTheirStateByPicture()
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

void TestTimeAlignmentForm::theThirdPictureOfPreset1NeverShows()
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

void TestTimeAlignmentForm::labelsShowTheirPictures()
{
    QCOMPARE(label("icon_car")->pixmap(Qt::ReturnByValue).size(), QSize(245, 249));
    QCOMPARE(label("icon_car")->pixmap(Qt::ReturnByValue).toImage(),
             QPixmap(":/vexa_m5qx_settingicon_ext/time_alignment_car.png").toImage());
    QCOMPARE(label("icon_label")->pixmap(Qt::ReturnByValue).toImage(),
             QPixmap(":/vexa_m5qx_audiosettingicon/icon_eq.png").toImage());
    QVERIFY(key("key_back")->isHidden());
}

void TestTimeAlignmentForm::exactlyTheseLabelsLetTouchesThrough()
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

void TestTimeAlignmentForm::keyGroupsHoldTheTablesIds()
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

void TestTimeAlignmentForm::resetAndPreset2AreRaised()
{
    QCOMPARE(m_page->childAt(93, 435), key("key_reset"));
    const auto* panel = m_page->findChild<QWidget*>(QLatin1String(Presets));
    QCOMPARE(panel->children().last(), label("text_preset2"));
}

void TestTimeAlignmentForm::everyKeyIsReachedAtItsMiddle()
{
    for (QPushButton* each : m_page->findChildren<QPushButton*>()) {
        if (each->isVisible())
            QCOMPARE(m_page->childAt(touch::middle(m_page.data(), each)), each);
    }
}

void TestTimeAlignmentForm::textsComeFromTheTranslator()
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

void TestTimeAlignmentForm::presetCaptionsAreReplacedAtEachShow()
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

void TestTimeAlignmentForm::everyVisibleKeyHasAnAccessibleName()
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

void TestTimeAlignmentForm::theKeyboardWalksInReadingOrder()
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

QTEST_MAIN(TestTimeAlignmentForm)
#include "tst_m5qx_audiosetting_time_alignment_form.moc"
