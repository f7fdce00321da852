#pragma once

#include "common/export.h"

#include <QColor>
#include <QRect>
#include <QSlider>

namespace settings {

class CustomSlider_2Private;

/// The unit's horizontal slider: shows value + offset in a bubble and says when the user has settled. Range,
/// value, enabling and keyboard are QSlider's. Thread: GUI.
class COMMON_EXPORT CustomSlider_2 : public QSlider
{
    Q_OBJECT
public:
    /// geometry: px in the parent, which owns the slider; without one (null) it is a window of its own and
    /// the caller's. style: 4 = full row with the value in a bubble above the handle (the only one that the
    /// unit uses); any other number is taken as 4.
    CustomSlider_2(QWidget* parent, const QRect& geometry, int style);
    ~CustomSlider_2() override;

    /// Added to the value for display only, any number; valSave() carries the bare value. 0 at first.
    void setOffset(int offset);
    /// Colour of the bubble and the handle while it is dragged. An invalid one is logged and ignored.
    void setHintColor(const QColor& color);

signals:
    /// Once each time the user settles on a value: on release of a touch, also where it began, or when
    /// stepping by keyboard or wheel pauses for 400 ms, the focus leaves or the page is hidden. Never for
    /// setValue(), and never when the slider is disabled or hidden under the finger: then it shows the value
    /// before the touch again. The value is inside the slider's range, without the offset.
    void valSave(int value);

protected:
    bool event(QEvent* event) override;

private:
    friend class CustomSlider_2Private;
    CustomSlider_2Private* d;
    Q_DISABLE_COPY(CustomSlider_2)
};

} // namespace settings
