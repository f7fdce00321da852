#pragma once

#include "common/export.h"

#include <QFont>
#include <QPalette>
#include <QProxyStyle>

class QApplication;

namespace cm {

/// The unit's look: dark palette, the font family of every script, and keys that show their pressed picture.
/// Thread: GUI.
///
/// Forms keep the pressed picture of a key in QIcon::Selected, which Qt's own button never paints; this style
/// does, while the key is down. A checked key shows its On picture, a disabled one is dimmed and stays
/// legible; keys have no frame, and a focus rectangle only when the keyboard moved the focus. Tab stops at
/// each key of an exclusive group, too.
class COMMON_EXPORT UnitStyle : public QProxyStyle
{
    Q_OBJECT
public:
    UnitStyle();

    /// Gives the application style, which it owns from then on, palette, font and the engine of its icons,
    /// and follows the language. Font families that aren't installed are logged. Call once, before the first
    /// widget.
    static void install(QApplication& application);

    /// The unit's base font, 11 pt, for texts in that language (one of Language::codes(); any other code is
    /// taken as English). Which script an ideograph is drawn in depends on it; every script of every language
    /// is there in each.
    static QFont font(const QString& code);
    /// The unit's colours, for every role that Qt's widgets draw with.
    static QPalette palette();

    void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget = nullptr) const override;
    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget = nullptr) const override;
    void drawItemText(QPainter* painter, const QRect& rect, int flags, const QPalette& palette, bool enabled,
                      const QString& text, QPalette::ColorRole role = QPalette::NoRole) const override;
    int pixelMetric(PixelMetric metric, const QStyleOption* option = nullptr,
                    const QWidget* widget = nullptr) const override;
    int styleHint(StyleHint hint, const QStyleOption* option = nullptr, const QWidget* widget = nullptr,
                  QStyleHintReturn* returnData = nullptr) const override;
    void polish(QWidget* widget) override;
    void polish(QApplication* application) override;
    void unpolish(QApplication* application) override;
    using QProxyStyle::polish;
    using QProxyStyle::unpolish;

protected:
    /// A touch takes the focus ring away, which Qt would leave on; the focus itself stays where it is.
    bool eventFilter(QObject* watched, QEvent* event) override;
};

} // namespace cm
