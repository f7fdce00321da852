#include "M5QX/m5qx_audiosetting_tab_widget.h"
#include "tests/M5QX/formcheck.h"
#include "tests/support/platform_double/platform_double.h"
#include "tests/support/touch.h"

#include <QLabel>
#include <QPushButton>
#include <QtTest>

using namespace audiosetting;
using namespace platform_double;

class TestTabWidget : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void signalsAndSlotsAreDeclaredInOrder();
    void formHasTheTablesPlaces_data();
    void formHasTheTablesPlaces();
    void pageKeysShowTheTablesPictures_data() { formHasTheTablesPlaces_data(); }
    void pageKeysShowTheTablesPictures();
    void typeSelectorTakesNoRoom();
    void typeKeysShowTheirPictures();
    void captionsComeFromTheTranslator_data() { formHasTheTablesPlaces_data(); }
    void captionsComeFromTheTranslator();
    void captionsFollowTheLanguageAtEachShow();
    void everyPageKeyBeepsOnceBeforeItsSignal_data() { formHasTheTablesPlaces_data(); }
    void everyPageKeyBeepsOnceBeforeItsSignal();
    void aTouchOnALabelReachesTheKeyBelow();
    void setCheckedPageMarksThatKeyAlone();
    void setCheckedPageOutsideRangeLogsAnErrorAndChangesNothing_data();
    void setCheckedPageOutsideRangeLogsAnErrorAndChangesNothing();
    void anIdWithoutPageLogsAndBeepsAndEmitsNothing();
    void logNamesTheSourceFileFromTheRootOfTheTree();
    void typeKeysWrapAround_data();
    void typeKeysWrapAround();
    void typeNameFollowsThePlatformsSignal();
    void eachTypeHasTheNameOfTheCurveThatItDraws();
    void unknownTypeShowsNoName();

private:
    QPushButton* key(const char* name) { return m_bar->findChild<QPushButton*>(QLatin1String(name)); }
    QLabel* label(const char* name) { return m_bar->findChild<QLabel*>(QLatin1String(name)); }
    QScopedPointer<m5qx_eq_tab_widget> m_bar;
};

namespace {
struct Row
{
    const char* key;
    const char* panel;
    const char* label;
    const char* signal;
    int x;
    const char* caption;
};
// clang-format off
const Row rows[] = {
    {"key_EQ_setting",        "EQ_setting_widget",             "text_eq_setting",        SIGNAL(triShowEQSettingPage()),        188, "T195\nT387"},
    {"key_balance_setting",   "balance_setting_widget",        "text_balance_setting",   SIGNAL(triShowAudioLevelsPage()),       22, "T421\nT141"},
    {"key_crossover_setting", "crossover_setting_widget",      "text_crossover_setting", SIGNAL(triShowCrossoverSettingPage()), 520, "CROSSOVER\nT141"},
    {"key_time_alignment",    "time_alignment_setting_widget", "text_time_alignment",    SIGNAL(triShowTimeAlignmentpage()),    852, "T735\nALIGNMENT"},
    {"key_eq_preset",         "widget_eq_preset",              "label_eq_preset",        SIGNAL(triShowEQPreset()),             354, "PRESET\nof\neq"},
    {"key_audio_level",       "widget_audio_level",            "label_audio_level",      SIGNAL(triVolumeLevel()),              686, "Level\nx"},
};
// clang-format on
} // namespace

void TestTabWidget::init()
{
    reset();
    setText(1227, QStringLiteral("PRESET of eq"));
    setText(1246, QStringLiteral("Level x"));
    m_bar.reset(new m5qx_eq_tab_widget(nullptr));
    m_bar->show();
    takeCalls(All);
}

void TestTabWidget::signalsAndSlotsAreDeclaredInOrder()
{
    QStringList signatures;
    const QMetaObject* meta = m_bar->metaObject();
    for (int i = meta->methodOffset(); i < meta->methodCount(); ++i)
        signatures << QString::fromLatin1(meta->method(i).methodSignature());
    QCOMPARE(signatures,
             QStringList({"triShowEQSettingPage()", "triShowAudioLevelsPage()",
                          "triShowCrossoverSettingPage()", "triShowTimeAlignmentpage()", "triShowEQPreset()",
                          "triVolumeLevel()", "EQTypeChanged()", "onPageButGroupClicked(int)",
                          "onNextEQType()", "onPrevEQType()", "onEQTypeChanged(int)"}));
}

void TestTabWidget::formHasTheTablesPlaces_data()
{
    QTest::addColumn<int>("row");
    for (int i = 0; i < 6; ++i)
        QTest::newRow(rows[i].key) << i;
}

void TestTabWidget::formHasTheTablesPlaces()
{
    QFETCH(int, row);
    const Row& r = rows[row];
    QCOMPARE(m_bar->size(), QSize(1024, 90));
    QPushButton* k = key(r.key);
    QLabel* l = label(r.label);
    QCOMPARE(k->parentWidget()->objectName(), QString::fromLatin1(r.panel));
    QCOMPARE(l->parentWidget(), k->parentWidget());
    QCOMPARE(k->parentWidget()->geometry(), QRect(r.x, 10, 150, 72));
    QCOMPARE(k->geometry(), QRect(0, 0, 150, 72));
    QCOMPARE(l->geometry(), QRect(0, 0, 150, 72));
    QCOMPARE(k->iconSize(), QSize(150, 72));
    QCOMPARE(l->font().pointSize(), 16);
    QCOMPARE(l->styleSheet(),
             row == 5 ? QStringLiteral("color:rgb(255,255,255)") : QStringLiteral("color:#FFFFFF"));
    QVERIFY(l->testAttribute(Qt::WA_TransparentForMouseEvents));
    QVERIFY(k->isCheckable());
    QCOMPARE(int(l->alignment()), int(Qt::AlignCenter));
}

void TestTabWidget::pageKeysShowTheTablesPictures()
{
    QFETCH(int, row);
    const QString normal = QStringLiteral(":/vexa_m5qx_audiosettingicon/eq_btn_n.png");
    const QString marked = QStringLiteral(":/vexa_m5qx_audiosettingicon/eq_btn_p.png");
    const QIcon icon = key(rows[row].key)->icon();
    QVERIFY(formcheck::holds(icon, QIcon::Normal, QIcon::Off, normal));
    QVERIFY(formcheck::holds(icon, QIcon::Normal, QIcon::On, marked));
    QVERIFY(formcheck::holds(icon, QIcon::Selected, QIcon::Off, marked));
    QVERIFY(key(rows[row].key)->isFlat());
}

void TestTabWidget::typeSelectorTakesNoRoom()
{
    const QPair<const char*, QRect> places[] = {{"audio_setting_widget", QRect(0, 0, 0, 71)},
                                                {"bkg_audio_setting", QRect(77, 5, 0, 59)},
                                                {"key_audio_setting_left", QRect(0, 0, 0, 71)},
                                                {"key_audio_setting_right", QRect(243, 0, 0, 71)},
                                                {"text_EQ_type", QRect(77, 5, 0, 59)}};
    for (const auto& place : places)
        QCOMPARE(m_bar->findChild<QWidget*>(QLatin1String(place.first))->geometry(), place.second);
    QCOMPARE(label("text_EQ_type")->styleSheet(), QStringLiteral("color:rgb(238, 238, 236)"));
    QCOMPARE(key("key_audio_setting_left")->iconSize(), QSize(75, 71));
    QCOMPARE(key("key_audio_setting_right")->iconSize(), QSize(75, 71));
}

void TestTabWidget::typeKeysShowTheirPictures()
{
    const QString normal = QStringLiteral(":/vexa_m5qx_audiosettingicon/eq_icon_%1_n.png");
    const QString pressed = QStringLiteral(":/icon/eq_icon/eq_icon_%1_p.png");
    const QPair<const char*, QString> keys[] = {{"key_audio_setting_left", QStringLiteral("pre")},
                                                {"key_audio_setting_right", QStringLiteral("next")}};
    for (const auto& row : keys)
        QVERIFY(formcheck::isPlainKeyIcon(key(row.first)->icon(), normal.arg(row.second),
                                          pressed.arg(row.second)));
}

void TestTabWidget::captionsComeFromTheTranslator()
{
    QFETCH(int, row);
    QCOMPARE(label(rows[row].label)->text(), QString::fromLatin1(rows[row].caption));
    QVERIFY(!key(rows[row].key)->accessibleName().isEmpty());
}

void TestTabWidget::captionsFollowTheLanguageAtEachShow()
{
    m_bar->hide();
    setText(421, QStringLiteral("balance"));
    setText(141, QStringLiteral("ajustes"));
    QCOMPARE(label("text_balance_setting")->text(), QStringLiteral("T421\nT141"));
    m_bar->show();
    QCOMPARE(label("text_balance_setting")->text(), QStringLiteral("BALANCE\nAJUSTES"));
}

void TestTabWidget::everyPageKeyBeepsOnceBeforeItsSignal()
{
    QFETCH(int, row);
    QSignalSpy spy(m_bar.data(), rows[row].signal);
    touch::press(m_bar.data(), touch::middle(m_bar.data(), key(rows[row].key)));
    QCOMPARE(takeCalls(), QStringList());
    connect(m_bar.data(), &m5qx_eq_tab_widget::EQTypeChanged, [] { QFAIL("no type was changed"); });
    const auto remember = [this] { record(Widget, QStringLiteral("signal")); };
    for (auto signal :
         {&m5qx_eq_tab_widget::triShowEQSettingPage, &m5qx_eq_tab_widget::triShowAudioLevelsPage,
          &m5qx_eq_tab_widget::triShowCrossoverSettingPage, &m5qx_eq_tab_widget::triShowTimeAlignmentpage,
          &m5qx_eq_tab_widget::triShowEQPreset, &m5qx_eq_tab_widget::triVolumeLevel})
        connect(m_bar.data(), signal, remember);
    touch::release(m_bar.data(), touch::middle(m_bar.data(), key(rows[row].key)));
    QCOMPARE(takeCalls(Actions | Read | Widget), QStringList({"AudioService.doBeep(0)", "signal"}));
    QCOMPARE(spy.count(), 1);
    const QStringList log = takeLog();
    QVERIFY(!log.isEmpty());
    QVERIFY2(log.last().startsWith("D [DBG] ") &&
                 log.last().endsWith(QStringLiteral("-- page id %1").arg(row)),
             qPrintable(log.last()));
    QVERIFY(key(rows[row].key)->isChecked());
}

void TestTabWidget::aTouchOnALabelReachesTheKeyBelow()
{
    for (const Row& row : rows) {
        const QPoint pos = touch::middle(m_bar.data(), label(row.label));
        QCOMPARE(m_bar->childAt(pos), key(row.key));
    }
}

void TestTabWidget::setCheckedPageMarksThatKeyAlone()
{
    for (int page = 0; page < 6; ++page) {
        m_bar->setCheckedPage(page);
        for (int i = 0; i < 6; ++i)
            QCOMPARE(key(rows[i].key)->isChecked(), i == page);
    }
    QCOMPARE(takeCalls(), QStringList());
}

void TestTabWidget::setCheckedPageOutsideRangeLogsAnErrorAndChangesNothing_data()
{
    QTest::addColumn<int>("id");
    QTest::newRow("one past the last") << 6;
    QTest::newRow("minus one") << -1;
    QTest::newRow("largest") << INT_MAX;
    QTest::newRow("smallest") << INT_MIN;
}

void TestTabWidget::setCheckedPageOutsideRangeLogsAnErrorAndChangesNothing()
{
    QFETCH(int, id);
    m_bar->setCheckedPage(3);
    takeLog();
    m_bar->setCheckedPage(id);
    QVERIFY(key("key_time_alignment")->isChecked());
    const QStringList log = takeLog();
    QCOMPARE(log.size(), 1);
    QVERIFY2(log.first().startsWith("C [ERR] "), qPrintable(log.first()));
}

void TestTabWidget::anIdWithoutPageLogsAndBeepsAndEmitsNothing()
{
    QList<QSignalSpy*> spies;
    for (const Row& row : rows)
        spies << new QSignalSpy(m_bar.data(), row.signal);
    for (int id : {6, -1, INT_MIN}) {
        m_bar->onPageButGroupClicked(id);
        QCOMPARE(takeCalls(), QStringList({"AudioService.doBeep(0)"}));
        QVERIFY(takeLog().last().endsWith(QStringLiteral("-- page id %1").arg(id)));
    }
    for (QSignalSpy* spy : std::as_const(spies))
        QCOMPARE(spy->count(), 0);
    qDeleteAll(spies);
}

void TestTabWidget::logNamesTheSourceFileFromTheRootOfTheTree()
{
    takeLogFiles();
    m_bar->onPageButGroupClicked(0);
    m_bar->setCheckedPage(6);
    QCOMPARE(takeLogFiles(),
             QStringList({"M5QX/m5qx_audiosetting_tab_widget.cpp", "M5QX/m5qx_audiosetting_tab_widget.cpp"}));
}

void TestTabWidget::typeKeysWrapAround_data()
{
    QTest::addColumn<int>("from");
    QTest::addColumn<int>("next");
    QTest::addColumn<int>("prev");
    QTest::newRow("first") << 0 << 8 << 1;
    QTest::newRow("middle") << 4 << 3 << 5;
    QTest::newRow("last") << 8 << 7 << 0;
    // What no service should say leads back to what there is.
    QTest::newRow("below the first") << -1 << 8 << 0;
    QTest::newRow("above the last") << 9 << 8 << 0;
    QTest::newRow("smallest number") << INT_MIN << 8 << 0;
    QTest::newRow("largest number") << INT_MAX << 8 << 0;
}

void TestTabWidget::typeKeysWrapAround()
{
    QFETCH(int, from);
    QFETCH(int, next);
    QFETCH(int, prev);
    QSignalSpy changed(m_bar.data(), SIGNAL(EQTypeChanged()));
    audio().eqType = from;
    key("key_audio_setting_right")->click();
    QCOMPARE(takeCalls(Actions | Read | Text),
             QStringList({"AudioService.doBeep(0)", "AudioService.getCurrEQType()",
                          QStringLiteral("AudioService.setEQType(%1, true)").arg(next)}));
    audio().eqType = from;
    key("key_audio_setting_left")->click();
    QCOMPARE(takeCalls(Actions | Read | Text),
             QStringList({"AudioService.doBeep(0)", "AudioService.getCurrEQType()",
                          QStringLiteral("AudioService.setEQType(%1, true)").arg(prev)}));
    QCOMPARE(changed.count(), 2);
}

void TestTabWidget::typeNameFollowsThePlatformsSignal()
{
    QSignalSpy changed(m_bar.data(), SIGNAL(EQTypeChanged()));
    audio().eqType = 2;
    emitEQType(2);
    QCOMPARE(label("text_EQ_type")->text(), QStringLiteral("T239"));
    QCOMPARE(changed.count(), 1);
    QVERIFY(takeLog().last().endsWith("-- type: 2"));
}

void TestTabWidget::eachTypeHasTheNameOfTheCurveThatItDraws()
{
    QStringList names;
    for (int type = 0; type <= 8; ++type) {
        audio().eqType = type;
        emitEQType(type);
        names += label("text_EQ_type")->text();
    }
    // Type 8 has no curve of its own and is drawn flat.
    QCOMPARE(names,
             QStringList({"T1226", "T237", "T239", "T238", "T240", "T246", "T1258", "T1259", "T1226"}));
}

void TestTabWidget::unknownTypeShowsNoName()
{
    for (int type : {9, -1, INT_MAX}) {
        audio().eqType = type;
        emitEQType(type);
        QCOMPARE(label("text_EQ_type")->text(), QString());
    }
}

QTEST_MAIN(TestTabWidget)
#include "tst_m5qx_audiosetting_tab_widget.moc"
