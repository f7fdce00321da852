#pragma once

#include <QList>
#include <QScopedPointer>
#include <QWidget>

class QButtonGroup;
class QLabel;

namespace mem {
class SettingsExe;
}

namespace Ui {
class m5qx_audiosetting_time_alignment_page;
}

namespace audiosetting {

/// Delays of the five speaker channels in three memories. Thread: GUI.
///
///     step key   -> AudioService (that channel) -> store -> text, keys
///     preset key -> store -> text, keys -> AudioService (all five)
///     reset      -> store (all three memories) -> text, keys -> AudioService (all five)
///
/// Items: 0 front left, 1 front right, 2 rear left, 3 rear right, 4 subwoofer. Values: 0..100, in 0.1 ms.
/// Presets: 0..2. Key ids: item * 2 + 1 is its plus key, item * 2 + 2 its minus key. Nothing is kept here:
/// the current preset and all values are read from the store each time.
class m5qx_eq_time_alignment_page : public QWidget
{
    Q_OBJECT
public:
    explicit m5qx_eq_time_alignment_page(QWidget* parent);
    ~m5qx_eq_time_alignment_page() override;

    /// Once, by the constructor.
    void init();
    void retranslateUi();
    void showEvent(QShowEvent* event) override;

public slots:
    /// A step of the key of that id; an id outside 1..10 counts as one of item 0.
    void onAlmButGroupClicked(int id);
    void onPreButGroupClicked(int preset);
    void onResetClicked();
    void onBackClicked();

protected:
    /// Values of the current preset, all five or one (item outside 0..4: logged, shows nothing).
    void updateCurrAllAlignmentText();
    void updateCurrAlignmentText(int item, int value);

    // Keys at their ends. The first goes through all ten, the second enables each before, the third looks at
    // one.
    void updtaeCurrPreTimeAlignmentItemState();
    void updateAllTimeAlignmentItemState();
    void updtaeTimeAlignmentItemState(int id);

    /// Checks the key of the stored preset, if there is one.
    void updateAllPresetIcon();
    /// Gives a preset's key the icon of an older key set; nothing calls it.
    void updatePresetIcon(int preset, bool on);

    void resetAllPresetTalNum();
    /// A preset outside 0..2 reads as 0 and writes nothing. Without preset: that of the store. item: 0..4.
    /// value: written as it is.
    void setTimeAlignmentValue(int preset, int item, int value);
    void setTimeAlignmentValue(int item, int value);
    int getTimeAlignmentValue(int preset, int item);
    int getTimeAlignmentValue(int item);
    void setTimeAlignmentPreset(int preset);
    int getTimeAlignmentPreset();

    /// 0: at the top (100), 1: at the bottom (0), 2: anywhere else.
    int isValidValue(int value);
    /// Item of a key id.
    int currItemVlaue(int id);

    /// Tells the service all five delays of the current preset, or one (item outside 0..4: logged, not sent).
    void setCurrPresetTimeAlignment();
    void setTimeAlignment(int item, int value);

    void soundClickedBeep();

private:
    void showAndSendCurrPreset();

    QScopedPointer<Ui::m5qx_audiosetting_time_alignment_page> ui;
    mem::SettingsExe* m_settings = nullptr;
    QButtonGroup* m_itemKeys = nullptr;
    QButtonGroup* m_presetKeys = nullptr;
    QList<QLabel*> m_values;
};

} // namespace audiosetting
