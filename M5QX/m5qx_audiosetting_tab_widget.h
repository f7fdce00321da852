#pragma once

#include <QScopedPointer>
#include <QWidget>

class QButtonGroup;

namespace Ui {
class m5qx_audiosetting_tab_widget;
}

namespace audiosetting {

/// The strip along the foot of the screen: one key for each page, and the EQ type selector, which has no room
/// in this layout but works all the same. Thread: GUI.
///
///     page key -> beep -> triShow...() -> hub
///     type key -> beep -> AudioService::setEQType() -> SettingsUtil::EQType(int) -> type name
class m5qx_eq_tab_widget : public QWidget
{
    Q_OBJECT
public:
    explicit m5qx_eq_tab_widget(QWidget* parent);
    ~m5qx_eq_tab_widget() override;

    /// Once, by the constructor.
    void init();
    void retranslateUi();
    /// Marks the key of page 0..5; any other id is logged as an error and changes nothing.
    void setCheckedPage(int id);

    /// Make the type before the service's one, or the one behind it, the service's; at the ends of 0..8 they
    /// go round. "Next" steps down.
    void nextEQType();
    void prevEQType();
    /// The service's current type.
    int currEQType();
    /// A type outside 0..8 has no name and shows none.
    void showEQTypeText();
    void soundClickedBeep();

signals:
    void triShowEQSettingPage();
    void triShowAudioLevelsPage();
    void triShowCrossoverSettingPage();
    void triShowTimeAlignmentpage();
    void triShowEQPreset();
    void triVolumeLevel();
    /// After a type key, and once more when the platform says that the type has changed.
    void EQTypeChanged();

public slots:
    /// id: a page 0..5; any other one beeps and asks for nothing.
    void onPageButGroupClicked(int id);
    void onNextEQType();
    void onPrevEQType();
    void onEQTypeChanged(int type);

protected:
    void showEvent(QShowEvent* event) override;

private:
    void stepEQType(int type);

    QScopedPointer<Ui::m5qx_audiosetting_tab_widget> ui;
    QButtonGroup* m_pages = nullptr;
};

} // namespace audiosetting
