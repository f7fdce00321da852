#include "M5QX/setuppagekeywidget.h"
#include "tests/M5QX/formcheck.h"
#include "tests/support/platform_double/platform_double.h"
#include "tests/support/randomwalk.h"
#include "tests/support/touch.h"

#include <QtTest>

using namespace platform_double;

class TestSetupPageKeyWidget : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void signalsAndSlotsAreDeclaredInOrder();
    void keysStandAndShowWhatTheTableSays_data();
    void keysStandAndShowWhatTheTableSays();
    void aPressBeepsThenCallsTheStation_data();
    void aPressBeepsThenCallsTheStation();
    void aPressWhileNoPageIsVisibleStillBeepsAndCallsTheStation();
    void resizeMovesTheNextKeyUpAndKeepsTheSize();
    void resizingAgainMovesTheNextKeyUpAgain();
    void showingDoesNothing();
    void everySlotWritesOneDiagnosticLine();
    void keysAreNamedAndReachedByKeyboardOnly();
    void randomTouchesKeepEveryInvariant_data() { RandomWalk::addSeedRow(); }
    void randomTouchesKeepEveryInvariant();

private:
    QPushButton* key(const char* name)
    {
        return formcheck::child<QPushButton>(m_strip.data(), QLatin1String(name));
    }
    QScopedPointer<SetupPageKeyWidget> m_strip;
};

void TestSetupPageKeyWidget::init()
{
    reset();
    m_strip.reset(new SetupPageKeyWidget(nullptr));
    takeCalls(All);
}

void TestSetupPageKeyWidget::signalsAndSlotsAreDeclaredInOrder()
{
    QCOMPARE(formcheck::ownMethods(m_strip->metaObject()),
             QStringList({"on_Key_prev_page_clicked()", "on_Key_next_page_clicked()"}));
    QCOMPARE(m_strip->metaObject()->className(), "SetupPageKeyWidget");
}

void TestSetupPageKeyWidget::keysStandAndShowWhatTheTableSays_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QRect>("place");
    QTest::addColumn<QString>("picture");
    QTest::newRow("previous") << "Key_prev_page" << QRect(0, 0, 50, 85) << ":/dual_icon/setup_btn_prev_page_";
    QTest::newRow("next") << "Key_next_page" << QRect(0, 372, 50, 85) << ":/dual_icon/setup_btn_next_page_";
}

void TestSetupPageKeyWidget::keysStandAndShowWhatTheTableSays()
{
    QFETCH(QString, name);
    QFETCH(QString, picture);
    QCOMPARE(m_strip->size(), QSize(50, 459));
    QPushButton* button = key(qPrintable(name));
    QTEST(button->geometry(), "place");
    QCOMPARE(button->iconSize(), QSize(96, 220));
    QVERIFY(button->isFlat());
    QVERIFY(formcheck::isPlainKeyIcon(button->icon(), picture + "n.png", picture + "p.png"));
}

void TestSetupPageKeyWidget::aPressBeepsThenCallsTheStation_data()
{
    QTest::addColumn<QPoint>("point");
    QTest::addColumn<QString>("call");
    QTest::newRow("previous") << QPoint(25, 40) << "R9TransferStation.setupPrevPage()";
    QTest::newRow("next") << QPoint(25, 372 + 40) << "R9TransferStation.setupNextPage()";
}

void TestSetupPageKeyWidget::aPressBeepsThenCallsTheStation()
{
    QFETCH(QPoint, point);
    QFETCH(QString, call);
    m_strip->show();
    touch::press(m_strip.data(), point);
    QCOMPARE(takeCalls(All), QStringList());
    touch::release(m_strip.data(), point);
    QCOMPARE(takeCalls(All), QStringList({QStringLiteral("McuManager.triggerBeep(0)"), call}));
}

void TestSetupPageKeyWidget::aPressWhileNoPageIsVisibleStillBeepsAndCallsTheStation()
{
    key("Key_next_page")->click();
    QCOMPARE(takeCalls(All), QStringList({"McuManager.triggerBeep(0)", "R9TransferStation.setupNextPage()"}));
}

void TestSetupPageKeyWidget::resizeMovesTheNextKeyUpAndKeepsTheSize()
{
    m_strip->resizeHeightofKeyWidget(40);
    QCOMPARE(key("Key_next_page")->geometry(), QRect(0, 332, 50, 85));
    QCOMPARE(key("Key_prev_page")->geometry(), QRect(0, 0, 50, 85));
    QCOMPARE(m_strip->size(), QSize(50, 459));
}

void TestSetupPageKeyWidget::resizingAgainMovesTheNextKeyUpAgain()
{
    m_strip->resizeHeightofKeyWidget(40);
    m_strip->resizeHeightofKeyWidget(40);
    QCOMPARE(key("Key_next_page")->y(), 292);
    m_strip->resizeHeightofKeyWidget(-80);
    QCOMPARE(key("Key_next_page")->y(), 372);
}

void TestSetupPageKeyWidget::showingDoesNothing()
{
    takeLog();
    m_strip->show();
    m_strip->hide();
    m_strip->show();
    QCOMPARE(takeCalls(All), QStringList());
    QCOMPARE(takeLog(), QStringList());
    QCOMPARE(key("Key_next_page")->y(), 372);
}

void TestSetupPageKeyWidget::everySlotWritesOneDiagnosticLine()
{
    takeLog();
    m_strip->on_Key_prev_page_clicked();
    m_strip->on_Key_next_page_clicked();
    const QStringList log = takeLog();
    QCOMPARE(log.size(), 2);
    const QRegularExpression form(
        QStringLiteral("^D \\[DBG\\] \\d+ .*on_Key_(prev|next)_page_clicked\\(\\).* \\d+ --"));
    for (const QString& line : log)
        QVERIFY2(form.match(line).hasMatch(), qPrintable(line));
}

void TestSetupPageKeyWidget::keysAreNamedAndReachedByKeyboardOnly()
{
    m_strip->setPageName(QStringLiteral("LEVELS"));
    QVERIFY(key("Key_prev_page")->accessibleName().startsWith(QStringLiteral("LEVELS")));
    QVERIFY(key("Key_next_page")->accessibleName().startsWith(QStringLiteral("LEVELS")));
    QVERIFY(key("Key_prev_page")->accessibleName() != key("Key_next_page")->accessibleName());
    for (QPushButton* button : m_strip->findChildren<QPushButton*>())
        QCOMPARE(button->focusPolicy(), Qt::TabFocus);
}

void TestSetupPageKeyWidget::randomTouchesKeepEveryInvariant()
{
    QFETCH(quint32, seed);
    m_strip->show();
    RandomWalk walk(m_strip.data(), seed);
    int calls = 0;
    for (int event = 0; event < 20000; ++event) {
        if (walk.step() != RandomWalk::Release) {
            QCOMPARE(takeCalls(All), QStringList());
        } else {
            const QStringList lines = takeCalls(All);
            QVERIFY(lines.isEmpty() || lines.size() == 2);
            if (lines.size() == 2) {
                ++calls;
                QCOMPARE(lines.first(), QStringLiteral("McuManager.triggerBeep(0)"));
                QVERIFY(lines.last().startsWith(QStringLiteral("R9TransferStation.setup")));
            }
        }
    }
    QVERIFY(calls > 0);
}

QTEST_MAIN(TestSetupPageKeyWidget)
#include "tst_setuppagekeywidget.moc"
