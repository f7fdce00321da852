#pragma once

#include "headunit/remote/frame.h"

#include <QPainter>
#include <QtTest>

/// Draws a frame as the page does; returns where. An empty region when the frame is malformed.
inline QRegion drawFrame(const QByteArray& frame, QImage* shown)
{
    QDataStream stream(frame);
    QPainter painter(shown);
    QRegion region;
    quint16 count = 0;
    stream >> count;
    while (count-- > 0) {
        quint16 x, y, width, height;
        quint8 form;
        quint32 size;
        stream >> x >> y >> width >> height >> form >> size;
        QByteArray bytes(int(qMin(size, quint32(frame.size()))), '\0');
        if (stream.readRawData(bytes.data(), bytes.size()) != int(size))
            return QRegion();
        QImage piece;
        if (headunit::FrameForm(form) == headunit::FrameForm::Png) {
            piece = QImage::fromData(bytes, "png");
        } else {
            const QByteArray length = QByteArray::fromHex(
                QByteArray::number(quint32(width) * height * 4, 16).rightJustified(8, '0'));
            const QByteArray pixels = qUncompress(length + bytes);
            if (pixels.size() == width * height * 4)
                piece = QImage(reinterpret_cast<const uchar*>(pixels.constData()), width, height, width * 4,
                               QImage::Format_RGBA8888)
                            .copy();
        }
        if (piece.size() != QSize(width, height))
            return QRegion();
        painter.drawImage(x, y, piece);
        region += QRect(x, y, width, height);
    }
    return stream.atEnd() ? region : QRegion();
}
