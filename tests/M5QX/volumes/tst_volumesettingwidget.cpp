#include "tests/M5QX/volumes/volumesetting.h"
#include "tests/support/randomwalk.h"

#include <QRegularExpression>
#include <QScrollBar>
#include <QSignalSpy>

#include <climits>

using namespace volumesetting;

namespace {

/// What a value of that row makes the page call.
QStringList applyLines(const Row& row, int value)
{
    if (row.section == Live)
        return {service("setVolumeLevel", value, row.service)};
    QStringList lines{writeOf("Func", QLatin1String(row.key), row.defaultValue, value)};
    if (row.section == Gain)
        lines.append(service("setSourceOffsetGain", row.service, value));
    return lines;
}

/// What a key step of that row makes the page call, in order, reads too.
QStringList stepLines(const Row& row, int value)
{
    QStringList lines{keyBeep, readLine(row)};
    lines += applyLines(row, value);
    if (row.section != Live)
        lines += readLines(row.section);
    return lines;
}

} // namespace

/// What the volume page reads, stores and sends.
class TestVolumeSettingWidget : public VolumeSettingFixture
{
    Q_OBJECT
private slots:
    void init() { makePage(); }
    void cleanup() { m_page.reset(); }

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
    void openingAndLeavingOftenLeavesNothingBehind();
    void randomTouchesKeepEveryInvariant_data() { RandomWalk::addSeedRow(); }
    void randomTouchesKeepEveryInvariant();
};

void TestVolumeSettingWidget::resumeReadsTheThreeSectionsInOrder()
{
    m_page->resume();
    QCOMPARE(takeCalls(All & ~Text), readLines(Live) + readLines(StartUp) + readLines(Gain));
}

void TestVolumeSettingWidget::aFreshStoreShowsTheDefaults()
{
    m_page->resume();
    QCOMPARE(slider(5)->value(), 25);
    for (int i = 6; i <= 9; ++i)
        QCOMPARE(slider(i)->value(), 40);
    for (int i = 10; i < rowCount; ++i) {
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
    QCOMPARE(takeCalls(Actions), QStringList());
}

void TestVolumeSettingWidget::theDabGainRowNeverShowsYetItsValueIsRead()
{
    show();
    QVERIFY(widget(dab)->visibleRegion().isEmpty());
    setStored(QLatin1String(rows[dab].key), 12);
    m_page->resume();
    QVERIFY(takeCalls(Read).contains(readLine(rows[dab])));
    QCOMPARE(slider(dab)->value(), 12);
    call("on_key_source_dab_up_clicked");
    QCOMPARE(takeCalls(Actions | Read), stepLines(rows[dab], 13));
    QCOMPARE(slider(dab)->value(), 13);
}

void TestVolumeSettingWidget::keysStepBeepAndStore()
{
    QFETCH(int, index);
    const Row& row = rows[index];
    setStored(QLatin1String(row.key), 7);
    m_page->resume();
    takeCalls(All);
    takeLog();
    key(index, "up")->click();
    QCOMPARE(takeCalls(All), stepLines(row, 8));
    QVERIFY(takeLog().value(0).endsWith(QStringLiteral("-- value: 8"))); // the new one
    setStored(QLatin1String(row.key), 8);
    key(index, "down")->click();
    QCOMPARE(takeCalls(All), stepLines(row, 7));
    if (row.section != Live)
        QCOMPARE(slider(index)->value(), 7);
}

void TestVolumeSettingWidget::keysAtTheRangeEndsWriteTheSameAgain()
{
    QFETCH(int, index);
    const Row& row = rows[index];
    setStored(QLatin1String(row.key), maximumOf(row));
    key(index, "up")->click();
    QCOMPARE(takeCalls(All), stepLines(row, maximumOf(row)));
    setStored(QLatin1String(row.key), 0);
    key(index, "down")->click();
    QCOMPARE(takeCalls(All), stepLines(row, 0));
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
            QCOMPARE(takeCalls(All), stepLines(row, maximum));
        }
        for (const int value : {-1, -2, -1000, INT_MIN}) {
            setStored(QLatin1String(row.key), value);
            key(index, way)->click();
            QCOMPARE(takeCalls(All), stepLines(row, 0));
        }
    }
}

void TestVolumeSettingWidget::keysOfVisibleRowsAnswerATouch()
{
    QFETCH(int, index);
    show();
    const Row& row = rows[index];
    if (row.section == Live || index == dab) {
        QVERIFY(!key(index, "up")->isVisible() || key(index, "up")->visibleRegion().isEmpty());
        return;
    }
    area()->verticalScrollBar()->setValue(widget(index)->y() - 100);
    takeCalls(All);
    click(middle(key(index, "up")));
    QCOMPARE(takeCalls(All), stepLines(row, row.defaultValue + 1));
    click(middle(key(index, "down")));
    QCOMPARE(takeCalls(All), stepLines(row, row.defaultValue));
}

void TestVolumeSettingWidget::aTouchOnTheLabelsEndReachesTheDownKey()
{
    show();
    // The main default row stands at y 50 of the contents, which begin at y 75.
    click(QPoint(436, 75 + 50 + 39));
    QCOMPARE(takeCalls(),
             QStringList({keyBeep, "SettingsFunc.setValue(\"Setup_Main_Volume\", 25, 24, true)"}));
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
    QCOMPARE(takeCalls(All), QStringList({keyBeep, "SettingsFunc.getValue(\"volume5\", 0)",
                                          "AudioService.setVolumeLevel(12, 5)"}));
    m_page->on_key_voice_up_clicked();
    QCOMPARE(takeCalls(All), QStringList({keyBeep, "SettingsFunc.getValue(\"volume4\", 0)",
                                          "AudioService.setVolumeLevel(34, 4)"}));
}

void TestVolumeSettingWidget::volumeChangedReadsTheLiveRowsAgain()
{
    emitVolumeChanged(true, 3, 99);
    QCOMPARE(takeCalls(All), readLines(Live));
}

void TestVolumeSettingWidget::slidersSaveWhatTheUserSettledOn()
{
    QFETCH(int, index);
    const Row& row = rows[index];
    for (const int value : {0, 9, maximumOf(row)}) {
        takeCalls(All);
        emit slider(index)->valSave(value);
        QCOMPARE(takeCalls(All), applyLines(row, value));
    }
}

void TestVolumeSettingWidget::aSliderDragSendsOnceAtRelease()
{
    show();
    m_page->resume();
    area()->verticalScrollBar()->setValue(400);
    takeCalls(All);
    const QPoint start = middle(slider(10));
    QCOMPARE(press(start), slider(10));
    for (int x = 0; x < 200; x += 10)
        move(start + QPoint(x, 0));
    move(start + QPoint(600, 200));
    QCOMPARE(takeCalls(All), QStringList());
    release(start + QPoint(600, 200));
    QCOMPARE(takeCalls(All), applyLines(rows[10], 15));
}

void TestVolumeSettingWidget::saveSlotsClampTheirArgument()
{
    QFETCH(int, index);
    const Row& row = rows[index];
    const QByteArray slot = row.saveSlot;
    for (const int value : {maximumOf(row) + 1, INT_MAX}) {
        QVERIFY(QMetaObject::invokeMethod(m_page.data(), slot, Q_ARG(int, value)));
        QCOMPARE(takeCalls(All), applyLines(row, maximumOf(row)));
    }
    for (const int value : {-1, INT_MIN}) {
        QVERIFY(QMetaObject::invokeMethod(m_page.data(), slot, Q_ARG(int, value)));
        QCOMPARE(takeCalls(All), applyLines(row, 0));
    }
}

void TestVolumeSettingWidget::pageKeysScrollToTheEndAndBack()
{
    show();
    click(QPoint(960 + 25, 70 + 332 + 60));
    QCOMPARE(takeCalls(All), QStringList({"McuManager.triggerBeep(0)", "R9TransferStation.setupNextPage()",
                                          "ScrollManage.scrollToPos(0,1028, false)"}));
    QVERIFY(contents()->y() < 0);
    click(QPoint(960 + 25, 70 + 40));
    QCOMPARE(takeCalls(All), QStringList({"McuManager.triggerBeep(0)", "R9TransferStation.setupPrevPage()",
                                          "ScrollManage.scrollToPos(0,0, false)"}));
    QCOMPARE(contents()->y(), 0);
}

void TestVolumeSettingWidget::nextPageWhileThePageIsHiddenDoesNotScroll()
{
    m_page->onSetupNextPage();
    m_page->onSetupPrevPage();
    show();
    m_page->hide();
    takeCalls(All);
    m_page->onSetupNextPage();
    m_page->onSetupPrevPage();
    QCOMPARE(takeCalls(All), QStringList());
}

void TestVolumeSettingWidget::exitBeepsThenEmitsExitUI()
{
    QStringList seen;
    connect(m_page.data(), &VolumeSettingWidget::exitUI, this, [&seen] { seen = takeCalls(); });
    QSignalSpy spy(m_page.data(), SIGNAL(exitUI()));
    find(QStringLiteral("key_exit"))->click();
    QCOMPARE(seen, QStringList(keyBeep));
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
            QVERIFY(method.invoke(m_page.data()));
        else if (method.parameterCount() == 1)
            QVERIFY(method.invoke(m_page.data(), Q_ARG(int, 9)));
        else
            QVERIFY(method.invoke(m_page.data(), Q_ARG(bool, false), Q_ARG(int, 1), Q_ARG(int, 2)));
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

void TestVolumeSettingWidget::openingAndLeavingOftenLeavesNothingBehind()
{
    const int before = scrollManagers().size();
    const int sliderCount = sliders().size();
    QWidget host;
    for (int i = 0; i < 50; ++i) {
        auto* page = new VolumeSettingWidget(&host);
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
    takeCalls(All);
    emitVolumeChanged(false, 1, 1);
    QCOMPARE(takeCalls(All), readLines(Live));
}

void TestVolumeSettingWidget::randomTouchesKeepEveryInvariant()
{
    QFETCH(quint32, seed);
    show();
    m_page->resume();
    takeCalls(All);
    const QRegularExpression write(
        QStringLiteral("^SettingsFunc\\.setValue\\(\"(\\w+)\", \\d+, (-?\\d+), true\\)$"));
    RandomWalk walk(m_page.data(), seed);
    int writes = 0;
    for (int event = 0; event < 20000; ++event) {
        if (walk.step() != RandomWalk::Release) {
            QCOMPARE(takeCalls(Actions), QStringList());
        } else {
            const QStringList calls = takeCalls();
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
