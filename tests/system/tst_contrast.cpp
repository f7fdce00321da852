// Contrast as WCAG 2.1 counts it, measured on the rendered screen: a text's strongest pixel against every
// pixel that lies under or beside its glyphs when the text is taken away.

#include "tests/system/screens.h"

#include "M5QX/curvewidget.h"
#include "common/customslider.h"

#include <QApplication>
#include <QLabel>
#include <QMouseEvent>
#include <QtTest>

#include <cmath>

using namespace screens;

namespace {

constexpr double textContrast = 4.5;
constexpr double valueContrast =
    7; ///< of values and titles, and of every other text that has no colour given
constexpr double curveContrast = 3;

/// Labels whose colour is given and can't reach the higher one: the filters' green and blue.
constexpr const char* colouredLabels[] = {"text_hpf_main_audio", "text_low_main_audio", "text_subwoofer"};

double luminance(QRgb colour)
{
    const auto linear = [](int channel) {
        const double c = channel / 255.0;
        return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(qRed(colour)) + 0.7152 * linear(qGreen(colour)) + 0.0722 * linear(qBlue(colour));
}

double contrast(QRgb a, QRgb b)
{
    const double la = luminance(a) + 0.05;
    const double lb = luminance(b) + 0.05;
    return la > lb ? la / lb : lb / la;
}

int distance(QRgb a, QRgb b)
{
    return qAbs(qRed(a) - qRed(b)) + qAbs(qGreen(a) - qGreen(b)) + qAbs(qBlue(a) - qBlue(b));
}

/// The least contrast of what is drawn in with to what is there in without; 0 when nothing is drawn.
double least(const QImage& with, const QImage& without, const QRect& rect)
{
    const QRect area = rect & with.rect();
    QRgb strongest = 0;
    int most = 0;
    QVector<QPoint> drawn;
    for (int y = area.top(); y <= area.bottom(); ++y) {
        for (int x = area.left(); x <= area.right(); ++x) {
            const int far = distance(with.pixel(x, y), without.pixel(x, y));
            if (far == 0)
                continue;
            drawn.append({x, y});
            if (far > most) {
                most = far;
                strongest = with.pixel(x, y);
            }
        }
    }
    double ratio = drawn.isEmpty() ? 0 : 21;
    for (const QPoint& pixel : drawn) {
        const QRect around = QRect(pixel - QPoint(1, 1), QSize(3, 3)) & area;
        for (int y = around.top(); y <= around.bottom(); ++y) {
            for (int x = around.left(); x <= around.right(); ++x)
                ratio = qMin(ratio, contrast(strongest, without.pixel(x, y)));
        }
    }
    return ratio;
}

bool isColoured(const QWidget* widget)
{
    for (const char* name : colouredLabels) {
        if (widget->objectName() == QLatin1String(name))
            return true;
    }
    return false;
}

void sendMouse(QWidget* target, QEvent::Type type, Qt::MouseButtons held)
{
    const QPoint pos = target->rect().center();
    QMouseEvent event(type, pos, target->mapToGlobal(pos), Qt::LeftButton, held, Qt::NoModifier);
    QCoreApplication::sendEvent(target, &event);
}

} // namespace

class TestContrast : public QObject
{
    Q_OBJECT
private slots:
    void everyTextStandsOut_data() { addScreenRows(); }
    void everyTextStandsOut();
    void everySliderNumberStandsOut_data();
    void everySliderNumberStandsOut();
    void everyCurveStandsOutFromTheGrid_data();
    void everyCurveStandsOutFromTheGrid();
    void aTextThatDoesNotStandOutIsNoticed();
};

void TestContrast::everyTextStandsOut()
{
    QFETCH(int, page);
    QFETCH(int, condition);
    Screen screen{Page(page), Condition(condition)};
    QStringList faults;
    for (int view = 0; view <= screen.furtherViews(); ++view) {
        if (view > 0)
            screen.scroll();
        const QImage with = screen.picture();
        const QVector<Text> all = texts(screen);
        for (const Text& text : all)
            text.widget->setProperty("text", QString());
        const QImage without = screen.picture();
        for (const Text& text : all) {
            text.widget->setProperty("text", text.text);
            const double needed = isColoured(text.widget) ? textContrast : valueContrast;
            const double found = least(with, without, text.rect);
            const bool outOfView = found == 0 && page == Volumes && text.widget->visibleRegion().isEmpty();
            if (found < needed && !outOfView)
                faults.append(QStringLiteral("%1 \"%2\": %3 : 1")
                                  .arg(text.widget->objectName(), text.text)
                                  .arg(found, 0, 'f', 2));
        }
    }
    QVERIFY2(faults.isEmpty(), qPrintable(faults.join(QLatin1Char('\n'))));
}

void TestContrast::everySliderNumberStandsOut_data()
{
    QTest::addColumn<int>("page");
    QTest::addColumn<int>("condition");
    QTest::addColumn<bool>("held");
    QTest::addColumn<double>("needed");
    QTest::newRow("subwoofer level") << int(AudioLevels) << int(Used) << false << valueContrast;
    QTest::newRow("subwoofer level, disabled") << int(AudioLevels) << int(Switched) << false << textContrast;
    QTest::newRow("subwoofer level, held") << int(AudioLevels) << int(Used) << true << valueContrast;
    QTest::newRow("volume") << int(Volumes) << int(Used) << false << valueContrast;
    QTest::newRow("volume, held") << int(Volumes) << int(Used) << true << valueContrast;
}

void TestContrast::everySliderNumberStandsOut()
{
    QFETCH(int, page);
    QFETCH(int, condition);
    QFETCH(bool, held);
    QFETCH(double, needed);
    const Screen screen{Page(page), Condition(condition)};
    settings::CustomSlider_2* slider = nullptr;
    for (auto* one : screen.window()->findChildren<settings::CustomSlider_2*>()) {
        if (!one->visibleRegion().isEmpty() && !slider)
            slider = one;
    }
    QVERIFY(slider);
    if (held)
        sendMouse(slider, QEvent::MouseButtonPress, Qt::LeftButton);
    // The same number in another place of the scale moves the bubble; another offset changes only the digits.
    slider->setOffset(0);
    const QImage with = screen.picture();
    slider->setOffset(3333);
    const QImage other = screen.picture();
    if (held)
        sendMouse(slider, QEvent::MouseButtonRelease, Qt::NoButton);
    const QRect rect(slider->mapTo(screen.window(), QPoint()), slider->size());
    QRgb digits = 0;
    QRgb ground = 0;
    int most = 0;
    for (int y = rect.top(); y <= rect.bottom(); ++y) {
        for (int x = rect.left(); x <= rect.right(); ++x) {
            const int far = distance(with.pixel(x, y), other.pixel(x, y));
            if (far > most) {
                most = far;
                digits = with.pixel(x, y);
                ground = other.pixel(x, y);
            }
        }
    }
    QVERIFY(most > 0);
    QVERIFY2(contrast(digits, ground) >= needed, qPrintable(QString::number(contrast(digits, ground))));
}

void TestContrast::everyCurveStandsOutFromTheGrid_data()
{
    QTest::addColumn<int>("condition");
    for (int condition = 0; condition < ConditionCount; ++condition)
        QTest::newRow(name(Condition(condition))) << condition;
}

void TestContrast::everyCurveStandsOutFromTheGrid()
{
    QFETCH(int, condition);
    const Screen screen(Crossover, Condition(condition));
    QList<CurveWidget*> curves;
    for (auto* curve : screen.window()->findChildren<CurveWidget*>()) {
        curves.append(curve);
        curve->hide();
    }
    QCOMPARE(curves.size(), 3);
    const QImage grid = screen.picture();
    for (CurveWidget* curve : curves) {
        curve->show();
        const QRect rect(curve->mapTo(screen.window(), QPoint()), curve->size());
        const double found = least(screen.picture(), grid, rect);
        QVERIFY2(found >= curveContrast, qPrintable(QString::number(found)));
        curve->hide();
    }
}

void TestContrast::aTextThatDoesNotStandOutIsNoticed()
{
    const Screen screen(AudioLevels, Used);
    auto* label = qobject_cast<QLabel*>(screen.child("label_loudness"));
    const auto measured = [&] {
        const QRect rect(label->mapTo(screen.window(), QPoint()), label->size());
        const QString text = label->text();
        const QImage with = screen.picture();
        label->clear();
        const QImage without = screen.picture();
        label->setText(text);
        return least(with, without, rect);
    };
    QVERIFY(measured() > valueContrast);
    label->setStyleSheet(QStringLiteral("color:#777777"));
    QVERIFY(measured() < textContrast);
    label->setStyleSheet(QString());
    QWidget over(label->parentWidget()); // what covers a text leaves none
    over.setGeometry(label->geometry());
    over.setAutoFillBackground(true);
    over.show();
    QCOMPARE(measured(), 0.0);
}

int main(int argc, char** argv)
{
    prepare();
    QApplication application(argc, argv);
    dress(application);
    TestContrast test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_contrast.moc"
