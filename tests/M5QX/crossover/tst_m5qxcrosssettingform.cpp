#include "M5QX/curvewidget.h"
#include "tests/M5QX/crossover/crosssetting.h"

using namespace crosssetting;
using formcheck::difference;
using formcheck::Place;
using formcheck::shows;

namespace {

const QString extIcons = QStringLiteral(":/vexa_m5qx_settingicon_ext/");
const QString icons = QStringLiteral(":/vexa_m5qx_audiosettingicon/");

// clang-format off
const Place places[] = {
    {"widget_filter",         "QWidget",     "M5QXCrossSettingWidget", {22, 385, 316, 102}},
    {"key_filter_down",       "QPushButton", "widget_filter",          {0, 32, 74, 70}},
    {"key_filter_up",         "QPushButton", "widget_filter",          {242, 32, 74, 70}},
    {"txt_filter",            "QLabel",      "widget_filter",          {74, 42, 168, 50}},
    {"label_filter",          "QLabel",      "widget_filter",          {0, 10, 316, 32}},
    {"widget_slope",          "QWidget",     "M5QXCrossSettingWidget", {354, 385, 316, 102}},
    {"key_slope_down",        "QPushButton", "widget_slope",           {0, 32, 74, 70}},
    {"key_slope_up",          "QPushButton", "widget_slope",           {242, 32, 74, 70}},
    {"txt_slope",             "QLabel",      "widget_slope",           {74, 42, 168, 50}},
    {"label_slope",           "QLabel",      "widget_slope",           {0, 10, 316, 32}},
    {"widget_level",          "QWidget",     "M5QXCrossSettingWidget", {686, 385, 316, 102}},
    {"key_level_down",        "QPushButton", "widget_level",           {0, 32, 74, 70}},
    {"key_level_up",          "QPushButton", "widget_level",           {242, 32, 74, 70}},
    {"txt_level",             "QLabel",      "widget_level",           {74, 38, 168, 58}},
    {"label_level",           "QLabel",      "widget_level",           {0, 10, 316, 32}},
    {"widget_adjust",         "QWidget",     "M5QXCrossSettingWidget", {48, 94, 729, 298}},
    {"bg",                    "QLabel",      "widget_adjust",          {0, 0, 729, 298}},
    {"label_curve_front_hpf", "QLabel",      "widget_adjust",          {26, 0, 87, 35}},
    {"label_curve_rear_hpf",  "QLabel",      "widget_adjust",          {26, 0, 87, 35}},
    {"label_curve_subwoofer", "QLabel",      "widget_adjust",          {26, 0, 87, 35}},
    {"widget_button",         "QWidget",     "M5QXCrossSettingWidget", {820, 94, 173, 225}},
    {"key_front",             "QPushButton", "widget_button",          {0, 0, 173, 70}},
    {"key_rear",              "QPushButton", "widget_button",          {0, 76, 173, 70}},
    {"key_subwoofer",         "QPushButton", "widget_button",          {0, 153, 173, 70}},
    {"label_front",           "QLabel",      "widget_button",          {0, 0, 173, 70}},
    {"label_rear",            "QLabel",      "widget_button",          {0, 76, 173, 70}},
    {"label_subwoofer",       "QLabel",      "widget_button",          {0, 153, 173, 70}},
    {"key_back",              "QPushButton", "M5QXCrossSettingWidget", {28, 22, 52, 52}},
    {"key_exit",              "QPushButton", "M5QXCrossSettingWidget", {938, 13, 74, 60}},
    {"label_title",           "QLabel",      "M5QXCrossSettingWidget", {95, 28, 400, 41}},
    {"phase_widget",          "QWidget",     "M5QXCrossSettingWidget", {804, 322, 211, 51}},
    {"Key_troggle_phase",     "QPushButton", "phase_widget",           {31, 0, 136, 51}},
    {"Txt_0",                 "QLabel",      "phase_widget",           {0, 0, 31, 51}},
    {"Txt_180",               "QLabel",      "phase_widget",           {167, 0, 43, 51}},
};
static_assert(std::size(places) == 34, "every widget of the form");
// clang-format on
} // namespace

class TestCrossSettingForm : public CrossSettingFixture
{
    Q_OBJECT
private slots:
    void init() { makePage(); }
    void cleanup() { m_page.reset(); }

    void everyWidgetOfTheFormHasItsParentAndPlace_data() { formcheck::addRows(places, &Place::name); }
    void everyWidgetOfTheFormHasItsParentAndPlace();
    void widgetsAreCreatedInOrder();
    void labelsHaveTheirLook_data();
    void labelsHaveTheirLook();
    void keysHaveTheirPictures_data();
    void keysHaveTheirPictures();
    void picturesOfTheGridAreThereAndThoseOfTheCurvesHidden();
    void captionsComeFromTheTranslator();
    void keysHaveAccessibleNames();
    void everyVisibleKeyIsReachedByKeyboardInReadingOrder();
    void theOnlyWarningIsOfAColourWithoutAlpha();
};

void TestCrossSettingForm::everyWidgetOfTheFormHasItsParentAndPlace()
{
    QFETCH(int, row);
    QCOMPARE(m_page->objectName(), QStringLiteral("M5QXCrossSettingWidget"));
    QCOMPARE(m_page->geometry(), QRect(0, 0, 1024, 510));
    QCOMPARE(difference(m_page.data(), places[row]), QString());
}

void TestCrossSettingForm::widgetsAreCreatedInOrder()
{
    QStringList expected;
    for (const Place& place : places)
        expected << QLatin1String(place.name);
    QStringList names;
    for (QWidget* widget : m_page->findChildren<QWidget*>()) {
        if (!qobject_cast<CurveWidget*>(widget))
            names << widget->objectName();
    }
    // findChildren() lists a parent before its children and siblings in the order of their making.
    QCOMPARE(names, expected);
}

void TestCrossSettingForm::labelsHaveTheirLook_data()
{
    QTest::addColumn<QString>("style");
    QTest::addColumn<int>("points");
    QTest::addColumn<QString>("text");
    const QString none;
    const QString box(QStringLiteral("background-color:rgb(39,41,51);color:rgb(255,255,255)"));
    // clang-format off
    QTest::newRow("txt_filter")      << QStringLiteral("background-color:rgba(38,41,51);color:rgba(255,255,255)") << 18 << none;
    QTest::newRow("txt_slope")       << box << 18 << none;
    QTest::newRow("txt_level")       << box << 18 << none;
    QTest::newRow("label_filter")    << none << 0 << none;
    QTest::newRow("label_slope")     << none << 0 << QStringLiteral("SLOPE");
    QTest::newRow("label_level")     << none << 0 << QStringLiteral("LEVEL");
    QTest::newRow("label_front")     << none << 0 << QStringLiteral("T266");
    QTest::newRow("label_rear")      << none << 0 << QStringLiteral("T267");
    QTest::newRow("label_subwoofer") << none << 0 << QStringLiteral("T236");
    QTest::newRow("label_title")     << none << 20 << QStringLiteral("T1229T1247");
    QTest::newRow("Txt_0")           << none << 13 << QStringLiteral("0\u00b0");
    QTest::newRow("Txt_180")         << none << 13 << QStringLiteral("180\u00b0");
    // clang-format on
}

void TestCrossSettingForm::labelsHaveTheirLook()
{
    QFETCH(int, points);
    QFETCH(QString, text);
    auto* label = find<QLabel>(QTest::currentDataTag());
    QTEST(label->styleSheet(), "style");
    QCOMPARE(label->alignment(), Qt::AlignCenter);
    QCOMPARE(label->text(), text);
    QVERIFY(label->testAttribute(Qt::WA_TransparentForMouseEvents));
    if (points)
        QCOMPARE(label->font().pointSize(), points);
    if (label->parentWidget()->objectName().startsWith(QStringLiteral("widget_")) &&
        label->objectName().startsWith(QStringLiteral("label_")) &&
        label->parentWidget()->objectName() != QStringLiteral("widget_button"))
        QCOMPARE(label->palette().color(QPalette::WindowText), QColor(Qt::white));
}

void TestCrossSettingForm::keysHaveTheirPictures_data()
{
    QTest::addColumn<QString>("normal");
    QTest::addColumn<QString>("pressed");
    QTest::addColumn<QString>("checked");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<bool>("checkable");
    const QString none;
    for (const char* key : {"key_filter_down", "key_slope_down", "key_level_down"})
        QTest::newRow(key) << extIcons + "setup_key_down_n.png" << extIcons + "setup_key_down_p.png" << none
                           << QSize(74, 70) << false;
    for (const char* key : {"key_filter_up", "key_slope_up", "key_level_up"})
        QTest::newRow(key) << extIcons + "setup_key_up_n.png" << extIcons + "setup_key_up_p.png" << none
                           << QSize(74, 70) << false;
    for (const char* key : {"key_front", "key_rear", "key_subwoofer"})
        QTest::newRow(key) << extIcons + "setup_key_btn2_n.png" << extIcons + "setup_key_btn2_p.png"
                           << extIcons + "setup_key_btn2_p.png" << QSize(173, 70) << true;
    QTest::newRow("key_back") << icons + "icon_eq.png" << none << none << QSize(52, 52) << false;
    QTest::newRow("key_exit") << icons + "icon_close_n.png" << icons + "icon_close_p.png" << none
                              << QSize(74, 60) << false;
    QTest::newRow("Key_troggle_phase")
        << ":/dual_icon/setup_btn_off_n.png" << none << none << QSize(136, 51) << true;
}

void TestCrossSettingForm::keysHaveTheirPictures()
{
    QFETCH(QString, normal);
    QFETCH(QString, pressed);
    QFETCH(QString, checked);
    QFETCH(QSize, size);
    QPushButton* key = find(QTest::currentDataTag());
    QCOMPARE(key->iconSize(), size);
    QTEST(key->isCheckable(), "checkable");
    QVERIFY(key->isFlat());
    QCOMPARE(key->focusPolicy(),
             key->objectName() == QStringLiteral("key_back") ? Qt::NoFocus : Qt::TabFocus);
    QVERIFY(shows(key->icon(), size, QIcon::Normal, QIcon::Off, normal));
    if (!pressed.isEmpty())
        QVERIFY(shows(key->icon(), size, QIcon::Selected, QIcon::Off, pressed));
    if (!checked.isEmpty())
        QVERIFY(shows(key->icon(), size, QIcon::Normal, QIcon::On, checked));
}

void TestCrossSettingForm::picturesOfTheGridAreThereAndThoseOfTheCurvesHidden()
{
    const auto picture = [&](const char* name) { return label(name)->pixmap(Qt::ReturnByValue); };
    QVERIFY(shows(picture("bg"), extIcons + "bg_cross.png"));
    QVERIFY(shows(picture("label_curve_front_hpf"), extIcons + "curve_orange_2.png"));
    QVERIFY(shows(picture("label_curve_rear_hpf"), extIcons + "curve_yellow_1.png"));
    QVERIFY(shows(picture("label_curve_subwoofer"), extIcons + "curve_gray_3.png"));
    for (const char* curve : {"label_curve_front_hpf", "label_curve_rear_hpf", "label_curve_subwoofer"})
        QVERIFY(find<QLabel>(curve)->isHidden());
    QVERIFY(!find<QLabel>("bg")->isHidden());
    QVERIFY(find("key_exit")->isHidden());
}

void TestCrossSettingForm::captionsComeFromTheTranslator()
{
    setText(266, QStringLiteral("front"));
    setText(267, QStringLiteral("rear"));
    setText(236, QStringLiteral("subwoofer"));
    setText(1229, QStringLiteral("Crossover "));
    setText(1247, QStringLiteral("filter"));
    m_page.reset(new M5QXCrossSettingWidget);
    QCOMPARE(find<QLabel>("label_front")->text(), QStringLiteral("FRONT"));
    QCOMPARE(find<QLabel>("label_rear")->text(), QStringLiteral("REAR"));
    QCOMPARE(find<QLabel>("label_subwoofer")->text(), QStringLiteral("SUBWOOFER"));
    QCOMPARE(find<QLabel>("label_title")->text(), QStringLiteral("CROSSOVER FILTER"));
}

void TestCrossSettingForm::keysHaveAccessibleNames()
{
    m_page->resume();
    QCOMPARE(find("key_filter_up")->accessibleName(), QStringLiteral("T1243 +"));
    QCOMPARE(find("key_level_down")->accessibleName(), QStringLiteral("LEVEL -"));
    QCOMPARE(find("key_rear")->accessibleName(), QStringLiteral("T267"));
    for (QPushButton* key : m_page->findChildren<QPushButton*>())
        QVERIFY2(!key->accessibleName().isEmpty(), qPrintable(key->objectName()));
    click("key_subwoofer");
    QCOMPARE(find("key_filter_up")->accessibleName(), QStringLiteral("T1244 +"));
}

void TestCrossSettingForm::everyVisibleKeyIsReachedByKeyboardInReadingOrder()
{
    setStored(QStringLiteral("settings_cross_filter"), 2);
    m_page->resume();
    QStringList order;
    for (QWidget* w = m_page->nextInFocusChain(); w != m_page.data(); w = w->nextInFocusChain()) {
        if ((w->focusPolicy() & Qt::TabFocus) && w->isVisibleTo(m_page.data()))
            order << w->objectName();
    }
    QCOMPARE(order, QStringList({"key_front", "key_rear", "key_subwoofer", "Key_troggle_phase",
                                 "key_filter_down", "key_filter_up", "key_slope_down", "key_slope_up",
                                 "key_level_down", "key_level_up"}));
}

void TestCrossSettingForm::theOnlyWarningIsOfAColourWithoutAlpha()
{
    m_page->resume();
    m_page->grab();
    // The frequency's style sheet says rgba() with three numbers; Qt takes it as opaque and says so.
    const QStringList warnings = takeLog().filter(QRegularExpression(QStringLiteral("^[WC] ")));
    for (const QString& line : warnings)
        QVERIFY2(line.contains(QStringLiteral("alpha value but no alpha given")), qPrintable(line));
    QVERIFY(!warnings.isEmpty());
    QCOMPARE(m_page->grab().toImage().pixel(22 + 74 + 5, 385 + 42 + 5), qRgb(38, 41, 51));
}

QTEST_MAIN(TestCrossSettingForm)
#include "tst_m5qxcrosssettingform.moc"
