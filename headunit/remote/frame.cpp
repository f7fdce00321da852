#include "headunit/remote/frame.h"

#include <QBuffer>
#include <QDataStream>
#include <QImageWriter>
#include <QVector>

#include <array>

namespace headunit {

namespace {

constexpr int manyPieces = 12;        ///< costs of their own outweigh what they leave out
constexpr int largePiece = 32 * 1024; ///< pixels; PNG takes three times as long, which is felt
constexpr int stripHeight = 16;

/// With a table of colours where 256 are enough, as in most of what changes on a screen: PNG is the quicker
/// and by far the smaller then. Null where they aren't.
QImage withColourTable(const QImage& picture)
{
    constexpr int places = 1024;
    std::array<QRgb, places> colours;
    std::array<int, places> numbers;
    numbers.fill(-1);
    QVector<QRgb> table;
    QImage indexed(picture.size(), QImage::Format_Indexed8);
    for (int y = 0; y < picture.height(); ++y) {
        const auto* from = reinterpret_cast<const QRgb*>(picture.constScanLine(y));
        uchar* to = indexed.scanLine(y);
        for (int x = 0; x < picture.width(); ++x) {
            if (x > 0 && from[x] == from[x - 1]) {
                to[x] = to[x - 1];
                continue;
            }
            std::size_t place = (from[x] * 2654435761u) >> 22;
            while (numbers[place] >= 0 && colours[place] != from[x])
                place = (place + 1) % places;
            if (numbers[place] < 0) {
                if (table.size() == 256)
                    return QImage();
                colours[place] = from[x];
                numbers[place] = table.size();
                table.append(from[x]);
            }
            to[x] = uchar(numbers[place]);
        }
    }
    indexed.setColorTable(table);
    return indexed;
}

QByteArray png(const QImage& picture)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    QImageWriter writer(&buffer, "png");
    writer.setQuality(70); // zlib's level 2, as Qt counts
    writer.write(picture);
    return bytes;
}

QByteArray deflated(const QImage& picture)
{
    const QImage pixels = picture.convertToFormat(QImage::Format_RGBA8888);
    return qCompress(pixels.constBits(), int(pixels.sizeInBytes()), 3).mid(4); // without Qt's own header
}

/// The smaller form of a piece. Of a large one a strip across its middle tells which that will be.
FrameForm encode(const QImage& piece, QByteArray* bytes)
{
    const QImage indexed = withColourTable(piece);
    if (indexed.isNull() && piece.width() * piece.height() > largePiece) {
        const QImage strip =
            piece.copy(0, piece.height() / 2, piece.width(), qMin(stripHeight, piece.height() / 2));
        const bool isPng = png(strip).size() < deflated(strip).size();
        *bytes = isPng ? png(piece) : deflated(piece);
        return isPng ? FrameForm::Png : FrameForm::Deflate;
    }
    *bytes = png(indexed.isNull() ? piece : indexed);
    const QByteArray other = deflated(piece);
    if (bytes->size() <= other.size())
        return FrameForm::Png;
    *bytes = other;
    return FrameForm::Deflate;
}

} // namespace

QByteArray encodeFrame(const QImage& picture, const QRegion& changed)
{
    const QRegion region = changed.rectCount() > manyPieces ? QRegion(changed.boundingRect()) : changed;
    QByteArray frame;
    QDataStream stream(&frame, QIODevice::WriteOnly);
    stream << quint16(region.rectCount());
    for (const QRect& rect : region) {
        QByteArray bytes;
        const FrameForm form = encode(picture.copy(rect), &bytes);
        stream << quint16(rect.x()) << quint16(rect.y()) << quint16(rect.width()) << quint16(rect.height())
               << quint8(form) << quint32(bytes.size());
        stream.writeRawData(bytes.constData(), bytes.size());
    }
    return frame;
}

} // namespace headunit
