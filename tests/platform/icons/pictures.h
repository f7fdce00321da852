#pragma once

// What the tests of the picture library share: its table, and measures on pixels.

#include <QColor>
#include <QFile>
#include <QImage>
#include <QList>
#include <QSize>
#include <QString>
#include <QTextStream>
#include <cmath>

namespace pictures {

/// One picture of the library's table.
struct Row
{
    QString path;
    QSize size;
};

/// The table in its order; empty when it can't be read.
inline QList<Row> rows()
{
    QFile file(QStringLiteral(ICON_LIST));
    QList<Row> list;
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        return list;
    }
    QTextStream in(&file);
    for (QString line = in.readLine(); !line.isNull(); line = in.readLine()) {
        const QStringList parts = line.split(' ');
        const QStringList size = parts.value(1).split('x');
        list.append({":" + parts.value(0), QSize(size.value(0).toInt(), size.value(1).toInt())});
    }
    return list;
}

/// Pixels of a picture, not premultiplied.
inline QImage picture(const char* path)
{
    return QImage(QLatin1String(path)).convertToFormat(QImage::Format_ARGB32);
}

/// Relative luminance of WCAG 2.1, 0 ... 1.
inline double luminance(const QColor& colour)
{
    const auto linear = [](double c) {
        return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) +
           0.0722 * linear(colour.blueF());
}

/// Contrast ratio of WCAG 2.1, 1 ... 21.
inline double contrast(const QColor& a, const QColor& b)
{
    const double la = luminance(a) + 0.05;
    const double lb = luminance(b) + 0.05;
    return la > lb ? la / lb : lb / la;
}

/// Grey value 0 ... 255 over black.
inline int light(const QImage& image, int x, int y)
{
    return qGray(image.pixel(x, y)) * qAlpha(image.pixel(x, y)) / 255;
}

/// A vertical line of two pixels, x between them, lighter than the ground three pixels away.
inline bool isLineX(const QImage& image, int x, int y)
{
    return light(image, x - 1, y) > light(image, x - 4, y) + 5 &&
           light(image, x, y) > light(image, x + 3, y) + 5 && light(image, x - 1, y) == light(image, x, y);
}

/// The same of a horizontal line.
inline bool isLineY(const QImage& image, int x, int y)
{
    return light(image, x, y - 1) > light(image, x, y + 4) + 5 &&
           light(image, x, y) > light(image, x, y + 3) + 5 && light(image, x, y - 1) == light(image, x, y);
}

} // namespace pictures
