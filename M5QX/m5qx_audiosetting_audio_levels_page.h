#pragma once

#include <QScopedPointer>
#include <QWidget>

class k41_audio_root_bf;

namespace settings {
class CustomSlider_2;
}

namespace Ui {
class m5qx_audiosetting_audio_levels_page;
}

namespace audiosetting {

class balanceFaderControl;

/// Balance and fader, loudness, subwoofer switch and level. Thread: GUI.
///
///     arrow key, reset -> AudioService -> read back -> texts, keys, pad
///     pad, finger down -> texts, keys, pad                finger up: the pad itself tells the AudioService
///     switch, level    -> store, AudioService
///
/// The page keeps no value: balance and fader are the service's, the rest is read from the store.
class m5qx_eq_audio_levels_page : public QWidget
{
    Q_OBJECT
public:
    explicit m5qx_eq_audio_levels_page(QWidget* parent);
    ~m5qx_eq_audio_levels_page() override;

    /// Once, by the constructor.
    void init();
    /// Reads everything again; the hub calls it whenever it brings the page back.
    void resume();
    void retranslateUi();
    void showEvent(QShowEvent* event) override;

signals:
    /// Part of the interface that the hub binds to; the switches act by themselves, so neither is emitted.
    void trigSubwooferOutputOnOff(bool on);
    void trigLoudnessOnOff(bool on);

public slots:
    void onUpClicked();
    void onUpLongPressed();
    void onUpLongRepeat();
    void onDownClicked();
    void onDownLongPressed();
    void onDownLongRepeat();
    void onLeftClicked();
    void onLeftLongPressed();
    void onLeftLongRepeat();
    void onRightClicked();
    void onRightLongPressed();
    void onRightLongRepeat();
    /// Shows a pair, -15..15 each; other values are shown as they are. Sends nothing.
    void onUpdateBF(int balance, int fader);
    void on_key_back_clicked();
    void on_key_reset_level_clicked();
    void on_key_loudness_clicked();
    void on_key_subwoofer_clicked();
    /// value: 0..12, 12 the loudest; clamped.
    void onSliderOnSave(int value);
    void on_key_sub_level_up_clicked();
    void on_key_sub_level_down_clicked();

private:
    void faderPlus();
    void faderMinus();
    void balancePlus();
    void balanceMinus();
    /// Beware of the order, which is not AudioService::setBalanceFader()'s.
    void setBalance(int fader, int balance);
    int fader();
    int balance();
    void soundClickedBeep();
    void setSubwooferSliderEnable(bool on);

    void stepSubwooferLevel(int step);
    void switchSubwooferOn();
    void sendSubwooferLevel(int level, int frequency);
    void showSwitches();

    QScopedPointer<Ui::m5qx_audiosetting_audio_levels_page> ui;
    k41_audio_root_bf* m_touchArea = nullptr;
    balanceFaderControl* m_pad = nullptr;
    bool m_flag1 = false; ///< true once built; nothing reads it
    bool m_flag2 = false; ///< nothing reads it
    settings::CustomSlider_2* m_slider = nullptr;
};

} // namespace audiosetting
