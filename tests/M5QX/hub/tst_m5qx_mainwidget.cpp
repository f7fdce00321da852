#include "M5QX/m5qx_mainwidget.h"

#include "M5QX/eqpresetwidget.h"
#include "M5QX/m5qx_audiosetting_audio_levels_page.h"
#include "M5QX/m5qx_audiosetting_container.h"
#include "M5QX/m5qx_audiosetting_settings_page.h"
#include "M5QX/m5qx_audiosetting_tab_widget.h"
#include "M5QX/m5qx_audiosetting_time_alignment_page.h"
#include "M5QX/m5qxcrosssettingwidget.h"
#include "M5QX/volumesettingwidget.h"
#include "tests/M5QX/formcheck.h"
#include "tests/support/platform_double/platform_double.h"
#include "tests/support/touch.h"

#include <QLabel>
#include <QPushButton>
#include <QtTest>

using namespace audiosetting;
using namespace platform_double;

namespace {

struct PageRow
{
    const char* name;
    const QMetaObject* page;
    const char* show;
    const char* key;
    bool kept;
    const char* exit;
};

// clang-format off
const PageRow pages[] = {
    {"EQ settings",    &m5qx_EQ_settings_page::staticMetaObject,        "onShowEQSettingPage",         "key_EQ_setting",        true,  nullptr},
    {"audio levels",   &m5qx_eq_audio_levels_page::staticMetaObject,    "onShowAudioLevelsPage",       "key_balance_setting",   true,  nullptr},
    {"crossover",      &M5QXCrossSettingWidget::staticMetaObject,       "onShowCrossoverSettingsPage", "key_crossover_setting", false, "onCrossSettingsExit"},
    {"time alignment", &m5qx_eq_time_alignment_page::staticMetaObject,  "onShowTimeAlignmentPage",     "key_time_alignment",    true,  nullptr},
    {"EQ preset",      &EQPresetWidget::staticMetaObject,               "onShowEQPresetPage",          "key_eq_preset",         false, "onEQPresetExit"},
    {"volumes",        &VolumeSettingWidget::staticMetaObject,          "onShowVolumeLevelPage",       "key_audio_level",       false, "onVolumeLevelExit"},
};
// clang-format on
static_assert(std::size(pages) == 6, "six pages");

const QString pageKey = QStringLiteral("AudioSetting_Page");

/// How often a widget is drawn.
class PaintCounter : public QObject
{
public:
    explicit PaintCounter(QWidget* widget) { widget->installEventFilter(this); }
    bool eventFilter(QObject*, QEvent* event) override
    {
        paints += event->type() == QEvent::Paint;
        return false;
    }
    int paints = 0;
};

} // namespace

class TestMainWidget : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void slotsAreDeclaredInOrder();
    void formHasTheTablesPlaces();
    void withNoStoredPageTheAudioLevelsPageComesFirst();
    void storedPageComesFirst_data() { pageRows(); }
    void storedPageComesFirst();
    void unknownStoredPageShowsNone_data();
    void unknownStoredPageShowsNone();
    void tabKeyShowsItsPageAloneAndStoresIt_data() { pageRows(); }
    void tabKeyShowsItsPageAloneAndStoresIt();
    void onlyTheCrossoverRaisesTheTabBarAboveItsSiblings_data() { pageRows(); }
    void onlyTheCrossoverRaisesTheTabBarAboveItsSiblings();
    void pagesLieAboveTheTabBarAndLeaveEveryTabTouchable_data() { pageRows(); }
    void pagesLieAboveTheTabBarAndLeaveEveryTabTouchable();
    void keptPagesAreBuiltOnce_data() { pageRows(); }
    void keptPagesAreBuiltOnce();
    void transientPagesAreBuiltAnewAndDestroyedLater_data() { transientPageRows(); }
    void transientPagesAreBuiltAnewAndDestroyedLater();
    void pageIsDrawnOnceWhereATransientOneGoes_data() { transientPageRows(); }
    void pageIsDrawnOnceWhereATransientOneGoes();
    void exitOfATransientPagePostsOneBackRequestAndKeepsTheIndex_data() { transientPageRows(); }
    void exitOfATransientPagePostsOneBackRequestAndKeepsTheIndex();
    void exitSlotsTolerateAPageThatIsGone();
    void connectionRequestsThatCannotSucceedAreMadeAndRefused_data();
    void connectionRequestsThatCannotSucceedAreMadeAndRefused();
    void noOtherConnectionFails();
    void showAndHideAskForTheStatusBar();
    void resumeShowsTheStoredPageAgainAndRebuildsATransientOne();
    void backEventPostsOneRequestAndIsHandled();
    void typeTextIsRefreshedWhenSomeoneSaysTheTypeChanged();
    void writeThenMarkThenResumeThenShow();

private:
    template <typename Page>
    Page* page()
    {
        return m_hub->findChild<Page*>();
    }
    QWidget* visiblePage() const;
    int visiblePages() const;
    QWidget* pageWidget(int index) const;
    QPushButton* key(int index) const
    {
        return m_hub->findChild<QPushButton*>(QLatin1String(pages[index].key));
    }
    void touchTab(int index) { touch::click(m_hub.data(), touch::middle(m_hub.data(), key(index))); }
    void pageRows() { formcheck::addRows(pages, &PageRow::name, "index"); }
    void transientPageRows();
    void showHub()
    {
        m_hub.reset(new m5qx_mainwidget(nullptr));
        m_hub->show();
    }
    QScopedPointer<m5qx_mainwidget> m_hub;
};

void TestMainWidget::init()
{
    reset();
    m_hub.reset();
}

void TestMainWidget::cleanup()
{
    m_hub.reset();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

QWidget* TestMainWidget::pageWidget(int index) const
{
    QWidget* found = nullptr;
    const auto widgets = m_hub->findChildren<QWidget*>();
    for (QWidget* widget : widgets) {
        if (widget->metaObject() == pages[index].page && (!found || widget->isVisibleTo(m_hub.data())))
            found = widget;
    }
    return found;
}

QWidget* TestMainWidget::visiblePage() const
{
    for (int i = 0; i < 6; ++i) {
        QWidget* widget = pageWidget(i);
        if (widget && widget->isVisibleTo(m_hub.data()))
            return widget;
    }
    return nullptr;
}

int TestMainWidget::visiblePages() const
{
    int count = 0;
    for (int i = 0; i < 6; ++i) {
        QWidget* widget = pageWidget(i);
        count += widget && widget->isVisibleTo(m_hub.data());
    }
    return count;
}

void TestMainWidget::slotsAreDeclaredInOrder()
{
    QStringList signatures;
    const QMetaObject& meta = m5qx_mainwidget::staticMetaObject;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i)
        signatures << QString::fromLatin1(meta.method(i).methodSignature());
    QCOMPARE(signatures,
             QStringList({"onShowEQSettingPage()", "onShowAudioLevelsPage()", "onShowCrossoverSettingsPage()",
                          "onCrossSettingsExit()", "onShowTimeAlignmentPage()", "onShowEQPresetPage()",
                          "onEQPresetExit()", "onShowVolumeLevelPage()", "onVolumeLevelExit()",
                          "onEQTypeChanged()"}));
}

void TestMainWidget::formHasTheTablesPlaces()
{
    m_hub.reset(new m5qx_mainwidget(nullptr));
    QCOMPARE(m_hub->geometry(), QRect(0, 0, 1024, 600));
    auto* container = page<m5qx_audiosetting_container>();
    QCOMPARE(container->parentWidget(), m_hub.data());
    QCOMPARE(container->objectName(), QStringLiteral("m5qx_audiosetting_container"));
    QCOMPARE(container->size(), QSize(1024, 600));
    QCOMPARE(container->windowTitle(), QStringLiteral("Form"));
    const struct
    {
        const char* name;
        const char* parent;
        QRect place;
        const char* style;
    } rows[] = {{"up_widget", "m5qx_audiosetting_container", {0, 0, 1024, 510}, ""},
                {"bkg_tab_01", "up_widget", {0, 0, 1024, 510}, "background: transparent"},
                {"down_widget", "m5qx_audiosetting_container", {0, 510, 1024, 90}, ""},
                {"bkg_down_01", "down_widget", {0, 0, 1024, 90}, "background-color:rgb(0, 0, 0)"}};
    for (const auto& row : rows) {
        auto* widget = m_hub->findChild<QWidget*>(QLatin1String(row.name));
        QVERIFY2(widget, row.name);
        QCOMPARE(widget->parentWidget()->objectName(), QString::fromLatin1(row.parent));
        QCOMPARE(widget->geometry(), row.place);
        QCOMPARE(widget->styleSheet(), QString::fromLatin1(row.style));
    }
    QCOMPARE(page<m5qx_eq_tab_widget>()->parentWidget()->objectName(), QStringLiteral("down_widget"));
}

void TestMainWidget::withNoStoredPageTheAudioLevelsPageComesFirst()
{
    showHub();
    QCOMPARE(visiblePage(), page<m5qx_eq_audio_levels_page>());
    QCOMPARE(visiblePages(), 1);
    QVERIFY(key(1)->isChecked());
    QCOMPARE(stored(pageKey), QVariant(1));
}

void TestMainWidget::storedPageComesFirst()
{
    QFETCH(int, index);
    setStored(pageKey, index);
    showHub();
    QCOMPARE(visiblePage(), pageWidget(index));
    QVERIFY(visiblePage());
    QCOMPARE(visiblePages(), 1);
    QVERIFY(key(index)->isChecked());
}

void TestMainWidget::unknownStoredPageShowsNone_data()
{
    QTest::addColumn<int>("stored");
    QTest::newRow("minus one") << -1;
    QTest::newRow("six") << 6;
    QTest::newRow("huge") << INT_MAX;
    QTest::newRow("tiny") << INT_MIN;
}

void TestMainWidget::unknownStoredPageShowsNone()
{
    QFETCH(int, stored);
    setStored(pageKey, stored);
    showHub();
    QVERIFY(!visiblePage());
    for (int i = 0; i < 6; ++i)
        QVERIFY(!key(i)->isChecked());
    QCOMPARE(takeCalls(), QStringList());
    QCOMPARE(platform_double::stored(pageKey), QVariant(stored));
}

void TestMainWidget::tabKeyShowsItsPageAloneAndStoresIt()
{
    QFETCH(int, index);
    setStored(pageKey, (index + 1) % 6);
    showHub();
    takeCalls();
    touchTab(index);
    QCOMPARE(visiblePages(), 1);
    QCOMPARE(visiblePage(), pageWidget(index));
    for (int i = 0; i < 6; ++i)
        QCOMPARE(key(i)->isChecked(), i == index);
    const QStringList calls = takeCalls();
    QCOMPARE(calls.value(0), QStringLiteral("AudioService.doBeep(0)"));
    QCOMPARE(calls.value(1),
             QStringLiteral("SettingsExe.setValue(\"AudioSetting_Page\", 1, %1, true)").arg(index));
    QCOMPARE(calls.size(), 2);
    QVERIFY(page<m5qx_audiosetting_container>()->isVisible());
    QVERIFY(page<m5qx_eq_tab_widget>()->isVisible());
}

void TestMainWidget::onlyTheCrossoverRaisesTheTabBarAboveItsSiblings()
{
    QFETCH(int, index);
    setStored(pageKey, 6);
    m_hub.reset(new m5qx_mainwidget(nullptr));
    auto* tabs = page<m5qx_eq_tab_widget>();
    auto* sibling = new QWidget(tabs->parentWidget());
    QVERIFY(QMetaObject::invokeMethod(m_hub.data(), pages[index].show));
    QObject* const top = tabs->parentWidget()->children().last();
    QCOMPARE(top, index == 2 ? static_cast<QObject*>(tabs) : sibling);
}

void TestMainWidget::pagesLieAboveTheTabBarAndLeaveEveryTabTouchable()
{
    QFETCH(int, index);
    setStored(pageKey, index);
    showHub();
    QCOMPARE(visiblePage()->size(), QSize(1024, 510));
    QCOMPARE(visiblePage()->mapTo(m_hub.data(), QPoint(0, 0)), QPoint(0, 0));
    QCOMPARE(visiblePage()->parentWidget()->objectName(),
             pages[index].kept ? QStringLiteral("up_widget") : m_hub->objectName());
    for (int i = 0; i < 6; ++i)
        QCOMPARE(m_hub->childAt(touch::middle(m_hub.data(), key(i))), key(i));
}

void TestMainWidget::keptPagesAreBuiltOnce()
{
    QFETCH(int, index);
    showHub();
    touchTab(index);
    QPointer<QWidget> first = visiblePage();
    touchTab((index + 1) % 6);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    touchTab(index);
    if (pages[index].kept)
        QCOMPARE(visiblePage(), first.data());
    else
        QVERIFY(!first);
    QVERIFY(visiblePage());
}

void TestMainWidget::transientPageRows()
{
    QTest::addColumn<int>("index");
    for (int i = 0; i < 6; ++i) {
        if (!pages[i].kept)
            QTest::newRow(pages[i].name) << i;
    }
}

void TestMainWidget::transientPagesAreBuiltAnewAndDestroyedLater()
{
    QFETCH(int, index);
    setStored(pageKey, index);
    showHub();
    QPointer<QWidget> first = visiblePage();
    touchTab(0);
    // Not at once: a page may ask to leave from inside its own signal.
    QVERIFY(first);
    QVERIFY(!first->isVisible());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(!first);
    takeCalls();
    touchTab(index);
    QVERIFY(visiblePage());
    // Again the key of the page that is shown: a new one all the same.
    QPointer<QWidget> second = visiblePage();
    touchTab(index);
    QVERIFY(visiblePage() != second);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(!second);
    QCOMPARE(visiblePages(), 1);
}

void TestMainWidget::pageIsDrawnOnceWhereATransientOneGoes()
{
    QFETCH(int, index);
    setStored(pageKey, index);
    showHub();
    QVERIFY(QTest::qWaitForWindowExposed(m_hub.data()));
    QPointer<QWidget> before = visiblePage();
    touchTab(3);
    PaintCounter counter(visiblePage());
    QEvent draw(QEvent::UpdateRequest); // what is to be drawn, now
    QCoreApplication::sendEvent(m_hub.data(), &draw);
    QCOMPARE(counter.paints, 1);
    QVERIFY(before);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(!before);
    QCoreApplication::sendEvent(m_hub.data(), &draw);
    QCOMPARE(counter.paints, 1);
}

void TestMainWidget::exitOfATransientPagePostsOneBackRequestAndKeepsTheIndex()
{
    QFETCH(int, index);
    setStored(pageKey, index);
    showHub();
    QPointer<QWidget> shown = visiblePage();
    takeCalls();
    QVERIFY(QMetaObject::invokeMethod(shown, "exitUI"));
    QVERIFY(shown && !shown->isVisible());
    QCOMPARE(takeBackRequests(), 1);
    QVERIFY(!visiblePage());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(!shown);
    QCOMPARE(takeCalls(), QStringList());
    QCOMPARE(stored(pageKey), QVariant(index));
    // The next start shows it again.
    m_hub->resume();
    QCOMPARE(visiblePage(), pageWidget(index));
    QVERIFY(visiblePage());
}

void TestMainWidget::exitSlotsTolerateAPageThatIsGone()
{
    m_hub.reset(new m5qx_mainwidget(nullptr));
    for (const PageRow& row : pages) {
        if (row.exit) {
            QVERIFY(QMetaObject::invokeMethod(m_hub.data(), row.exit));
            QCOMPARE(takeBackRequests(), 1);
        }
    }
}

void TestMainWidget::connectionRequestsThatCannotSucceedAreMadeAndRefused_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<QStringList>("warnings");
    const QString hub = QStringLiteral("audiosetting::m5qx_mainwidget::");
    QTest::newRow("EQ settings")
        << 0
        << QStringList{"No such slot audiosetting::m5qx_EQ_settings_page::onEQTypeChanged()",
                       "No such signal "
                       "audiosetting::m5qx_EQ_settings_page::trigSubwooferOutputOnOff(bool)",
                       "No such signal audiosetting::m5qx_EQ_settings_page::trigLoudnessOnOff(bool)"};
    QTest::newRow("audio levels") << 1
                                  << QStringList{"No such slot " + hub +
                                                     "onAudioTrigSubwooferOutputOnOff(bool)",
                                                 "No such slot " + hub + "onAudioTrigLoudnessOnOff(bool)"};
    QTest::newRow("time alignment")
        << 3
        << QStringList{
               "No such signal audiosetting::m5qx_eq_time_alignment_page::trigSubwooferOutputOnOff(bool)",
               "No such signal audiosetting::m5qx_eq_time_alignment_page::trigLoudnessOnOff(bool)"};
}

void TestMainWidget::connectionRequestsThatCannotSucceedAreMadeAndRefused()
{
    QFETCH(int, index);
    setStored(pageKey, 6);
    m_hub.reset(new m5qx_mainwidget(nullptr));
    takeLog();
    QVERIFY(QMetaObject::invokeMethod(m_hub.data(), pages[index].show));
    QStringList refused;
    const QStringList log = takeLog();
    for (const QString& line : log) {
        if (line.startsWith("W QObject::connect: No such"))
            refused << line.section(QStringLiteral(" in "), 0, 0).mid(int(qstrlen("W QObject::connect: ")));
    }
    QTEST(refused, "warnings");
}

void TestMainWidget::noOtherConnectionFails()
{
    showHub();
    for (int i = 0; i < 6; ++i)
        touchTab(i);
    // Three pages with the two switches each, and the slot that the equalizer page lacks.
    int refused = 0;
    const QStringList log = takeLog();
    for (const QString& line : log)
        refused += line.startsWith("W QObject::connect: No such");
    QVERIFY2(refused == 7, qPrintable(log.filter(QRegularExpression("^W ")).join('\n')));
}

void TestMainWidget::showAndHideAskForTheStatusBar()
{
    m_hub.reset(new m5qx_mainwidget(nullptr));
    QCOMPARE(takeStatusBarRequests(), QList<bool>());
    m_hub->show();
    QCOMPARE(takeStatusBarRequests(), QList<bool>({true}));
    m_hub->hide();
    QCOMPARE(takeStatusBarRequests(), QList<bool>({false}));
}

void TestMainWidget::resumeShowsTheStoredPageAgainAndRebuildsATransientOne()
{
    setStored(pageKey, 5);
    showHub();
    QPointer<QWidget> first = visiblePage();
    m_hub->resume();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(!first);
    QCOMPARE(visiblePage(), page<VolumeSettingWidget>());
}

void TestMainWidget::backEventPostsOneRequestAndIsHandled()
{
    m_hub.reset(new m5qx_mainwidget(nullptr));
    takeCalls();
    QCOMPARE(m_hub->backEvent(), 1);
    QCOMPARE(takeBackRequests(), 1);
    QCOMPARE(takeCalls(), QStringList());
}

void TestMainWidget::typeTextIsRefreshedWhenSomeoneSaysTheTypeChanged()
{
    m_hub.reset(new m5qx_mainwidget(nullptr));
    auto* name = m_hub->findChild<QLabel*>(QStringLiteral("text_EQ_type"));
    audio().eqType = 4;
    takeCalls(All);
    QVERIFY(QMetaObject::invokeMethod(m_hub.data(), "onEQTypeChanged"));
    QCOMPARE(takeCalls(All), QStringList({"AudioService.getCurrEQType()", "Translator.translate(240)"}));
    QCOMPARE(name->text(), QStringLiteral("T240"));
    // The EQ page's signal is connected to it, although the page never emits it.
    QVERIFY(QMetaObject::invokeMethod(m_hub.data(), "onShowEQSettingPage"));
    audio().eqType = 5;
    QVERIFY(QMetaObject::invokeMethod(page<m5qx_EQ_settings_page>(), "EQTypeChanged"));
    QCOMPARE(name->text(), QStringLiteral("T246"));
}

void TestMainWidget::writeThenMarkThenResumeThenShow()
{
    setStored(pageKey, 0);
    showHub();
    takeCalls(All);
    QVERIFY(QMetaObject::invokeMethod(m_hub.data(), "onShowEQPresetPage"));
    const QStringList calls = takeCalls(Actions | Read);
    // The page's own reading (resume) comes after the write of its index.
    QCOMPARE(calls, QStringList({"SettingsExe.setValue(\"AudioSetting_Page\", 1, 4, true)",
                                 "AudioService.getCurrEQType()"}));
}

QTEST_MAIN(TestMainWidget)
#include "tst_m5qx_mainwidget.moc"
