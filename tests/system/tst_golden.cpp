// The looks of every screen, compared with the pictures in tests/golden. tests/golden/renew makes them anew.
//
// Tolerance: a pixel may differ by 8 of 255 in each channel (rasterizers round differently; a grid line here
// is 20), and at most 24 pixels of a picture by more: a glyph's edge here and there, less than a digit that
// is another. What differs is written as three pictures side by side - expected, shown, difference - to
// golden-differences/ beside the test.

#include "tests/system/screens.h"

#include <QAbstractButton>
#include <QApplication>
#include <QMouseEvent>
#include <QPainter>
#include <QtTest>

using namespace screens;

namespace {

constexpr int channelTolerance = 8;
constexpr int pixelTolerance = 24;

/// A key of each page that shows how keys look while they are down.
// clang-format off
constexpr const char* heldKeys[] = {
    "Key_eqtype_plus", "key_up_level", "key_slope_up", "Key_rear_left_plus", "key_jazz", "key_main_default_up",
    "Key_hpf_freq_plus",
};
// clang-format on
static_assert(std::size(heldKeys) == PageCount, "one key a page");

/// Presets have no ends, and only three pages have switches.
bool hasLooksOfItsOwn(Page page, Condition condition)
{
    switch (condition) {
    case Lowest:
    case Highest:
        return page != Presets;
    case Switched:
        return page == AudioLevels || page == Crossover || page == TimeAlignment || page == MainCrossover;
    default:
        return true;
    }
}

/// A key goes down; a page feels a finger on the middle of its fifth band.
void hold(QWidget* target)
{
    if (auto* key = qobject_cast<QAbstractButton*>(target)) {
        key->setDown(true);
        return;
    }
    QMouseEvent event(QEvent::MouseButtonPress, QPoint(400, 300), Qt::LeftButton, Qt::LeftButton,
                      Qt::NoModifier);
    QCoreApplication::sendEvent(target, &event);
}

QDir goldenFolder()
{
    return QDir(QStringLiteral(AUDIOSETTING_TESTS "/golden"));
}

bool renewing()
{
    return qEnvironmentVariableIsSet("AUDIOSETTING_GOLDEN_RENEW");
}

bool differs(QRgb a, QRgb b)
{
    return qAbs(qRed(a) - qRed(b)) > channelTolerance || qAbs(qGreen(a) - qGreen(b)) > channelTolerance ||
           qAbs(qBlue(a) - qBlue(b)) > channelTolerance;
}

/// Number of pixels that differ; white ones of the picture are those.
int difference(const QImage& expected, const QImage& shown, QImage* picture)
{
    *picture = QImage(expected.size(), QImage::Format_RGB32);
    int count = 0;
    for (int y = 0; y < expected.height(); ++y) {
        const auto* a = reinterpret_cast<const QRgb*>(expected.constScanLine(y));
        const auto* b = reinterpret_cast<const QRgb*>(shown.constScanLine(y));
        auto* out = reinterpret_cast<QRgb*>(picture->scanLine(y));
        for (int x = 0; x < expected.width(); ++x) {
            const bool other = differs(a[x], b[x]);
            count += other;
            out[x] = other ? qRgb(255, 255, 255) : QColor(a[x]).darker(400).rgb();
        }
    }
    return count;
}

QString writeDifference(const QString& name, const QImage& expected, const QImage& shown,
                        const QImage& picture)
{
    QDir folder(QCoreApplication::applicationDirPath());
    const QString path = folder.filePath(QStringLiteral("golden-differences/%1.png").arg(name));
    folder.mkpath(QFileInfo(path).path());
    QImage all(3 * expected.width(), expected.height(), QImage::Format_RGB32);
    all.fill(Qt::magenta);
    QPainter painter(&all);
    int x = 0;
    for (const QImage& image : {expected, shown, picture}) {
        painter.drawImage(x, 0, image);
        x += expected.width();
    }
    painter.end();
    return all.save(path) ? path : QStringLiteral("(nowhere, %1 can't be written)").arg(path);
}

} // namespace

class TestGolden : public QObject
{
    Q_OBJECT
private slots:
    void screenLooksAsItsPicture_data();
    void screenLooksAsItsPicture();
    void aChangedScreenIsNoticed();
    void everyPictureIsCompared();

private:
    QStringList m_compared;
};

void TestGolden::screenLooksAsItsPicture_data()
{
    QTest::addColumn<int>("page");
    QTest::addColumn<int>("condition");
    QTest::addColumn<QString>("held");
    QTest::addColumn<QString>("language"); // empty: the longest
    QTest::addColumn<int>("view");
    for (int page = 0; page < PageCount; ++page) {
        const auto row = [&](const QString& what, int condition, const char* held = "",
                             const char* language = "en", int view = 0) {
            const QString name = QLatin1String(screens::name(Page(page))) + QLatin1Char('/') + what;
            QTest::newRow(qPrintable(name))
                << page << condition << QString::fromLatin1(held) << QString::fromLatin1(language) << view;
        };
        for (int condition = 0; condition < ConditionCount; ++condition) {
            if (hasLooksOfItsOwn(Page(page), Condition(condition)))
                row(QLatin1String(screens::name(Condition(condition))), condition);
        }
        row(QStringLiteral("key-down"), Used, heldKeys[page]);
        row(QStringLiteral("longest-language"), Used, "", "");
        row(QStringLiteral("arabic"), Used, "", "ar");
        if (page == Equalizer)
            row(QStringLiteral("finger-on-band"), Used, "m5qx_audiosetting_settings_page");
        if (page == Volumes) {
            row(QStringLiteral("second-view"), Used, "", "en", 1);
            row(QStringLiteral("last-view"), Used, "", "en", 2);
            row(QStringLiteral("arabic-last-view"), Used, "", "ar", 2);
        }
    }
}

void TestGolden::screenLooksAsItsPicture()
{
    QFETCH(int, page);
    QFETCH(int, condition);
    QFETCH(QString, held);
    QFETCH(QString, language);
    QFETCH(int, view);
    const QString name = QString::fromLatin1(QTest::currentDataTag());
    m_compared.append(name + QLatin1String(".png"));

    Screen screen(Page(page), Condition(condition),
                  language.isEmpty() ? longestLanguage(Page(page)) : language);
    for (int i = 0; i < view; ++i)
        screen.scroll();
    if (!held.isEmpty())
        hold(screen.child(qPrintable(held)));
    const QImage shown = screen.picture();

    const QString path = goldenFolder().filePath(name + QLatin1String(".png"));
    if (renewing()) {
        QVERIFY(goldenFolder().mkpath(QLatin1String(screens::name(Page(page)))));
        QVERIFY2(shown.save(path, nullptr, 0), qPrintable(path));
        return;
    }
    const QImage expected = QImage(path).convertToFormat(QImage::Format_RGB32);
    QVERIFY2(!expected.isNull(), qPrintable(path));
    QCOMPARE(shown.size(), expected.size());
    QImage picture;
    const int count = difference(expected, shown, &picture);
    if (count > pixelTolerance)
        QFAIL(qPrintable(QStringLiteral("%1 pixels differ; see %2")
                             .arg(count)
                             .arg(writeDifference(name, expected, shown, picture))));
}

void TestGolden::aChangedScreenIsNoticed()
{
    // Small changes that a driver could see: another digit, a key that is held, a handle one step further.
    QImage before, digit, key, picture;
    {
        Screen screen(TimeAlignment, Used);
        before = screen.picture();
        QCOMPARE(difference(before, screen.picture(), &picture), 0);
        screen.child("text_front_left_data")->setProperty("text", "1.3ms");
        digit = screen.picture();
        qobject_cast<QAbstractButton*>(screen.child("Key_front_left_plus"))->setDown(true);
        key = screen.picture();
    }
    QVERIFY(difference(before, digit, &picture) > pixelTolerance);
    QVERIFY(difference(digit, key, &picture) > pixelTolerance);

    Screen screen(Equalizer, Used);
    const QImage flat = screen.picture();
    QWidget* handle = screen.child("icon_band_num_7");
    handle->move(handle->x(), handle->y() + 15);
    QVERIFY(difference(flat, screen.picture(), &picture) > pixelTolerance);
}

void TestGolden::everyPictureIsCompared()
{
    if (m_compared.size() < 5 * PageCount)
        return; // single rows were asked for
    QStringList kept;
    QDirIterator it(goldenFolder().path(), {QStringLiteral("*.png")}, QDir::Files,
                    QDirIterator::Subdirectories);
    while (it.hasNext())
        kept.append(goldenFolder().relativeFilePath(it.next()));
    m_compared.sort();
    kept.sort();
    if (renewing()) {
        for (const QString& file : kept) {
            if (!m_compared.contains(file))
                QVERIFY(goldenFolder().remove(file));
        }
        return;
    }
    QCOMPARE(kept, m_compared);
}

int main(int argc, char** argv)
{
    prepare();
    QApplication application(argc, argv);
    dress(application);
    TestGolden test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_golden.moc"
