#pragma once

#include <QList>
#include <QScopedPointer>
#include <QWidget>

#include <array>

class SetupPageKeyWidget;
class Ui_VolumeSettingWidget;
namespace cm {
class ScrollBar;
class ScrollManage;
} // namespace cm
namespace settings {
class CustomSlider_2;
}

/// Start-up volumes of five channels and input gains of seven sources, on a page that scrolls. Five rows for
/// the live volumes are built and wired like the others and stay hidden, and the DAB row has no size; a unit
/// that shows them finds them working.
///
/// The store is the only truth: each key step reads it, steps, clamps, writes and shows what it holds then.
/// Volumes are 0..50, gains 0..15 (shown as -5..10 dB). Thread: GUI.
class VolumeSettingWidget : public QWidget
{
    Q_OBJECT
public:
    /// Rows in the order of the page's row list.
    enum Row : int {
        MainRow,
        RingRow,
        CallRow,
        NaviRow,
        VoiceRow,
        MainDefaultRow,
        RingDefaultRow,
        CallDefaultRow,
        NaviDefaultRow,
        VoiceDefaultRow,
        RadioRow,
        UsbRow,
        BtAudioRow,
        AvInRow,
        CarplayRow,
        AndroidAutoRow,
        DabRow,
    };
    static constexpr int rowCount = DabRow + 1;

    explicit VolumeSettingWidget(QWidget* parent);
    ~VolumeSettingWidget() override;

    /// Shows what the store holds now.
    void resume();
    void updateVolume();
    void updateDefaultVolume();
    void updateSourceOffset();
    /// Brings the page keys to their place above everything else; makes them the first time.
    void showSetupPageKeyWidget();
    /// Hides the live rows and moves the others up into their place. Once, at construction: the move is
    /// relative.
    void setupWidget();

signals:
    /// The driver asks to leave the page.
    void exitUI();

public slots:
    void on_key_main_up_clicked();
    void on_key_main_down_clicked();
    void on_key_ring_up_clicked();
    void on_key_ring_down_clicked();
    void on_key_call_up_clicked();
    void on_key_call_down_clicked();
    void on_key_navi_up_clicked();
    void on_key_navi_down_clicked();
    void on_key_voice_up_clicked();
    void on_key_voice_down_clicked();
    void on_key_main_default_up_clicked();
    void on_key_main_default_down_clicked();
    void on_key_ring_default_up_clicked();
    void on_key_ring_default_down_clicked();
    void on_key_call_default_up_clicked();
    void on_key_call_default_down_clicked();
    void on_key_navi_default_up_clicked();
    void on_key_navi_default_down_clicked();
    void on_key_voice_default_up_clicked();
    void on_key_voice_default_down_clicked();
    void on_key_source_radio_up_clicked();
    void on_key_source_radio_down_clicked();
    void on_key_source_usb_up_clicked();
    void on_key_source_usb_down_clicked();
    void on_key_source_btaudio_up_clicked();
    void on_key_source_btaudio_down_clicked();
    void on_key_source_avin_up_clicked();
    void on_key_source_avin_down_clicked();
    void on_key_source_carplay_up_clicked();
    void on_key_source_carplay_down_clicked();
    void on_key_source_androidauto_up_clicked();
    void on_key_source_androidauto_down_clicked();
    void on_key_source_dab_up_clicked();
    void on_key_source_dab_down_clicked();

    // value: what the slider has settled on, 0..50 or 0..15; anything else is clamped to that.
    void onMainSave(int value);
    void onRingSave(int value);
    void onCallSave(int value);
    void onNaviSave(int value);
    void onVoiceSave(int value);
    void onMainDefaultSave(int value);
    void onRingDefaultSave(int value);
    void onCallDefaultSave(int value);
    void onNaviDefaultSave(int value);
    void onVoiceDefaultSave(int value);
    void onSourceRadioSave(int value);
    void onSourceUSBSave(int value);
    void onSourceBtaudioSave(int value);
    void onSourceAVINSave(int value);
    void onSourceCarplaySave(int value);
    void onSourceAndroidautoSave(int value);
    void onSourceDABSave(int value);

    void on_key_exit_clicked();
    /// A volume has changed somewhere; the arguments don't matter, all five are read again.
    void onVolumeChanged(bool muted, int level, int channel);
    /// Scroll to the end or the beginning; nothing while the page is hidden.
    void onSetupNextPage();
    void onSetupPrevPage();

private:
    void setTexts();
    void createSliders();
    void createScrolling();
    void updateRows(Row first, Row last);
    int step(Row row, int by);
    int save(Row row, int value);

    QScopedPointer<Ui_VolumeSettingWidget> ui;
    std::array<settings::CustomSlider_2*, rowCount> m_sliders{};
    cm::ScrollManage* m_scrollManage = nullptr;
    cm::ScrollBar* m_scrollBar = nullptr;
    SetupPageKeyWidget* m_pageKeys = nullptr;
    QList<QWidget*> m_rows;
};
