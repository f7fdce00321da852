#include "common/pushbutton.h"
#include "tests/M5QX/levels/audiolevels.h"
#include "tests/support/randomwalk.h"

#include <QtTest>

using namespace audiolevels;

namespace {

QString sendPair(int balance, int fader)
{
    return QStringLiteral("AudioService.setBalanceFader(%1, %2, true)").arg(balance).arg(fader);
}

} // namespace

/// What the audio levels page asks of the platform, balance and fader first.
class TestAudioLevelsPage : public AudioLevelsFixture
{
    Q_OBJECT
private slots:
    void init() { makePage(); }
    void cleanup() { m_page.reset(); }

    void constructionReadsAndMakesItsWidgetsInOrder();
    void showReadsBalanceThenTexts();
    void resumeReadsEverythingInOrder();
    void anArrowBeepsThenStepsThenReadsBack_data();
    void anArrowBeepsThenStepsThenReadsBack();
    void theRightKeyLogsTheNewPair();
    void balanceAt15DisablesRightAloneAndMinus15MirrorsIt_data();
    void balanceAt15DisablesRightAloneAndMinus15MirrorsIt();
    void aDisabledRightKeyCannotBeClicked();
    void resetYieldsZeroWithAllFourKeysEnabled();
    void aTouchOnTheResetCaptionReachesTheKey();
    void holdingAnArrowKeyChangesTheValueByExactlyOneStep();
    void stepsAtTheLimitAreSentUnchanged_data();
    void stepsAtTheLimitAreSentUnchanged();
    void textsShowBalanceMinus3AndFader15();
    void aBalanceBeyondItsRangeIsShownAsItIs();
    void thePadShowsWhileDraggedAndSendsOnRelease();
    void backBeepsAndPostsOneBackRequest();
    void everySlotWritesItsDiagnosticLine();
    void hostileValuesNeitherCrashNorAreRewritten();
    void randomTouchesKeepTheInvariants_data() { RandomWalk::addSeedRow(); }
    void randomTouchesKeepTheInvariants();
};

void TestAudioLevelsPage::constructionReadsAndMakesItsWidgetsInOrder()
{
    const m5qx_eq_audio_levels_page page(nullptr);
    const QStringList calls = takeCalls(Actions | Read | Widget);
    QCOMPARE(calls,
             (QStringList{"CustomSlider_2(588,380 342x59, 4)", readLoudness, readSwitch,
                          "PushButton(key_up_level)", "PushButton(key_down_level)",
                          "PushButton(key_left_level)", "PushButton(key_right_btn)", readPair, readPair}));
    const auto* made = page.findChild<settings::CustomSlider_2*>();
    QCOMPARE(made->minimum(), 0);
    QCOMPARE(made->maximum(), 12);
    for (cm::PushButton* wrapper : page.findChildren<cm::PushButton*>())
        QCOMPARE(wrapper->parent(), static_cast<const QObject*>(&page));
    QCOMPARE(page.findChildren<cm::PushButton*>().size(), 4);
}

void TestAudioLevelsPage::showReadsBalanceThenTexts()
{
    m_page->hide();
    takeCalls(All);
    m_page->show();
    const QStringList calls = takeCalls(All);
    QCOMPARE(calls.mid(0, 2), (QStringList{readPair, readPair}));
    for (const QString& call : calls.mid(2))
        QVERIFY2(call.startsWith(QLatin1String("Translator.translate(")), qPrintable(call));
    QCOMPARE(calls.size(), 2 + 5);
}

void TestAudioLevelsPage::resumeReadsEverythingInOrder()
{
    audio().balance = 4;
    audio().fader = -5;
    setStored("customloudnes", true);
    setStored("subwooferOnOff", false);
    setStored("subwooferLevel", 3);
    m_page->resume();
    QCOMPARE(takeCalls(All),
             (QStringList{readPair, readPair, readLoudness, readSwitch, readLevel, readSwitch}));
    QCOMPARE(label("txt_balance")->text(), QStringLiteral("BAL:4"));
    QCOMPARE(label("txt_fader")->text(), QStringLiteral("FAD:-5"));
    QCOMPARE(QPoint(pad()->getValueX(), pad()->getValueY()), QPoint(4, -5));
    QVERIFY(key("key_loudness")->isChecked());
    QVERIFY(!key("key_subwoofer")->isChecked());
    QCOMPARE(slider()->value(), 9);
    for (QWidget* each : QList<QWidget*>{slider(), key("key_sub_level_down"), key("key_sub_level_up")})
        QVERIFY(!each->isEnabled());
    setStored("subwooferOnOff", true);
    m_page->resume();
    for (QWidget* each : QList<QWidget*>{slider(), key("key_sub_level_down"), key("key_sub_level_up")})
        QVERIFY(each->isEnabled());
}

void TestAudioLevelsPage::anArrowBeepsThenStepsThenReadsBack_data()
{
    QTest::addColumn<QByteArray>("arrow");
    QTest::addColumn<QPoint>("pair"); // balance, fader
    // clang-format off
    QTest::newRow("up is fader +1")      << QByteArray("key_up_level")   << QPoint(2, -3);
    QTest::newRow("down is fader -1")    << QByteArray("key_down_level") << QPoint(2, -5);
    QTest::newRow("left is balance -1")  << QByteArray("key_left_level") << QPoint(1, -4);
    QTest::newRow("right is balance +1") << QByteArray("key_right_btn")  << QPoint(3, -4);
    // clang-format on
}

void TestAudioLevelsPage::anArrowBeepsThenStepsThenReadsBack()
{
    QFETCH(QByteArray, arrow);
    QFETCH(QPoint, pair);
    audio().balance = 2;
    audio().fader = -4;
    QStringList calls = clicked(arrow.constData(), Actions | Read);
    QCOMPARE(calls.takeFirst(), keyBeep);
    // Two reads for the step, two for what is shown (and two for the right key's log line).
    const QStringList reads = calls.mid(0, 2) + calls.mid(3);
    QCOMPARE(calls.value(2), sendPair(pair.x(), pair.y()));
    QCOMPARE(reads.count(readPair), reads.size());
    QCOMPARE(reads.size(), arrow == "key_right_btn" ? 6 : 4);
    QCOMPARE(label("txt_balance")->text(), QStringLiteral("BAL:%1").arg(pair.x()));
    QCOMPARE(label("txt_fader")->text(), QStringLiteral("FAD:%1").arg(pair.y()));
    QCOMPARE(QPoint(pad()->getValueX(), pad()->getValueY()), pair);
}

void TestAudioLevelsPage::theRightKeyLogsTheNewPair()
{
    audio().balance = 6;
    audio().fader = -7;
    takeLog();
    click("key_right_btn");
    const QStringList lines = takeLog().filter(QStringLiteral("onRightClicked()"));
    QCOMPARE(lines.size(), 2);
    QVERIFY2(lines.last().endsWith(QLatin1String("-- balance: 7 fader: -7")), qPrintable(lines.last()));
}

void TestAudioLevelsPage::balanceAt15DisablesRightAloneAndMinus15MirrorsIt_data()
{
    QTest::addColumn<QPoint>("pair");
    QTest::addColumn<QString>("disabled");
    // clang-format off
    QTest::newRow("balance 15")   << QPoint(15, 0)   << "key_right_btn";
    QTest::newRow("balance -15")  << QPoint(-15, 0)  << "key_left_level";
    QTest::newRow("balance 14")   << QPoint(14, 0)   << "";
    QTest::newRow("balance -14")  << QPoint(-14, 0)  << "";
    QTest::newRow("fader 15")     << QPoint(0, 15)   << "key_up_level";
    QTest::newRow("fader -15")    << QPoint(0, -15)  << "key_down_level";
    QTest::newRow("both at ends") << QPoint(15, -15) << "key_right_btn key_down_level";
    QTest::newRow("beyond")       << QPoint(20, -20) << "";
    // clang-format on
}

void TestAudioLevelsPage::balanceAt15DisablesRightAloneAndMinus15MirrorsIt()
{
    QFETCH(QPoint, pair);
    // From the opposite end: the other key comes back.
    m_page->onUpdateBF(-pair.x(), -pair.y());
    m_page->onUpdateBF(pair.x(), pair.y());
    QStringList is;
    for (const char* name : {"key_right_btn", "key_left_level", "key_up_level", "key_down_level"}) {
        if (!key(name)->isEnabled())
            is += QLatin1String(name);
    }
    QTEST(is.join(QLatin1Char(' ')), "disabled");
    QCOMPARE(takeCalls(Actions | Read), QStringList());
}

void TestAudioLevelsPage::aDisabledRightKeyCannotBeClicked()
{
    audio().balance = 14;
    click("key_right_btn");
    QVERIFY(!key("key_right_btn")->isEnabled());
    QVERIFY(key("key_left_level")->isEnabled());
    QCOMPARE(clicked("key_right_btn", All), QStringList());
    QCOMPARE(audio().balance, 15);
    click("key_left_level");
    QVERIFY(key("key_right_btn")->isEnabled());
    QCOMPARE(audio().balance, 14);
}

void TestAudioLevelsPage::resetYieldsZeroWithAllFourKeysEnabled()
{
    audio().balance = 15;
    audio().fader = -15;
    m_page->resume();
    QCOMPARE(clicked("key_reset_level", Actions | Read), (QStringList{keyBeep, sendPair(0, 0)}));
    QCOMPARE(label("txt_balance")->text(), QStringLiteral("BAL:0"));
    QCOMPARE(label("txt_fader")->text(), QStringLiteral("FAD:0"));
    for (const char* name : {"key_right_btn", "key_left_level", "key_up_level", "key_down_level"})
        QVERIFY(key(name)->isEnabled());
}

void TestAudioLevelsPage::aTouchOnTheResetCaptionReachesTheKey()
{
    QCOMPARE(press(QPoint(96, 466)), key("key_reset_level"));
    release(QPoint(96, 466));
    QCOMPARE(takeCalls(), (QStringList{keyBeep, sendPair(0, 0)}));
    // Slid off before it is lifted: nothing.
    press(QPoint(96, 466));
    move(QPoint(600, 100));
    release(QPoint(600, 100));
    QCOMPARE(takeCalls(), QStringList());
}

void TestAudioLevelsPage::holdingAnArrowKeyChangesTheValueByExactlyOneStep()
{
    for (const char* name : {"key_up_level", "key_down_level", "key_left_level", "key_right_btn"}) {
        audio().balance = 0;
        audio().fader = 0;
        press(middle(key(name)));
        takeCalls(All);
        cm::PushButton* wrapper = wrapperOf(key(name));
        emit wrapper->longPressed();
        for (int i = 0; i < 10; ++i)
            emit wrapper->longPressedRepeat();
        QCOMPARE(takeCalls(All), QStringList());
        release(middle(key(name)));
        QCOMPARE(takeCalls().filter(QStringLiteral("setBalanceFader")).size(), 1);
        QCOMPARE(qAbs(audio().balance) + qAbs(audio().fader), 1);
    }
}

void TestAudioLevelsPage::stepsAtTheLimitAreSentUnchanged_data()
{
    QTest::addColumn<QByteArray>("slot");
    QTest::addColumn<QPoint>("pair");
    // clang-format off
    QTest::newRow("up at fader 15")          << QByteArray("onUpClicked")    << QPoint(1, 15);
    QTest::newRow("down at fader -15")       << QByteArray("onDownClicked")  << QPoint(1, -15);
    QTest::newRow("left at balance -15")     << QByteArray("onLeftClicked")  << QPoint(-15, 1);
    QTest::newRow("right at balance 15")     << QByteArray("onRightClicked") << QPoint(15, 1);
    QTest::newRow("right beyond, at 20")     << QByteArray("onRightClicked") << QPoint(20, 1);
    // clang-format on
}

void TestAudioLevelsPage::stepsAtTheLimitAreSentUnchanged()
{
    QFETCH(QByteArray, slot);
    QFETCH(QPoint, pair);
    audio().balance = pair.x();
    audio().fader = pair.y();
    QVERIFY(QMetaObject::invokeMethod(m_page.data(), slot.constData()));
    QCOMPARE(takeCalls(), (QStringList{keyBeep, sendPair(pair.x(), pair.y())}));
}

void TestAudioLevelsPage::textsShowBalanceMinus3AndFader15()
{
    m_page->onUpdateBF(-3, 15);
    QCOMPARE(label("txt_balance")->text(), QStringLiteral("BAL:-3"));
    QCOMPARE(label("txt_fader")->text(), QStringLiteral("FAD:15"));
}

void TestAudioLevelsPage::aBalanceBeyondItsRangeIsShownAsItIs()
{
    audio().balance = 20;
    m_page->resume();
    QCOMPARE(label("txt_balance")->text(), QStringLiteral("BAL:20"));
    m_page->grab();
    QCOMPARE(takeCalls(), QStringList());
}

void TestAudioLevelsPage::thePadShowsWhileDraggedAndSendsOnRelease()
{
    const QPoint middle(121 + 126, 169 + 126);
    const QImage before = pad()->grab().toImage();
    press(middle + QPoint(70, 0));
    QCOMPARE(takeCalls(Actions | Read), QStringList{mcuBeep});
    QCOMPARE(label("txt_balance")->text(), QStringLiteral("BAL:10"));
    QVERIFY(pad()->grab().toImage() != before);
    move(middle + QPoint(700, -35));
    QCOMPARE(label("txt_balance")->text(), QStringLiteral("BAL:15"));
    QCOMPARE(label("txt_fader")->text(), QStringLiteral("FAD:5"));
    QVERIFY(!key("key_right_btn")->isEnabled());
    QCOMPARE(takeCalls(Actions | Read), QStringList());
    QCOMPARE(audio().balance, 0);
    release(middle + QPoint(700, -35));
    QCOMPARE(takeCalls(Actions | Read), QStringList{sendPair(15, 5)});
}

void TestAudioLevelsPage::backBeepsAndPostsOneBackRequest()
{
    key("key_back")->click();
    QCOMPARE(takeCalls(), QStringList{keyBeep});
    QCOMPARE(takeBackRequests(), 1);
}

void TestAudioLevelsPage::everySlotWritesItsDiagnosticLine()
{
    for (const QString& signature : formcheck::ownMethods(m_page->metaObject(), QMetaMethod::Slot)) {
        const QByteArray name = signature.left(signature.indexOf(QLatin1Char('('))).toLatin1();
        takeLog();
        if (signature.endsWith(QLatin1String("(int,int)")))
            QVERIFY(QMetaObject::invokeMethod(m_page.data(), name.constData(), Q_ARG(int, 1), Q_ARG(int, 2)));
        else if (signature.endsWith(QLatin1String("(int)")))
            QVERIFY(QMetaObject::invokeMethod(m_page.data(), name.constData(), Q_ARG(int, 1)));
        else
            QVERIFY(QMetaObject::invokeMethod(m_page.data(), name.constData()));
        const QString first = takeLog().value(0);
        QVERIFY2(first.startsWith(QLatin1String("D [DBG] ")), qPrintable(first));
        QVERIFY2(first.contains(QLatin1String("::") + QString::fromLatin1(name) + QLatin1Char('(')),
                 qPrintable(first));
    }
    takeBackRequests();
}

void TestAudioLevelsPage::hostileValuesNeitherCrashNorAreRewritten()
{
    for (const QVariant& value : hostileValues()) {
        for (const char* name : {"customloudnes", "subwooferOnOff", "subwooferLevel", "subwooferFreq"})
            setStored(QLatin1String(name), value);
        const bool number = value.type() == QVariant::Int;
        audio().balance = number ? value.toInt() : 0;
        audio().fader = number ? value.toInt() : 0;
        m_page.reset(new m5qx_eq_audio_levels_page(nullptr));
        m_page->resume();
        m_page->show();
        m_page->grab();
        QCOMPARE(takeCalls(), QStringList());
        QCOMPARE(stored("subwooferLevel"), value);
        for (const char* slot : {"onUpClicked", "onDownClicked", "onLeftClicked", "onRightClicked",
                                 "on_key_sub_level_up_clicked", "on_key_sub_level_down_clicked",
                                 "on_key_subwoofer_clicked", "on_key_loudness_clicked"})
            QVERIFY(QMetaObject::invokeMethod(m_page.data(), slot));
        m_page->hide();
        takeCalls(All);
    }
}

void TestAudioLevelsPage::randomTouchesKeepTheInvariants()
{
    QFETCH(quint32, seed);
    const QRegularExpression pair(QStringLiteral("setBalanceFader\\((-?\\d+), (-?\\d+), true\\)$"));
    const QRegularExpression sub(QStringLiteral("setSubFilter\\(([07]), (\\d+), 0\\)$"));
    RandomWalk walk(m_page.data(), seed);
    int sent = 0;
    for (int i = 0; i < 20000; ++i) {
        const RandomWalk::Step step = walk.step();
        const QStringList calls = takeCalls();
        if (step == RandomWalk::Press) {
            QCOMPARE(calls, walk.holder() == pad() ? QStringList{mcuBeep} : QStringList());
        } else if (step == RandomWalk::Move) {
            QCOMPARE(calls, QStringList());
        } else {
            int audioCalls = 0;
            for (const QString& call : calls) {
                if (call.startsWith(QLatin1String("AudioService.set")))
                    ++audioCalls;
                if (const auto match = pair.match(call); match.hasMatch()) {
                    QVERIFY(qAbs(match.captured(1).toInt()) <= 15);
                    QVERIFY(qAbs(match.captured(2).toInt()) <= 15);
                }
                if (call.contains(QLatin1String("setSubFilter"))) {
                    const auto match = sub.match(call);
                    QVERIFY2(match.hasMatch() && match.captured(2).toInt() <= 12, qPrintable(call));
                }
            }
            QVERIFY2(audioCalls <= 1, qPrintable(calls.join(QLatin1Char('\n'))));
            sent += audioCalls;
        }
        QVERIFY(qAbs(pad()->getValueX()) <= 15 && qAbs(pad()->getValueY()) <= 15);
        const int level = stored("subwooferLevel").isValid() ? stored("subwooferLevel").toInt() & 127 : 11;
        QVERIFY(level >= 0 && level <= 12);
    }
    walk.end();
    QVERIFY2(sent > 200, qPrintable(QString::number(sent)));
    QCOMPARE(takeBackRequests(), 0);
}

QTEST_MAIN(TestAudioLevelsPage)
#include "tst_m5qx_audiosetting_audio_levels_page.moc"
