#include "M5QX/curvewidget.h"
#include "tests/support/platform_double/platform_double.h"

#include <QImage>
#include <QtTest>

#include <cmath>
#include <limits>

using namespace platform_double;

namespace {

constexpr QRgb paper = qRgb(20, 30, 40);

/// Counts the paint events of a widget.
class PaintCounter : public QObject
{
public:
    int count = 0;
    bool eventFilter(QObject*, QEvent* event) override
    {
        count += event->type() == QEvent::Paint;
        return false;
    }
};

QImage picture(QWidget& widget)
{
    QImage image(widget.size(), QImage::Format_ARGB32_Premultiplied);
    image.fill(paper);
    widget.render(&image, QPoint(), QRegion(), QWidget::DrawChildren);
    return image;
}

/// How many pixels of a column a white line covers, with the antialiased ones in part.
double thicknessAt(const QImage& image, int x)
{
    double covered = 0;
    for (int y = 0; y < image.height(); ++y)
        covered += (qRed(image.pixel(x, y)) - qRed(paper)) / double(255 - qRed(paper));
    return covered;
}

/// What one setter has logged: "QPoint(..) QPoint(..) QPoint(..)".
QString loggedPoints()
{
    const QStringList lines = takeLog();
    if (lines.size() != 1)
        return QStringLiteral("%1 lines").arg(lines.size());
    return lines.first().section(QStringLiteral(" -- "), 1).trimmed();
}

QString points(QPoint a, QPoint b, QPoint c)
{
    QString text;
    QDebug(&text).nospace() << a << " " << b << " " << c;
    return text;
}

} // namespace

class TestCurveWidget : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void pointsOfAHighPass_data();
    void pointsOfAHighPass();
    void pointsOfALowPass_data();
    void pointsOfALowPass();
    void pointsFollowTheSizeAtTheTimeOfTheCall();
    void anyHighPassGradientButZeroHasAnEdgeThatTheLowPassLacks();
    void flatHighPassDrawsBothLines6Wide();
    void edgeIsDrawn5WideAndFlatPart6Wide_data();
    void edgeIsDrawn5WideAndFlatPart6Wide();
    void aNewCurveReplacesTheOldOne();
    void linesHaveTheGivenColour();
    void nothingIsDrawnBesideTheLines();
    void paintingBeforeACurveIsSetDrawsNothing();
    void settersDontRepaint();
    void widgetSetsNoAttributesOfItsOwn();
    void everySetterWritesOneDiagnosticLine();
    void absurdGradientsAndKneesDrawWithoutHarm_data();
    void absurdGradientsAndKneesDrawWithoutHarm();

private:
    QScopedPointer<CurveWidget> m_curve;
};

void TestCurveWidget::init()
{
    reset();
    m_curve.reset(new CurveWidget(nullptr));
    m_curve->resize(697, 282);
    m_curve->setCurveColor(Qt::white);
    takeLog();
}

void TestCurveWidget::pointsOfAHighPass_data()
{
    QTest::addColumn<QPoint>("knee");
    QTest::addColumn<float>("k");
    QTest::addColumn<QPoint>("first");
    QTest::addColumn<QPoint>("second");
    // clang-format off
    QTest::newRow("no edge")                       << QPoint(100, 50)  << 0.0F   << QPoint(0, 50)    << QPoint(697, 50);
    QTest::newRow("gradient -0.5")                 << QPoint(100, 50)  << -0.5F  << QPoint(0, 100)   << QPoint(697, 50);
    QTest::newRow("6 dB at 30 Hz")                 << QPoint(56, 2)    << -4.9F  << QPoint(0, 276)   << QPoint(697, 2);
    QTest::newRow("24 dB at 250 Hz, far below")    << QPoint(609, 278) << -24.F  << QPoint(0, 14894) << QPoint(697, 278);
    QTest::newRow("converted once, at the end")    << QPoint(3, 2)     << -7.8F  << QPoint(0, 25)    << QPoint(697, 2);
    QTest::newRow("above the edge, toward zero")   << QPoint(10, 2)    << 0.25F  << QPoint(0, 0)     << QPoint(697, 2);
    QTest::newRow("negative, truncated upwards")   << QPoint(10, 2)    << 0.55F  << QPoint(0, -3)    << QPoint(697, 2);
    // clang-format on
}

void TestCurveWidget::pointsOfAHighPass()
{
    QFETCH(QPoint, knee);
    QFETCH(float, k);
    QFETCH(QPoint, first);
    QFETCH(QPoint, second);
    m_curve->setCurveHpf(knee, k);
    QCOMPARE(loggedPoints(), points(knee, first, second));
}

void TestCurveWidget::pointsOfALowPass_data()
{
    QTest::addColumn<QPoint>("knee");
    QTest::addColumn<float>("k");
    QTest::addColumn<QPoint>("first");
    QTest::addColumn<QPoint>("second");
    // clang-format off
    QTest::newRow("no edge")                         << QPoint(276, 2) << 0.0F    << QPoint(0, 2) << QPoint(697, 2);
    QTest::newRow("0.9 is no edge")                  << QPoint(276, 2) << 0.9F    << QPoint(0, 2) << QPoint(697, 2);
    QTest::newRow("-0.99 is no edge")                << QPoint(276, 2) << -0.99F  << QPoint(0, 2) << QPoint(697, 2);
    QTest::newRow("1 is an edge")                    << QPoint(276, 2) << 1.0F    << QPoint(0, 2) << QPoint(556, 282);
    QTest::newRow("-1 is an edge, to the left")      << QPoint(300, 2) << -1.0F   << QPoint(0, 2) << QPoint(20, 282);
    QTest::newRow("-7.8: 276 - 35.89, truncated")    << QPoint(276, 2) << -7.8F   << QPoint(0, 2) << QPoint(240, 282);
    QTest::newRow("-24 at the top")                  << QPoint(276, 2) << -24.0F  << QPoint(0, 2) << QPoint(264, 282);
    QTest::newRow("off the left edge, toward zero")  << QPoint(56, 2)  << -4.9F   << QPoint(0, 2) << QPoint(-1, 282);
    // clang-format on
}

void TestCurveWidget::pointsOfALowPass()
{
    QFETCH(QPoint, knee);
    QFETCH(float, k);
    QFETCH(QPoint, first);
    QFETCH(QPoint, second);
    m_curve->setCurveLpf(knee, k);
    QCOMPARE(loggedPoints(), points(knee, first, second));
}

void TestCurveWidget::pointsFollowTheSizeAtTheTimeOfTheCall()
{
    m_curve->resize(200, 100);
    m_curve->setCurveLpf(QPoint(100, 50), 2.0F);
    QCOMPARE(loggedPoints(), points({100, 50}, {0, 50}, {125, 100}));
    m_curve->setCurveHpf(QPoint(100, 50), 0.0F);
    QCOMPARE(loggedPoints(), points({100, 50}, {0, 50}, {200, 50}));
}

void TestCurveWidget::anyHighPassGradientButZeroHasAnEdgeThatTheLowPassLacks()
{
    m_curve->setCurveHpf(QPoint(100, 50), 0.9F);
    QCOMPARE(loggedPoints(), points({100, 50}, {0, -40}, {697, 50}));
    m_curve->setCurveLpf(QPoint(100, 50), 0.9F);
    QCOMPARE(loggedPoints(), points({100, 50}, {0, 50}, {697, 50}));
}

void TestCurveWidget::flatHighPassDrawsBothLines6Wide()
{
    m_curve->setCurveHpf(QPoint(100, 50), 0.0F);
    const QImage image = picture(*m_curve);
    for (const int x : {10, 60, 150, 600})
        QVERIFY2(std::fabs(thicknessAt(image, x) - 6) < 0.05, qPrintable(QString::number(x)));
    // Rows 47 to 52: an even width lies evenly about its line.
    for (int y = 47; y <= 52; ++y)
        QCOMPARE(image.pixel(300, y), qRgb(255, 255, 255));
    QCOMPARE(image.pixel(300, 46), paper);
    QCOMPARE(image.pixel(300, 53), paper);
}

void TestCurveWidget::edgeIsDrawn5WideAndFlatPart6Wide_data()
{
    QTest::addColumn<bool>("lowPass");
    QTest::addColumn<float>("k");
    QTest::addColumn<int>("edgeX");
    QTest::addColumn<double>("edgeWidth");
    QTest::addColumn<int>("flatX");
    QTest::newRow("high-pass") << false << -0.5F << 150 << 5.0 << 500;
    QTest::newRow("low-pass") << true << 1.0F << 400 << 5.0 << 100;
    QTest::newRow("low-pass to the left") << true << -1.0F << 200 << 5.0 << 20;
    QTest::newRow("low-pass without edge") << true << 0.0F << 500 << 6.0 << 100;
}

void TestCurveWidget::edgeIsDrawn5WideAndFlatPart6Wide()
{
    QFETCH(bool, lowPass);
    QFETCH(float, k);
    QFETCH(int, edgeX);
    QFETCH(double, edgeWidth);
    QFETCH(int, flatX);
    const QPoint knee(300, 50);
    if (lowPass)
        m_curve->setCurveLpf(knee, k);
    else
        m_curve->setCurveHpf(knee, k);
    const QImage image = picture(*m_curve);
    QVERIFY(std::fabs(thicknessAt(image, flatX) - 6) < 0.05 || (lowPass && k < 0));
    double thickness = thicknessAt(image, edgeX);
    if (lowPass && k < 0) // the edge runs below the flat line
        thickness -= 6;
    // A column cuts a leaning line at its width times the secant.
    const double expected = edgeWidth * std::sqrt(1 + (edgeWidth < 6 ? k * k : 0));
    QVERIFY2(std::fabs(thickness - expected) < 0.1,
             qPrintable(QStringLiteral("%1, expected %2").arg(thickness).arg(expected)));
}

void TestCurveWidget::aNewCurveReplacesTheOldOne()
{
    m_curve->setCurveLpf(QPoint(276, 2), -7.8F);
    m_curve->setCurveHpf(QPoint(100, 50), -0.5F);
    const QImage once = picture(*m_curve);
    CurveWidget fresh(nullptr);
    fresh.resize(m_curve->size());
    fresh.setCurveColor(Qt::white);
    fresh.setCurveHpf(QPoint(100, 50), -0.5F);
    QCOMPARE(once, picture(fresh));
}

void TestCurveWidget::linesHaveTheGivenColour()
{
    m_curve->setCurveColor(QColor(255, 108, 0, 255));
    m_curve->setCurveHpf(QPoint(100, 50), 0.0F);
    QCOMPARE(picture(*m_curve).pixel(300, 50), qRgb(255, 108, 0));
}

void TestCurveWidget::nothingIsDrawnBesideTheLines()
{
    m_curve->setCurveHpf(QPoint(100, 50), 0.0F);
    const QImage image = picture(*m_curve);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (y < 46 || y > 53)
                QCOMPARE(image.pixel(x, y), paper);
        }
    }
}

void TestCurveWidget::paintingBeforeACurveIsSetDrawsNothing()
{
    const QImage image = picture(*m_curve);
    QImage empty(image.size(), image.format());
    empty.fill(paper);
    QCOMPARE(image, empty);
}

void TestCurveWidget::settersDontRepaint()
{
    m_curve->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_curve.data()));
    QCoreApplication::processEvents();
    PaintCounter counter;
    m_curve->installEventFilter(&counter);
    m_curve->setCurveHpf(QPoint(100, 50), -0.5F);
    m_curve->setCurveLpf(QPoint(100, 50), -7.8F);
    m_curve->setCurveColor(Qt::red);
    QCoreApplication::processEvents();
    QCOMPARE(counter.count, 0);
    m_curve->update();
    QTRY_COMPARE(counter.count, 1);
}

void TestCurveWidget::widgetSetsNoAttributesOfItsOwn()
{
    QWidget plain;
    for (int a = 0; a < Qt::WA_AttributeCount; ++a) {
        const auto attribute = static_cast<Qt::WidgetAttribute>(a);
        if (attribute == Qt::WA_Resized || attribute == Qt::WA_PendingResizeEvent)
            continue; // from this test's resize()
        QVERIFY2(m_curve->testAttribute(attribute) == plain.testAttribute(attribute),
                 qPrintable(QString::number(a)));
    }
    QVERIFY(!m_curve->autoFillBackground());
}

void TestCurveWidget::everySetterWritesOneDiagnosticLine()
{
    m_curve->setCurveHpf(QPoint(100, 50), -0.5F);
    m_curve->setCurveLpf(QPoint(100, 50), -7.8F);
    const QStringList lines = takeLog();
    QCOMPARE(lines.size(), 2);
    QVERIFY(QRegularExpression(
                QStringLiteral("^D \\[DBG\\] \\d+ void CurveWidget::setCurveHpf\\(QPoint, float\\) \\d+ -- "))
                .match(lines.at(0))
                .hasMatch());
    QVERIFY(lines.at(1).contains(QStringLiteral("CurveWidget::setCurveLpf(QPoint, float)")));
}

void TestCurveWidget::absurdGradientsAndKneesDrawWithoutHarm_data()
{
    QTest::addColumn<QPoint>("knee");
    QTest::addColumn<float>("k");
    constexpr int far = std::numeric_limits<int>::max();
    QTest::newRow("infinite") << QPoint(100, 50) << std::numeric_limits<float>::infinity();
    QTest::newRow("infinite at the edge") << QPoint(0, 50) << std::numeric_limits<float>::infinity();
    QTest::newRow("no number") << QPoint(100, 50) << std::numeric_limits<float>::quiet_NaN();
    QTest::newRow("steepest") << QPoint(100, 50) << -std::numeric_limits<float>::max();
    QTest::newRow("shallowest") << QPoint(100, 50) << std::numeric_limits<float>::denorm_min();
    QTest::newRow("far knee") << QPoint(far, far) << -24.0F;
    QTest::newRow("far negative knee") << QPoint(-far, 50) << 24.0F;
}

void TestCurveWidget::absurdGradientsAndKneesDrawWithoutHarm()
{
    QFETCH(QPoint, knee);
    QFETCH(float, k);
    m_curve->setCurveHpf(knee, k);
    picture(*m_curve);
    m_curve->setCurveLpf(knee, k);
    picture(*m_curve);
}

QTEST_MAIN(TestCurveWidget)
#include "tst_curvewidget.moc"
