#include "tests/M5QX/equalizer/eqsettings.h"
#include "tests/support/touch.h"

#include <QRegularExpression>
#include <QSignalSpy>

#include <climits>

using namespace eqsettings;

/// What the EQ settings page reads, shows and answers.
class TestEqSettingsPage : public EqSettingsFixture
{
    Q_OBJECT
private slots:
    void init() { makePage(); }
    void cleanup() { m_page.reset(); }

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
};

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
    const char* const captions[bandCount] = {"32 Hz", "63 Hz", "125 Hz", "250 Hz", "500 Hz", "1 kHz", "2 kHz",
                                             "4 kHz", "8 kHz", "10 kHz", "12 kHz", "14 kHz", "16 kHz"};
    for (int i = 0; i < bandCount; ++i) {
        QTest::newRow(captions[i]) << i + 1 << QRect(barLeft[i], 141, i == 0 ? 60 : 62, 364)
                                   << QSize(i == 0 ? 60 : 61, 343) << QString::fromLatin1(captions[i]);
    }
}

void TestEqSettingsPage::bandPanelsStandWhereTheTableSays()
{
    QFETCH(int, number);
    QFETCH(QRect, panel);
    QFETCH(QSize, background);
    QCOMPARE(m_page->size(), QSize(1024, 510));
    auto* widget = find<QWidget>(QStringLiteral("eq_band_widget%1").arg(number));
    QCOMPARE(widget->geometry(), panel);
    QCOMPARE(widget->parentWidget(), m_page.data());
    auto* bar = formcheck::child<QLabel>(widget, QStringLiteral("bkg_band_num_%1").arg(number));
    QCOMPARE(bar->geometry(), QRect(QPoint(0, 21), background));
    QCOMPARE(bar->pixmap(Qt::ReturnByValue).size(), background);
    auto* icon = formcheck::child<QLabel>(widget, QStringLiteral("icon_band_num_%1").arg(number));
    QCOMPARE(icon->size(), QSize(54, 35));
    QCOMPARE(icon->parentWidget(), widget);
    QCOMPARE(icon->pixmap(Qt::ReturnByValue).size(), QSize(54, 35));
    auto* text = formcheck::child<QLabel>(widget, QStringLiteral("text_band_hz_%1").arg(number));
    QTEST(text->text(), "caption");
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
    m_page.reset();
    takeCalls(All);
    QWidget host;
    new m5qx_EQ_settings_page(&host);
    QStringList expected;
    for (const char curve : {'1', '2'}) {
        for (int band = 0; band < bandCount; ++band)
            expected.append(
                QStringLiteral("SettingsFunc.getValue(\"eq%1%2\", 0)").arg(QLatin1Char(curve)).arg(band));
    }
    expected.append(QStringLiteral("AudioService.getCurrEQType()"));
    QCOMPARE(takeCalls(Actions | Read), expected);
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
    m_page->updateEq(type);
    QTEST(drawn(), "values");
    QTEST(m5qx_EQ_settings_page::curveNameId(type), "nameId");
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
        for (int band = 0; band < bandCount; ++band) {
            m_page->updateCustomEqVal(band, value);
            QCOMPARE(handle(band)->mapTo(m_page.data(), QPoint()),
                     QPoint(barLeft[band], barTop + handleTravel[10 - value]));
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
    for (int band = 0; band < bandCount; ++band) {
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
    takeCalls(All);
    m_page->resume();
    m_page->hide();
    m_page->show();
    QCOMPARE(takeCalls(Read).filter(QStringLiteral("Settings")), QStringList());
    QCOMPARE(drawn().at(0), 0);
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
    takeCalls(All);
    emitEQType(6);
    QCOMPARE(takeCalls(All), QStringList());
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
    click(name);
    QCOMPARE(takeCalls(), QStringList({QStringLiteral("AudioService.doBeep(0)"),
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
    click(QPoint(938 + 37, 13 + 30));
    QCOMPARE(takeCalls(), QStringList());
    QCOMPARE(takeBackRequests(), 1);
}

void TestEqSettingsPage::pageNeverEmitsEQTypeChanged()
{
    QSignalSpy spy(m_page.data(), SIGNAL(EQTypeChanged()));
    QVERIFY(spy.isValid());
    audio().eqType = 2;
    click(onBar(3, 3));
    click(QStringLiteral("Key_eqtype_plus"));
    emitEQType(7);
    m_page->resume();
    QCOMPARE(spy.count(), 0);
}

void TestEqSettingsPage::getCustomEqReadsTheStoreOfThePagesType()
{
    setStored(QStringLiteral("eq112"), 4);
    setStored(QStringLiteral("eq212"), -4);
    QCOMPARE(m_page->getCustomEq(12), 4);
    QCOMPARE(takeCalls(Read),
             QStringList({"AudioService.getCurrEQType()", "SettingsFunc.getValue(\"eq112\", 0)"}));
    audio().eqType = 7;
    QCOMPARE(m_page->getCustomEq(12), -4);
    QCOMPARE(takeCalls(Read),
             QStringList({"AudioService.getCurrEQType()", "SettingsFunc.getValue(\"eq212\", 0)"}));
}

void TestEqSettingsPage::setCustomEqPassesItsArgumentsUnchanged()
{
    m_page->setCustomEq(99, -3, false);
    m_page->setCustomEq1(-10, 12, true);
    m_page->setCustomEq2(4, 0, true);
    QCOMPARE(takeCalls(), QStringList({"AudioService.setCustomEq(99, -3, false)",
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
        QVERIFY(QMetaObject::invokeMethod(m_page.data(), slot));
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

QTEST_MAIN(TestEqSettingsPage)
#include "tst_m5qx_audiosetting_settings_page.moc"
