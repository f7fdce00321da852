#include "M5QX/m5qx_audiosetting_settings_page.h"
#include "formcheck.h"
#include "platform_double/platform_double.h"
#include "platform_double/touch.h"

#include <QLabel>
#include <QPainter>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QtTest>

#include <climits>

using namespace audiosetting;
using namespace platform_double;

namespace {

constexpr int BandCount = 13;
constexpr int BarTop = 141;
constexpr int BarHeight = 364;
const int barLeft[BandCount] = {109, 175, 241, 306, 372, 438, 504, 570, 636, 702, 767, 833, 899};
// Way of a handle below the bar's top for 10, 9, ... -10.
const int handleTravel[21] = {0,   15,  30,  46,  61,  77,  92,  108, 123, 139, 154,
                              169, 185, 200, 216, 231, 247, 262, 278, 293, 309};
// First pixel below the bar's top at which a finger means 10, 9, ... -10.
const int firstPixel[21] = {0,   18,  35,  52,  70,  87,  104, 122, 139, 156, 174,
                            191, 208, 226, 243, 260, 278, 295, 312, 330, 347};

QPoint onBar(int band, int value)
{
    return {barLeft[band] + 30, BarTop + firstPixel[10 - value]};
}

/// Counts events of one kind that reach the widgets that it watches.
class EventCounter : public QObject
{
public:
    explicit EventCounter(QEvent::Type type)
        : m_type(type)
    {
    }
    int count = 0;

protected:
    bool eventFilter(QObject*, QEvent* event) override
    {
        count += event->type() == m_type;
        return false;
    }

private:
    QEvent::Type m_type;
};

} // namespace

class TestEqSettingsPage : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    void signalsAndSlotsAreDeclaredInOrder();
    void bandPanelsStandWhereTheTableSays_data();
    void bandPanelsStandWhereTheTableSays();
    void keysShowTheirPictures_data();
    void keysShowTheirPictures();
    void constructionReadsBothCurvesThenTheType();
    void bubbleIsHiddenAndLetsTouchesThroughAtConstruction();
    void curvesOfTheTypeTable_data();
    void curvesOfTheTypeTable();
    void type8DrawsAFlatCurve();
    void handlesStandAtTheValuesHeight();
    void storedValuesOutOfRangeAreDrawnAtTheNearestEnd();
    void storedCurvesAreDrawnForTheirTypes();
    void resumeDrawsTheServicesUserCurve();
    void cachesAreLoadedAtConstructionOnly();

    void aTouchAtTheTopOfABarGivesPlus10AndAtTheBottomMinus10();
    void fingerHeightGivesTheValue();
    void aPressSetsTheTypeOnceThenBeeps_data();
    void aPressSetsTheTypeOnceThenBeeps();
    void withAPresetActiveATouchSwitchesToTheLastCustomTypeBeforeEditing();
    void aReleaseSendsExactlyOneCallWithTheValueBeforeTheBand_data();
    void aReleaseSendsExactlyOneCallWithTheValueBeforeTheBand();
    void nothingIsSentDuringADrag();
    void draggingAcrossBarsKeepsEditingTheBandFirstTouched();
    void aDragOffTheBarKeepsTheLastValue();
    void aPressOutsideEveryBarDoesNothing_data();
    void aPressOutsideEveryBarDoesNothing();
    void aPressOutsideEveryBarEndsATouchWhoseReleaseWasLost();
    void aTouchOnWhatLiesInABarIsATouchOnTheBar_data();
    void aTouchOnWhatLiesInABarIsATouchOnTheBar();
    void theSecondOfTwoQuickTouchesCounts();
    void otherButtonsAreNoTouch();
    void hidingDuringATouchForgetsIt();

    void bubbleFollowsTheFinger_data();
    void bubbleFollowsTheFinger();
    void bubbleGoesAtRelease();
    void onlyTheTouchedHandleMovesAndIsRepainted();

    void getCurrEqTypeYieldsOnlyUserTypes_data();
    void getCurrEqTypeYieldsOnlyUserTypes();
    void typeSignalIsRememberedOnlyForUserTypesAndOnlyWhileVisible();
    void theServicesUserTypeIsRememberedWhenThePageIsShown();
    void typeSignalRefreshesNameAndCurve();
    void typeKeysSwitchBetweenTheUserTypes_data();
    void typeKeysSwitchBetweenTheUserTypes();
    void titleAndTypeNameFollowTheLanguageAtEachShow();
    void backKeyPostsOneBackRequestAndNothingElse();
    void pageNeverEmitsEQTypeChanged();

    void getCustomEqReadsTheStoreOfThePagesType();
    void setCustomEqPassesItsArgumentsUnchanged();
    void argumentsBeyondTheBandsChangeNothing();
    void everySlotWritesOneDiagnosticLine_data();
    void everySlotWritesOneDiagnosticLine();
    void keysAreNamedAndReachedByKeyboardOnly();
    void randomTouchesKeepEveryInvariant();

private:
    void build();
    QLabel* handle(int band)
    {
        return formcheck::child<QLabel>(m_page, QStringLiteral("icon_band_num_%1").arg(band + 1));
    }
    QWidget* bubble() { return formcheck::child(m_page, QStringLiteral("eq_value_widget")); }
    QPushButton* key(const char* name) { return formcheck::child<QPushButton>(m_page, QLatin1String(name)); }
    QLabel* label(const char* name) { return formcheck::child<QLabel>(m_page, QLatin1String(name)); }
    /// Values as the handles show them.
    QVector<int> drawn();

    QScopedPointer<QWidget> m_host;
    m5qx_EQ_settings_page* m_page = nullptr;
};

void TestEqSettingsPage::init()
{
    reset();
    audio().eqType = 6;
    build();
}

void TestEqSettingsPage::cleanup()
{
    m_host.reset();
}

void TestEqSettingsPage::build()
{
    m_host.reset(new QWidget);
    m_host->resize(1024, 600);
    m_page = new m5qx_EQ_settings_page(m_host.data());
    m_host->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_host.data()));
    take(All);
    takeLog();
}

QVector<int> TestEqSettingsPage::drawn()
{
    QVector<int> values;
    for (int band = 0; band < BandCount; ++band) {
        const QPoint at = handle(band)->mapTo(m_page, QPoint());
        if (at.x() != barLeft[band])
            return {};
        for (int i = 0; i < 21; ++i) {
            if (at.y() == BarTop + handleTravel[i])
                values.append(10 - i);
        }
    }
    return values;
}

void TestEqSettingsPage::signalsAndSlotsAreDeclaredInOrder()
{
    QCOMPARE(formcheck::ownMethods(m_page->metaObject()),
             QStringList({"EQTypeChanged()", "onBackClicked()", "onEQTypeChanged(int)",
                          "on_Key_eqtype_minus_clicked()", "on_Key_eqtype_plus_clicked()"}));
    QCOMPARE(m_page->metaObject()->className(), "audiosetting::m5qx_EQ_settings_page");
}

void TestEqSettingsPage::bandPanelsStandWhereTheTableSays_data()
{
    QTest::addColumn<int>("number");
    QTest::addColumn<QRect>("panel");
    QTest::addColumn<QSize>("background");
    QTest::addColumn<QString>("caption");
    const char* const captions[BandCount] = {"32 Hz", "63 Hz", "125 Hz", "250 Hz", "500 Hz", "1 kHz", "2 kHz",
                                             "4 kHz", "8 kHz", "10 kHz", "12 kHz", "14 kHz", "16 kHz"};
    for (int i = 0; i < BandCount; ++i) {
        QTest::newRow(captions[i]) << i + 1 << QRect(barLeft[i], 141, i == 0 ? 60 : 62, 364)
                                   << QSize(i == 0 ? 60 : 61, 343) << QString::fromLatin1(captions[i]);
    }
}

void TestEqSettingsPage::bandPanelsStandWhereTheTableSays()
{
    QFETCH(int, number);
    QFETCH(QRect, panel);
    QFETCH(QSize, background);
    QFETCH(QString, caption);
    QCOMPARE(m_page->size(), QSize(1024, 510));
    auto* widget = formcheck::child(m_page, QStringLiteral("eq_band_widget%1").arg(number));
    QCOMPARE(widget->geometry(), panel);
    QCOMPARE(widget->parentWidget(), m_page);
    auto* bar = formcheck::child<QLabel>(widget, QStringLiteral("bkg_band_num_%1").arg(number));
    QCOMPARE(bar->geometry(), QRect(QPoint(0, 21), background));
    QCOMPARE(bar->pixmap(Qt::ReturnByValue).size(), background);
    auto* icon = formcheck::child<QLabel>(widget, QStringLiteral("icon_band_num_%1").arg(number));
    QCOMPARE(icon->size(), QSize(54, 35));
    QCOMPARE(icon->parentWidget(), widget);
    QCOMPARE(icon->pixmap(Qt::ReturnByValue).size(), QSize(54, 35));
    auto* text = formcheck::child<QLabel>(widget, QStringLiteral("text_band_hz_%1").arg(number));
    QCOMPARE(text->text(), caption);
    QCOMPARE(text->geometry().bottom(), panel.height() - 1);
}

void TestEqSettingsPage::keysShowTheirPictures_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<QString>("normal");
    QTest::addColumn<QString>("pressed");
    const QString prefix = QStringLiteral(":/vexa_m5qx_audiosettingicon/");
    QTest::newRow("back") << "key_back" << QSize(74, 60) << prefix + "icon_close_n.png"
                          << prefix + "icon_close_p.png";
    QTest::newRow("type down") << "Key_eqtype_minus" << QSize(75, 71) << prefix + "eq_icon_pre_n.png"
                               << prefix + "eq_icon_pre_p.png";
    QTest::newRow("type up") << "Key_eqtype_plus" << QSize(75, 71) << prefix + "eq_icon_next_n.png"
                             << ":/icon/eq_icon/eq_icon_next_p.png";
}

void TestEqSettingsPage::keysShowTheirPictures()
{
    QFETCH(QString, name);
    QFETCH(QSize, size);
    QFETCH(QString, normal);
    QFETCH(QString, pressed);
    QPushButton* button = key(qPrintable(name));
    QCOMPARE(button->size(), size);
    QCOMPARE(button->iconSize(), size);
    QVERIFY(button->isFlat());
    QVERIFY(button->isVisible());
    QVERIFY(formcheck::isPlainKeyIcon(button->icon(), normal, pressed));
}

void TestEqSettingsPage::constructionReadsBothCurvesThenTheType()
{
    m_host.reset();
    take(All);
    QWidget host;
    new m5qx_EQ_settings_page(&host);
    QStringList expected;
    for (const char curve : {'1', '2'}) {
        for (int band = 0; band < BandCount; ++band)
            expected.append(
                QStringLiteral("SettingsFunc.getValue(\"eq%1%2\", 0)").arg(QLatin1Char(curve)).arg(band));
    }
    expected.append(QStringLiteral("AudioService.getCurrEQType()"));
    QCOMPARE(take(Actions | Read), expected);
}

void TestEqSettingsPage::bubbleIsHiddenAndLetsTouchesThroughAtConstruction()
{
    QVERIFY(bubble()->isHidden());
    QVERIFY(label("icon_eq_band_num")->testAttribute(Qt::WA_TransparentForMouseEvents));
    QCOMPARE(bubble()->size(), QSize(164, 29));
    QCOMPARE(label("text_eq_band_num")->parentWidget(), bubble());
}

void TestEqSettingsPage::curvesOfTheTypeTable_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("nameId");
    QTest::addColumn<QVector<int>>("values");
    // clang-format off
    QTest::newRow("flat")    << 0 << 1226 << QVector<int>{ 0, 0, 0, 0,  0,  0,  0,  0, 0, 0,  0,  0,  0};
    QTest::newRow("R&B")     << 1 << 237  << QVector<int>{ 1, 3, 5, 0, -1,  0, -2,  0, 3, 3,  1,  1,  1};
    QTest::newRow("rock")    << 2 << 239  << QVector<int>{ 0, 4, 4, 0, -1, -1,  0,  3, 6, 6,  4,  4,  4};
    QTest::newRow("pop")     << 3 << 238  << QVector<int>{-1, 3, 3, 2,  0, -1, -1,  0, 2, 2,  1,  1,  1};
    QTest::newRow("hip-hop") << 4 << 240  << QVector<int>{ 0, 4, 5, 2,  0, -1, -2, -1, 0, 0, -1, -1, -1};
    QTest::newRow("jazz")    << 5 << 246  << QVector<int>{ 1, 3, 2, 1,  0,  0,  1,  2, 1, 1,  0,  0,  0};
    QTest::newRow("user 1")  << 6 << 1258 << QVector<int>(13, 0);
    QTest::newRow("user 2")  << 7 << 1259 << QVector<int>(13, 0);
    // clang-format on
}

void TestEqSettingsPage::curvesOfTheTypeTable()
{
    QFETCH(int, type);
    QFETCH(int, nameId);
    QFETCH(QVector<int>, values);
    m_page->updateEq(type);
    QCOMPARE(drawn(), values);
    QCOMPARE(m5qx_EQ_settings_page::curveNameId(type), nameId);
}

void TestEqSettingsPage::type8DrawsAFlatCurve()
{
    for (const int type : {8, 9, -1, -2, INT_MAX, INT_MIN}) {
        m_page->updateEq(2);
        m_page->updateEq(type);
        QCOMPARE(drawn(), QVector<int>(13, 0));
        QCOMPARE(m5qx_EQ_settings_page::curveNameId(type), 1226);
    }
}

void TestEqSettingsPage::handlesStandAtTheValuesHeight()
{
    for (int value = 10; value >= -10; --value) {
        for (int band = 0; band < BandCount; ++band) {
            m_page->updateCustomEqVal(band, value);
            QCOMPARE(handle(band)->mapTo(m_page, QPoint()),
                     QPoint(barLeft[band], BarTop + handleTravel[10 - value]));
        }
    }
}

void TestEqSettingsPage::storedValuesOutOfRangeAreDrawnAtTheNearestEnd()
{
    setStored(QStringLiteral("eq10"), 11);
    setStored(QStringLiteral("eq11"), INT_MAX);
    setStored(QStringLiteral("eq12"), -11);
    setStored(QStringLiteral("eq13"), INT_MIN);
    setStored(QStringLiteral("eq14"), QStringLiteral("9"));
    build();
    QCOMPARE(drawn().mid(0, 5), QVector<int>({10, 10, -10, -10, 0}));
}

void TestEqSettingsPage::storedCurvesAreDrawnForTheirTypes()
{
    for (int band = 0; band < BandCount; ++band) {
        setStored(QStringLiteral("eq1%1").arg(band), band - 6);
        setStored(QStringLiteral("eq2%1").arg(band), 6 - band);
    }
    build();
    QCOMPARE(drawn(), QVector<int>({-6, -5, -4, -3, -2, -1, 0, 1, 2, 3, 4, 5, 6}));
    m_page->updateEq(7);
    QCOMPARE(drawn(), QVector<int>({6, 5, 4, 3, 2, 1, 0, -1, -2, -3, -4, -5, -6}));
}

void TestEqSettingsPage::resumeDrawsTheServicesUserCurve()
{
    m_page->updateCustomEqVal(3, 7);
    audio().eqType = 7;
    m_page->resume();
    QCOMPARE(drawn(), QVector<int>(13, 0));
    audio().eqType = 6;
    m_page->resume();
    QCOMPARE(drawn().at(3), 7);
}

void TestEqSettingsPage::cachesAreLoadedAtConstructionOnly()
{
    setStored(QStringLiteral("eq10"), 9);
    take(All);
    m_page->resume();
    m_page->hide();
    m_page->show();
    QCOMPARE(take(Read).filter(QStringLiteral("Settings")), QStringList());
    QCOMPARE(drawn().at(0), 0);
}

void TestEqSettingsPage::aTouchAtTheTopOfABarGivesPlus10AndAtTheBottomMinus10()
{
    touch::click(m_page, {barLeft[4] + 5, BarTop});
    QCOMPARE(take(), QStringList({"AudioService.setEQType(6, true)", "AudioService.doBeep(0)",
                                  "AudioService.setCustomEq1(10, 4, true)"}));
    QCOMPARE(drawn().at(4), 10);
    touch::click(m_page, {barLeft[4] + 5, BarTop + BarHeight - 1});
    QCOMPARE(take(), QStringList({"AudioService.setEQType(6, true)", "AudioService.doBeep(0)",
                                  "AudioService.setCustomEq1(-10, 4, true)"}));
    QCOMPARE(drawn().at(4), -10);
}

void TestEqSettingsPage::fingerHeightGivesTheValue()
{
    for (int i = 0; i < 21; ++i) {
        const int last = i == 20 ? BarHeight - 1 : firstPixel[i + 1] - 1;
        for (const int pixel : {firstPixel[i], last}) {
            touch::click(m_page, {barLeft[0], BarTop + pixel});
            QCOMPARE(take().last(), QStringLiteral("AudioService.setCustomEq1(%1, 0, true)").arg(10 - i));
        }
    }
}

void TestEqSettingsPage::aPressSetsTheTypeOnceThenBeeps_data()
{
    QTest::addColumn<int>("current");
    QTest::addColumn<int>("set");
    for (int type = 0; type <= 5; ++type)
        QTest::addRow("preset %d, last user type 6", type) << type << 6;
    QTest::newRow("user 1 is current") << 6 << 6;
    QTest::newRow("user 2 is current") << 7 << 7;
    QTest::newRow("type 8") << 8 << 6;
}

void TestEqSettingsPage::aPressSetsTheTypeOnceThenBeeps()
{
    QFETCH(int, current);
    QFETCH(int, set);
    audio().eqType = current;
    touch::press(m_page, onBar(7, 3));
    QCOMPARE(take(), QStringList({QStringLiteral("AudioService.setEQType(%1, true)").arg(set),
                                  QStringLiteral("AudioService.doBeep(0)")}));
    QCOMPARE(drawn().at(7), 3);
    touch::release(m_page, onBar(7, 3));
}

void TestEqSettingsPage::withAPresetActiveATouchSwitchesToTheLastCustomTypeBeforeEditing()
{
    audio().eqType = 7;
    emitEQType(7);
    audio().eqType = 3;
    emitEQType(3);
    take(All);
    touch::click(m_page, onBar(12, -4));
    QCOMPARE(take(), QStringList({"AudioService.setEQType(7, true)", "AudioService.doBeep(0)",
                                  "AudioService.setCustomEq2(-4, 12, true)"}));
    QCOMPARE(drawn().at(12), -4);
    m_page->updateEq(6);
    QCOMPARE(drawn(), QVector<int>(13, 0));
}

void TestEqSettingsPage::aReleaseSendsExactlyOneCallWithTheValueBeforeTheBand_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("call");
    QTest::newRow("user 1") << 6 << "AudioService.setCustomEq1(%1, %2, true)";
    QTest::newRow("user 2") << 7 << "AudioService.setCustomEq2(%1, %2, true)";
}

void TestEqSettingsPage::aReleaseSendsExactlyOneCallWithTheValueBeforeTheBand()
{
    QFETCH(int, type);
    QFETCH(QString, call);
    audio().eqType = type;
    for (int band = 0; band < BandCount; ++band) {
        touch::press(m_page, onBar(band, 0));
        touch::move(m_page, onBar(band, band - 6));
        take(All);
        touch::release(m_page, onBar(band, 9)); // where it is lifted doesn't matter, the last move does
        QCOMPARE(take(), QStringList(call.arg(band - 6).arg(band)));
        touch::release(m_page, onBar(band, 9));
        QCOMPARE(take(), QStringList());
    }
}

void TestEqSettingsPage::nothingIsSentDuringADrag()
{
    touch::press(m_page, onBar(2, 10));
    take(All);
    for (int y = BarTop; y < BarTop + BarHeight; ++y)
        touch::move(m_page, {barLeft[2] + 10, y});
    QCOMPARE(take(), QStringList());
    QCOMPARE(drawn().at(2), -10);
    touch::release(m_page, onBar(2, -10));
    QCOMPARE(take(), QStringList("AudioService.setCustomEq1(-10, 2, true)"));
}

void TestEqSettingsPage::draggingAcrossBarsKeepsEditingTheBandFirstTouched()
{
    touch::press(m_page, onBar(5, 2));
    touch::move(m_page, onBar(6, -8));
    touch::move(m_page, onBar(7, 8));
    QCOMPARE(drawn().at(5), 2);
    QCOMPARE(drawn().at(6), 0);
    touch::move(m_page, onBar(5, 4));
    QCOMPARE(drawn().at(5), 4);
    touch::move(m_page, onBar(8, 1));
    take(All);
    touch::release(m_page, onBar(8, 1));
    QCOMPARE(take(), QStringList("AudioService.setCustomEq1(4, 5, true)"));
    QVector<int> expected(13, 0);
    expected[5] = 4;
    QCOMPARE(drawn(), expected);
}

void TestEqSettingsPage::aDragOffTheBarKeepsTheLastValue()
{
    touch::press(m_page, onBar(0, 5));
    touch::move(m_page, onBar(0, 6));
    const QRect before = bubble()->geometry();
    for (const QPoint& off : {QPoint(barLeft[0] + 30, BarTop - 1),
                              QPoint(barLeft[0] + 30, BarTop + BarHeight), QPoint(barLeft[0] - 1, 300),
                              QPoint(barLeft[0] + 60, 300), QPoint(-500, -500), QPoint(5000, 5000)}) {
        touch::move(m_page, off);
        QCOMPARE(drawn().at(0), 6);
        QCOMPARE(bubble()->geometry(), before);
    }
    take(All);
    touch::release(m_page, {5000, 5000});
    QCOMPARE(take(), QStringList("AudioService.setCustomEq1(6, 0, true)"));
}

void TestEqSettingsPage::aPressOutsideEveryBarDoesNothing_data()
{
    QTest::addColumn<QPoint>("point");
    QTest::newRow("above a bar") << QPoint(barLeft[3] + 30, BarTop - 1);
    QTest::newRow("below a bar") << QPoint(barLeft[3] + 30, BarTop + BarHeight);
    QTest::newRow("left of all") << QPoint(barLeft[0] - 1, 300);
    QTest::newRow("right of the first, which is the narrow one") << QPoint(barLeft[0] + 60, 300);
    QTest::newRow("right of the last") << QPoint(barLeft[12] + 62, 300);
    QTest::newRow("between two bars") << QPoint(barLeft[1] + 62, 300);
    QTest::newRow("title") << QPoint(200, 48);
}

void TestEqSettingsPage::aPressOutsideEveryBarDoesNothing()
{
    QFETCH(QPoint, point);
    audio().eqType = 2;
    touch::press(m_page, point);
    touch::move(m_page, onBar(4, 4));
    touch::release(m_page, onBar(4, 4));
    QCOMPARE(take(All), QStringList());
    QVERIFY(bubble()->isHidden());
    QCOMPARE(drawn(), QVector<int>(13, 0));
}

void TestEqSettingsPage::aPressOutsideEveryBarEndsATouchWhoseReleaseWasLost()
{
    touch::press(m_page, onBar(4, 4));
    take();
    const QPoint outside(barLeft[3] + 30, BarTop - 1);
    QTest::mousePress(m_page, Qt::LeftButton, Qt::NoModifier, outside);
    QVERIFY(bubble()->isHidden());
    touch::move(m_page, onBar(4, -4));
    QTest::mouseRelease(m_page, Qt::LeftButton, Qt::NoModifier, onBar(4, -4));
    QCOMPARE(take(), QStringList());
    QCOMPARE(drawn().at(4), 4);
}

void TestEqSettingsPage::aTouchOnWhatLiesInABarIsATouchOnTheBar_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QPoint>("point");
    QTest::addColumn<int>("value");
    QTest::newRow("handle") << "icon_band_num_9" << QPoint(barLeft[8] + 20, BarTop + 170) << 1;
    QTest::newRow("background") << "bkg_band_num_9" << QPoint(barLeft[8] + 20, BarTop + 40) << 8;
    QTest::newRow("caption") << "text_band_hz_9" << QPoint(barLeft[8] + 20, BarTop + 355) << -10;
    QTest::newRow("panel") << "eq_band_widget9" << QPoint(barLeft[8] + 61, BarTop + 40) << 8;
}

void TestEqSettingsPage::aTouchOnWhatLiesInABarIsATouchOnTheBar()
{
    QFETCH(QString, name);
    QFETCH(QPoint, point);
    QFETCH(int, value);
    QCOMPARE(touch::press(m_page, point)->objectName(), name);
    touch::release(m_page, point);
    QCOMPARE(take().last(), QStringLiteral("AudioService.setCustomEq1(%1, 8, true)").arg(value));
}

void TestEqSettingsPage::theSecondOfTwoQuickTouchesCounts()
{
    // The window system names the second press a double-click.
    touch::click(m_page, onBar(1, 5));
    take(All);
    QTest::mouseDClick(m_page, Qt::LeftButton, Qt::NoModifier, onBar(1, 2));
    QCOMPARE(take(), QStringList({"AudioService.setEQType(6, true)", "AudioService.doBeep(0)"}));
    QTest::mouseRelease(m_page, Qt::LeftButton, Qt::NoModifier, onBar(1, 2));
    QCOMPARE(take(), QStringList("AudioService.setCustomEq1(2, 1, true)"));
}

void TestEqSettingsPage::otherButtonsAreNoTouch()
{
    QTest::mouseClick(m_page, Qt::RightButton, Qt::NoModifier, onBar(1, 2));
    QCOMPARE(take(), QStringList());
}

void TestEqSettingsPage::hidingDuringATouchForgetsIt()
{
    touch::press(m_page, onBar(6, 6));
    QVERIFY(bubble()->isVisible());
    take(All);
    m_page->hide();
    QVERIFY(bubble()->isHidden());
    touch::move(m_page, onBar(6, -6));
    touch::release(m_page, onBar(6, -6));
    QCOMPARE(take(), QStringList());
    m_page->show();
    QVERIFY(bubble()->isHidden());
}

void TestEqSettingsPage::bubbleFollowsTheFinger_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("band");
    QTest::addColumn<int>("value");
    QTest::addColumn<QPoint>("place");
    QTest::newRow("first bar at the top") << 6 << 0 << 10 << QPoint(57, 172);
    QTest::newRow("first bar at the bottom is wholly on the page") << 6 << 0 << -10 << QPoint(57, 481);
    QTest::newRow("last bar in the middle") << 6 << 12 << 0 << QPoint(849, 326);
    QTest::newRow("user 2") << 7 << 5 << 3 << QPoint(387, 280);
}

void TestEqSettingsPage::bubbleFollowsTheFinger()
{
    QFETCH(int, type);
    QFETCH(int, band);
    QFETCH(int, value);
    QFETCH(QPoint, place);
    audio().eqType = type;
    touch::press(m_page, onBar(band, value));
    QVERIFY(bubble()->isVisible());
    QCOMPARE(bubble()->geometry(), QRect(place, QSize(164, 29)));
    QVERIFY(m_page->rect().contains(bubble()->geometry()));
    QVERIFY(qAbs(bubble()->geometry().center().x() - (barLeft[band] + 30)) <= 3);
    QCOMPARE(label("text_eq_band_num")->text(), QString::number(value));
    QCOMPARE(m_page->childAt(bubble()->geometry().center()), label("text_eq_band_num"));
    // A move takes it along.
    touch::move(m_page, onBar(band, -value));
    QCOMPARE(bubble()->y(), BarTop + handleTravel[10 + value] + 31);
    QCOMPARE(label("text_eq_band_num")->text(), QString::number(-value));
    touch::release(m_page, onBar(band, -value));
}

void TestEqSettingsPage::bubbleGoesAtRelease()
{
    touch::click(m_page, onBar(6, 1));
    QVERIFY(bubble()->isHidden());
}

void TestEqSettingsPage::onlyTheTouchedHandleMovesAndIsRepainted()
{
    touch::press(m_page, onBar(6, 2));
    QCoreApplication::processEvents();
    EventCounter otherMoves(QEvent::Move);
    EventCounter otherPaints(QEvent::Paint);
    EventCounter ownMoves(QEvent::Move);
    for (int band = 0; band < BandCount; ++band) {
        handle(band)->installEventFilter(band == 6 ? &ownMoves : &otherMoves);
        if (qAbs(band - 6) > 1) // the bubble is wider than its bar
            handle(band)->parentWidget()->installEventFilter(&otherPaints);
    }
    EventCounter titlePaints(QEvent::Paint);
    label("text_title")->installEventFilter(&titlePaints);
    touch::move(m_page, onBar(6, -5));
    QCoreApplication::processEvents();
    QCOMPARE(ownMoves.count, 1);
    QCOMPARE(otherMoves.count, 0);
    QCOMPARE(otherPaints.count, 0);
    QCOMPARE(titlePaints.count, 0);
    // A finger that trembles within one step repaints nothing at all.
    EventCounter anyPaints(QEvent::Paint);
    m_page->installEventFilter(&anyPaints);
    touch::move(m_page, onBar(6, -5) + QPoint(1, 1));
    QCoreApplication::processEvents();
    QCOMPARE(ownMoves.count, 1);
    QCOMPARE(anyPaints.count, 0);
    touch::release(m_page, onBar(6, -5));
}

void TestEqSettingsPage::getCurrEqTypeYieldsOnlyUserTypes_data()
{
    QTest::addColumn<int>("service");
    QTest::addColumn<int>("page");
    for (int type = -1; type <= 9; ++type)
        QTest::addRow("service says %d", type) << type << (type == 7 ? 7 : 6);
}

void TestEqSettingsPage::getCurrEqTypeYieldsOnlyUserTypes()
{
    QFETCH(int, service);
    QFETCH(int, page);
    audio().eqType = service;
    QCOMPARE(m_page->getCurrEqType(), page);
    emitEQType(service);
    QCOMPARE(m_page->getCurrEqType(), page);
}

void TestEqSettingsPage::typeSignalIsRememberedOnlyForUserTypesAndOnlyWhileVisible()
{
    audio().eqType = 0;
    m_page->hide();
    emitEQType(7);
    QCOMPARE(m_page->getCurrEqType(), 6);
    m_page->show();
    QCOMPARE(m_page->getCurrEqType(), 6);
    emitEQType(7);
    QCOMPARE(m_page->getCurrEqType(), 7);
    for (const int preset : {0, 1, 2, 3, 4, 5, 8})
        emitEQType(preset);
    QCOMPARE(m_page->getCurrEqType(), 7);
}

void TestEqSettingsPage::theServicesUserTypeIsRememberedWhenThePageIsShown()
{
    m_page->hide();
    audio().eqType = 7;
    m_page->show();
    audio().eqType = 1;
    QCOMPARE(m_page->getCurrEqType(), 7);
}

void TestEqSettingsPage::typeSignalRefreshesNameAndCurve()
{
    setText(1259, QStringLiteral("second"));
    m_page->updateCustomEqVal(1, 5);
    audio().eqType = 7;
    emitEQType(7);
    QCOMPARE(label("text_eqtype")->text(), QStringLiteral("SECOND"));
    QCOMPARE(drawn(), QVector<int>(13, 0));
    m_page->hide();
    audio().eqType = 6;
    take(All);
    emitEQType(6);
    QCOMPARE(take(All), QStringList());
    QCOMPARE(label("text_eqtype")->text(), QStringLiteral("SECOND"));
}

void TestEqSettingsPage::typeKeysSwitchBetweenTheUserTypes_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("current");
    QTest::addColumn<int>("set");
    for (const char* name : {"Key_eqtype_minus", "Key_eqtype_plus"}) {
        QTest::addRow("%s at user 1", name) << QString::fromLatin1(name) << 6 << 7;
        QTest::addRow("%s at user 2", name) << QString::fromLatin1(name) << 7 << 6;
        QTest::addRow("%s at a preset, by the page's type", name) << QString::fromLatin1(name) << 3 << 7;
    }
}

void TestEqSettingsPage::typeKeysSwitchBetweenTheUserTypes()
{
    QFETCH(QString, name);
    QFETCH(int, current);
    QFETCH(int, set);
    audio().eqType = current;
    touch::click(m_page, touch::middle(m_page, key(qPrintable(name))));
    QCOMPARE(take(), QStringList({QStringLiteral("AudioService.doBeep(0)"),
                                  QStringLiteral("AudioService.setEQType(%1, true)").arg(set)}));
}

void TestEqSettingsPage::titleAndTypeNameFollowTheLanguageAtEachShow()
{
    QCOMPARE(label("text_title")->text(), QStringLiteral("T387"));
    QCOMPARE(label("text_eqtype")->text(), QStringLiteral("T1258"));
    m_page->hide();
    setText(387, QStringLiteral("Klang"));
    setText(1258, QStringLiteral("eigene"));
    m_page->show();
    QCOMPARE(label("text_title")->text(), QStringLiteral("Klang"));
    QCOMPARE(label("text_eqtype")->text(), QStringLiteral("EIGENE"));
}

void TestEqSettingsPage::backKeyPostsOneBackRequestAndNothingElse()
{
    takeBackRequests();
    touch::click(m_page, {938 + 37, 13 + 30});
    QCOMPARE(take(), QStringList());
    QCOMPARE(takeBackRequests(), 1);
}

void TestEqSettingsPage::pageNeverEmitsEQTypeChanged()
{
    QSignalSpy spy(m_page, SIGNAL(EQTypeChanged()));
    QVERIFY(spy.isValid());
    audio().eqType = 2;
    touch::click(m_page, onBar(3, 3));
    touch::click(m_page, touch::middle(m_page, key("Key_eqtype_plus")));
    emitEQType(7);
    m_page->resume();
    QCOMPARE(spy.count(), 0);
}

void TestEqSettingsPage::getCustomEqReadsTheStoreOfThePagesType()
{
    setStored(QStringLiteral("eq112"), 4);
    setStored(QStringLiteral("eq212"), -4);
    QCOMPARE(m_page->getCustomEq(12), 4);
    QCOMPARE(take(Read),
             QStringList({"AudioService.getCurrEQType()", "SettingsFunc.getValue(\"eq112\", 0)"}));
    audio().eqType = 7;
    QCOMPARE(m_page->getCustomEq(12), -4);
    QCOMPARE(take(Read),
             QStringList({"AudioService.getCurrEQType()", "SettingsFunc.getValue(\"eq212\", 0)"}));
}

void TestEqSettingsPage::setCustomEqPassesItsArgumentsUnchanged()
{
    m_page->setCustomEq(99, -3, false);
    m_page->setCustomEq1(-10, 12, true);
    m_page->setCustomEq2(4, 0, true);
    QCOMPARE(take(), QStringList({"AudioService.setCustomEq(99, -3, false)",
                                  "AudioService.setCustomEq1(-10, 12, true)",
                                  "AudioService.setCustomEq2(4, 0, true)"}));
    QCOMPARE(takeLog().size(), 3);
}

void TestEqSettingsPage::argumentsBeyondTheBandsChangeNothing()
{
    for (const int band : {-1, 13, INT_MAX, INT_MIN}) {
        m_page->updateCustomEqVal(band, 5);
        QVERIFY(!m_page->updateTouchPoint(band, onBar(0, 5)));
        m_page->updateeqSliderBarInfo(band, 5, 200);
        QVERIFY(bubble()->isHidden());
    }
    QVERIFY(!m_page->updateTouchPoint(1, onBar(0, 5)));
    QCOMPARE(drawn(), QVector<int>(13, 0));
    QCOMPARE(m_page->touchIndexByPoint({INT_MAX, INT_MAX}), -1);
}

void TestEqSettingsPage::everySlotWritesOneDiagnosticLine_data()
{
    QTest::addColumn<QByteArray>("slot");
    QTest::newRow("back") << QByteArray("onBackClicked");
    QTest::newRow("type down") << QByteArray("on_Key_eqtype_minus_clicked");
    QTest::newRow("type up") << QByteArray("on_Key_eqtype_plus_clicked");
    QTest::newRow("type changed") << QByteArray("onEQTypeChanged");
}

void TestEqSettingsPage::everySlotWritesOneDiagnosticLine()
{
    QFETCH(QByteArray, slot);
    takeLog();
    if (slot == "onEQTypeChanged")
        emitEQType(7);
    else
        QVERIFY(QMetaObject::invokeMethod(m_page, slot));
    const QStringList log = takeLog();
    QCOMPARE(log.size(), 1);
    const QRegularExpression form(
        QStringLiteral("^D \\[DBG\\] \\d+ .*%1\\(.*\\) \\d+ --").arg(QLatin1String(slot)));
    QVERIFY2(form.match(log.first()).hasMatch(), qPrintable(log.first()));
    takeBackRequests();
}

void TestEqSettingsPage::keysAreNamedAndReachedByKeyboardOnly()
{
    for (QPushButton* button : m_page->findChildren<QPushButton*>()) {
        QVERIFY2(!button->accessibleName().isEmpty(), qPrintable(button->objectName()));
        QCOMPARE(button->focusPolicy(), Qt::TabFocus);
    }
}

void TestEqSettingsPage::randomTouchesKeepEveryInvariant()
{
    const quint32 seed = QRandomGenerator::global()->generate();
    qInfo("seed %u", seed);
    QRandomGenerator random(seed);
    const QRegularExpression sent(
        QStringLiteral("^AudioService\\.setCustomEq([12])\\((-?\\d+), (\\d+), true\\)$"));
    // Off the close key: leaving is tested elsewhere, and here only fills the event queue.
    const auto anywhere = [&random] { return QPoint(random.bounded(-40, 930), random.bounded(-40, 560)); };
    const auto somewhere = [&] {
        return random.bounded(4) == 0
                   ? anywhere()
                   : QPoint(random.bounded(100, 970), random.bounded(BarTop, BarTop + BarHeight));
    };
    bool down = false;
    int band = -1;
    for (int event = 0; event < 20000; ++event) {
        const QPoint point = somewhere();
        if (!down) {
            if (random.bounded(50) == 0) {
                audio().eqType = random.bounded(9);
                emitEQType(audio().eqType);
            }
            take(All);
            band = m_page->touchIndexByPoint(point);
            if (!m_page->rect().contains(point))
                continue;
            touch::press(m_page, point);
            down = true;
            QCOMPARE(take(Audio).size(), band >= 0 ? 2 : 0);
            QCOMPARE(bubble()->isVisible(), band >= 0);
        } else if (random.bounded(5) != 0) {
            touch::move(m_page, point);
            QCOMPARE(take(), QStringList());
        } else {
            const bool onKey = m_page->childAt(point) && qobject_cast<QPushButton*>(m_page->childAt(point));
            const QVector<int> before = drawn();
            touch::release(m_page, point);
            down = false;
            const QStringList calls = take();
            QVERIFY(bubble()->isHidden());
            if (band >= 0) {
                QCOMPARE(calls.size(), 1);
                const auto match = sent.match(calls.first());
                QVERIFY2(match.hasMatch(), qPrintable(calls.first()));
                QCOMPARE(match.captured(1).toInt(), audio().eqType - 5);
                QCOMPARE(match.captured(2).toInt(), before.at(band));
                QCOMPARE(match.captured(3).toInt(), band);
            } else if (!onKey) {
                QCOMPARE(calls, QStringList());
            }
        }
        QCOMPARE(drawn().size(), BandCount);
        if (event % 500 == 0)
            QCoreApplication::processEvents();
    }
    takeBackRequests();
    takeLog();
}

QTEST_MAIN(TestEqSettingsPage)
#include "tst_m5qx_audiosetting_settings_page.moc"
