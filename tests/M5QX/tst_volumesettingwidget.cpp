#include "M5QX/setuppagekeywidget.h"
#include "M5QX/volumesettingwidget.h"
#include "common/customslider.h"
#include "common/scroll.h"
#include "formcheck.h"
#include "platform_double/platform_double.h"
#include "platform_double/touch.h"

#include <QLabel>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QScrollArea>
#include <QSignalSpy>
#include <QtTest>

#include <climits>

using namespace platform_double;

namespace {

enum Section { Live, StartUp, Gain };

struct Row
{
    const char* base;   ///< middle of the children's names
    const char* widget; ///< the row
    Section section;
    const char* key;
    int defaultValue;
    int service; ///< channel or source
    int textId;  ///< 0: fixed "DAB"
    const char* saveSlot;
    int formY;
};

// clang-format off
const Row rows[] = {
    {"main",               "widget_main",               Live,    "volume0",                            0,  0,  436,  "onMainSave",              50},
    {"ring",               "widget_ring",               Live,    "volume1",                            0,  1,  437,  "onRingSave",              128},
    {"call",               "widget_call",               Live,    "volume2",                            0,  2,  438,  "onCallSave",              206},
    {"navi",               "widget_navi",               Live,    "volume5",                            0,  5,  439,  "onNaviSave",              284},
    {"voice",              "widget_voice",              Live,    "volume4",                            0,  4,  440,  "onVoiceSave",             362},
    {"main_default",       "widget_default_main",       StartUp, "Setup_Main_Volume",                  25, -1, 1249, "onMainDefaultSave",       490},
    {"ring_default",       "widget_default_ring",       StartUp, "Setup_Volume_Type_BT_Ringer",        40, -1, 1250, "onRingDefaultSave",       568},
    {"call_default",       "widget_default_call",       StartUp, "Setup_Volume_Type_BT_Talking",       40, -1, 1251, "onCallDefaultSave",       646},
    {"navi_default",       "widget_default_navi",       StartUp, "Setup_Volume_Type_Navi",             40, -1, 1254, "onNaviDefaultSave",       724},
    {"voice_default",      "widget_default_voice",      StartUp, "Setup_Volume_Type_Voice",            40, -1, 1255, "onVoiceDefaultSave",      802},
    {"source_radio",       "widget_source_radio",       Gain,    "Setup_Input_Gain_Type_Radio",        5,  18, 366,  "onSourceRadioSave",       930},
    {"source_usb",         "widget_source_usb",         Gain,    "Setup_Input_Gain_Type_USB",          5,  6,  18,   "onSourceUSBSave",         1008},
    {"source_btaudio",     "widget_source_btaudio",     Gain,    "Setup_Input_Gain_Type_BT_Audio",     5,  5,  369,  "onSourceBtaudioSave",     1086},
    {"source_avin",        "widget_source_avin",        Gain,    "Setup_Input_Gain_Type_AUX",          5,  7,  368,  "onSourceAVINSave",        1164},
    {"source_carplay",     "widget_source_carplay",     Gain,    "Setup_Input_Gain_Type_Carplay",      5,  0,  443,  "onSourceCarplaySave",     1242},
    {"source_androidauto", "widget_source_androidauto", Gain,    "Setup_Input_Gain_Type_Android_Auto", 5,  1,  17,   "onSourceAndroidautoSave", 1320},
    {"source_dab",         "widget_source_dab",         Gain,    "Setup_Input_Gain_Type_DAB",          5,  19, 0,    "onSourceDABSave",         0},
};
// clang-format on
constexpr int RowCount = sizeof(rows) / sizeof(rows[0]);
static_assert(RowCount == 17, "seventeen rows");
constexpr int Dab = RowCount - 1;
const QString BeepLine = QStringLiteral("AudioService.doBeep(0)");

int maximumOf(const Row& row)
{
    return row.section == Gain ? 15 : 50;
}

QString readLine(const Row& row)
{
    return QStringLiteral("SettingsFunc.getValue(\"%1\", %2)")
        .arg(QLatin1String(row.key))
        .arg(row.defaultValue);
}

QStringList readLines(Section section)
{
    QStringList lines;
    for (const Row& row : rows) {
        if (row.section == section)
            lines.append(readLine(row));
    }
    return lines;
}

/// What a value of that row makes the page call.
QStringList applyLines(const Row& row, int value)
{
    if (row.section == Live)
        return {QStringLiteral("AudioService.setVolumeLevel(%1, %2)").arg(value).arg(row.service)};
    QStringList lines{QStringLiteral("SettingsFunc.setValue(\"%1\", %2, %3, true)")
                          .arg(QLatin1String(row.key))
                          .arg(row.defaultValue)
                          .arg(value)};
    if (row.section == Gain)
        lines.append(QStringLiteral("AudioService.setSourceOffsetGain(%1, %2)").arg(row.service).arg(value));
    return lines;
}

/// What a key step of that row makes the page call, in order, reads too.
QStringList stepLines(const Row& row, int value)
{
    QStringList lines{BeepLine, readLine(row)};
    lines += applyLines(row, value);
    if (row.section != Live)
        lines += readLines(row.section);
    return lines;
}

void addRows()
{
    QTest::addColumn<int>("index");
    for (int i = 0; i < RowCount; ++i)
        QTest::newRow(rows[i].base) << i;
}

} // namespace

class TestVolumeSettingWidget : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    void signalsAndSlotsAreDeclaredInOrder();
    void rowsStandWhereTheTableSays_data() { addRows(); }
    void rowsStandWhereTheTableSays();
    void rowKeysShowTheirPictures_data() { addRows(); }
    void rowKeysShowTheirPictures();
    void rowLabelsShowTheirTexts_data() { addRows(); }
    void rowLabelsShowTheirTexts();
    void titlesShowTheirTextsAndStyle_data();
    void titlesShowTheirTextsAndStyle();
    void topBarAndScrollAreaStandWhereTheFormSays();
    void slidersAreMadeInTableOrder();
    void constructionMakesItsPartsInOrder();
    void constructionReadsAndWritesNoLevel();
    void keyStripIsMadeOncePlacedAndShown();
    void scrollBarIsThePagesAndLiesAboveTheKeyStrip();
    void afterLayoutTheContentsAre1028PixelsHigh();

    void resumeReadsTheThreeSectionsInOrder();
    void aFreshStoreShowsTheDefaults();
    void resumeShowsTheStoredValues_data() { addRows(); }
    void resumeShowsTheStoredValues();
    void theDabGainRowNeverShowsYetItsValueIsRead();

    void keysStepBeepAndStore_data() { addRows(); }
    void keysStepBeepAndStore();
    void keysAtTheRangeEndsWriteTheSameAgain_data() { addRows(); }
    void keysAtTheRangeEndsWriteTheSameAgain();
    void keysClampWhatTheStoreHoldsOutsideTheRange_data() { addRows(); }
    void keysClampWhatTheStoreHoldsOutsideTheRange();
    void keysOfVisibleRowsAnswerATouch_data() { addRows(); }
    void keysOfVisibleRowsAnswerATouch();
    void aTouchOnTheLabelsEndReachesTheDownKey();
    void liveKeysLeaveTheSliderToTheServicesSignal();
    void liveNaviUsesChannel5AndVoiceChannel4();
    void volumeChangedReadsTheLiveRowsAgain();
    void slidersSaveWhatTheUserSettledOn_data() { addRows(); }
    void slidersSaveWhatTheUserSettledOn();
    void aSliderDragSendsOnceAtRelease();
    void saveSlotsClampTheirArgument_data() { addRows(); }
    void saveSlotsClampTheirArgument();

    void pageKeysScrollToTheEndAndBack();
    void nextPageWhileThePageIsHiddenDoesNotScroll();
    void exitBeepsThenEmitsExitUI();
    void everySlotWritesOneDiagnosticLine();
    void keysAreNamedAndReachedInReadingOrder();
    void openingAndLeavingOftenLeavesNothingBehind();
    void randomTouchesKeepEveryInvariant();

private:
    QPushButton* key(int row, const char* way)
    {
        return formcheck::child<QPushButton>(
            m_page, QStringLiteral("key_%1_%2").arg(QLatin1String(rows[row].base), QLatin1String(way)));
    }
    QWidget* widget(int row) { return formcheck::child(m_page, QLatin1String(rows[row].widget)); }
    QLabel* label(const QString& name) { return formcheck::child<QLabel>(m_page, name); }
    /// The platform's slider of a row.
    settings::CustomSlider_2* slider(int row)
    {
        return formcheck::child<settings::CustomSlider_2>(widget(row), QString());
    }
    QScrollArea* area() { return formcheck::child<QScrollArea>(m_page, QStringLiteral("scrollArea")); }
    QWidget* contents() { return formcheck::child(m_page, QStringLiteral("scrollAreaWidgetContents")); }
    void show();
    void invoke(const QString& slot)
    {
        QVERIFY2(QMetaObject::invokeMethod(m_page, qPrintable(slot)), qPrintable(slot));
    }
    QString keySlot(int row, const char* way)
    {
        return QStringLiteral("on_key_%1_%2_clicked").arg(QLatin1String(rows[row].base), QLatin1String(way));
    }

    QScopedPointer<QWidget> m_host;
    VolumeSettingWidget* m_page = nullptr;
};

void TestVolumeSettingWidget::init()
{
    reset();
    m_host.reset(new QWidget);
    m_host->resize(1024, 600);
    m_page = new VolumeSettingWidget(m_host.data());
    take(All);
    takeLog();
}

void TestVolumeSettingWidget::cleanup()
{
    m_host.reset();
}

void TestVolumeSettingWidget::show()
{
    m_host->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_host.data()));
    take(All);
    takeLog();
}

void TestVolumeSettingWidget::signalsAndSlotsAreDeclaredInOrder()
{
    QStringList expected{"exitUI()"};
    for (int i = 0; i < RowCount; ++i)
        expected << keySlot(i, "up") + "()" << keySlot(i, "down") + "()";
    for (const Row& row : rows)
        expected << QLatin1String(row.saveSlot) + QStringLiteral("(int)");
    expected << "on_key_exit_clicked()"
             << "onVolumeChanged(bool,int,int)"
             << "onSetupNextPage()"
             << "onSetupPrevPage()";
    QCOMPARE(formcheck::ownMethods(m_page->metaObject()), expected);
    QCOMPARE(m_page->metaObject()->className(), "VolumeSettingWidget");
}

void TestVolumeSettingWidget::rowsStandWhereTheTableSays()
{
    QFETCH(int, index);
    const Row& row = rows[index];
    const QString base = QLatin1String(row.base);
    QWidget* w = widget(index);
    QCOMPARE(w->parentWidget(), contents());
    if (row.section == Live) {
        QVERIFY(w->isHidden());
        QCOMPARE(w->geometry(), QRect(0, 0, 0, 0));
    } else if (index == Dab) {
        QCOMPARE(w->size(), QSize(0, 0));
    } else {
        QVERIFY(!w->isHidden());
        QCOMPARE(w->geometry(), QRect(0, row.formY - 440, 1024, 78));
    }
    QCOMPARE(formcheck::child<QLabel>(w, "label_" + base)->geometry(), QRect(30, 0, 413, 78));
    QVERIFY(formcheck::child<QLabel>(w, "label_" + base)->testAttribute(Qt::WA_TransparentForMouseEvents));
    QCOMPARE(formcheck::child<QPushButton>(w, "key_" + base + "_down")->geometry(), QRect(433, 10, 63, 59));
    auto* place = formcheck::child(w, "slider_" + base);
    QCOMPARE(place->geometry(), QRect(496, 10, 393, 59));
    QVERIFY(place->isHidden());
    QCOMPARE(formcheck::child<QPushButton>(w, "key_" + base + "_up")->geometry(), QRect(889, 10, 63, 59));
    auto* line = formcheck::child<QFrame>(w, "line_" + base);
    QCOMPARE(line->geometry(), QRect(30, 73, base == QLatin1String("voice_default") ? 0 : 964, 4));
    QCOMPARE(line->styleSheet(), QStringLiteral("color:rgb(96,96,96)"));
}

void TestVolumeSettingWidget::rowKeysShowTheirPictures()
{
    QFETCH(int, index);
    for (const char* way : {"down", "up"}) {
        QPushButton* button = key(index, way);
        const QString path = QStringLiteral(":/vexa_m5qx_settingicon_ext/eq_btn_%1_").arg(QLatin1String(way));
        QVERIFY(formcheck::isPlainKeyIcon(button->icon(), path + "n.png", path + "p.png"));
        QCOMPARE(button->iconSize(), QSize(63, 59));
        QVERIFY(button->isFlat());
    }
}

void TestVolumeSettingWidget::rowLabelsShowTheirTexts()
{
    QFETCH(int, index);
    const Row& row = rows[index];
    setText(row.textId, QStringLiteral("lower"));
    VolumeSettingWidget page(nullptr);
    QCOMPARE(formcheck::child<QLabel>(&page, QStringLiteral("label_") + row.base)->text(),
             row.textId ? QStringLiteral("LOWER") : QStringLiteral("DAB"));
}

void TestVolumeSettingWidget::titlesShowTheirTextsAndStyle_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("textId");
    QTest::addColumn<QString>("shown");
    QTest::addColumn<QRect>("place");
    QTest::newRow("page") << "label_title" << 1246 << "ABC" << QRect();
    QTest::newRow("default volumes") << "label_title_default_volume" << 1256 << " ABC"
                                     << QRect(0, 6, 994, 44);
    QTest::newRow("live volumes never show") << "label_title_volume" << 435 << "ABC" << QRect(0, 0, 0, 50);
    QTest::newRow("sources") << "label_title_source" << 441 << " ABC" << QRect(0, 446, 994, 44);
}

void TestVolumeSettingWidget::titlesShowTheirTextsAndStyle()
{
    QFETCH(QString, name);
    QFETCH(int, textId);
    QFETCH(QString, shown);
    QFETCH(QRect, place);
    setText(textId, QStringLiteral("aBc"));
    VolumeSettingWidget page(nullptr);
    auto* title = formcheck::child<QLabel>(&page, name);
    QCOMPARE(title->text(), shown);
    if (!place.isNull()) {
        QCOMPARE(title->geometry(), place);
        QCOMPARE(title->styleSheet(),
                 QStringLiteral("background-color:rgb(60,60,60);color:rgb(255,255,255)"));
        QCOMPARE(title->parentWidget()->objectName(), QStringLiteral("scrollAreaWidgetContents"));
    }
}

void TestVolumeSettingWidget::topBarAndScrollAreaStandWhereTheFormSays()
{
    const QString prefix = QStringLiteral(":/vexa_m5qx_audiosettingicon/");
    QCOMPARE(m_page->size(), QSize(1024, 510));
    auto* exit = formcheck::child<QPushButton>(m_page, QStringLiteral("key_exit"));
    QCOMPARE(exit->geometry(), QRect(938, 13, 74, 60));
    QVERIFY(exit->isHidden());
    QVERIFY(
        formcheck::isPlainKeyIcon(exit->icon(), prefix + "icon_close_n.png", prefix + "icon_close_p.png"));
    auto* emblem = formcheck::child<QPushButton>(m_page, QStringLiteral("key_back"));
    QVERIFY(formcheck::holds(emblem->icon(), QIcon::Normal, QIcon::Off, prefix + "icon_eq.png"));
    QVERIFY(emblem->geometry().bottom() < 75);
    QVERIFY(emblem->geometry().right() < label(QStringLiteral("label_title"))->x());
    emblem->click();
    QCOMPARE(take(All), QStringList());
    QCOMPARE(area()->geometry(), QRect(0, 75, 1035, 444));
    QVERIFY(!area()->widgetResizable());
    QCOMPARE(area()->widget(), contents());
    QCOMPARE(area()->horizontalScrollBarPolicy(), Qt::ScrollBarAlwaysOff);
    bool background = false;
    for (const QLabel* part : contents()->findChildren<QLabel*>(QString(), Qt::FindDirectChildrenOnly))
        background |= part->geometry() == QRect(0, 0, 1024, 1672);
    QVERIFY(background);
}

void TestVolumeSettingWidget::slidersAreMadeInTableOrder()
{
    const auto all = sliders();
    QCOMPARE(all.size(), RowCount);
    for (int i = 0; i < RowCount; ++i) {
        QCOMPARE(all.at(i)->parentWidget(), widget(i));
        QCOMPARE(all.at(i)->geometry(), QRect(496, 10, 393, 59));
        QCOMPARE(all.at(i)->minimum(), 0);
        QCOMPARE(all.at(i)->maximum(), maximumOf(rows[i]));
        QCOMPARE(offsetOf(all.at(i)), rows[i].section == Gain ? -5 : 0);
        QCOMPARE(hintColorOf(all.at(i)), QColor(Qt::white));
    }
}

void TestVolumeSettingWidget::constructionMakesItsPartsInOrder()
{
    take(All);
    VolumeSettingWidget page(nullptr);
    QStringList expected;
    for (const Row& row : rows) {
        expected << "CustomSlider_2(496,10 393x59, 4)"
                 << "CustomSlider_2.setHintColor(#ffffff)"
                 << QStringLiteral("CustomSlider_2.setOffset(%1)").arg(row.section == Gain ? -5 : 0);
    }
    expected << "ScrollManage(scrollArea, false, false)"
             << "ScrollBar(978,160 16x237, 0)"
             << "ScrollManage(scrollArea, true, false)";
    QCOMPARE(take(Widget), expected);
}

void TestVolumeSettingWidget::constructionReadsAndWritesNoLevel()
{
    take(All);
    VolumeSettingWidget page(nullptr);
    QCOMPARE(take(Actions | Read), QStringList());
}

void TestVolumeSettingWidget::keyStripIsMadeOncePlacedAndShown()
{
    m_page->showSetupPageKeyWidget();
    const auto strips = m_page->findChildren<SetupPageKeyWidget*>();
    QCOMPARE(strips.size(), 1);
    QCOMPARE(strips.first()->parentWidget(), m_page);
    QCOMPARE(strips.first()->geometry(), QRect(960, 70, 50, 459));
    QCOMPARE(formcheck::child(strips.first(), QStringLiteral("Key_next_page"))->y(), 332);
    QVERIFY(!strips.first()->isHidden());
}

void TestVolumeSettingWidget::scrollBarIsThePagesAndLiesAboveTheKeyStrip()
{
    show();
    auto* bar = qobject_cast<cm::ScrollBar*>(area()->verticalScrollBar());
    QVERIFY(bar);
    QCOMPARE(bar->parentWidget(), m_page);
    QCOMPARE(bar->geometry(), QRect(978, 160, 16, 237));
    QVERIFY(bar->isVisible());
    QCOMPARE(m_page->childAt(bar->geometry().center()), bar);
    bar->setValue(100);
    QCOMPARE(contents()->y(), -100);
}

void TestVolumeSettingWidget::afterLayoutTheContentsAre1028PixelsHigh()
{
    QCOMPARE(contents()->geometry(), QRect(0, 0, 1024, 1028));
    show();
    QCOMPARE(contents()->geometry(), QRect(0, 0, 1024, 1028));
}

void TestVolumeSettingWidget::resumeReadsTheThreeSectionsInOrder()
{
    m_page->resume();
    QCOMPARE(take(All & ~Text), readLines(Live) + readLines(StartUp) + readLines(Gain));
}

void TestVolumeSettingWidget::aFreshStoreShowsTheDefaults()
{
    m_page->resume();
    QCOMPARE(slider(5)->value(), 25);
    for (int i = 6; i <= 9; ++i)
        QCOMPARE(slider(i)->value(), 40);
    for (int i = 10; i < RowCount; ++i) {
        QCOMPARE(slider(i)->value(), 5);
        QCOMPARE(slider(i)->value() + offsetOf(slider(i)), 0);
    }
}

void TestVolumeSettingWidget::resumeShowsTheStoredValues()
{
    QFETCH(int, index);
    const Row& row = rows[index];
    for (const int value : {0, 7, maximumOf(row)}) {
        setStored(QLatin1String(row.key), value);
        m_page->resume();
        QCOMPARE(slider(index)->value(), value);
    }
    setStored(QLatin1String(row.key), INT_MAX);
    m_page->resume();
    QCOMPARE(slider(index)->value(), maximumOf(row));
    setStored(QLatin1String(row.key), INT_MIN);
    m_page->resume();
    QCOMPARE(slider(index)->value(), 0);
    QCOMPARE(take(Actions), QStringList());
}

void TestVolumeSettingWidget::theDabGainRowNeverShowsYetItsValueIsRead()
{
    show();
    QVERIFY(widget(Dab)->visibleRegion().isEmpty());
    setStored(QLatin1String(rows[Dab].key), 12);
    m_page->resume();
    QVERIFY(take(Read).contains(readLine(rows[Dab])));
    QCOMPARE(slider(Dab)->value(), 12);
    invoke(QStringLiteral("on_key_source_dab_up_clicked"));
    QCOMPARE(take(Actions | Read), stepLines(rows[Dab], 13));
    QCOMPARE(slider(Dab)->value(), 13);
}

void TestVolumeSettingWidget::keysStepBeepAndStore()
{
    QFETCH(int, index);
    const Row& row = rows[index];
    setStored(QLatin1String(row.key), 7);
    m_page->resume();
    take(All);
    takeLog();
    key(index, "up")->click();
    QCOMPARE(take(All), stepLines(row, 8));
    QVERIFY(takeLog().value(0).endsWith(QStringLiteral("-- value: 8"))); // the new one
    setStored(QLatin1String(row.key), 8);
    key(index, "down")->click();
    QCOMPARE(take(All), stepLines(row, 7));
    if (row.section != Live)
        QCOMPARE(slider(index)->value(), 7);
}

void TestVolumeSettingWidget::keysAtTheRangeEndsWriteTheSameAgain()
{
    QFETCH(int, index);
    const Row& row = rows[index];
    setStored(QLatin1String(row.key), maximumOf(row));
    key(index, "up")->click();
    QCOMPARE(take(All), stepLines(row, maximumOf(row)));
    setStored(QLatin1String(row.key), 0);
    key(index, "down")->click();
    QCOMPARE(take(All), stepLines(row, 0));
}

void TestVolumeSettingWidget::keysClampWhatTheStoreHoldsOutsideTheRange()
{
    QFETCH(int, index);
    const Row& row = rows[index];
    const int maximum = maximumOf(row);
    for (const char* way : {"up", "down"}) {
        for (const int value : {maximum + 1, maximum + 2, 1000, INT_MAX}) {
            setStored(QLatin1String(row.key), value);
            key(index, way)->click();
            QCOMPARE(take(All), stepLines(row, maximum));
        }
        for (const int value : {-1, -2, -1000, INT_MIN}) {
            setStored(QLatin1String(row.key), value);
            key(index, way)->click();
            QCOMPARE(take(All), stepLines(row, 0));
        }
    }
}

void TestVolumeSettingWidget::keysOfVisibleRowsAnswerATouch()
{
    QFETCH(int, index);
    show();
    const Row& row = rows[index];
    if (row.section == Live || index == Dab) {
        QVERIFY(!key(index, "up")->isVisible() || key(index, "up")->visibleRegion().isEmpty());
        return;
    }
    area()->verticalScrollBar()->setValue(widget(index)->y() - 100);
    take(All);
    touch::click(m_page, touch::middle(m_page, key(index, "up")));
    QCOMPARE(take(All), stepLines(row, row.defaultValue + 1));
    touch::click(m_page, touch::middle(m_page, key(index, "down")));
    QCOMPARE(take(All), stepLines(row, row.defaultValue));
}

void TestVolumeSettingWidget::aTouchOnTheLabelsEndReachesTheDownKey()
{
    show();
    // The main default row stands at y 50 of the contents, which begin at y 75.
    touch::click(m_page, {436, 75 + 50 + 39});
    QCOMPARE(take(), QStringList({BeepLine, "SettingsFunc.setValue(\"Setup_Main_Volume\", 25, 24, true)"}));
}

void TestVolumeSettingWidget::liveKeysLeaveTheSliderToTheServicesSignal()
{
    setStored(QStringLiteral("volume0"), 20);
    m_page->resume();
    key(0, "up")->click();
    QCOMPARE(slider(0)->value(), 20);
    setStored(QStringLiteral("volume0"), 21);
    emitVolumeChanged(false, 21, 0);
    QCOMPARE(slider(0)->value(), 21);
}

void TestVolumeSettingWidget::liveNaviUsesChannel5AndVoiceChannel4()
{
    setStored(QStringLiteral("volume5"), 11);
    setStored(QStringLiteral("volume4"), 33);
    m_page->on_key_navi_up_clicked();
    QCOMPARE(take(All), QStringList({BeepLine, "SettingsFunc.getValue(\"volume5\", 0)",
                                     "AudioService.setVolumeLevel(12, 5)"}));
    m_page->on_key_voice_up_clicked();
    QCOMPARE(take(All), QStringList({BeepLine, "SettingsFunc.getValue(\"volume4\", 0)",
                                     "AudioService.setVolumeLevel(34, 4)"}));
}

void TestVolumeSettingWidget::volumeChangedReadsTheLiveRowsAgain()
{
    emitVolumeChanged(true, 3, 99);
    QCOMPARE(take(All), readLines(Live));
}

void TestVolumeSettingWidget::slidersSaveWhatTheUserSettledOn()
{
    QFETCH(int, index);
    const Row& row = rows[index];
    for (const int value : {0, 9, maximumOf(row)}) {
        take(All);
        emit slider(index)->valSave(value);
        QCOMPARE(take(All), applyLines(row, value));
    }
}

void TestVolumeSettingWidget::aSliderDragSendsOnceAtRelease()
{
    show();
    m_page->resume();
    area()->verticalScrollBar()->setValue(400);
    take(All);
    const QPoint start = touch::middle(m_page, slider(10));
    QCOMPARE(touch::press(m_page, start), slider(10));
    for (int x = 0; x < 200; x += 10)
        touch::move(m_page, start + QPoint(x, 0));
    touch::move(m_page, start + QPoint(600, 200));
    QCOMPARE(take(All), QStringList());
    touch::release(m_page, start + QPoint(600, 200));
    QCOMPARE(take(All), applyLines(rows[10], 15));
}

void TestVolumeSettingWidget::saveSlotsClampTheirArgument()
{
    QFETCH(int, index);
    const Row& row = rows[index];
    const QByteArray slot = row.saveSlot;
    for (const int value : {maximumOf(row) + 1, INT_MAX}) {
        QVERIFY(QMetaObject::invokeMethod(m_page, slot, Q_ARG(int, value)));
        QCOMPARE(take(All), applyLines(row, maximumOf(row)));
    }
    for (const int value : {-1, INT_MIN}) {
        QVERIFY(QMetaObject::invokeMethod(m_page, slot, Q_ARG(int, value)));
        QCOMPARE(take(All), applyLines(row, 0));
    }
}

void TestVolumeSettingWidget::pageKeysScrollToTheEndAndBack()
{
    show();
    touch::click(m_page, {960 + 25, 70 + 332 + 60});
    QCOMPARE(take(All), QStringList({"McuManager.triggerBeep(0)", "R9TransferStation.setupNextPage()",
                                     "ScrollManage.scrollToPos(0,1028, false)"}));
    QVERIFY(contents()->y() < 0);
    touch::click(m_page, {960 + 25, 70 + 40});
    QCOMPARE(take(All), QStringList({"McuManager.triggerBeep(0)", "R9TransferStation.setupPrevPage()",
                                     "ScrollManage.scrollToPos(0,0, false)"}));
    QCOMPARE(contents()->y(), 0);
}

void TestVolumeSettingWidget::nextPageWhileThePageIsHiddenDoesNotScroll()
{
    m_page->onSetupNextPage();
    m_page->onSetupPrevPage();
    show();
    m_page->hide();
    take(All);
    m_page->onSetupNextPage();
    m_page->onSetupPrevPage();
    QCOMPARE(take(All), QStringList());
}

void TestVolumeSettingWidget::exitBeepsThenEmitsExitUI()
{
    QStringList seen;
    connect(m_page, &VolumeSettingWidget::exitUI, this, [&seen] { seen = take(); });
    QSignalSpy spy(m_page, SIGNAL(exitUI()));
    formcheck::child<QPushButton>(m_page, QStringLiteral("key_exit"))->click();
    QCOMPARE(seen, QStringList(BeepLine));
    QCOMPARE(spy.count(), 1);
    QCOMPARE(takeBackRequests(), 0);
}

void TestVolumeSettingWidget::everySlotWritesOneDiagnosticLine()
{
    const QMetaObject* meta = m_page->metaObject();
    int slotCount = 0;
    for (int i = meta->methodOffset(); i < meta->methodCount(); ++i) {
        const QMetaMethod method = meta->method(i);
        if (method.methodType() != QMetaMethod::Slot)
            continue;
        ++slotCount;
        takeLog();
        if (method.parameterCount() == 0)
            QVERIFY(method.invoke(m_page));
        else if (method.parameterCount() == 1)
            QVERIFY(method.invoke(m_page, Q_ARG(int, 9)));
        else
            QVERIFY(method.invoke(m_page, Q_ARG(bool, false), Q_ARG(int, 1), Q_ARG(int, 2)));
        const QStringList log = takeLog();
        QCOMPARE(log.size(), 1);
        const bool step = method.name().endsWith("_up_clicked") || method.name().endsWith("_down_clicked");
        const QRegularExpression form(
            QStringLiteral("^D \\[DBG\\] \\d+ .*%1\\(.*\\) \\d+ --%2")
                .arg(QLatin1String(method.name()), step ? QStringLiteral(" value: \\d+$") : QString()));
        QVERIFY2(form.match(log.first()).hasMatch(), qPrintable(log.first()));
    }
    QCOMPARE(slotCount, 34 + 17 + 4);
}

void TestVolumeSettingWidget::keysAreNamedAndReachedInReadingOrder()
{
    for (QPushButton* button : m_page->findChildren<QPushButton*>()) {
        QVERIFY2(!button->accessibleName().isEmpty(), qPrintable(button->objectName()));
        const bool emblem = button->objectName() == QLatin1String("key_back");
        const bool neverSeen = button->parentWidget() == widget(Dab);
        QCOMPARE(button->focusPolicy(), emblem || neverSeen ? Qt::NoFocus : Qt::TabFocus);
    }
    for (int i = 0; i < RowCount; ++i) {
        QVERIFY(!slider(i)->accessibleName().isEmpty());
        QVERIFY(key(i, "up")->accessibleName() != key(i, "down")->accessibleName());
    }
    const auto nextWithFocus = [](QWidget* from) {
        do
            from = from->nextInFocusChain();
        while (from->focusPolicy() == Qt::NoFocus);
        return from;
    };
    for (int i = 0; i < Dab; ++i) {
        QCOMPARE(nextWithFocus(key(i, "down")), slider(i));
        QCOMPARE(nextWithFocus(slider(i)), key(i, "up"));
        if (i + 1 < Dab)
            QCOMPARE(nextWithFocus(key(i, "up")), key(i + 1, "down"));
    }
}

void TestVolumeSettingWidget::openingAndLeavingOftenLeavesNothingBehind()
{
    const int before = scrollManagers().size();
    const int sliderCount = sliders().size();
    for (int i = 0; i < 50; ++i) {
        auto* page = new VolumeSettingWidget(m_host.data());
        page->resume();
        page->show();
        QCOMPARE(scrollManagers().size(), before + 2);
        page->hide();
        page->deleteLater();
        QCoreApplication::sendPostedEvents(page, QEvent::DeferredDelete);
        QCOMPARE(scrollManagers().size(), before);
        QCOMPARE(sliders().size(), sliderCount);
    }
    // What a page that is gone was connected to no longer reaches it.
    take(All);
    emitVolumeChanged(false, 1, 1);
    QCOMPARE(take(All), readLines(Live));
}

void TestVolumeSettingWidget::randomTouchesKeepEveryInvariant()
{
    const quint32 seed = QRandomGenerator::global()->generate();
    qInfo("seed %u", seed);
    QRandomGenerator random(seed);
    show();
    m_page->resume();
    take(All);
    const QRegularExpression write(
        QStringLiteral("^SettingsFunc\\.setValue\\(\"(\\w+)\", \\d+, (-?\\d+), true\\)$"));
    bool down = false;
    int writes = 0;
    for (int event = 0; event < 20000; ++event) {
        const QPoint point(random.bounded(-40, 1064), random.bounded(-40, 560));
        if (!down && m_page->rect().contains(point)) {
            touch::press(m_page, point);
            down = true;
            QCOMPARE(take(Actions), QStringList());
        } else if (down && random.bounded(2)) {
            touch::move(m_page, point);
            QCOMPARE(take(Actions), QStringList());
        } else if (down) {
            touch::release(m_page, point);
            down = false;
            const QStringList calls = take();
            QVERIFY(calls.filter(QStringLiteral("setValue")).size() <= 1);
            QVERIFY(calls.filter(QStringLiteral("setSourceOffsetGain")).size() <= 1);
            QVERIFY(calls.filter(QStringLiteral("eep(0)")).size() <= 1);
            QVERIFY(calls.filter(QStringLiteral("setVolumeLevel")).isEmpty()); // no live row can be touched
            for (const QString& call : calls) {
                const auto match = write.match(call);
                if (!match.hasMatch())
                    continue;
                ++writes;
                const int value = match.captured(2).toInt();
                QVERIFY(value >= 0 &&
                        value <= (match.captured(1).contains(QStringLiteral("Gain")) ? 15 : 50));
            }
        }
        if (event % 500 == 0) {
            QCoreApplication::processEvents();
            takeLog();
        }
    }
    QVERIFY(writes > 0);
    QCOMPARE(contents()->height(), 1028);
}

QTEST_MAIN(TestVolumeSettingWidget)
#include "tst_volumesettingwidget.moc"
