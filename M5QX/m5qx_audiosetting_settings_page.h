#pragma once

#include "hvaudio/eqcurves.h"

#include <QRect>
#include <QScopedPointer>
#include <QWidget>

#include <array>

class QLabel;
namespace Ui {
class m5qx_audiosetting_settings_page;
}
namespace mem {
class SettingsExe;
}

namespace audiosetting {

/// The 13-band graphic equalizer. Shows one of the two user curves (types 6 and 7) and lets a finger draw it:
///
///     press on a bar -> setEQType, handle, beep, bubble
///     move           -> handle, bubble; nothing is sent
///     release        -> setCustomEq1 (type 6) or setCustomEq2 (type 7), bubble goes
///
/// A factory preset is never drawn here: the page shows the user curve that was current last, and a touch on
/// a bar makes it current again. Values are -10..10 (dB), bands 0..12, points and rectangles in page
/// coordinates. Thread: GUI.
class m5qx_EQ_settings_page : public QWidget
{
    Q_OBJECT
public:
    explicit m5qx_EQ_settings_page(QWidget* parent);
    ~m5qx_EQ_settings_page() override;

    /// Once, by the constructor.
    void init();
    /// Draws the curve anew; the hub calls it before it shows the page.
    void resume();
    void retranslateUi();

    /// 6 or 7, nothing else: the service's type, or the last user type while a preset is current.
    int getCurrEqType();
    /// Makes it the service's type; the range is the service's affair.
    void setEqType(int type);
    /// The stored value of a band of the page's curve; a band that doesn't exist has 0.
    int getCustomEq(int band);
    // Passed to the service as they are, which refuses what is out of range.
    void setCustomEq(int value, int band, bool flag);
    void setCustomEq1(int value, int band, bool flag);
    void setCustomEq2(int value, int band, bool flag);

    /// Keeps the value in the user curve that is shown and draws that curve, in which a handle stays on its
    /// bar whatever the value. A band outside 0..12 changes nothing.
    void updateCustomEqVal(int band, int value);
    /// Moves the handles to the curve of a type; a type without a curve is flat.
    void updateEq(int type);
    /// Names the curve that is shown, and the other one for the keys that lead to it.
    void showEQTypeText();
    /// Text id of a type's name; a type without a curve has the flat one's.
    static int curveNameId(int type);

    /// The band whose bar holds the point, or -1.
    int touchIndexByPoint(const QPoint& point) const;
    /// Takes the value at the point's height. False, and nothing changes, for a point outside the band's bar
    /// or a band that doesn't exist.
    bool updateTouchPoint(int band, const QPoint& point);
    /// Shows the bubble of a band. y (the finger) doesn't place it: it stands at the value's handle.
    void updateeqSliderBarInfo(int band, int value, int y);

signals:
    /// Never emitted: whoever shows the type listens to the platform's own signal.
    void EQTypeChanged();

public slots:
    void onBackClicked();
    /// The service's type is another one now. While the page is hidden it is no news: showing asks anew.
    void onEQTypeChanged(int type);
    void on_Key_eqtype_minus_clicked();
    void on_Key_eqtype_plus_clicked();

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    using Curve = std::array<int, hvaudio::eqBandCount>;

    struct Band
    {
        QWidget* panel = nullptr;
        QLabel* handle = nullptr;
        QLabel* caption = nullptr;
        QRect bar; ///< the panel's rectangle in the page
    };

    void loadCaches();
    void rememberType(int type);
    void switchCustomType();
    void touchEvent(const QEvent* event);
    void touchPressed(const QPoint& point);
    void touchMoved(const QPoint& point);
    void touchReleased();
    void forgetTouch();

    QScopedPointer<Ui::m5qx_audiosetting_settings_page> ui;
    mem::SettingsExe* m_settings;
    int m_lastCustomType = 6;
    Curve m_custom1{};
    Curve m_custom2{};
    int m_touchBand = -1;
    int m_touchValue = 0;
    std::array<Band, hvaudio::eqBandCount> m_bands{};
};

} // namespace audiosetting
