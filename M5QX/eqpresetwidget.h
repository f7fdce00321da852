#pragma once

#include <QScopedPointer>
#include <QWidget>

class QButtonGroup;
class Ui_EQPresetWidget;

/// Eight large tiles, one for each EQ preset. A touch applies the preset at once and makes no beep; the check
/// mark moves before the service answers. The page keeps no preset: resume() asks the service. Thread: GUI.
class EQPresetWidget : public QWidget
{
    Q_OBJECT
public:
    explicit EQPresetWidget(QWidget* parent);
    ~EQPresetWidget() override;

    /// Once, by the constructor.
    void init();
    /// Checks the tile of the service's EQ type; a type without a tile leaves the check mark where it is.
    void resume();

signals:
    /// The driver asks to leave the page.
    void exitUI();

public slots:
    /// id: group id of a tile, 0..7; anything else does nothing.
    void onButtonGroupClicked(int id);
    void on_key_exit_clicked();

private:
    void retranslateUi();

    QScopedPointer<Ui_EQPresetWidget> ui;
    QButtonGroup* m_group;
};
