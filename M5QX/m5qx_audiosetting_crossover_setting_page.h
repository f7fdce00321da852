#pragma once

#include <QScopedPointer>
#include <QWidget>

class PaSetupToggleKey;
class QButtonGroup;
class QPushButton;
class QTimer;
class Ui_m5qx_audiosetting_crossover_setting_page;

namespace mem {
class SettingsExe;
}

namespace audiosetting {

/// Crossover of the main audio on one stand-alone page: a high-pass and a low-pass filter (on/off, frequency,
/// slope) and the subwoofer (frequency, level). Each click is stored and sent at once. The hub doesn't show
/// it; a host constructs it and shows it, which reads everything from the store. The back key posts a back
/// request to the application object. Thread: GUI.
///
/// No value from the store is checked: what is stored is what is sent. What has no text shows none.
class Q_DECL_EXPORT m5qx_eq_crossover_setting_page : public QWidget
{
    Q_OBJECT
public:
    explicit m5qx_eq_crossover_setting_page(QWidget* parent = nullptr);
    /// Clears the application's pixmap cache, so that a page that is gone holds no pictures.
    ~m5qx_eq_crossover_setting_page() override;

protected:
    void showEvent(QShowEvent* event) override;

private slots:
    void onBackClicked();
    void onHighPassClicked();
    void onHpfFreqNextClicked();
    void onHpfFreqPrevClicked();
    void onLowPassClicked();
    void onLpfFreqNextClicked();
    void onLpfFreqPrevClicked();
    void onSUBFreqNextClicked();
    void onSUBFreqPrevClicked();
    void onSUBLevelNextClicked();
    void onSUBLevelPrevClicked();
    /// slope: 0 = 6, 1 = 12, 2 = 18 dB/octave.
    void onHpfSlopeButtonClicked(int slope);
    void onLpfSlopeButtonClicked(int slope);

private:
    void init();
    void retranslateUi();
    void setAccessibleNames();
    void updateAll();

    void updateCurrHPFFreqText(int freq);
    void updateCurrHPFFreqBtnState(int freq);
    void updateCurrHPFFreqLineIcon(int freq);
    void updateHPFStateIcon(bool on);
    void updateHPFSlopeIcon(int slope);
    void updateHPFSlopeLineIcon(int slope);
    void updateCurrLPFFreqText(int freq);
    void updateCurrLPFFreqBtnState(int freq);
    void updateCurrLPFFreqLineIcon(int freq);
    void updateLPFStateIcon(bool on);
    void updateLPFSlopeIcon(int slope);
    void updateLPFSlopeLineIcon(int slope);
    void updateCurrSubWooferText();
    void updateCurrSubFreqText(int freq);
    void updateCurrSubFreqBtnState(int freq);
    /// level: without the flag in bit 7.
    void updateCurrSubLevelText(int level);
    void updateCurrSubLevelBtnState(int level);
    /// next ends at max, prev at min.
    void updateButtonState(QPushButton* next, QPushButton* prev, int max, int min, int value);
    /// The same while the subwoofer is on; else neither key is enabled.
    void updateSubButtonState(QPushButton* next, QPushButton* prev, int max, int min, int value);

    bool getHpfState();
    void setHpfState(bool on);
    int getHpfFreq();
    void setHpfFreq(int freq);
    int getHpfSlope();
    void setHpfSlope(int slope);
    bool getLpfState();
    void setLpfState(bool on);
    int getLpfFreq();
    void setLpfFreq(int freq);
    int getLpfSlope();
    void setLpfSlope(int slope);
    int getSubFreq();
    void setSubFreq(int freq);
    /// Level in the low 7 bits; bit 7: the subwoofer sounds.
    int getSubLevel();
    void setSubLevel(int level);

    /// The stored frequency.
    void setHpfFilter();
    /// freq 0 switches the filter off.
    void setHpfFilter(int freq);
    void setLpfFilter();
    void setLpfFilter(int freq);
    void setSubFilter();
    void setSubGain(int level);

    bool isSubWooferOn();
    void soundClickedBeep();

    void showHpfFreq(int freq);
    void showLpfFreq(int freq);
    void stepHpfFreq(int freq);
    void stepLpfFreq(int freq);
    void stepSubFreq(int freq);
    /// level: without the flag, which is carried over from stored.
    void stepSubLevel(int stored, int level);

    QScopedPointer<Ui_m5qx_audiosetting_crossover_setting_page> ui;
    mem::SettingsExe* m_settings; ///< child of the page
    QTimer* m_timer = nullptr;    ///< single-shot, never started
    QScopedPointer<PaSetupToggleKey> m_lowPassKey;
    QScopedPointer<PaSetupToggleKey> m_highPassKey;
    QButtonGroup* m_hpfSlopeKeys = nullptr; ///< ids are slope indexes
    QButtonGroup* m_lpfSlopeKeys = nullptr;
};

} // namespace audiosetting
