#include "M5QX/eqpresetwidget.h"
#include "tests/M5QX/pagefixture.h"
#include "tests/support/randomwalk.h"

#include <QButtonGroup>
#include <QRegularExpression>
#include <QSignalSpy>

#include <climits>

using namespace platform_double;

namespace {

struct Tile
{
    const char* name;
    int textId;
    int type;
    const char* picture;
    QPoint place;
    QIcon::State selectedState;
};

// By group id.
// clang-format off
const Tile tiles[] = {
    {"jazz",   246,  5, "Jazz",    {276, 116}, QIcon::Off},
    {"hiphop", 240,  4, "Hip-Hop", {519, 116}, QIcon::On},
    {"pop",    238,  3, "Pop",     {761, 116}, QIcon::Off},
    {"rock",   239,  2, "Rock",    {276, 312}, QIcon::Off},
    {"rb",     237,  1, "R&B",     {519, 312}, QIcon::Off},
    {"flat",   1226, 0, "Flat",    {761, 312}, QIcon::On},
    {"user1",  1258, 6, "User_1",  {35, 116},  QIcon::Off},
    {"user2",  1259, 7, "User_2",  {35, 312},  QIcon::Off},
};
// clang-format on
constexpr int tileCount = std::size(tiles);

void addTileRows()
{
    formcheck::addRows(tiles, &Tile::name, "id");
}

} // namespace

class TestEqPresetWidget : public PageFixture<EQPresetWidget>
{
    Q_OBJECT
private slots:
    void init();
    void cleanup() { m_page.reset(); }

    void signalsAndSlotsAreDeclaredInOrder();
    void tilesStandWhereTheTableSays_data() { addTileRows(); }
    void tilesStandWhereTheTableSays();
    void tilesShowTheirPictures_data() { addTileRows(); }
    void tilesShowTheirPictures();
    void labelsLieOverTheirTilesAndLetTouchesThrough_data() { addTileRows(); }
    void labelsLieOverTheirTilesAndLetTouchesThrough();
    void topBarHasTitleEmblemAndAHiddenExit();
    void tilesAreOneExclusiveGroup();
    void constructionAsksNothingOfTheService();

    void resumeChecksTheTileOfTheServicesType_data() { addTileRows(); }
    void resumeChecksTheTileOfTheServicesType();
    void anUnknownTypeChangesNothingOnResume_data();
    void anUnknownTypeChangesNothingOnResume();
    void anUnknownTypeOnAFreshPageChecksNoTile();
    void touchingATileSendsItsTypeWithoutABeep_data() { addTileRows(); }
    void touchingATileSendsItsTypeWithoutABeep();
    void touchingUser2SendsType7();
    void theCheckMarkMovesBeforeTheServiceAnswers();
    void touchingTheCheckedTileSendsItAgain();
    void anIdOutsideTheGroupDoesNothing();
    void exitBeepsThenEmitsExitUI();
    void everySlotWritesOneDiagnosticLine();
    void keysAreNamedAndReachedByKeyboardOnly();
    void randomTouchesKeepEveryInvariant_data() { RandomWalk::addSeedRow(); }
    void randomTouchesKeepEveryInvariant();

private:
    QPushButton* key(int id) { return find(QStringLiteral("key_") + tiles[id].name); }
    QLabel* label(int id) { return find<QLabel>(QStringLiteral("label_") + tiles[id].name); }
    /// Group ids of the checked tiles.
    QVector<int> checked();
};

void TestEqPresetWidget::init()
{
    reset();
    m_page.reset(new EQPresetWidget(nullptr));
}

QVector<int> TestEqPresetWidget::checked()
{
    QVector<int> ids;
    for (int id = 0; id < tileCount; ++id) {
        if (key(id)->isChecked())
            ids.append(id);
    }
    return ids;
}

void TestEqPresetWidget::signalsAndSlotsAreDeclaredInOrder()
{
    QCOMPARE(formcheck::ownMethods(m_page->metaObject()),
             QStringList({"exitUI()", "onButtonGroupClicked(int)", "on_key_exit_clicked()"}));
    QCOMPARE(m_page->metaObject()->className(), "EQPresetWidget");
}

void TestEqPresetWidget::tilesStandWhereTheTableSays()
{
    QFETCH(int, id);
    QCOMPARE(m_page->size(), QSize(1024, 510));
    QCOMPARE(key(id)->geometry(), QRect(tiles[id].place, QSize(227, 126)));
    QCOMPARE(key(id)->iconSize(), QSize(227, 126));
    QVERIFY(key(id)->isCheckable());
    QVERIFY(key(id)->isFlat());
}

void TestEqPresetWidget::tilesShowTheirPictures()
{
    QFETCH(int, id);
    const QString prefix = QStringLiteral(":/vexa_m5qx_settingicon_ext/") + tiles[id].picture;
    const QIcon icon = key(id)->icon();
    QVERIFY(formcheck::holds(icon, QIcon::Normal, QIcon::Off, prefix + "_n.png"));
    QVERIFY(formcheck::holds(icon, QIcon::Normal, QIcon::On, prefix + "_p.png"));
    QVERIFY(formcheck::holds(icon, QIcon::Selected, tiles[id].selectedState, prefix + "_p.png"));
    const QIcon::State other = tiles[id].selectedState == QIcon::On ? QIcon::Off : QIcon::On;
    QVERIFY(icon.availableSizes(QIcon::Selected, other).isEmpty());
}

void TestEqPresetWidget::labelsLieOverTheirTilesAndLetTouchesThrough()
{
    QFETCH(int, id);
    const Tile& tile = tiles[id];
    const QPoint offset(10, tile.place.y() == 116 ? 4 : 8);
    QCOMPARE(label(id)->geometry(), QRect(tile.place + offset, QSize(217, 71)));
    QCOMPARE(label(id)->font().pointSize(), 32);
    QVERIFY(label(id)->font().bold());
    QVERIFY(label(id)->testAttribute(Qt::WA_TransparentForMouseEvents));
    QCOMPARE(label(id)->text(), QStringLiteral("T%1").arg(tile.textId));
    setText(tile.textId, QStringLiteral("lower"));
    EQPresetWidget other(nullptr);
    QCOMPARE(formcheck::child<QLabel>(&other, label(id)->objectName())->text(), QStringLiteral("LOWER"));
    // The label is on top, the touch reaches the tile.
    m_page->show();
    QCOMPARE(press(label(id)->geometry().center()), key(id));
    release(label(id)->geometry().center());
    QCOMPARE(checked(), QVector<int>{id});
}

void TestEqPresetWidget::topBarHasTitleEmblemAndAHiddenExit()
{
    setText(1227, QStringLiteral("eq Preset"));
    EQPresetWidget page(nullptr);
    auto* title = formcheck::child<QLabel>(&page, QStringLiteral("label_title"));
    QCOMPARE(title->text(), QStringLiteral("eq Preset"));
    QCOMPARE(title->font().pointSize(), 20);
    const QString prefix = QStringLiteral(":/vexa_m5qx_audiosettingicon/");
    auto* exit = formcheck::child<QPushButton>(&page, QStringLiteral("key_exit"));
    QCOMPARE(exit->geometry(), QRect(938, 13, 74, 60));
    QCOMPARE(exit->iconSize(), QSize(74, 60));
    QVERIFY(
        formcheck::isPlainKeyIcon(exit->icon(), prefix + "icon_close_n.png", prefix + "icon_close_p.png"));
    QVERIFY(exit->isHidden());
    auto* emblem = formcheck::child<QPushButton>(&page, QStringLiteral("key_back"));
    QVERIFY(formcheck::holds(emblem->icon(), QIcon::Normal, QIcon::Off, prefix + "icon_eq.png"));
    takeCalls(All);
    QTest::mouseClick(emblem, Qt::LeftButton);
    QCOMPARE(takeCalls(All), QStringList());
}

void TestEqPresetWidget::tilesAreOneExclusiveGroup()
{
    const auto groups = m_page->findChildren<QButtonGroup*>();
    QCOMPARE(groups.size(), 1);
    QVERIFY(groups.first()->exclusive());
    QCOMPARE(groups.first()->buttons().size(), tileCount);
    for (int id = 0; id < tileCount; ++id)
        QCOMPARE(groups.first()->button(id), key(id));
}

void TestEqPresetWidget::constructionAsksNothingOfTheService()
{
    takeCalls(All);
    EQPresetWidget page(nullptr);
    QCOMPARE(takeCalls(All & ~Text), QStringList());
}

void TestEqPresetWidget::resumeChecksTheTileOfTheServicesType()
{
    QFETCH(int, id);
    audio().eqType = tiles[id].type;
    takeCalls(All);
    m_page->resume();
    QCOMPARE(checked(), QVector<int>{id});
    QCOMPARE(takeCalls(All), QStringList("AudioService.getCurrEQType()"));
}

void TestEqPresetWidget::anUnknownTypeChangesNothingOnResume_data()
{
    QTest::addColumn<int>("type");
    for (const int type : {8, 9, -1, INT_MAX, INT_MIN})
        QTest::addRow("type %d", type) << type;
}

void TestEqPresetWidget::anUnknownTypeChangesNothingOnResume()
{
    QFETCH(int, type);
    audio().eqType = 2;
    m_page->resume();
    audio().eqType = type;
    m_page->resume();
    QCOMPARE(checked(), QVector<int>{3});
}

void TestEqPresetWidget::anUnknownTypeOnAFreshPageChecksNoTile()
{
    audio().eqType = 8;
    m_page->resume();
    QCOMPARE(checked(), QVector<int>());
}

void TestEqPresetWidget::touchingATileSendsItsTypeWithoutABeep()
{
    QFETCH(int, id);
    m_page->show();
    takeCalls(All);
    click(tiles[id].place + QPoint(113, 110));
    QCOMPARE(takeCalls(All),
             QStringList(QStringLiteral("AudioService.setEQType(%1, true)").arg(tiles[id].type)));
    QCOMPARE(checked(), QVector<int>{id});
}

void TestEqPresetWidget::touchingUser2SendsType7()
{
    m_page->show();
    takeCalls(All);
    click(QPoint(35 + 100, 312 + 100));
    QCOMPARE(takeCalls(), QStringList("AudioService.setEQType(7, true)"));
}

void TestEqPresetWidget::theCheckMarkMovesBeforeTheServiceAnswers()
{
    m_page->show();
    m_page->resume();
    QCOMPARE(checked(), QVector<int>{5});
    click(tiles[0].place + QPoint(5, 5));
    QCOMPARE(checked(), QVector<int>{0});
    // An answer that is another type wins at the next show only.
    audio().eqType = 1;
    emitEQType(1);
    QCOMPARE(checked(), QVector<int>{0});
    m_page->resume();
    QCOMPARE(checked(), QVector<int>{4});
}

void TestEqPresetWidget::touchingTheCheckedTileSendsItAgain()
{
    m_page->show();
    audio().eqType = 4;
    m_page->resume();
    takeCalls(All);
    click(tiles[1].place + QPoint(100, 60));
    QCOMPARE(takeCalls(), QStringList("AudioService.setEQType(4, true)"));
    QCOMPARE(checked(), QVector<int>{1});
}

void TestEqPresetWidget::anIdOutsideTheGroupDoesNothing()
{
    takeCalls(All);
    for (const int id : {-1, 8, INT_MAX, INT_MIN})
        m_page->onButtonGroupClicked(id);
    QCOMPARE(takeCalls(All), QStringList());
    QCOMPARE(checked(), QVector<int>());
}

void TestEqPresetWidget::exitBeepsThenEmitsExitUI()
{
    QStringList seen;
    connect(m_page.data(), &EQPresetWidget::exitUI, this, [&seen] { seen = takeCalls(); });
    auto* exit = find(QStringLiteral("key_exit"));
    exit->show();
    m_page->show();
    takeCalls(All);
    QSignalSpy spy(m_page.data(), SIGNAL(exitUI()));
    click(QPoint(938 + 37, 13 + 30));
    QCOMPARE(seen, QStringList("AudioService.doBeep(0)"));
    QCOMPARE(spy.count(), 1);
    QCOMPARE(takeBackRequests(), 0);
}

void TestEqPresetWidget::everySlotWritesOneDiagnosticLine()
{
    takeLog();
    m_page->onButtonGroupClicked(3);
    m_page->onButtonGroupClicked(99);
    m_page->on_key_exit_clicked();
    const QStringList log = takeLog();
    QCOMPARE(log.size(), 3);
    const char* const slots_[] = {"onButtonGroupClicked", "onButtonGroupClicked", "on_key_exit_clicked"};
    for (int i = 0; i < 3; ++i) {
        const QRegularExpression form(
            QStringLiteral("^D \\[DBG\\] \\d+ .*%1\\(.*\\) \\d+ --").arg(slots_[i]));
        QVERIFY2(form.match(log.at(i)).hasMatch(), qPrintable(log.at(i)));
    }
}

void TestEqPresetWidget::keysAreNamedAndReachedByKeyboardOnly()
{
    for (QPushButton* button : m_page->findChildren<QPushButton*>()) {
        QVERIFY2(!button->accessibleName().isEmpty(), qPrintable(button->objectName()));
        // The emblem does nothing, so nothing leads to it.
        const bool emblem = button->objectName() == QLatin1String("key_back");
        QCOMPARE(button->focusPolicy(), emblem ? Qt::NoFocus : Qt::TabFocus);
    }
    QCOMPARE(key(0)->accessibleName(), label(0)->text());
    // Row by row, from left to right.
    QStringList order;
    QWidget* widget = key(6);
    while (order.size() < tileCount) {
        if (widget->objectName().startsWith(QLatin1String("key_")) && widget->focusPolicy() != Qt::NoFocus)
            order.append(widget->objectName());
        widget = widget->nextInFocusChain();
    }
    QCOMPARE(order, QStringList({"key_user1", "key_jazz", "key_hiphop", "key_pop", "key_user2", "key_rock",
                                 "key_rb", "key_flat"}));
}

void TestEqPresetWidget::randomTouchesKeepEveryInvariant()
{
    QFETCH(quint32, seed);
    m_page->show();
    m_page->resume();
    takeCalls(All);
    const QRegularExpression sent(QStringLiteral("^AudioService\\.setEQType\\(([0-7]), true\\)$"));
    RandomWalk walk(m_page.data(), seed);
    for (int event = 0; event < 20000; ++event) {
        if (walk.step() != RandomWalk::Release) {
            QCOMPARE(takeCalls(All), QStringList());
        } else {
            const QStringList calls = takeCalls(All);
            QVERIFY(calls.size() <= 1);
            if (calls.size() == 1) {
                const auto match = sent.match(calls.first());
                QVERIFY2(match.hasMatch(), qPrintable(calls.first()));
                QCOMPARE(tiles[checked().value(0)].type, match.captured(1).toInt());
            }
        }
        QCOMPARE(checked().size(), 1);
        if (event % 500 == 0)
            QCoreApplication::processEvents();
    }
}

QTEST_MAIN(TestEqPresetWidget)
#include "tst_eqpresetwidget.moc"
