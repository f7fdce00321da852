#include "tests/headunit/remote/framereader.h"

#include "headunit/remote/frame.h"

#include <QPainter>

using namespace headunit;

class TestFrame : public QObject
{
    Q_OBJECT
private slots:
    void frameHoldsThePiecesDotForDot();
    void smallerFormIsTaken_data();
    void smallerFormIsTaken();
    void manyPiecesBecomeOne();

private:
    static QImage noise(const QSize& size);
};

QImage TestFrame::noise(const QSize& size)
{
    QImage picture(size, QImage::Format_RGB32);
    quint32 state = 1;
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            state = state * 1664525 + 1013904223;
            picture.setPixel(x, y, 0xff000000 | (state >> 8));
        }
    }
    return picture;
}

void TestFrame::frameHoldsThePiecesDotForDot()
{
    const QImage picture = noise({300, 200});
    const QRegion changed = QRegion(0, 0, 300, 20) + QRegion(7, 50, 1, 1) + QRegion(200, 100, 100, 100);
    QImage shown(picture.size(), QImage::Format_RGB32);
    shown.fill(Qt::black);
    const QByteArray frame = encodeFrame(picture, changed);
    QCOMPARE(drawFrame(frame, &shown), changed);
    QImage wanted(picture.size(), QImage::Format_RGB32);
    wanted.fill(Qt::black);
    QPainter painter(&wanted);
    painter.setClipRegion(changed);
    painter.drawImage(0, 0, picture);
    painter.end();
    QCOMPARE(shown, wanted);
}

void TestFrame::smallerFormIsTaken_data()
{
    QTest::addColumn<QImage>("picture");
    QTest::addColumn<int>("form");
    QImage slope(256, 256, QImage::Format_RGB32), line(64, 2, QImage::Format_RGB32);
    for (int y = 0; y < 256; ++y) {
        for (int x = 0; x < 256; ++x)
            slope.setPixel(x, y, qRgb(x, y, (x + y) / 2));
    }
    line.fill(Qt::blue);
    QImage few = noise({64, 64});
    for (int y = 0; y < 64; ++y) {
        for (int x = 0; x < 64; ++x)
            few.setPixel(x, y, few.pixel(x, y) & 0xffc0c0c0);
    }
    QTest::newRow("a slope is PNG's") << slope << int(FrameForm::Png);
    QTest::newRow("few colours are PNG's") << few << int(FrameForm::Png);
    QTest::newRow("a small plain piece has no use for a header") << line << int(FrameForm::Deflate);
}

void TestFrame::smallerFormIsTaken()
{
    QFETCH(QImage, picture);
    const QByteArray frame = encodeFrame(picture, picture.rect());
    QTEST(int(frame.at(2 + 8)), "form");
    QImage shown(picture.size(), QImage::Format_RGB32);
    drawFrame(frame, &shown);
    QCOMPARE(shown, picture);
}

void TestFrame::manyPiecesBecomeOne()
{
    const QImage picture = noise({300, 200});
    QRegion changed;
    for (int i = 0; i < 40; ++i)
        changed += QRect(7 * i, 4 * i, 2, 2);
    QImage shown(picture.size(), QImage::Format_RGB32);
    QCOMPARE(drawFrame(encodeFrame(picture, changed), &shown), QRegion(changed.boundingRect()));
}

QTEST_GUILESS_MAIN(TestFrame)
#include "tst_frame.moc"
