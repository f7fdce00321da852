#pragma once

#include <QWidget>

class QTabWidget;

namespace headunit {

class SoundControl;
class UnitPanel;

/// The window beside the unit for those who develop with it: what goes on inside, and levers to pull. Panels
/// are tabs, one class each; a further one is added in the constructor. It speaks English, whatever the
/// unit's language. Thread: GUI.
class Inspector : public QWidget
{
    Q_OBJECT
public:
    /// height: of the unit, in pixels. sound: outlives the inspector; null: the panels that show it are left
    /// out. So is the sound's when its plot can't be loaded.
    Inspector(int height, SoundControl* sound);

    QTabWidget* panels() const { return m_panels; }
    /// Where the user asks for what only the shell can do.
    UnitPanel* unitPanel() const { return m_unitPanel; }

private:
    QTabWidget* m_panels;
    UnitPanel* m_unitPanel;
};

} // namespace headunit
