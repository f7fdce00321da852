#pragma once

#include "headunit/sound/soundtypes.h"

#include <QTimer>
#include <QVector>
#include <QWidget>

class QAbstractButton;
class QComboBox;
class QGridLayout;
class QLabel;
class QLayout;
class QLineEdit;

namespace headunit {

class SoundControl;

/// Which source plays, what stands in for each of them, and the chimes of the prompt channels. The names of
/// the sources are the unit's own texts. What it shows is read from the sound; what the user chooses is
/// stored. Thread: GUI.
class SourcePanel : public QWidget
{
    Q_OBJECT
public:
    /// sound: outlives the panel.
    SourcePanel(SoundControl* sound, QWidget* parent);

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    struct Row
    {
        HVAudio_source_id_e id;
        QAbstractButton* name;
        QComboBox* kind;
        QLineEdit* path;
    };
    void addRow(QGridLayout* grid, int index);
    QLayout* promptKeyRow();
    void retranslate();
    /// Shows what the sound says; a path that was typed and not taken stays.
    void refresh();
    void refreshPrompts();
    /// Shows the error; without one, which of the stored files can't be played.
    void say(const QString& error);
    /// The one place where a source's stand-in changes.
    void setKind(int row, SourceKind kind, const QString& path);
    void onKindChosen(int row, SourceKind kind);
    void onPathEntered(int row);
    void askForFile(int row);
    void onPromptTouched(int key);

    SoundControl* const m_sound;
    QVector<Row> m_rows;
    QVector<QAbstractButton*> m_prompts;
    QLabel* m_error;
    QLabel* m_status;
    QTimer m_poll; ///< the ends of chimes and the output's state come without a signal
};

} // namespace headunit
