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
    /// style: 4 = full row with the value shown beside the handle (the only one that the unit uses); any
    /// other number is taken as 4.
    CustomSlider_2(QWidget* parent, const QRect& geometry, int style);
    ~CustomSlider_2() override;

    /// Added to the value for display only; valSave() carries the bare value.
    void setOffset(int offset);
    /// Colour of the bubble while the handle is dragged.
    void setHintColor(const QColor& color);

signals:
    /// Once each time the user settles on a value: on release of a touch, or when keyboard stepping pauses.
    /// Never for setValue(), and never when the slider is disabled or hidden under the finger: then it shows
    /// the value before the touch again. The value is inside the slider's range, without the offset.
    void valSave(int value);

protected:
    bool event(QEvent* event) override;

private:
    friend class CustomSlider_2Private;
    CustomSlider_2Private* d;
    Q_DISABLE_COPY(CustomSlider_2)
};

} // namespace settings
