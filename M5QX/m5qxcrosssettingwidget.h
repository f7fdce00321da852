#pragma once

#include <QList>
#include <QMap>
#include <QScopedPointer>
#include <QString>
#include <QWidget>

class CurveWidget;
class PaSetupToggleKey;
class QButtonGroup;
class QPushButton;
class Ui_M5QXCrossSettingWidget;

/// The crossover page: one of three speaker groups (0 front, 1 rear, 2 subwoofer) is selected; its frequency,
/// slope and level are stepped through lists, and each group's curve lies over the grid. Every step is stored
/// and sent at once. The hub makes it anew each time its tab is chosen and calls resume() before showing it.
/// Thread: GUI.
class M5QXCrossSettingWidget : public QWidget
{
    Q_OBJECT
public:
    explicit M5QXCrossSettingWidget(QWidget* parent = nullptr);
    ~M5QXCrossSettingWidget() override;

    /// Reads everything from the store and shows it; writes nothing. What lies outside its list counts as the
    /// nearest entry, a group that a map lacks as the first.
    void resume();

    /// "0;0;1;0;2;6" for {0:0, 1:0, 2:6}: key and value, keys ascending; empty for an empty map.
    static QString mapToString(const QMap<int, int>& map);
    /// The reverse. What is not a number counts as 0, a later pair overwrites an earlier one of the same key,
    /// an odd last part is ignored; fewer than two parts give an empty map.
    static QMap<int, int> stringToMap(const QString& text);

signals:
    /// The driver asks to leave the page.
    void exitUI();

private slots:
    void on_key_filter_up_clicked();
    void on_key_filter_down_clicked();
    void on_key_slope_up_clicked();
    void on_key_slope_down_clicked();
    void on_key_level_up_clicked();
    void on_key_level_down_clicked();
    void on_key_front_clicked();
    void on_key_rear_clicked();
    void on_key_subwoofer_clicked();
    void on_key_exit_clicked();
    void onKey_troggle_phase();

private:
    struct StepRow;
    static const StepRow stepRows[];

    void init();
    void initLabel();
    void initButtons();
    void initFreqToX();
    void initGainToY();
    void initSlopeToImagePath();
    void initFilterToFreqList();
    void initFilterToSlopeList();
    void initFilterToGainList();
    void initFilterToXOffsetList();
    void initCurveWidget();

    /// Gradient of the drawn edge for a slope in dB/octave; 0 for any other number than the four.
    float getRealSclope(int slopeDb);
    /// Enables the keys of a pair by the value that they lead to: the up key ends at max, the down key at
    /// min, whichever of the two is larger.
    void updateButtonState(int filter, QPushButton* up, QPushButton* down, int max, int min, int value);
    /// Draws a group's curve and shows these values in the rows. freqHz 0: off.
    void updateCurve(int filter, int freqHz, int slopeDb, int gainDb);
    /// Sends these indexes for the selected group, whichever group they are of.
    void updateDSP(int freqIndex, int gainIndex, int slopeIndex);

    /// Moves an index of the selected group by one where its list goes on, then stores, shows and sends it.
    void step(int row, int direction);
    void selectGroup(int group);
    void showGroup(int group);
    void sendGroup(int group);
    void showPhaseControl();
    void setAccessibleNames();

    QMap<int, int> freqToX; ///< Hz to x pixel of the grid
    QMap<int, int> gainToY; ///< dB to y pixel of the grid
    QMap<int, int> slopeIndex;
    QMap<int, int> gainIndex;
    QMap<int, int> freqIndex;
    QMap<int, QList<int>> filterToFreqList;  ///< Hz, 0 is off
    QMap<int, QList<int>> filterToSlopeList; ///< dB/octave
    QMap<int, QList<int>> filterToGainList;  ///< dB
    int currentFilter = 0;
    QList<CurveWidget*> m_curves; ///< children of the grid
    QScopedPointer<PaSetupToggleKey> m_phaseKey;
    QButtonGroup* m_groupKeys = nullptr;
    QScopedPointer<Ui_M5QXCrossSettingWidget> ui;
};
