#include "M5QX/k41_audio_root_bf.h"
#include "tests/support/platform_double/platform_double.h"
#include "tests/support/touch.h"

#include <QtTest>

using namespace platform_double;

class TestRootBf : public QObject
{
    Q_OBJECT
private slots:
    void init() { reset(); }
    void pressAndReleaseDoNothing();
    void aMoveWritesItsPositionAndNothingElse();
    void drawsNothing();
    void keepsTouchesFromItsParent();
};

void TestRootBf::pressAndReleaseDoNothing()
{
    k41_audio_root_bf layer(nullptr);
    layer.resize(253, 253);
    layer.setValue(50);
    takeLog();
    touch::click(&layer, QPoint(20, 240));
    QCOMPARE(layer.value(), 50);
    QVERIFY(!layer.isSliderDown());
    QCOMPARE(takeCalls(All), QStringList());
    QCOMPARE(takeLog(), QStringList());
}

void TestRootBf::aMoveWritesItsPositionAndNothingElse()
{
    k41_audio_root_bf layer(nullptr);
    layer.resize(253, 253);
    touch::press(&layer, QPoint(20, 240));
    takeLog();
    touch::move(&layer, QPoint(21, -7));
    const QStringList log = takeLog();
    QCOMPARE(log.size(), 1);
    QVERIFY2(log.first().startsWith(QLatin1String("D [DBG] ")), qPrintable(log.first()));
    QVERIFY2(log.first().endsWith(QLatin1String(" -- (21,-7)")), qPrintable(log.first()));
    touch::release(&layer, QPoint(21, -7));
    QCOMPARE(layer.value(), layer.minimum());
    QCOMPARE(takeCalls(All), QStringList());
}

void TestRootBf::drawsNothing()
{
    QWidget parent;
    parent.resize(253, 253);
    const QImage without = parent.grab().toImage();
    k41_audio_root_bf layer(&parent);
    layer.setGeometry(parent.rect());
    QCOMPARE(parent.grab().toImage(), without);
}

namespace {
class Listener : public QWidget
{
public:
    int touches = 0;

protected:
    void mousePressEvent(QMouseEvent*) override { ++touches; }
    void mouseReleaseEvent(QMouseEvent*) override { ++touches; }
};
} // namespace

void TestRootBf::keepsTouchesFromItsParent()
{
    Listener parent;
    parent.resize(300, 300);
    k41_audio_root_bf layer(&parent);
    layer.setGeometry(0, 0, 253, 253);
    touch::click(&parent, QPoint(100, 100));
    QCOMPARE(parent.touches, 0);
    touch::click(&parent, QPoint(280, 280));
    QCOMPARE(parent.touches, 2);
}

QTEST_MAIN(TestRootBf)
#include "tst_k41_audio_root_bf.moc"
