#include "headunit/inspector/inspector.h"

#include "tests/headunit/sound/fakesound.h"

#include "headunit/front/unitwindow.h"
#include "headunit/inspector/levelmeter.h"
#include "headunit/inspector/responseplot.h"
#include "headunit/inspector/soundpanel.h"
#include "headunit/shell/shell.h"

#include "platform/common/settings/settingsstore.h"
#include "platform/hvaudioservice/audioservicehost.h"

#include <QTabWidget>
#include <QtTest>

using namespace headunit;

class TestInspector : public QObject
{
    Q_OBJECT
private slots:
    void cleanup();
    void isNoTallerThanTheUnit_data();
    void isNoTallerThanTheUnit();
};

void TestInspector::cleanup()
{
    hvaudio::AudioServiceHost::shutdown();
    mem::SettingsStore::instance()->clear(); // never opened: it works from memory
}

void TestInspector::isNoTallerThanTheUnit_data()
{
    QTest::addColumn<bool>("withFront");
    QTest::newRow("beside the front") << true;
    QTest::newRow("beside the bare screen") << false;
}

void TestInspector::isNoTallerThanTheUnit()
{
    QFETCH(bool, withFront);
    FakeSound sound;
    Shell shell(withFront, &sound);
    Inspector inspector(shell.unit()->height(), &sound);
    QVERIFY2(inspector.minimumSizeHint().height() <= shell.unit()->height(),
             qPrintable(QString::number(inspector.minimumSizeHint().height())));
    auto* panel = inspector.findChild<SoundPanel*>();
    QVERIFY(panel);
    inspector.panels()->setCurrentWidget(panel);
    inspector.show();
    QCOMPARE(inspector.size(), QSize(560, shell.unit()->height()));
    // All of the fullest panel is in the window, and nothing is squeezed away.
    for (const QWidget* part :
         {panel->plot()->widget(), static_cast<QWidget*>(panel->limiter()),
          panel->findChild<QWidget*>("sound_status"), panel->findChild<QWidget*>("save_picture")}) {
        const QRect place(part->mapTo(&inspector, QPoint()), part->size());
        QVERIFY2(inspector.rect().contains(place), qPrintable(part->objectName()));
        QVERIFY2(place.height() >= 12, qPrintable(part->objectName()));
    }
    QVERIFY(panel->plot()->widget()->height() >= 160);
}

QTEST_MAIN(TestInspector)
#include "tst_inspector.moc"
