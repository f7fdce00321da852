#pragma once

#include <QByteArray>
#include <QImage>
#include <QRegion>

namespace headunit {

/// Changed regions of a picture as the page takes them, numbers most significant byte first:
///
///     frame := count (16 bits), then so many pieces
///     piece := x, y, width, height (16 bits each), form (8 bits: FrameForm), size (32 bits), so many bytes
///
/// Each piece has the form that is smaller, as far as that can be told in time. picture: RGB32. changed:
/// within it. Thread: any.
QByteArray encodeFrame(const QImage& picture, const QRegion& changed);

enum class FrameForm : quint8 {
    Png,
    Deflate, ///< zlib's format; red, green, blue, 255 for each pixel, line after line
};

} // namespace headunit
