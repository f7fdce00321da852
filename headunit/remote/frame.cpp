#include "headunit/remote/frame.h"

#include <QBuffer>
#include <QDataStream>
#include <QImageWriter>

namespace headunit {

namespace {

constexpr int manyPieces = 12; ///< costs of their own outweigh what they leave out

QByteArray png(const QImage& picture)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    QImageWriter writer(&buffer, "png");
    writer.setQuality(90); // zlib's level 1
    return writer.write(picture) ? bytes : QByteArray();
}

QByteArray deflated(const QImage& picture)
{
    const QImage pixels = picture.convertToFormat(QImage::Format_RGBA8888);
    return qCompress(pixels.constBits(), int(pixels.sizeInBytes()), 1).mid(4); // without Qt's own header
}

} // namespace

QByteArray encodeFrame(const QImage& picture, const QRegion& changed)
{
    const QRegion region = changed.rectCount() > manyPieces ? QRegion(changed.boundingRect()) : changed;
    QByteArray frame;
    QDataStream stream(&frame, QIODevice::WriteOnly);
    stream << quint16(region.rectCount());
    for (const QRect& rect : region) {
        const QImage piece = picture.copy(rect);
        QByteArray bytes = deflated(piece);
        FrameForm form = FrameForm::Deflate;
        const QByteArray other = png(piece);
        if (!other.isEmpty() && other.size() < bytes.size()) {
            bytes = other;
            form = FrameForm::Png;
        }
        stream << quint16(rect.x()) << quint16(rect.y()) << quint16(rect.width()) << quint16(rect.height())
               << quint8(form) << quint32(bytes.size());
        stream.writeRawData(bytes.constData(), bytes.size());
    }
    return frame;
}

} // namespace headunit
