#include "M5QX/setuppagekeywidget.h"
#include "common/scroll.h"
#include "tests/M5QX/volumes/volumesetting.h"

using namespace volumesetting;

/// What the form of the volume page is.
class TestVolumeSettingForm : public VolumeSettingFixture
{
    Q_OBJECT
private slots:
    void init() { makePage(); }
    void cleanup() { m_page.reset(); }

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

    void keysAreNamedAndReachedInReadingOrder();
};

void TestVolumeSettingForm::signalsAndSlotsAreDeclaredInOrder()
{
    QStringList expected{"exitUI()"};
    for (int i = 0; i < rowCount; ++i)
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

void TestVolumeSettingForm::rowsStandWhereTheTableSays()
{
    QFETCH(int, index);
    const Row& row = rows[index];
    const QString base = QLatin1String(row.base);
    QWidget* w = widget(index);
    QCOMPARE(w->parentWidget(), contents());
    if (row.section == Live) {
        QVERIFY(w->isHidden());
        QCOMPARE(w->geometry(), QRect(0, 0, 0, 0));
    } else if (index == dab) {
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

void TestVolumeSettingForm::rowKeysShowTheirPictures()
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

void TestVolumeSettingForm::rowLabelsShowTheirTexts()
{
    QFETCH(int, index);
    const Row& row = rows[index];
    setText(row.textId, QStringLiteral("lower"));
    VolumeSettingWidget page(nullptr);
    QCOMPARE(formcheck::child<QLabel>(&page, QStringLiteral("label_") + row.base)->text(),
             row.textId ? QStringLiteral("LOWER") : QStringLiteral("DAB"));
}

void TestVolumeSettingForm::titlesShowTheirTextsAndStyle_data()
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

void TestVolumeSettingForm::titlesShowTheirTextsAndStyle()
{
    QFETCH(QString, name);
    QFETCH(int, textId);
    QFETCH(QRect, place);
    setText(textId, QStringLiteral("aBc"));
    VolumeSettingWidget page(nullptr);
    auto* title = formcheck::child<QLabel>(&page, name);
    QTEST(title->text(), "shown");
    if (!place.isNull()) {
        QCOMPARE(title->geometry(), place);
        QCOMPARE(title->styleSheet(),
                 QStringLiteral("background-color:rgb(60,60,60);color:rgb(255,255,255)"));
        QCOMPARE(title->parentWidget()->objectName(), QStringLiteral("scrollAreaWidgetContents"));
    }
}

void TestVolumeSettingForm::topBarAndScrollAreaStandWhereTheFormSays()
{
    const QString prefix = QStringLiteral(":/vexa_m5qx_audiosettingicon/");
    QCOMPARE(m_page->size(), QSize(1024, 510));
    auto* exit = find(QStringLiteral("key_exit"));
    QCOMPARE(exit->geometry(), QRect(938, 13, 74, 60));
    QVERIFY(exit->isHidden());
    QVERIFY(
        formcheck::isPlainKeyIcon(exit->icon(), prefix + "icon_close_n.png", prefix + "icon_close_p.png"));
    auto* emblem = find(QStringLiteral("key_back"));
    QVERIFY(formcheck::holds(emblem->icon(), QIcon::Normal, QIcon::Off, prefix + "icon_eq.png"));
    QVERIFY(emblem->geometry().bottom() < 75);
    QVERIFY(emblem->geometry().right() < label(QStringLiteral("label_title"))->x());
    emblem->click();
    QCOMPARE(takeCalls(All), QStringList());
    QCOMPARE(area()->geometry(), QRect(0, 75, 1035, 444));
    QVERIFY(!area()->widgetResizable());
    QCOMPARE(area()->widget(), contents());
    QCOMPARE(area()->horizontalScrollBarPolicy(), Qt::ScrollBarAlwaysOff);
    bool background = false;
    for (const QLabel* part : contents()->findChildren<QLabel*>(QString(), Qt::FindDirectChildrenOnly))
        background |= part->geometry() == QRect(0, 0, 1024, 1672);
    QVERIFY(background);
}

void TestVolumeSettingForm::slidersAreMadeInTableOrder()
{
    const auto all = sliders();
    QCOMPARE(all.size(), rowCount);
    for (int i = 0; i < rowCount; ++i) {
        QCOMPARE(all.at(i)->parentWidget(), widget(i));
        QCOMPARE(all.at(i)->geometry(), QRect(496, 10, 393, 59));
        QCOMPARE(all.at(i)->minimum(), 0);
        QCOMPARE(all.at(i)->maximum(), maximumOf(rows[i]));
        QCOMPARE(offsetOf(all.at(i)), rows[i].section == Gain ? -5 : 0);
        QCOMPARE(hintColorOf(all.at(i)), QColor(Qt::white));
    }
}

void TestVolumeSettingForm::constructionMakesItsPartsInOrder()
{
    takeCalls(All);
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
    QCOMPARE(takeCalls(Widget), expected);
}

void TestVolumeSettingForm::constructionReadsAndWritesNoLevel()
{
    takeCalls(All);
    VolumeSettingWidget page(nullptr);
    QCOMPARE(takeCalls(Actions | Read), QStringList());
}

void TestVolumeSettingForm::keyStripIsMadeOncePlacedAndShown()
{
    m_page->showSetupPageKeyWidget();
    const auto strips = m_page->findChildren<SetupPageKeyWidget*>();
    QCOMPARE(strips.size(), 1);
    QCOMPARE(strips.first()->parentWidget(), m_page.data());
    QCOMPARE(strips.first()->geometry(), QRect(960, 70, 50, 459));
    QCOMPARE(formcheck::child(strips.first(), QStringLiteral("Key_next_page"))->y(), 332);
    QVERIFY(!strips.first()->isHidden());
}

void TestVolumeSettingForm::scrollBarIsThePagesAndLiesAboveTheKeyStrip()
{
    show();
    auto* bar = qobject_cast<cm::ScrollBar*>(area()->verticalScrollBar());
    QVERIFY(bar);
    QCOMPARE(bar->parentWidget(), m_page.data());
    QCOMPARE(bar->geometry(), QRect(978, 160, 16, 237));
    QVERIFY(bar->isVisible());
    QCOMPARE(m_page->childAt(bar->geometry().center()), bar);
    bar->setValue(100);
    QCOMPARE(contents()->y(), -100);
}

void TestVolumeSettingForm::afterLayoutTheContentsAre1028PixelsHigh()
{
    QCOMPARE(contents()->geometry(), QRect(0, 0, 1024, 1028));
    show();
    QCOMPARE(contents()->geometry(), QRect(0, 0, 1024, 1028));
}

void TestVolumeSettingForm::keysAreNamedAndReachedInReadingOrder()
{
    for (QPushButton* button : m_page->findChildren<QPushButton*>()) {
        QVERIFY2(!button->accessibleName().isEmpty(), qPrintable(button->objectName()));
        const bool emblem = button->objectName() == QLatin1String("key_back");
        const bool neverSeen = button->parentWidget() == widget(dab);
        QCOMPARE(button->focusPolicy(), emblem || neverSeen ? Qt::NoFocus : Qt::TabFocus);
    }
    for (int i = 0; i < rowCount; ++i) {
        QVERIFY(!slider(i)->accessibleName().isEmpty());
        QVERIFY(key(i, "up")->accessibleName() != key(i, "down")->accessibleName());
    }
    const auto nextWithFocus = [](QWidget* from) {
        do
            from = from->nextInFocusChain();
        while (from->focusPolicy() == Qt::NoFocus);
        return from;
    };
    for (int i = 0; i < dab; ++i) {
        QCOMPARE(nextWithFocus(key(i, "down")), slider(i));
        QCOMPARE(nextWithFocus(slider(i)), key(i, "up"));
        if (i + 1 < dab)
            QCOMPARE(nextWithFocus(key(i, "up")), key(i + 1, "down"));
    }
}

QTEST_MAIN(TestVolumeSettingForm)
#include "tst_volumesettingform.moc"
