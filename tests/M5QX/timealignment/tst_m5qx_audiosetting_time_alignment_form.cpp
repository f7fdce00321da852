#include "tests/M5QX/timealignment/timealignment.h"

#include <QButtonGroup>
#include <QTextDocument>
#include <QtTest>

using namespace timealignment;
using formcheck::difference;
using formcheck::Icon;
using formcheck::Row;

namespace {

constexpr char rootName[] = "m5qx_audiosetting_time_alignment_page";
constexpr char panelName[] = "time_alignment_setting_widget";
constexpr char presetsName[] = "time_alignment_preset_widget";
constexpr char titleStyle[] = "color:#FFFFFF";
constexpr char valueStyle[] = "background-color:rgb(38,41,51);color:rgb(255,255,255)";
constexpr char frontLeft[] = "time_front_left_widget";
constexpr char frontRight[] = "time_front_right_widget";
constexpr char rearLeft[] = "time_rear_left_widget";
constexpr char rearRight[] = "time_rear_right_widget";
constexpr char subwoofer[] = "time_subwoofer_widget";

// clang-format off
const Row rows[] = {
    {"key_back",               "QPushButton", rootName,    {938,  13,  74,  60}},
    {"icon_label",             "QLabel",      rootName,    { 28,  57,   0,   0}},
    {"text_alignment_title",   "QLabel",      rootName,    { 95,  57,   0,   0}, titleStyle},
    {"icon_car",               "QLabel",      rootName,    {296, 126, 245, 249}},
    {"key_reset",              "QPushButton", rootName,    { 22, 400, 142,  70}},
    {"text_reset",             "QLabel",      rootName,    { 22, 400, 142,  70}, "color:rgb(238, 238, 236)"},
    {panelName,                "QWidget",     rootName,    {  0, 100, 820, 380}},
    {frontLeft,                "QWidget",     panelName,   {  0,   0, 260, 103}},
    {"text_front_left_data",   "QLabel",      frontLeft,   {105,  38,  80,  58}, valueStyle},
    {"Key_front_left_plus",    "QPushButton", frontLeft,   {185,  32,  74,  70}},
    {"Key_front_left_minus",   "QPushButton", frontLeft,   { 31,  32,  74,  70}},
    {"text_front_left_title",  "QLabel",      frontLeft,   { 31,   0, 228,  32}, titleStyle},
    {"bkg_front_left",         "QLabel",      frontLeft,   {  0,   0,   0, 103}},
    {frontRight,               "QWidget",     panelName,   {550,   0, 260, 103}},
    {"text_front_right_data",  "QLabel",      frontRight,  {105,  38,  80,  58}, valueStyle},
    {"Key_front_right_plus",   "QPushButton", frontRight,  {185,  32,  74,  70}},
    {"Key_front_right_minus",  "QPushButton", frontRight,  { 31,  32,  74,  70}},
    {"text_front_right_title", "QLabel",      frontRight,  { 31,   0, 228,  31}, titleStyle},
    {"bkg_front_right",        "QLabel",      frontRight,  {  0,   0,   0, 103}},
    {rearLeft,                 "QWidget",     panelName,   {  0, 142, 260, 103}},
    {"text_rear_left_data",    "QLabel",      rearLeft,    {105,  38,  80,  58}, valueStyle},
    {"Key_rear_left_plus",     "QPushButton", rearLeft,    {185,  32,  74,  70}},
    {"Key_rear_left_minus",    "QPushButton", rearLeft,    { 31,  32,  74,  70}},
    {"text_rear_left_title",   "QLabel",      rearLeft,    { 31,   0, 228,  32}, titleStyle},
    {"bkg_rear_left",          "QLabel",      rearLeft,    {  0,   0,   0, 103}},
    {rearRight,                "QWidget",     panelName,   {550, 142, 260, 103}},
    {"text_rear_right_data",   "QLabel",      rearRight,   {105,  38,  80,  58}, valueStyle},
    {"Key_rear_right_plus",    "QPushButton", rearRight,   {185,  32,  74,  70}},
    {"Key_rear_right_minus",   "QPushButton", rearRight,   { 31,  32,  74,  70}},
    {"text_rear_right_title",  "QLabel",      rearRight,   { 31,   0, 228,  32}, titleStyle},
    {"bkg_rear_right",         "QLabel",      rearRight,   {  0,   0,   0, 103}},
    {subwoofer,                "QWidget",     panelName,   {278, 268, 281, 103}},
    {"text_subwoofer_data",    "QLabel",      subwoofer,   {105,  38,  85,  58}, valueStyle},
    {"Key_subwoofer_plus",     "QPushButton", subwoofer,   {190,  32,  74,  70}},
    {"Key_subwoofer_minus",    "QPushButton", subwoofer,   { 31,  32,  74,  70}},
    {"text_subwoofer_title",   "QLabel",      subwoofer,   { 31,   0, 228,  32}, titleStyle},
    {"bkg_subwoofer",          "QLabel",      subwoofer,   {  0,   0,   0, 103}},
    {presetsName,              "QWidget",     rootName,    {847,  78, 150, 332}},
    {"text_preset2",           "QLabel",      presetsName, {  0, 153, 142,  70}},
    {"key_preset3",            "QPushButton", presetsName, {  0, 246, 142,  70}},
    {"key_preset1",            "QPushButton", presetsName, {  0,  60, 142,  70}},
    {"key_preset2",            "QPushButton", presetsName, {  0, 153, 142,  70}},
    {"text_preset3",           "QLabel",      presetsName, {  0, 243, 142,  70}},
    {"text_preset1",           "QLabel",      presetsName, {  4,  60, 142,  70}},
    {"text_preset_titel",      "QLabel",      presetsName, {  0,   0,   0,  50}},
};

constexpr char plusNormal[] = ":/vexa_m5qx_settingicon_ext/time_alignment_plus_n.png";
constexpr char plusPressed[] = ":/vexa_m5qx_settingicon_ext/time_alignment_plus_p.png";
constexpr char minusNormal[] = ":/vexa_m5qx_settingicon_ext/time_alignment_minus_n.png";
constexpr char minusPressed[] = ":/vexa_m5qx_settingicon_ext/time_alignment_minus_p.png";
constexpr char presetNormal[] = ":/vexa_m5qx_settingicon_ext/time_alignment_preset_n.png";
constexpr char presetPressed[] = ":/vexa_m5qx_settingicon_ext/time_alignment_preset_p.png";
const Icon icons[] = {
    {"key_back",              ":/vexa_m5qx_audiosettingicon/icon_close_n.png", ":/vexa_m5qx_audiosettingicon/icon_close_p.png", {74, 60}},
    {"key_reset",             ":/vexa_m5qx_settingicon_ext/time_alignment_reset_n.png", presetPressed, {142, 70}},
    {"Key_front_left_plus",   plusNormal,   plusPressed,   {74, 70}},
    {"Key_front_left_minus",  minusNormal,  minusPressed,  {74, 70}},
    {"Key_front_right_plus",  plusNormal,   plusPressed,   {74, 70}},
    {"Key_front_right_minus", minusNormal,  minusPressed,  {74, 70}},
    {"Key_rear_left_plus",    plusNormal,   plusPressed,   {74, 70}},
    {"Key_rear_left_minus",   minusNormal,  minusPressed,  {74, 70}},
    {"Key_rear_right_plus",   plusNormal,   plusPressed,   {74, 70}},
    {"Key_rear_right_minus",  minusNormal,  minusPressed,  {74, 70}},
    {"Key_subwoofer_plus",    plusNormal,   plusPressed,   {74, 70}},
    {"Key_subwoofer_minus",   minusNormal,  minusPressed,  {74, 70}},
    {"key_preset1",           presetNormal, presetPressed, {142, 70}},
    {"key_preset2",           presetNormal, presetPressed, {142, 70}},
    {"key_preset3",           presetNormal, presetPressed, {142, 70}},
};
// clang-format on

} // namespace

/// What the form of the time alignment page is.
class TestTimeAlignmentForm : public TimeAlignmentFixture
{
    Q_OBJECT
private slots:
    void init() { makePage(); }
    void cleanup() { m_page.reset(); }

    void slotsAreDeclaredInOrder();
    void theFormHasTheTablesWidgets_data() { formcheck::addRows(rows, &Row::name); }
    void theFormHasTheTablesWidgets();
    void siblingsAreMadeInTheTablesOrder_data();
    void siblingsAreMadeInTheTablesOrder();
    void theFormsOwnTexts_data();
    void theFormsOwnTexts();
    void keysHoldTheTablesPictures_data() { formcheck::addRows(icons, &Icon::key); }
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
    QTest::newRow("page") << rootName << QStringList{"key_reset", "text_reset"};
    QTest::newRow("channel panel") << panelName << QStringList();
    for (const char* box : {frontLeft, frontRight, rearLeft, rearRight, subwoofer})
        QTest::newRow(box) << box << QStringList();
    QTest::newRow("preset panel") << presetsName << QStringList{"text_preset2"};
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
    if (parent != QLatin1String(rootName))
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
            QVERIFY(formcheck::shows(preset->icon(), QSize(142, 70), mode, QIcon::On, presetPressed));
        QVERIFY(formcheck::shows(preset->icon(), QSize(142, 70), QIcon::Active, QIcon::Off, presetNormal));
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
    const auto* panel = m_page->findChild<QWidget*>(QLatin1String(presetsName));
    QCOMPARE(panel->children().last(), label("text_preset2"));
}

void TestTimeAlignmentForm::everyKeyIsReachedAtItsMiddle()
{
    for (QPushButton* each : m_page->findChildren<QPushButton*>()) {
        if (each->isVisible())
            QCOMPARE(m_page->childAt(middle(each)), each);
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
